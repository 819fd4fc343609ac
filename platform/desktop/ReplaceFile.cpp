#include "platform/desktop/ReplaceFile.h"

#include <QSaveFile>

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

}  // namespace rillbook
