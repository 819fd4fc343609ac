#include "platform/ado/DatabaseFile.h"

#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>
#include <QtEndian>
#include <algorithm>
#include <ctime>
#include <map>
#include <optional>

#include "platform/ado/AdoError.h"

namespace rillbook::ado {

namespace {

[[noreturn]] void RaiseGeneral(const QString& why, AdoCause cause = AdoCause::Access) {
    throw AdoError(adErrGeneral, why, cause);
}

// Bytes 18 and 19 tell the journal mode, 16 the page size, 28 the count of pages; the count holds
// only if 24 (changes of the file) and 92 (changes when it was counted) are equal.
bool IsWriteAhead(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        RaiseGeneral(QStringLiteral("The file can't be opened: %1").arg(file.errorString()));
    }
    const QByteArray header = file.read(100);
    if (file.error() != QFileDevice::NoError) {
        RaiseGeneral(QStringLiteral("The file can't be read: %1").arg(file.errorString()));
    }
    if (header.size() < 100 || !header.startsWith(QByteArray("SQLite format 3\0", 16))) {
        RaiseGeneral(QStringLiteral("The file is not a station database."), AdoCause::Damaged);
    }
    const auto word = [&header](qsizetype offset) {
        return qFromBigEndian<quint32>(header.constData() + offset);
    };
    const quint16 storedSize = qFromBigEndian<quint16>(header.constData() + 16);
    const qint64 pageSize = storedSize == 1 ? 65536 : storedSize;
    // With a companion the count may be that of pages which haven't been folded back yet.
    const bool isCounted =
        word(24) == word(92) && QFileInfo(path + QStringLiteral("-wal")).size() == 0;
    if (isCounted && file.size() < pageSize * word(28)) {
        RaiseGeneral(QStringLiteral("The file is cut short."), AdoCause::Damaged);
    }
    return header[18] == 2 || header[19] == 2;
}

Handle OpenHandle(const QByteArray& name, int flags, const char* fileSystem = nullptr) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(
        name.constData(), &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, fileSystem);
    Handle handle(opened);
    if (result != SQLITE_OK) {
        const char* why = opened != nullptr ? sqlite3_errmsg(opened) : sqlite3_errstr(result);
        throw ErrorOfCode(result, QString::fromUtf8(why));
    }
    sqlite3_busy_timeout(opened, kPatience);
    // Folding a companion back is left to the connection that writes.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return handle;
}

bool IsReadable(sqlite3* handle) {
    return sqlite3_exec(handle, "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr) ==
           SQLITE_OK;
}

Handle RequireReadable(Handle handle) {
    if (!IsReadable(handle.get())) {
        const AdoError error = LastError(handle.get());
        RaiseGeneral(error.Description(), error.Cause());
    }
    return handle;
}

// In exclusive mode the index of the companion is built in memory, not in a file beside it.
Handle WithExclusiveLock(Handle handle) {
    Run(handle.get(), "PRAGMA locking_mode = EXCLUSIVE");
    return handle;
}

Handle OpenWithCompanion(const QByteArray& name, bool writable) {
    if (writable) {
        Handle alone = WithExclusiveLock(OpenHandle(name, SQLITE_OPEN_READWRITE));
        if (IsReadable(alone.get())) {
            return alone;
        }
    } else {
        // Nobody can write here, so that no lock is needed, nor can be had.
        Handle unlocked = WithExclusiveLock(OpenHandle(name, SQLITE_OPEN_READONLY, "unix-none"));
        if (IsReadable(unlocked.get())) {
            return unlocked;
        }
    }
    // Another program has it open, and with it the index that reading needs.
    return RequireReadable(OpenHandle(name, SQLITE_OPEN_READONLY));
}

// As the file is by itself, without locks: nobody may have it open.
Handle OpenWithoutCompanion(const QString& path) {
    const QByteArray uri = "file:" + QUrl::toPercentEncoding(path, "/") + "?immutable=1";
    return OpenHandle(uri, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
}

bool IsWritable(const QFileInfo& file) {
    return file.isWritable() && QFileInfo(file.absolutePath()).isWritable();
}

// The companion stands beside the file itself, not beside a link to it.
QString RealPath(const QString& path) {
    const QFileInfo file(path);
    if (!file.exists()) {
        RaiseGeneral(QStringLiteral("There is no such file: %1").arg(path));
    }
    if (!file.isFile()) {
        RaiseGeneral(QStringLiteral("It is not a regular file: %1").arg(path));
    }
    return file.canonicalFilePath();
}

// Never destroyed: a station that is open when the process exits is closed after that.
std::map<FileIdentity, int>& Writers() {
    static auto& writers = *new std::map<FileIdentity, int>;
    return writers;
}

// Equal stamps mean the same file with the same bytes, also under another name, unless it changed
// twice within the resolution of the clock that its times come from.
struct FileStamp {
    FileIdentity file;
    std::int64_t size = 0;
    std::int64_t modified = 0;  // nanoseconds since 1970
    std::int64_t changed = 0;   // its bytes, or its mode, owner or names
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

std::int64_t Nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::optional<FileStamp> StampOf(const QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return FileStamp{{status.st_dev, status.st_ino},
                     status.st_size,
                     Nanoseconds(status.st_mtim),
                     Nanoseconds(status.st_ctim)};
}

// The clock of file times has steps of up to two seconds, on sticks.
bool IsSettled(const FileStamp& stamp) {
    constexpr std::int64_t kLongestStep = 2'000'000'000;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return Nanoseconds(now) - std::max(stamp.modified, stamp.changed) >= kLongestStep;
}

// Few, as a process opens few stations.
std::map<FileIdentity, FileStamp>& SoundFiles() {
    static auto& files = *new std::map<FileIdentity, FileStamp>;  // never destroyed, as above
    return files;
}

bool IsKnownToBeSound(const FileStamp& stamp) {
    const auto known = SoundFiles().find(stamp.file);
    return known != SoundFiles().end() && known->second == stamp;
}

bool IsBusy(sqlite3* handle) {
    const int code = sqlite3_errcode(handle) & 0xff;
    return code == SQLITE_BUSY || code == SQLITE_LOCKED;
}

Handle OpenUntouchedOnce(const QFileInfo& file) {
    const QByteArray name = QFile::encodeName(file.filePath());
    const bool isWriteAhead = IsWriteAhead(file.filePath());
    if (QFileInfo::exists(file.filePath() + QStringLiteral("-wal"))) {
        return OpenWithCompanion(name, IsWritable(file));
    }
    if (isWriteAhead) {
        // Nobody has it open, or the companion would be there; reading it in the ordinary way would
        // make one.
        const QByteArray uri =
            "file:" + QUrl::toPercentEncoding(file.filePath(), "/") + "?immutable=1";
        return RequireReadable(OpenHandle(uri, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI));
    }
    // Opened for writing if possible: a half-done change that a killed program left in the rollback
    // journal is undone by the first reader that may write.
    return RequireReadable(
        OpenHandle(name, IsWritable(file) ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY));
}

void RunAlone(sqlite3* handle, const char* sql, const QString& path) {
    if (sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        if (IsBusy(handle)) {
            RaiseInUse(path);
        }
        RaiseLastError(handle);
    }
}

// Moves what a killed program, or a closing on a full disk, left in the companion into the file.
void FoldBack(const QByteArray& name, const QString& path) {
    const Handle handle = OpenHandle(name, SQLITE_OPEN_READWRITE);
    RunAlone(handle.get(), "PRAGMA wal_checkpoint(TRUNCATE); PRAGMA journal_mode = DELETE", path);
}

}  // namespace

QString PathInConnection(const QString& connectionString) {
    static const QRegularExpression dataSource(QStringLiteral("Data Source\\s*= ?"),
                                               QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = dataSource.match(connectionString);
    if (!match.hasMatch() || match.capturedEnd() == connectionString.size()) {
        RaiseGeneral(QStringLiteral("The connection text names no file."));
    }
    return connectionString.mid(match.capturedEnd());
}

Handle OpenUntouched(const QString& path) {
    const QFileInfo file(RealPath(path));
    constexpr int kAttempts = 3;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Handle handle = OpenUntouchedOnce(file);
        if (!HasMoved(handle.get())) {
            return handle;
        }
    }
    RaiseInUse(path);
}

Handle OpenAlone(const QString& path) {
    const QFileInfo file(RealPath(path));
    const QByteArray name = QFile::encodeName(file.filePath());
    if (IsWriteAhead(file.filePath())) {
        RequireSound(OpenUntouched(path).get(), path);
        FoldBack(name, path);
    }
    Handle handle = OpenHandle(name, SQLITE_OPEN_READWRITE);
    // In exclusive mode the lock outlives its transaction.
    RunAlone(handle.get(), "PRAGMA main.locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; COMMIT", path);
    if (HasCompanion(path) || HasMoved(handle.get())) {
        RaiseInUse(path);
    }
    return handle;
}

Handle OpenForWriting(const QString& path) {
    const QFileInfo file(RealPath(path));
    if (!IsWritable(file)) {
        return nullptr;
    }
    Handle handle = OpenHandle(QFile::encodeName(file.filePath()), SQLITE_OPEN_READWRITE);
    sqlite3_db_config(handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    return sqlite3_db_readonly(handle.get(), "main") == 0 ? std::move(handle) : nullptr;
}

Handle OpenForFilling(const QString& path) {
    Handle handle = OpenHandle(QFile::encodeName(path), SQLITE_OPEN_READWRITE);
    Run(handle.get(),
        "PRAGMA journal_mode = MEMORY; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE");
    return handle;
}

void RequireSound(sqlite3* handle, const QString& path) {
    // With a companion, the file by itself may be half of what was found sound.
    const std::optional<FileStamp> stamp = HasCompanion(path) ? std::nullopt : StampOf(path);
    if (stamp && IsKnownToBeSound(*stamp)) {
        return;
    }
    const QString verdict = Ask(handle, "PRAGMA quick_check(1)");
    if (verdict != u"ok") {
        RaiseGeneral(QStringLiteral("The file is damaged: %1").arg(verdict), AdoCause::Damaged);
    }
    if (stamp && IsSettled(*stamp)) {
        SoundFiles().insert_or_assign(stamp->file, *stamp);
    }
}

bool HasMoved(sqlite3* handle) {
    int hasMoved = 0;
    return sqlite3_file_control(handle, "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved) == SQLITE_OK &&
           hasMoved != 0;
}

void RaiseInUse(const QString& path) {
    RaiseGeneral(QStringLiteral("The file is in use: %1").arg(path), AdoCause::Locked);
}

bool HasCompanion(const QString& path) {
    const QString file = QFileInfo(path).canonicalFilePath();
    return QFileInfo::exists(file + QStringLiteral("-wal")) ||
           QFileInfo::exists(file + QStringLiteral("-journal"));
}

Handle OpenSoundWithoutCompanion(const QString& path) {
    const QString file = QFileInfo(path).canonicalFilePath();
    if (QFileInfo(file + QStringLiteral("-wal")).size() == 0) {
        return nullptr;
    }
    try {
        Handle alone = RequireReadable(OpenWithoutCompanion(file));
        const bool isSound = Ask(alone.get(), "PRAGMA quick_check(1)") == u"ok";
        return isSound ? std::move(alone) : nullptr;
    } catch (const AdoError&) {
        return nullptr;
    }
}

std::optional<FileIdentity> IdentityOf(const QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{.device = status.st_dev, .inode = status.st_ino};
}

WriterMark::WriterMark(const QString& path) : file_(IdentityOf(path).value_or(FileIdentity())) {
    ++Writers()[file_];
}

WriterMark::~WriterMark() {
    if (--Writers()[file_] == 0) {
        Writers().erase(file_);
    }
}

bool WriterMark::IsOnlyOne() const {
    return Writers().at(file_) == 1;
}

int WriterMark::CountOf(const QString& path) {
    const std::optional<FileIdentity> file = IdentityOf(path);
    const auto writers = file ? Writers().find(*file) : Writers().end();
    return writers == Writers().end() ? 0 : writers->second;
}

}  // namespace rillbook::ado
