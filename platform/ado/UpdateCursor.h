#pragma once

#include <vector>

#include "platform/ado/Cursor.h"

namespace rillbook::ado {

// Holds the keys of its rows, read when the first row is asked for, and the values of one row.
// A row that has left the table since is passed over.
class UpdateCursor : public Cursor {
public:
    UpdateCursor(Database& database, const QByteArray& select);

    bool Eof() override { return !HasRow(); }
    void MoveFirst() override;
    void MoveLast() override;
    void MoveNext() override;
    std::int64_t RecordCount() override;
    std::int64_t AbsolutePosition() override;
    void SetAbsolutePosition(std::int64_t position) override;
    const std::vector<Cell>* Peek(std::int64_t position) override;
    void SkipUntil(int column, const std::function<bool(double)>& accepts) override;
    Cell::Kind Kind(int column) override { return RequireRow(column).kind; }
    Cell::Kind ReadNumber(int column, double& number) override;
    double Number(int column) override { return row_[Index(column)].number; }
    QString Text(int column) override { return row_[Index(column)].text; }

    void Set(int column, Null) override { SetCell(column, Null{}); }
    void Set(int column, double value) override { SetCell(column, value); }
    void Set(int column, const QString& text) override { SetCell(column, text); }
    void AddNew() override;
    void Update() override;
    void CancelUpdate() override;
    void Delete() override;

private:
    // A row number, or the bits of a numeric key value.
    using Key = std::int64_t;
    enum class Pending { None, Change, NewRow };
    enum class Standing {
        Unknown,  // nothing has been asked for
        Row,      // on the row of key_
        End
    };

    static std::size_t Index(int column) { return static_cast<std::size_t>(column); }
    static Key KeyOf(double value);
    static double ValueOf(Key key);

    void DropStatements() noexcept override;
    void FindKey(const QString& table);
    QByteArray ColumnList() const;

    template <typename Value>
    void SetCell(int column, const Value& value);
    Cell& RequireRow(int column);
    bool HasRow();
    bool Read(Key key, std::vector<Cell>& row);
    bool Load(Key key);
    void ReadKeys();
    void SettleForward();
    void WritePending();
    void Insert();
    void WriteChanges();
    Key ReadKey(const Statement& statement) const;
    void BindKey(Statement& statement, int parameter, Key key) const;

    QByteArray table_;      // quoted
    QByteArray keyColumn_;  // quoted, or SQLite's name of the row number
    QByteArray condition_;
    bool keyIsRowNumber_ = true;
    int keyOrdinal_ = -1;  // of the key among the columns, where it is one of them

    bool keysRead_ = false;
    std::vector<Key> keys_;
    std::size_t position_ = 0;  // in keys_

    Standing standing_ = Standing::Unknown;
    Key key_ = 0;
    bool rowLoaded_ = false;  // row_ holds the row of key_
    std::vector<Cell> row_;
    std::vector<Cell> peeked_;
    Pending pending_ = Pending::None;
    std::vector<bool> changed_;

    Statement load_;
    Statement insert_;
    Statement update_;
    std::vector<bool> updateWrites_;  // the columns that update_ is compiled for
};

}  // namespace rillbook::ado
