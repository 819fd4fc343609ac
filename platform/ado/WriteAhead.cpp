#include "platform/ado/WriteAhead.h"

#include <QFileInfo>
#include <QStorageInfo>
#include <algorithm>
#include <cerrno>

#include "platform/ado/DatabaseFile.h"
#include "platform/text/SystemReason.h"

namespace rillbook::ado {

namespace {

// Pages that the companion may gather before they are folded back. In a run of appends each row
// writes a page, mostly the same one again, and folding back waits for the disk: the longer
// interval costs 16 MB of disk, no memory to speak of, and spares three of four waits.
constexpr qint64 kUsualInterval = 1000;
constexpr qint64 kAppendInterval = 4000;

// On a disk that is nearly full the companion would leave the file itself no room to grow.
qint64 AppendIntervalOn(const QString& path) {
    constexpr qint64 pageSize = 4096;
    constexpr qint64 shareOfRoom = 8;
    constexpr qint64 shortest = 8;
    const qint64 room = QStorageInfo(QFileInfo(path).absolutePath()).bytesAvailable();
    return room < 0 ? kUsualInterval
                    : std::clamp(room / pageSize / shareOfRoom, shortest, kAppendInterval);
}

bool TryRun(sqlite3* handle, const char* sql) noexcept {
    return sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool IsLostSync(int code) {
    return code == SQLITE_IOERR_FSYNC || code == SQLITE_IOERR_DIR_FSYNC;
}

bool IsLocked(int code) {
    return (code & 0xff) == SQLITE_BUSY || (code & 0xff) == SQLITE_LOCKED;
}

QString ReasonOf(int code) {
    return (code & 0xff) == SQLITE_FULL ? SystemReason(ENOSPC)
                                        : QString::fromUtf8(sqlite3_errstr(code & 0xff));
}

// REQUIRES: no transaction, write-ahead mode. A refused exclusive lock leaves the pending one on
// the file, which keeps every new reader out. SQLite takes it back when it leaves the write-ahead
// mode, but not here; it takes itself to hold the shared lock, as it then does.
void GiveUpPendingLock(sqlite3* handle) noexcept {
    sqlite3_file* file = nullptr;
    int lock = SQLITE_LOCK_PENDING;  // if the file system layer doesn't report it
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_LOCKSTATE, &lock);
    if (file != nullptr && file->pMethods != nullptr && lock == SQLITE_LOCK_PENDING) {
        file->pMethods->xUnlock(file, SQLITE_LOCK_SHARED);
    }
}

}  // namespace

WriteAhead::WriteAhead(sqlite3* handle, const QString& path)
    : handle_(handle), path_(path), interval_(kUsualInterval) {
    // The statement names the new mode before it has stored it: only its end shows a full disk.
    Run(handle, "PRAGMA journal_mode = WAL");
    if (Ask(handle, "PRAGMA journal_mode") != u"wal") {
        throw AdoError(adErrGeneral,
                       QStringLiteral("The file system has no write-ahead mode: %1").arg(path),
                       AdoCause::ReadOnly);
    }
    Run(handle, "PRAGMA synchronous = FULL; SELECT count(*) FROM sqlite_schema");
    sqlite3_wal_hook(handle, AfterCommit, this);
}

WriteAhead::~WriteAhead() {
    sqlite3_wal_hook(handle_, nullptr, nullptr);
}

int WriteAhead::AfterCommit(void* self, sqlite3*, const char*, int pages) {
    auto& companion = *static_cast<WriteAhead*>(self);
    companion.unsynced_ += companion.isAppending_ ? 1 : 0;
    if (pages >= companion.interval_) {
        companion.FoldBack(SQLITE_CHECKPOINT_PASSIVE);
    }
    return SQLITE_OK;  // the commit itself is done
}

int WriteAhead::FoldBack(int mode) noexcept {
    int pages = 0;
    int folded = 0;
    const int code = sqlite3_wal_checkpoint_v2(handle_, "main", mode, &pages, &folded);
    if (IsLostSync(code)) {
        lostSync_ = code;
    }
    if (code != SQLITE_OK) {
        return code;
    }
    if (pages != folded) {
        return SQLITE_BUSY;
    }
    unsynced_ = lostSync_ == SQLITE_OK ? 0 : unsynced_;
    return SQLITE_OK;
}

int WriteAhead::SyncCompanion() noexcept {
    sqlite3_file* companion = nullptr;
    sqlite3_file_control(handle_, "main", SQLITE_FCNTL_JOURNAL_POINTER, &companion);
    if (companion == nullptr || companion->pMethods == nullptr) {
        return SQLITE_CANTOPEN;
    }
    return companion->pMethods->xSync(companion, SQLITE_SYNC_NORMAL);
}

void WriteAhead::BeginAppends() noexcept {
    interval_ = AppendIntervalOn(path_);
    isAppending_ = true;
    unsynced_ = 0;
    lostSync_ = SQLITE_OK;
    TryRun(handle_, "PRAGMA synchronous = NORMAL; PRAGMA locking_mode = EXCLUSIVE");
    // The lock is taken by the first write. If another connection has the file open it can't be
    // had, and no wait would bring it; each row then takes its lock by itself.
    sqlite3_busy_timeout(handle_, 0);
    const bool isAlone = TryRun(handle_, "BEGIN IMMEDIATE; COMMIT");
    sqlite3_busy_timeout(handle_, kPatience);
    if (!isAlone) {
        LeaveExclusiveMode();
        GiveUpPendingLock(handle_);
    }
}

Unsynced WriteAhead::EndAppends() noexcept {
    LeaveExclusiveMode();
    interval_ = kUsualInterval;
    isAppending_ = false;
    TryRun(handle_, "PRAGMA synchronous = FULL");
    int code = FoldBack(SQLITE_CHECKPOINT_TRUNCATE);
    if (code != SQLITE_OK && lostSync_ == SQLITE_OK && unsynced_ > 0) {
        code = SyncCompanion();
        unsynced_ = code == SQLITE_OK ? 0 : unsynced_;
    }
    if (unsynced_ == 0) {
        return {};
    }
    return {unsynced_, ReasonOf(lostSync_ == SQLITE_OK ? code : lostSync_)};
}

void WriteAhead::LeaveExclusiveMode() noexcept {
    TryRun(handle_, "PRAGMA locking_mode = NORMAL");
    // SQLite releases the lock at the end of the next access.
    TryRun(handle_, "SELECT count(*) FROM sqlite_schema");
}

QString WriteAhead::Leave() noexcept {
    TryRun(handle_, "PRAGMA locking_mode = NORMAL");
    const int code = FoldBack(SQLITE_CHECKPOINT_TRUNCATE);
    if (code == SQLITE_OK) {
        TryRun(handle_, "PRAGMA journal_mode = DELETE");
        return {};
    }
    if (IsLocked(code)) {
        return {};
    }
    // Closing would try once more, and might delete what a failed sync has left undone.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return ReasonOf(code);
}

void WriteAhead::LeaveReplaced() noexcept {
    TryRun(handle_, "PRAGMA locking_mode = NORMAL");
    FoldBack(SQLITE_CHECKPOINT_TRUNCATE);
    Abandon();
}

void WriteAhead::Abandon() noexcept {
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

}  // namespace rillbook::ado
