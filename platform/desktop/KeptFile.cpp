#include "platform/desktop/KeptFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "platform/desktop/FileDraft.h"
#include "platform/desktop/ReplaceFile.h"

namespace rillbook {

namespace {

constexpr qint64 kBlock = 1 << 20;

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
    const QFileInfo otherInfo(other);
    if (otherInfo.isSymLink() || !otherInfo.isFile() || !file.open(QIODevice::ReadOnly) ||
        !otherFile.open(QIODevice::ReadOnly) || file.size() != otherFile.size()) {
        return false;
    }
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

QString CopyBytes(const QString& path, FileDraft& copy) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return file.errorString();
    }
    QByteArray block;
    do {
        block = file.read(kBlock);
        if (const QString reason = copy.Write(block); !reason.isEmpty()) {
            return reason;
        }
    } while (!block.isEmpty());
    return file.error() == QFileDevice::NoError ? QString() : file.errorString();
}

// REQUIRES: the new name is reserved.
QString CopyTo(const QString& path, const QString& copy) {
    FileDraft draft(copy);
    QString reason = draft.Create(path);
    if (reason.isEmpty()) {
        reason = CopyBytes(path, draft);
    }
    if (reason.isEmpty() && !HasSameBytes(path, draft.Path())) {
        reason = QStringLiteral("The copy differs from the file");
    }
    return reason.isEmpty() ? draft.TakePlace() : reason;
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
        if (reserved.open(QIODevice::NewOnly | QIODevice::WriteOnly,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
            reserved.close();
            kept.reason = CopyTo(path, name);
            if (!kept.reason.isEmpty()) {
                reserved.remove();
            }
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
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        kept.reason = NotAFileText();
        return kept;
    }
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
