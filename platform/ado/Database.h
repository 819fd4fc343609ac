#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

#include "platform/ado/DatabaseFile.h"
#include "platform/ado/Statement.h"

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

    // Detaches the cursors, drops an open transaction and folds the companion back where nobody
    // else has the file.
    void Close() noexcept;

    sqlite3* handle() const { return handle_.get(); }
    bool IsReadOnly() const { return mark_ == nullptr; }

    void Begin();
    void Commit();
    void Rollback();
    // Before every change. A transaction that the database has given up (disk full) takes no more
    // changes: they would be stored one by one, as if nothing were missing before them.
    void RequireLiveTransaction() const;

    void BeginExclusiveUse() noexcept;
    void EndExclusiveUse() noexcept;

    // Cursors that must let go of their statements before the file is closed.
    void Attach(Cursor* cursor) { cursors_.push_back(cursor); }
    void Detach(Cursor* cursor) { std::erase(cursors_, cursor); }

private:
    void LeaveExclusiveMode() noexcept;

    QString path_;
    Handle handle_;
    std::unique_ptr<WriterMark> mark_;  // null for a file that can't be written
    bool inTransaction_ = false;
    std::vector<Cursor*> cursors_;
};

}  // namespace rillbook::ado
