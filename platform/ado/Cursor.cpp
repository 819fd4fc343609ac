#include "platform/ado/Cursor.h"

namespace rillbook::ado {

namespace {

[[noreturn]] void RaiseNotUpdatable() {
    throw AdoError(adErrNotUpdatable, QStringLiteral("The recordset is read-only."));
}

}  // namespace

void RaiseNoCurrentRecord() {
    throw AdoError(adErrNoCurrentRecord, QStringLiteral("There is no current record."));
}

Cursor::Cursor(Database& database) : database_(&database) {
    database.Attach(this);
}

Cursor::~Cursor() {
    if (database_ != nullptr) {
        database_->Detach(this);
    }
}

void Cursor::LetGo() noexcept {
    DropStatements();
    database_ = nullptr;
}

void Cursor::SkipUntil(int column, const std::function<bool(double)>& accepts) {
    while (!Eof() && !(Kind(column) == Cell::Kind::Number && accepts(Number(column)))) {
        MoveNext();
    }
}

void Cursor::TakeColumns(const Statement& statement) {
    const int count = statement.ColumnCount();
    for (int i = 0; i < count; ++i) {
        columns_.push_back({statement.ColumnName(i), ParseColumnType(statement.DeclaredType(i))});
    }
}

void Cursor::SetAbsolutePosition(std::int64_t) {
    RaiseNotUpdatable();
}

const std::vector<Cell>* Cursor::Peek(std::int64_t) {
    RaiseNotUpdatable();
}

void Cursor::Set(int, Null) {
    RaiseNotUpdatable();
}
void Cursor::Set(int, double) {
    RaiseNotUpdatable();
}
void Cursor::Set(int, const QString&) {
    RaiseNotUpdatable();
}
void Cursor::AddNew() {
    RaiseNotUpdatable();
}
void Cursor::Update() {
    RaiseNotUpdatable();
}
void Cursor::CancelUpdate() {
    RaiseNotUpdatable();
}
void Cursor::Delete() {
    RaiseNotUpdatable();
}

}  // namespace rillbook::ado
