#include "platform/ado/Database.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>

#include "platform/ado/AdoError.h"
#include "platform/ado/Cursor.h"

namespace rillbook::ado {

namespace {

bool HasTableOf(sqlite3* handle, const QStringList& names) {
    Statement find(handle,
                   "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = ?1 COLLATE NOCASE");
    return std::any_of(names.begin(), names.end(), [&find](const QString& name) {
        find.Reset();
        find.Bind(1, name);
        return find.Step();
    });
}

// Whether the database is sound, and one of the program's, only without the companion beside it.
bool IsCompanionOfAnother(const QString& path, const QStringList& ownTables) {
    const Handle alone = OpenSoundWithoutCompanion(path);
    return alone && (ownTables.isEmpty() || HasTableOf(alone.get(), ownTables));
}

[[noreturn]] void RaiseCompanionOfAnother(const QString& path) {
    throw AdoError(
        adErrGeneral,
        QStringLiteral("%1-wal is beside the file and belongs to another one. Move it to "
                       "another folder and open the station again.")
            .arg(path),
        AdoCause::Damaged);
}

// Opens a file to read it. Raises as Database's constructor does.
Handle OpenSound(const QString& path, const QStringList& ownTables) {
    try {
        Handle handle = OpenUntouched(path);
        RequireSound(handle.get(), path);
        return handle;
    } catch (const AdoError& error) {
        if (error.Cause() == AdoCause::Damaged && IsCompanionOfAnother(path, ownTables)) {
            RaiseCompanionOfAnother(path);
        }
        throw;
    }
}

}  // namespace

Database::Database(const QString& path, const QStringList& ownTables) {
    const QString file = QFileInfo(path).canonicalFilePath();
    path_ = file.isEmpty() ? path : file;
    const bool isOpenHere = WriterMark::CountOf(path_) > 0;
    if (!isOpenHere) {
        handle_ = OpenSound(path_, ownTables);
        if (!ownTables.isEmpty() && !HasTableOf(handle_.get(), ownTables)) {
            if (IsCompanionOfAnother(path_, ownTables)) {
                RaiseCompanionOfAnother(path_);
            }
            return;
        }
        handle_.reset();
    }
    if (OpenToWrite()) {
        return;
    }
    if (isOpenHere) {
        throw AdoError(adErrGeneral,
                       QStringLiteral("The file can't be opened again: %1").arg(path));
    }
    handle_ = OpenUntouched(path_);
}

// False if the file can only be read.
bool Database::OpenToWrite() {
    Handle handle = OpenForWriting(path_);
    if (!handle) {
        return false;
    }
    try {
        companion_ = std::make_unique<WriteAhead>(handle.get(), path_);
        RequireInPlace(handle.get());
    } catch (const AdoError& error) {
        companion_.reset();
        RequireInPlace(handle.get());
        const bool hasNoRoom = error.Cause() == AdoCause::Full ||
                               (sqlite3_errcode(handle.get()) & 0xff) == SQLITE_CANTOPEN;
        if (hasNoRoom || error.Cause() == AdoCause::ReadOnly) {
            return false;
        }
        throw;
    }
    handle_ = std::move(handle);
    mark_ = std::make_unique<WriterMark>(path_);
    companionFile_ = IdentityOf(path_ + QStringLiteral("-wal"));
    return true;
}

// After a wait for its lock, the file may have given its name to another one. The companion of that
// name is the other one's then, and SQLite would use it for this one.
void Database::RequireInPlace(sqlite3* handle) const {
    if (HasMoved(handle)) {
        sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        RaiseInUse(path_);
    }
}

QString Database::Close() noexcept {
    if (!handle_) {
        return {};
    }
    while (!cursors_.empty()) {
        Cursor* cursor = cursors_.back();
        cursors_.pop_back();
        cursor->LetGo();
    }
    sqlite3_exec(handle_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    inTransaction_ = false;
    QString reason;
    const bool isLast = mark_ && mark_->IsOnlyOne();
    const bool isForeign = isLast && HasForeignCompanion();
    const bool isOverwritten = isLast && IsOverwritten();
    if (isOverwritten) {
        companion_->Abandon();
    } else if (isForeign) {
        companion_->LeaveReplaced();
    } else if (isLast) {
        reason = companion_->Leave();
    }
    companion_.reset();
    handle_.reset();
    if (isOverwritten && !isForeign) {
        // It would be taken for that of the bytes that are there now.
        QFile::remove(path_ + QStringLiteral("-wal"));
        QFile::remove(path_ + QStringLiteral("-shm"));
    }
    mark_.reset();
    return reason;
}

bool Database::IsInPlace() const {
    if (!mark_) {
        return true;
    }
    return !HasMoved(handle_.get()) && IdentityOf(path_) == mark_->File() && !IsOverwritten();
}

// While the file is open for writing, its first page names the write-ahead mode. The bytes of a
// station that was closed, written into the same file, don't. Read through the database's own
// descriptor: closing another one would drop its locks.
bool Database::IsOverwritten() const {
    constexpr int versions = 18;
    char header[versions + 2] = {};
    sqlite3_file* file = nullptr;
    sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (file == nullptr || file->pMethods == nullptr) {
        return false;
    }
    const int code = file->pMethods->xRead(file, header, sizeof header, 0);
    return code == SQLITE_IOERR_SHORT_READ ||
           (code == SQLITE_OK && (header[versions] != 2 || header[versions + 1] != 2));
}

// Another file in the place of this one has a companion of its own by now.
bool Database::HasForeignCompanion() const {
    const std::optional<FileIdentity> present = IdentityOf(path_ + QStringLiteral("-wal"));
    return present && present != companionFile_;
}

void Database::CopyTo(const QString& path) {
    Statement copying(handle_.get(), "VACUUM INTO ?1");
    copying.Bind(1, QFileInfo(path).absoluteFilePath());
    copying.Step();
}

void Database::Begin() {
    Run(handle_.get(), "BEGIN IMMEDIATE");
    inTransaction_ = true;
}

void Database::Commit() {
    RequireChangeable();
    Run(handle_.get(), "COMMIT");
    inTransaction_ = false;
}

void Database::Rollback() {
    inTransaction_ = false;
    if (sqlite3_get_autocommit(handle_.get()) == 0) {
        Run(handle_.get(), "ROLLBACK");
    }
}

void Database::RequireChangeable() const {
    if (inTransaction_ && sqlite3_get_autocommit(handle_.get()) != 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The changes were undone by a failure."));
    }
    if (companion_ && !companion_->IsAppending() && !IsInPlace()) {
        throw AdoError(
            adErrGeneral,
            QStringLiteral("The file was removed or replaced by another program: %1").arg(path_),
            AdoCause::Moved);
    }
}

void Database::BeginExclusiveUse() noexcept {
    if (companion_ && !inTransaction_) {
        companion_->BeginAppends();
    }
}

Unsynced Database::EndExclusiveUse() noexcept {
    return companion_ && companion_->IsAppending() ? companion_->EndAppends() : Unsynced();
}

}  // namespace rillbook::ado
