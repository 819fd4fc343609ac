#include "platform/ado/Database.h"

#include <QFileInfo>
#include <QStorageInfo>
#include <algorithm>

#include "platform/ado/AdoError.h"
#include "platform/ado/Cursor.h"

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

void FoldBackAfter(sqlite3* handle, qint64 pages) noexcept {
    sqlite3_wal_autocheckpoint(handle, static_cast<int>(pages));
}

// REQUIRES: no transaction, write-ahead mode. A refused exclusive lock leaves the pending one on
// the file, which keeps every new reader out. SQLite takes it back where it leaves the write-ahead
// mode, but not here; it takes itself to hold the shared lock, as it then does.
void GiveUpPendingLock(sqlite3* handle) noexcept {
    sqlite3_file* file = nullptr;
    int lock = SQLITE_LOCK_PENDING;  // where the file system layer doesn't tell
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_LOCKSTATE, &lock);
    if (file != nullptr && file->pMethods != nullptr && lock == SQLITE_LOCK_PENDING) {
        file->pMethods->xUnlock(file, SQLITE_LOCK_SHARED);
    }
}

bool HasTableOf(sqlite3* handle, const QStringList& names) {
    Statement find(handle,
                   "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = ?1 COLLATE NOCASE");
    return std::any_of(names.begin(), names.end(), [&find](const QString& name) {
        find.Reset();
        find.Bind(1, name);
        return find.Step();
    });
}

}  // namespace

Database::Database(const QString& path, const QStringList& ownTables) : path_(path) {
    const bool isOpenHere = WriterMark::CountOf(path) > 0;
    if (!isOpenHere) {
        handle_ = OpenUntouched(path);
        RequireSound(handle_.get(), path);
        if (!ownTables.isEmpty() && !HasTableOf(handle_.get(), ownTables)) {
            return;
        }
        handle_.reset();
    }
    handle_ = OpenForWriting(path);
    if (handle_) {
        mark_ = std::make_unique<WriterMark>(path);
        FoldBackAfter(handle_.get(), kUsualInterval);
    } else if (isOpenHere) {
        throw AdoError(adErrGeneral,
                       QStringLiteral("The file can't be opened again: %1").arg(path));
    } else {
        handle_ = OpenUntouched(path);
    }
}

void Database::Close() noexcept {
    if (!handle_) {
        return;
    }
    while (!cursors_.empty()) {
        Cursor* cursor = cursors_.back();
        cursors_.pop_back();
        cursor->LetGo();
    }
    TryRun(handle_.get(), "ROLLBACK");
    inTransaction_ = false;
    if (mark_ && mark_->IsOnlyOne()) {
        TryRun(handle_.get(), "PRAGMA locking_mode = NORMAL");
        // Fails where another program has the file open; the last one to close does it then.
        TryRun(handle_.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
        TryRun(handle_.get(), "PRAGMA journal_mode = DELETE");
    }
    handle_.reset();
    if (mark_) {
        NoteSound(path_);
    }
    mark_.reset();
}

void Database::Begin() {
    Run(handle_.get(), "BEGIN IMMEDIATE");
    inTransaction_ = true;
}

void Database::Commit() {
    RequireLiveTransaction();
    Run(handle_.get(), "COMMIT");
    inTransaction_ = false;
}

void Database::Rollback() {
    inTransaction_ = false;
    if (sqlite3_get_autocommit(handle_.get()) == 0) {
        Run(handle_.get(), "ROLLBACK");
    }
}

void Database::RequireLiveTransaction() const {
    if (inTransaction_ && sqlite3_get_autocommit(handle_.get()) != 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The changes were undone by a failure."));
    }
}

void Database::BeginExclusiveUse() noexcept {
    if (IsReadOnly() || inTransaction_) {
        return;
    }
    FoldBackAfter(handle_.get(), AppendIntervalOn(path_));
    TryRun(handle_.get(), "PRAGMA locking_mode = EXCLUSIVE");
    // The lock is taken by the first write. Where another connection has the file open it can't be
    // had, and no wait would bring it; each row then takes its lock by itself.
    sqlite3_busy_timeout(handle_.get(), 0);
    const bool isAlone = TryRun(handle_.get(), "BEGIN IMMEDIATE; COMMIT");
    sqlite3_busy_timeout(handle_.get(), kPatience);
    if (!isAlone) {
        LeaveExclusiveMode();
        GiveUpPendingLock(handle_.get());
    }
}

void Database::EndExclusiveUse() noexcept {
    if (IsReadOnly()) {
        return;
    }
    LeaveExclusiveMode();
    FoldBackAfter(handle_.get(), kUsualInterval);
    TryRun(handle_.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
}

void Database::LeaveExclusiveMode() noexcept {
    TryRun(handle_.get(), "PRAGMA locking_mode = NORMAL");
    // The lock goes at the end of the next access.
    TryRun(handle_.get(), "SELECT count(*) FROM sqlite_schema");
}

}  // namespace rillbook::ado
