#include "platform/desktop/ReplaceFile.h"

#include <QSaveFile>

namespace rillbook {

QString ReplaceFile(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    // A disk that fills up on the way takes a part, which isn't an error to commit(), nor, where it
    // is a part of what was buffered, to write().
    const qint64 written = file.write(bytes);
    if (written >= 0 && written < bytes.size()) {
        return QStringLiteral("The disk is full");
    }
    return written == bytes.size() && file.flush() && file.commit() ? QString()
                                                                    : file.errorString();
}

}  // namespace rillbook
