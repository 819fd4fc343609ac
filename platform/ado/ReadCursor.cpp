#include "platform/ado/ReadCursor.h"

#include "platform/ado/SelectParts.h"
#include "platform/ado/SqlTokens.h"

namespace rillbook::ado {

ReadCursor::ReadCursor(Database& database, const QByteArray& select)
    : Cursor(database), select_(select), statement_(database.handle(), select) {
    TakeColumns(statement_);
    Advance();
}

void ReadCursor::Advance() {
    atEnd_ = true;  // also where reading fails, for a failed statement begins anew
    if (statement_.Step()) {
        atEnd_ = false;
        ++row_;
        return;
    }
    count_ = row_;
}

void ReadCursor::Rewind() {
    // The new walk begins before the old one ends, so that it sees the same state of the data.
    Statement again(database().handle(), select_);
    atEnd_ = !again.Step();
    row_ = atEnd_ ? 0 : 1;
    statement_ = std::move(again);
}

void ReadCursor::MoveFirst() {
    if (atEnd_ || row_ > 1) {
        Rewind();
    }
    if (atEnd_) {
        RaiseNoCurrentRecord();
    }
}

void ReadCursor::MoveLast() {
    if (atEnd_) {
        MoveFirst();
    }
    const std::int64_t last = RecordCount();
    while (row_ < last && !atEnd_) {
        Advance();
    }
}

void ReadCursor::MoveNext() {
    if (atEnd_) {
        RaiseNoCurrentRecord();
    }
    Advance();
}

std::int64_t ReadCursor::RecordCount() {
    if (!count_) {
        // Without the columns and the order, the rows needn't be taken apart to be counted.
        const std::optional<SelectParts> parts = PartsOfSelect(select_);
        const QByteArray rows =
            parts ? QuotedName(parts->table).toUtf8() + ' ' + parts->where : '(' + select_ + ')';
        Statement counting(database().handle(), "SELECT count(*) FROM " + rows);
        counting.Step();
        count_ = counting.Integer(0);
    }
    return *count_;
}

Cell::Kind ReadCursor::Kind(int column) {
    if (atEnd_) {
        RaiseNoCurrentRecord();
    }
    return statement_.Kind(column);
}

Cell::Kind ReadCursor::ReadNumber(int column, double& number) {
    if (atEnd_) {
        RaiseNoCurrentRecord();
    }
    return statement_.ReadNumber(column, number);
}

}  // namespace rillbook::ado
