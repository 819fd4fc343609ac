#include "platform/ado/UpdateCursor.h"

#include <algorithm>
#include <bit>

#include "platform/ado/SelectParts.h"
#include "platform/ado/SqlTokens.h"

namespace rillbook::ado {

namespace {

[[noreturn]] void RaiseNoKey(const QString& what) {
    throw AdoError(adErrNotUpdatable,
                   QStringLiteral("Rows can't be changed through: %1").arg(what));
}

}  // namespace

UpdateCursor::UpdateCursor(Database& database, const QByteArray& select) : Cursor(database) {
    const Statement columns(database.handle(), select);
    TakeColumns(columns);
    row_.resize(Columns().size());
    peeked_.resize(Columns().size());
    changed_.resize(Columns().size());
    const std::optional<SelectParts> parts = PartsOfSelect(select);
    if (!parts) {
        RaiseNoKey(QString::fromUtf8(select));
    }
    table_ = QuotedName(parts->table).toUtf8();
    condition_ = ' ' + parts->where + ' ' + parts->order;
    FindKey(parts->table);
    load_ = Statement(database.handle(), "SELECT " + ColumnList() + " FROM " + table_ + " WHERE " +
                                             keyColumn_ + " = ?1");
}

void UpdateCursor::FindKey(const QString& table) {
    Statement kind(database().handle(),
                   "SELECT wr FROM pragma_table_list WHERE schema = 'main' AND type = 'table' "
                   "AND name = ?1 COLLATE NOCASE");
    kind.Bind(1, table);
    if (!kind.Step()) {
        RaiseNoKey(table);
    }
    keyIsRowNumber_ = kind.Integer(0) == 0;
    if (keyIsRowNumber_) {
        keyColumn_ = "_rowid_";
        return;
    }
    Statement keys(database().handle(), "SELECT name FROM pragma_table_info(?1) WHERE pk > 0");
    keys.Bind(1, table);
    const QString name = keys.Step() ? keys.Text(0) : QString();
    if (name.isEmpty() || keys.Step()) {
        RaiseNoKey(table);
    }
    keyColumn_ = QuotedName(name).toUtf8();
    for (std::size_t i = 0; i < Columns().size(); ++i) {
        if (Columns()[i].name.compare(name, Qt::CaseInsensitive) == 0) {
            keyOrdinal_ = static_cast<int>(i);
        }
    }
}

QByteArray UpdateCursor::ColumnList() const {
    QByteArray list;
    for (const Column& column : Columns()) {
        list += (list.isEmpty() ? "" : ", ") + QuotedName(column.name).toUtf8();
    }
    return list;
}

void UpdateCursor::DropStatements() noexcept {
    load_ = {};
    insert_ = {};
    update_ = {};
}

UpdateCursor::Key UpdateCursor::KeyOf(double value) {
    return std::bit_cast<Key>(value);
}

double UpdateCursor::ValueOf(Key key) {
    return std::bit_cast<double>(key);
}

UpdateCursor::Key UpdateCursor::ReadKey(const Statement& statement) const {
    return keyIsRowNumber_ ? statement.Integer(0) : KeyOf(statement.Number(0));
}

void UpdateCursor::BindKey(Statement& statement, int parameter, Key key) const {
    if (keyIsRowNumber_) {
        statement.Bind(parameter, key);
    } else {
        statement.Bind(parameter, ValueOf(key));
    }
}

// A row that was appended before the keys were read stays the last one.
void UpdateCursor::ReadKeys() {
    if (keysRead_) {
        return;
    }
    Statement keys(database().handle(), "SELECT " + keyColumn_ + " FROM " + table_ + condition_);
    keys_.clear();
    while (keys.Step()) {
        keys_.push_back(ReadKey(keys));
    }
    keysRead_ = true;
    position_ = 0;
    if (standing_ == Standing::Row) {
        std::erase(keys_, key_);
        keys_.push_back(key_);
        position_ = keys_.size() - 1;
    }
}

bool UpdateCursor::Read(Key key, std::vector<Cell>& row) {
    BindKey(load_, 1, key);
    const bool isThere = load_.Step();
    for (std::size_t i = 0; isThere && i < row.size(); ++i) {
        load_.Read(static_cast<int>(i), row[i]);
    }
    load_.Reset();
    return isThere;
}

bool UpdateCursor::Load(Key key) {
    if (!Read(key, row_)) {
        return false;
    }
    key_ = key;
    standing_ = Standing::Row;
    rowLoaded_ = true;
    return true;
}

void UpdateCursor::SettleForward() {
    standing_ = Standing::End;
    rowLoaded_ = false;
    while (position_ < keys_.size() && !Load(keys_[position_])) {
        ++position_;
    }
}

bool UpdateCursor::HasRow() {
    if (pending_ == Pending::NewRow || (standing_ == Standing::Row && rowLoaded_)) {
        return true;
    }
    if (standing_ == Standing::End || (standing_ == Standing::Row && Load(key_))) {
        return standing_ == Standing::Row;
    }
    ReadKeys();
    SettleForward();
    return standing_ == Standing::Row;
}

Cell& UpdateCursor::RequireRow(int column) {
    if (!HasRow()) {
        RaiseNoCurrentRecord();
    }
    return row_[Index(column)];
}

Cell::Kind UpdateCursor::ReadNumber(int column, double& number) {
    const Cell& cell = RequireRow(column);
    if (cell.kind == Cell::Kind::Number) {
        number = cell.number;
    }
    return cell.kind;
}

void UpdateCursor::MoveFirst() {
    WritePending();
    ReadKeys();
    position_ = 0;
    SettleForward();
    if (standing_ == Standing::End) {
        RaiseNoCurrentRecord();
    }
}

void UpdateCursor::MoveLast() {
    WritePending();
    ReadKeys();
    for (position_ = keys_.size(); position_ > 0; --position_) {
        if (Load(keys_[position_ - 1])) {
            --position_;
            return;
        }
    }
    standing_ = Standing::End;
    RaiseNoCurrentRecord();
}

void UpdateCursor::MoveNext() {
    WritePending();
    if (!HasRow()) {
        RaiseNoCurrentRecord();
    }
    ReadKeys();
    ++position_;
    SettleForward();
}

std::int64_t UpdateCursor::RecordCount() {
    ReadKeys();
    return static_cast<std::int64_t>(keys_.size());
}

std::int64_t UpdateCursor::AbsolutePosition() {
    if (!HasRow()) {
        return 0;
    }
    ReadKeys();
    return static_cast<std::int64_t>(position_) + 1;
}

void UpdateCursor::SetAbsolutePosition(std::int64_t position) {
    WritePending();
    if (position < 1 || position > RecordCount()) {
        RaiseNoCurrentRecord();
    }
    position_ = static_cast<std::size_t>(position - 1);
    SettleForward();
}

const std::vector<Cell>* UpdateCursor::Peek(std::int64_t position) {
    if (position < 1 || position > RecordCount()) {
        RaiseNoCurrentRecord();
    }
    const auto index = static_cast<std::size_t>(position - 1);
    if (pending_ == Pending::Change && index == position_) {
        return &row_;
    }
    return Read(keys_[index], peeked_) ? &peeked_ : nullptr;
}

void UpdateCursor::SkipUntil(int column, const std::function<bool(double)>& accepts) {
    if (column == keyOrdinal_ && pending_ == Pending::None && HasRow()) {
        // The keys are at hand: no row needs to be read to be passed over.
        ReadKeys();
        const std::size_t begin = position_;
        while (position_ < keys_.size() && !accepts(ValueOf(keys_[position_]))) {
            ++position_;
        }
        if (position_ != begin) {
            SettleForward();
        }
    }
    Cursor::SkipUntil(column, accepts);
}

template <typename Value>
void UpdateCursor::SetCell(int column, const Value& value) {
    Cell& cell = RequireRow(column);
    if (!Assign(cell, Columns()[Index(column)].type, value)) {
        return;
    }
    if (pending_ == Pending::None) {
        changed_.assign(changed_.size(), false);
        pending_ = Pending::Change;
    }
    changed_[Index(column)] = true;
}

void UpdateCursor::AddNew() {
    WritePending();
    for (Cell& cell : row_) {
        cell.kind = Cell::Kind::Null;
    }
    rowLoaded_ = false;
    pending_ = Pending::NewRow;
}

void UpdateCursor::WritePending() {
    if (pending_ != Pending::None) {
        Update();
    }
}

void UpdateCursor::Update() {
    if (pending_ == Pending::None) {
        return;
    }
    database().RequireChangeable();
    if (pending_ == Pending::NewRow) {
        Insert();
    } else {
        WriteChanges();
    }
    pending_ = Pending::None;
}

void UpdateCursor::Insert() {
    if (!insert_) {
        QByteArray marks = "?";
        for (std::size_t i = 1; i < row_.size(); ++i) {
            marks += ", ?";
        }
        insert_ = Statement(database().handle(), "INSERT INTO " + table_ + " (" + ColumnList() +
                                                     ") VALUES (" + marks + ")");
    }
    for (std::size_t i = 0; i < row_.size(); ++i) {
        insert_.Bind(static_cast<int>(i) + 1, row_[i]);
    }
    insert_.Step();
    insert_.Reset();
    if (keyIsRowNumber_) {
        key_ = sqlite3_last_insert_rowid(database().handle());
    } else if (keyOrdinal_ >= 0) {
        key_ = KeyOf(row_[Index(keyOrdinal_)].number);
    }
    standing_ = Standing::Row;
    rowLoaded_ = true;
    if (keysRead_) {
        keys_.push_back(key_);
        position_ = keys_.size() - 1;
    }
}

void UpdateCursor::WriteChanges() {
    if (!update_ || updateWrites_ != changed_) {
        QByteArray list;
        for (std::size_t i = 0; i < row_.size(); ++i) {
            if (changed_[i]) {
                list +=
                    (list.isEmpty() ? "" : ", ") + QuotedName(Columns()[i].name).toUtf8() + " = ?";
            }
        }
        update_ = Statement(database().handle(),
                            "UPDATE " + table_ + " SET " + list + " WHERE " + keyColumn_ + " = ?");
        updateWrites_ = changed_;
    }
    int parameter = 0;
    for (std::size_t i = 0; i < row_.size(); ++i) {
        if (changed_[i]) {
            update_.Bind(++parameter, row_[i]);
        }
    }
    BindKey(update_, parameter + 1, key_);
    update_.Step();
    update_.Reset();
    if (sqlite3_changes(database().handle()) == 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The row isn't in the table any more."));
    }
    if (keyOrdinal_ >= 0 && changed_[Index(keyOrdinal_)]) {
        key_ = KeyOf(row_[Index(keyOrdinal_)].number);
        if (keysRead_) {
            keys_[position_] = key_;
        }
    }
}

void UpdateCursor::CancelUpdate() {
    if (pending_ != Pending::None) {
        pending_ = Pending::None;
        rowLoaded_ = false;
    }
}

void UpdateCursor::Delete() {
    if (pending_ == Pending::NewRow) {
        CancelUpdate();
        return;
    }
    if (!HasRow()) {
        RaiseNoCurrentRecord();
    }
    ReadKeys();
    database().RequireChangeable();
    Statement deletion(database().handle(),
                       "DELETE FROM " + table_ + " WHERE " + keyColumn_ + " = ?1");
    BindKey(deletion, 1, key_);
    deletion.Step();
    pending_ = Pending::None;
    keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(position_));
    SettleForward();
}

}  // namespace rillbook::ado
