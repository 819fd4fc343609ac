#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

#include "platform/ado/DatabaseFile.h"
#include "platform/ado/Statement.h"
#include "platform/ado/WriteAhead.h"

namespace rillbook::ado {

class Cursor;

// The open file behind a Connection and its recordsets.
class Database {
public:
    // Opens as Connection::Open does, and raises so.
    Database(const QString& path, const QStringList& ownTables);
    ~Database() { Close(); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // Detaches the cursors, drops an open transaction and folds the companion back if nobody else
    // has the file. Returns why that failed, as Connection::Close does.
    QString Close() noexcept;

    sqlite3* handle() const { return handle_.get(); }
    bool IsReadOnly() const { return mark_ == nullptr; }
    bool IsInPlace() const;
    void CopyTo(const QString& path);

    void Begin();
    void Commit();
    void Rollback();
    // Before every change. A transaction that the database has given up (disk full) takes no more
    // changes: they would be stored one by one, as if nothing were missing before them. A file that
    // is not in its place takes none either, except in a run of appends, which asks at its ends.
    void RequireChangeable() const;

    void BeginExclusiveUse() noexcept;
    Unsynced EndExclusiveUse() noexcept;

    // Cursors that must let go of their statements before the file is closed.
    void Attach(Cursor* cursor) { cursors_.push_back(cursor); }
    void Detach(Cursor* cursor) { std::erase(cursors_, cursor); }

private:
    bool OpenToWrite();
    void RequireInPlace(sqlite3* handle) const;
    bool IsOverwritten() const;
    bool HasForeignCompanion() const;

    QString path_;  // of the file itself, not of a link to it
    Handle handle_;
    // Both null for a file that can't be written.
    std::unique_ptr<WriteAhead> companion_;
    std::unique_ptr<WriterMark> mark_;
    std::optional<FileIdentity> companionFile_;
    bool inTransaction_ = false;
    std::vector<Cursor*> cursors_;
};

}  // namespace rillbook::ado
