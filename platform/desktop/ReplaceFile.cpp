#include "platform/desktop/ReplaceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "platform/desktop/FileDraft.h"
#include "platform/text/SystemReason.h"

namespace rillbook {

namespace {

// Not in the place of a link to it.
QString BehindLinks(const QString& path) {
    const QFileInfo file(path);
    return file.exists()      ? file.canonicalFilePath()
           : file.isSymLink() ? file.symLinkTarget()
                              : file.absoluteFilePath();
}

}  // namespace

QString NotAFileText() {
    return QStringLiteral("It is not a regular file");
}

QString ReplaceFile(const QString& path, const QByteArray& bytes,
                    const std::function<QString()>& beforeRename) {
    const QFileInfo file(BehindLinks(path));
    if (file.exists() && !file.isFile()) {
        return NotAFileText();
    }
    if (file.exists() && !file.isWritable()) {
        return SystemReason(EACCES);
    }
    FileDraft draft(file.filePath());
    QString reason = draft.Create();
    if (reason.isEmpty()) {
        reason = draft.Write(bytes);
    }
    return reason.isEmpty() ? draft.TakePlace(beforeRename) : reason;
}

QString SyncFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return file.errorString();
    }
    return ::fsync(file.handle()) == 0 ? QString() : SystemReason(errno);
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
