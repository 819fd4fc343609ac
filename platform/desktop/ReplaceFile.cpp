#include "platform/desktop/ReplaceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cstdio>

namespace rillbook {

QString ReplaceFile(const QString& path, const QByteArray& bytes,
                    const std::function<QString()>& beforeRename) {
    QSaveFile file(path);
    // Unbuffered: what a full disk cut off of a buffer would be no error to commit().
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        return file.errorString();
    }
    const qint64 written = file.write(bytes);
    if (written >= 0 && written < bytes.size()) {
        return QStringLiteral("The disk is full");
    }
    if (written < 0) {
        return file.errorString();
    }
    const QString objection = beforeRename ? beforeRename() : QString();
    if (!objection.isEmpty()) {
        return objection;
    }
    return file.commit() ? QString() : file.errorString();
}

QString MoveOver(const QString& finished, const QString& path) {
    if (std::rename(QFile::encodeName(finished).constData(), QFile::encodeName(path).constData()) !=
        0) {
        return qt_error_string();
    }
    // The new name, too, must outlast a loss of power before anything is written under it.
    SyncFolderOf(path);
    return {};
}

QString SyncFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return file.errorString();
    }
    return ::fsync(file.handle()) == 0 ? QString() : qt_error_string();
}

void SyncFolderOf(const QString& path) {
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    const int handle = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle >= 0) {
        ::fsync(handle);
        ::close(handle);
    }
}

}  // namespace rillbook
