#include "platform/desktop/SameFile.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>

namespace rillbook {

bool IsSameFile(const QString& path, const QString& other) {
    if (path == other) {
        return true;
    }
    struct stat file {};
    struct stat otherFile {};
    if (::stat(QFile::encodeName(path).constData(), &file) == 0 &&
        ::stat(QFile::encodeName(other).constData(), &otherFile) == 0) {
        return file.st_dev == otherFile.st_dev && file.st_ino == otherFile.st_ino;
    }
    return QDir::cleanPath(path) == QDir::cleanPath(other);
}

}  // namespace rillbook
