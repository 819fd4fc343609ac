#include "platform/access/AccessFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include "platform/access/AccessProtocol.h"
#include "platform/access/HelperProcess.h"

namespace rillbook::access {

namespace {

using Cause = ReadError::Cause;

constexpr std::chrono::minutes kWaiting{2};  // for a file on a slow network
constexpr std::chrono::minutes kWhole{5};

// What a station's tables may come to, handed over as numbers of 64 bits and UTF-8: the densest
// table of whole numbers of one byte stays below it.
constexpr qint64 kBytesPerByte = 32;
constexpr qint64 kBytesOfAnyFile = qint64{16} << 20U;

// For reading, and never blocks on what is no file.
class OpenFile {
public:
    explicit OpenFile(const QString& path)
        : descriptor_(::open(QFile::encodeName(path).constData(),
                             O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int Descriptor() const { return descriptor_; }

    bool IsFile() const {
        struct stat status {};
        return descriptor_ >= 0 && ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    }

    qint64 Size() const {
        struct stat status {};
        return ::fstat(descriptor_, &status) == 0 ? qint64{status.st_size} : 0;
    }

    FileKind Kind() const {
        constexpr qsizetype kMark = 4;
        QByteArray head(kMark + 16, '\0');
        if (!IsFile() || ::pread(descriptor_, head.data(), static_cast<std::size_t>(head.size()),
                                 0) != head.size()) {
            return FileKind::Other;
        }
        const QByteArrayView mark = QByteArrayView(head).sliced(kMark);
        if (mark == QByteArrayView("Standard Jet DB", 16)) {
            return FileKind::Access;
        }
        return mark == QByteArrayView("Standard ACE DB", 16) ? FileKind::LaterAccess
                                                             : FileKind::Other;
    }

    // Each user of such a file holds locks on parts of it, or of the one beside it that lists the
    // users, for as long as it is open. That one may be left over; the locks never are.
    bool IsLocked() const {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        return descriptor_ >= 0 && ::fcntl(descriptor_, F_GETLK, &lock) == 0 &&
               lock.l_type != F_UNLCK;
    }

private:
    int descriptor_;
};

bool IsInUse(const OpenFile& file, const QString& path) {
    const QFileInfo info(QFileInfo(path).canonicalFilePath());
    const QString base = info.path() + u'/' + info.completeBaseName();
    return file.IsLocked() || OpenFile(base + QStringLiteral(".ldb")).IsLocked() ||
           OpenFile(base + QStringLiteral(".LDB")).IsLocked();
}

}  // namespace

FileKind KindOf(const QString& path) {
    return OpenFile(path).Kind();
}

void ReadTables(const QString& path, const QStringList& wanted, TableSink& sink) {
    // The helper gets the open file, not its path: it needs no other, and reads the one that was
    // looked at here.
    const OpenFile file(path);
    if (!file.IsFile()) {
        Raise(Cause::Missing);
    }
    if (const FileKind kind = file.Kind(); kind != FileKind::Access) {
        Raise(kind == FileKind::LaterAccess ? Cause::Later : Cause::Foreign);
    }
    if (IsInUse(file, path)) {
        Raise(Cause::InUse);
    }
    HelperProcess helper(
        QCoreApplication::applicationDirPath() + QStringLiteral("/rillbook-access"), wanted,
        file.Descriptor(),
        {.waiting = kWaiting,
         .whole = kWhole,
         .bytes = kBytesOfAnyFile + kBytesPerByte * file.Size()});
    TakeAll(helper, wanted, sink);
}

}  // namespace rillbook::access
