#include "platform/ado/Connection.h"

#include "platform/ado/AdoError.h"
#include "platform/ado/AlterColumn.h"
#include "platform/ado/Database.h"
#include "platform/ado/JetSql.h"

namespace rillbook {

namespace {

ado::Database& RequireOpen(const std::shared_ptr<ado::Database>& database) {
    if (!database) {
        throw AdoError(adErrObjectClosed, QStringLiteral("The connection is closed."));
    }
    return *database;
}

}  // namespace

Connection::Connection() = default;

Connection::~Connection() {
    Close();
}

void Connection::Open(const QString& connectionString, const QString&, const QString&, int) {
    if (database_) {
        throw AdoError(adErrObjectOpen, QStringLiteral("The connection is open already."));
    }
    database_ = std::make_shared<ado::Database>(ado::PathInConnection(connectionString), OwnTables);
    connectionString_ = connectionString;
}

QString Connection::Close() {
    if (!database_) {
        return {};
    }
    const QString reason = database_->Close();
    database_.reset();
    return reason;
}

int Connection::State() const {
    return database_ ? 1 : 0;
}

bool Connection::IsReadOnly() const {
    return database_ && database_->IsReadOnly();
}

bool Connection::IsInPlace() const {
    return RequireOpen(database_).IsInPlace();
}

void Connection::CopyTo(const QString& path) {
    RequireOpen(database_).CopyTo(path);
}

void Connection::Execute(const QString& statement) {
    ado::Database& database = RequireOpen(database_);
    const JetStatement translated = TranslateJetSql(statement);
    database.RequireChangeable();
    if (translated.kind == JetStatement::Kind::AlterColumn) {
        ado::AlterColumn(database.handle(), translated);
        return;
    }
    ado::Statement runnable(database.handle(), translated.sql);
    while (runnable.Step()) {
    }
}

void Connection::BeginTrans() {
    RequireOpen(database_).Begin();
}

void Connection::CommitTrans() {
    RequireOpen(database_).Commit();
}

void Connection::RollbackTrans() {
    RequireOpen(database_).Rollback();
}

void Connection::BeginExclusiveUse() {
    if (database_) {
        database_->BeginExclusiveUse();
    }
}

Unsynced Connection::EndExclusiveUse() {
    return database_ ? database_->EndExclusiveUse() : Unsynced();
}

Transaction::Transaction(Connection& connection) : connection_(&connection) {
    connection.BeginTrans();
}

Transaction::~Transaction() {
    if (connection_ == nullptr || connection_->State() == 0) {
        return;
    }
    try {
        connection_->RollbackTrans();
    } catch (const AdoError&) {
        // What the database can't undo now it undoes at the next opening.
    }
}

void Transaction::Commit() {
    connection_->CommitTrans();
    connection_ = nullptr;
}

}  // namespace rillbook
