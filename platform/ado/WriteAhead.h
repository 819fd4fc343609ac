#pragma once

#include <QString>
#include <cstdint>

#include "platform/ado/Statement.h"
#include "platform/ado/Unsynced.h"

namespace rillbook::ado {

// The write-ahead companion of an open file: the one place that decides the file's journal mode and
// when its changes are synced to the disk.
//
// Each commit is synced to the companion before it returns, except in a run of appends: there only
// folding back and the end of the run wait for the disk.
class WriteAhead {
public:
    // Puts the file in write-ahead mode. Raises AdoError; with AdoCause::ReadOnly if the file
    // system has no such mode. REQUIRES: the handle outlives this object.
    WriteAhead(sqlite3* handle, const QString& path);
    ~WriteAhead();
    WriteAhead(const WriteAhead&) = delete;
    WriteAhead& operator=(const WriteAhead&) = delete;

    // Holds the file's lock between commits if no other connection has the file open, and stops
    // syncing each commit. REQUIRES: no transaction.
    void BeginAppends() noexcept;

    // Gives the lock back and brings the commits of the run to the disk, in the file itself or, if
    // other connections read it, in the companion.
    Unsynced EndAppends() noexcept;

    bool IsAppending() const { return isAppending_; }

    // Folds the companion back and puts the file in rollback mode, if nobody else has it open.
    // Returns why the companion had to stay with changes in it; empty if it is gone, or if another
    // connection is to fold it back. The handle can only be closed afterwards.
    QString Leave() noexcept;
    // The same if the companion's name is another file's by now: nothing but this file is touched.
    void LeaveReplaced() noexcept;
    // The file has the bytes of another one by now: it isn't touched at all.
    void Abandon() noexcept;

private:
    static int AfterCommit(void* self, sqlite3*, const char*, int pages);
    int FoldBack(int mode) noexcept;
    int SyncCompanion() noexcept;
    void LeaveExclusiveMode() noexcept;

    sqlite3* handle_;
    QString path_;
    qint64 interval_;
    bool isAppending_ = false;
    std::int64_t unsynced_ = 0;  // commits since the companion was folded back whole
    int lostSync_ = SQLITE_OK;   // a failed sync in this run: what it was to write may be lost
};

}  // namespace rillbook::ado
