#pragma once

#include <QString>
#include <QStringList>
#include <memory>

#include "platform/ado/Unsynced.h"

namespace rillbook {

namespace ado {
class Database;
}

// One open database file. A connection text is "Provider = ...; Data Source = PATH": the path is
// everything behind the sign of equality, semicolons included.
//
// While open for writing, the file is in write-ahead mode with a companion beside it; Close folds
// the companion back, so that at rest the station is one file in rollback mode. Each Update or
// Execute outside BeginTrans is final, and so is each CommitTrans: both are synced to the disk.
class Connection {
public:
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The tables by which the program knows its own files. A database that has none of them belongs
    // to another program: it opens for reading, and no byte of it changes. Empty: any database
    // opens for writing.
    QStringList OwnTables;

    // REQUIRES: closed. Raises adErrGeneral, having changed no byte, where the file is missing, not
    // a database, truncated, damaged, or locked by another program. A file that can't be written
    // opens for reading; each change then fails with adErrGeneral.
    void Open(const QString& connectionString, const QString& user = {},
              const QString& password = {}, int options = -1);

    // Recordsets that are still open on it become closed. Never raises. Returns why the companion
    // couldn't be folded back (disk full, medium gone): it stays beside the file with changes in
    // it, and the next Open folds it. Empty if all is in the file, also if another connection has
    // it open and folds it back later. No-op when closed. A file that was removed, or that another
    // one has replaced, gets its changes, and the one in its place isn't touched.
    QString Close();

    // 0 closed, 1 open.
    int State() const;
    QString ConnectionString() const { return connectionString_; }
    bool IsReadOnly() const;

    // False if the path leads to another file by now, or to none, or if another program has written
    // over the file. A change raises adErrGeneral with AdoCause::Moved then.
    bool IsInPlace() const;

    // Writes all that the connection holds, compacted, to a new file, whose bytes aren't synced.
    // Raises AdoError. REQUIRES: open, no transaction.
    void CopyTo(const QString& path);

    // Runs one statement in the program's own dialect (see JetSql.h), or raises.
    void Execute(const QString& statement);

    // Not nested. Changes between them are stored together at CommitTrans or, after RollbackTrans
    // or the death of the process, not at all.
    void BeginTrans();
    void CommitTrans();
    void RollbackTrans();

    // For one long run of appends: holds the file's lock between the rows instead of taking it
    // again for each, so that no other program can write meanwhile. Each row is final by itself: it
    // survives the death of the process, but a loss of power only after the end of the run. Never
    // raises.
    void BeginExclusiveUse();
    // Gives the lock back and syncs the rows to the disk. Returns how many of the last ones could
    // not be brought there, and why.
    Unsynced EndExclusiveUse();

    // For Recordset; null while closed.
    const std::shared_ptr<ado::Database>& database() const { return database_; }

private:
    QString connectionString_;
    std::shared_ptr<ado::Database> database_;
};

// Runs BeginTrans now, and RollbackTrans at the end of its life unless Commit was called.
class Transaction {
public:
    explicit Transaction(Connection& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

private:
    Connection* connection_;
};

}  // namespace rillbook
