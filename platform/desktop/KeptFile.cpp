#include "platform/desktop/KeptFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>

#include "platform/desktop/ReplaceFile.h"

namespace rillbook {

namespace {

// A link to the file would lead to whatever comes in its place.
bool IsSameFile(const QString& path, const QString& other) {
    struct stat file {};
    struct stat otherFile {};
    return ::stat(QFile::encodeName(path).constData(), &file) == 0 &&
           ::lstat(QFile::encodeName(other).constData(), &otherFile) == 0 &&
           file.st_dev == otherFile.st_dev && file.st_ino == otherFile.st_ino;
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

// Under the new name followed by "qvx" until it is complete, so that what a killed program leaves
// isn't taken for the file.
QString CopyTo(const QString& path, const QString& copy) {
    const QString unfinished = copy + QStringLiteral("qvx");
    QFile::remove(unfinished);
    QFile from(path);
    QFile to(unfinished);
    if (!from.open(QIODevice::ReadOnly)) {
        return from.errorString();
    }
    if (!to.open(QIODevice::NewOnly | QIODevice::WriteOnly | QIODevice::Unbuffered)) {
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

}  // namespace

KeptFile KeepUnderName(const QString& path, const std::function<QString(int)>& name) {
    KeptFile kept;
    for (int number = 1;; ++number) {
        kept.path = name(number);
        kept.isNew = !IsTaken(kept.path);
        if (kept.isNew || IsSameFile(path, kept.path) || HasSameBytes(path, kept.path)) {
            break;
        }
    }
    const QByteArray from = QFile::encodeName(path);
    const QByteArray to = QFile::encodeName(kept.path);
    if (kept.isNew && ::link(from.constData(), to.constData()) != 0) {
        kept.reason = CopyTo(path, kept.path);
    }
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
