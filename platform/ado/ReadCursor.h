#pragma once

#include <optional>

#include "platform/ado/Cursor.h"

namespace rillbook::ado {

// Streams the rows of a query and holds none. Until the end of the rows it sees the data as they
// were at its opening, whatever other connections write.
class ReadCursor : public Cursor {
public:
    ReadCursor(Database& database, const QByteArray& select);

    bool Eof() override { return atEnd_; }
    void MoveFirst() override;
    void MoveLast() override;
    void MoveNext() override;
    std::int64_t RecordCount() override;
    std::int64_t AbsolutePosition() override { return atEnd_ ? 0 : row_; }
    Cell::Kind Kind(int column) override;
    Cell::Kind ReadNumber(int column, double& number) override;
    double Number(int column) override { return statement_.Number(column); }
    QString Text(int column) override { return statement_.Text(column); }

private:
    void DropStatements() noexcept override { statement_ = {}; }
    void Advance();
    void Rewind();

    QByteArray select_;
    Statement statement_;
    bool atEnd_ = false;
    std::int64_t row_ = 0;  // the current one, from 1; at the end, the last one
    std::optional<std::int64_t> count_;
};

}  // namespace rillbook::ado
