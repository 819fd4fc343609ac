#include "platform/desktop/KeptFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "platform/desktop/ReplaceFile.h"

namespace rillbook {

namespace {

// Compares with the name itself, since a link would lead to the file that replaces this one.
bool IsNameOf(const QString& path, const QString& name) {
    struct stat file {};
    struct stat named {};
    return ::stat(QFile::encodeName(path).constData(), &file) == 0 &&
           ::lstat(QFile::encodeName(name).constData(), &named) == 0 &&
           file.st_dev == named.st_dev && file.st_ino == named.st_ino;
}

bool HasSameBytes(const QString& path, const QString& other) {
    QFile file(path);
    QFile otherFile(other);
    if (QFileInfo(other).isSymLink() || !file.open(QIODevice::ReadOnly) ||
        !otherFile.open(QIODevice::ReadOnly) || file.size() != otherFile.size()) {
        return false;
    }
    constexpr qint64 kBlock = 1 << 20;
    while (!file.atEnd()) {
        const QByteArray block = file.read(kBlock);
        if (block.isEmpty() || block != otherFile.read(block.size())) {
            return false;
        }
    }
    return file.error() == QFileDevice::NoError;
}

bool IsTaken(const QString& path) {
    const QFileInfo file(path);
    return file.exists() || file.isSymLink();
}

QString CopyBytes(QFile& from, QFile& to) {
    constexpr qint64 kBlock = 1 << 20;
    while (!from.atEnd()) {
        const QByteArray block = from.read(kBlock);
        if (block.isEmpty()) {
            return from.errorString();
        }
        const qint64 written = to.write(block);
        if (written != block.size()) {
            return written < 0 ? to.errorString() : QStringLiteral("The disk is full");
        }
    }
    return ::fsync(to.handle()) == 0 ? QString() : qt_error_string();
}

// Writes to the new name followed by "qvx" until the copy is complete, so that what a killed
// program leaves isn't taken for the file. REQUIRES: the new name is reserved.
QString CopyTo(const QString& path, const QString& copy) {
    const QString unfinished = copy + QStringLiteral("qvx");
    QFile::remove(unfinished);
    QFile from(path);
    QFile to(unfinished);
    if (!from.open(QIODevice::ReadOnly)) {
        return from.errorString();
    }
    // The file may be private.
    if (!to.open(QIODevice::NewOnly | QIODevice::WriteOnly | QIODevice::Unbuffered,
                 QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
        return to.errorString();
    }
    QString reason = CopyBytes(from, to);
    to.close();
    if (reason.isEmpty() && !HasSameBytes(path, unfinished)) {
        reason = QStringLiteral("The copy differs from the file");
    }
    if (reason.isEmpty()) {
        QFile::setPermissions(unfinished, QFile::permissions(path));
        reason = MoveOver(unfinished, copy);
    }
    if (!reason.isEmpty()) {
        QFile::remove(unfinished);
    }
    return reason;
}

// Tries one name. Neither isNew nor a reason: another file has that name.
KeptFile TryName(const QString& path, const QString& name) {
    KeptFile kept{.path = name, .isNew = true, .reason = {}};
    if (::linkat(AT_FDCWD, QFile::encodeName(path).constData(), AT_FDCWD,
                 QFile::encodeName(name).constData(), AT_SYMLINK_FOLLOW) == 0) {
        return kept;
    }
    if (errno != EEXIST) {
        // An empty file reserves the name until the copy replaces it.
        QFile reserved(name);
        if (reserved.open(QIODevice::NewOnly | QIODevice::WriteOnly)) {
            reserved.close();
            kept.reason = CopyTo(path, name);
            return kept;
        }
        if (!IsTaken(name)) {
            kept.reason = reserved.errorString();
        }
    }
    kept.isNew = false;
    return kept;
}

}  // namespace

KeptFile KeepUnderName(const QString& path, const std::function<QString(int)>& name) {
    KeptFile kept;
    int number = 0;
    do {
        kept = TryName(path, name(++number));
    } while (!kept.isNew && kept.reason.isEmpty() && !IsNameOf(path, kept.path) &&
             !HasSameBytes(path, kept.path));
    if (kept.reason.isEmpty()) {
        kept.reason = SyncFile(kept.path);
        SyncFolderOf(kept.path);
    }
    if (!kept.reason.isEmpty() && kept.isNew) {
        QFile::remove(kept.path);
    }
    return kept;
}

}  // namespace rillbook
