#include "platform/desktop/FileDraft.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QThread>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/desktop/FileAccess.h"
#include "platform/desktop/ReplaceFile.h"
#include "platform/text/SystemReason.h"

namespace rillbook {

namespace {

QString BusyText() {
    return QStringLiteral("Another program is writing the file.");
}

// A killed program's helper process may hold the lock a moment longer.
bool Lock(int file) {
    constexpr int kAttempts = 10;
    constexpr unsigned long kWait = 50;  // milliseconds
    for (int attempt = 1; ::flock(file, LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if (errno != EWOULDBLOCK) {
            return true;  // no locks on this file system
        }
        if (attempt == kAttempts) {
            return false;
        }
        QThread::msleep(kWait);
    }
    return true;
}

bool IsNamed(int file, const QString& path) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(file, &opened) == 0 &&
           ::lstat(QFile::encodeName(path).constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace

QStringList CompanionsOf(const QString& path) {
    QStringList companions;
    for (const QString& suffix :
         {QStringLiteral("-wal"), QStringLiteral("-shm"), QStringLiteral("-journal")}) {
        if (QFile::exists(path + suffix)) {
            companions += path + suffix;
        }
    }
    return companions;
}

FileDraft::FileDraft(const QString& place) : place_(place) {}

FileDraft::~FileDraft() {
    if (file_ >= 0 && IsNamed(file_, Path())) {
        Remove();
    }
    Close();
}

QString FileDraft::Path() const {
    return place_ + QStringLiteral("qvx");
}

QString FileDraft::Create(const QString& model, bool ownerMayWrite) {
    constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
    constexpr mode_t kAnyNewFile = kOwnerOnly | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    const QByteArray name = QFile::encodeName(Path());
    const bool hasModel = QFile::exists(model);
    constexpr int kAttempts = 3;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (!RemoveLeftover()) {
            return BusyText();
        }
        file_ = ::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                       hasModel ? kOwnerOnly : kAnyNewFile);
        if (file_ < 0 && errno != EEXIST) {
            const int error = errno;
            return error == EACCES || error == EROFS
                       ? QStringLiteral("The folder can't be written to: ") + SystemReason(error)
                       : SystemReason(error);
        }
        // Until it is locked, another program may take it for a leftover.
        if (file_ >= 0 && Lock(file_) && IsNamed(file_, Path())) {
            if (hasModel) {
                CarryAccess(file_, model, ownerMayWrite);
            }
            return {};
        }
        Close();
    }
    return BusyText();
}

// False if another program is writing it now.
bool FileDraft::RemoveLeftover() const {
    const QByteArray name = QFile::encodeName(Path());
    const int found = ::open(name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (found < 0) {
        Remove();
        return true;
    }
    const bool isFree = Lock(found);
    if (isFree && IsNamed(found, Path())) {
        Remove();
    }
    ::close(found);
    return isFree;
}

void FileDraft::Remove() const {
    for (const QString& companion : CompanionsOf(Path())) {
        QFile::remove(companion);
    }
    QFile::remove(Path());
}

void FileDraft::Close() {
    if (file_ >= 0) {
        ::close(std::exchange(file_, -1));
    }
}

QString FileDraft::Write(const QByteArray& bytes) {
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t written =
            ::write(file_, bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
        if (written < 0 && errno != EINTR) {
            return SystemReason(errno);
        }
        at += written < 0 ? 0 : written;
    }
    return {};
}

QString FileDraft::TakePlace(const std::function<QString()>& beforeRename) {
    if (::fsync(file_) != 0) {
        return SystemReason(errno);
    }
    const QString objection = beforeRename ? beforeRename() : QString();
    if (!objection.isEmpty()) {
        return objection;
    }
    if (!IsNamed(file_, Path())) {
        return BusyText();
    }
    if (std::rename(QFile::encodeName(Path()).constData(), QFile::encodeName(place_).constData()) !=
        0) {
        return SystemReason(errno);
    }
    // The new name, too, must outlast a loss of power before anything is written under it.
    SyncFolderOf(place_);
    Close();
    return {};
}

}  // namespace rillbook
