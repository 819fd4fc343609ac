#pragma once

#include <QStringView>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/ado/Cell.h"
#include "platform/ado/Database.h"

namespace rillbook::ado {

struct Column {
    QString name;
    ColumnType type;
};

// What a Recordset walks on. The operations are those of Recordset, with its errors; columns count
// from 0 and lie in range.
class Cursor {
public:
    virtual ~Cursor();
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    bool IsOpen() const { return database_ != nullptr; }
    const std::vector<Column>& Columns() const { return columns_; }

    // The database is about to close: gives up the statements. Nothing works afterwards.
    void LetGo() noexcept;

    virtual bool Eof() = 0;
    virtual void MoveFirst() = 0;
    virtual void MoveLast() = 0;
    virtual void MoveNext() = 0;
    virtual std::int64_t RecordCount() = 0;
    virtual std::int64_t AbsolutePosition() = 0;

    // Moves forward from the current row, itself included, to the first whose number in the column
    // is accepted; NULL and texts never are.
    virtual void SkipUntil(int column, const std::function<bool(double)>& accepts);

    // These raise adErrNoCurrentRecord where there is no row.
    virtual Cell::Kind Kind(int column) = 0;
    // The kind as well; sets the number where it is one.
    virtual Cell::Kind ReadNumber(int column, double& number) = 0;
    // REQUIRES: Kind says so.
    virtual double Number(int column) = 0;
    virtual QString Text(int column) = 0;

    // A cursor that holds no keys raises adErrNotUpdatable, as these do.
    virtual void SetAbsolutePosition(std::int64_t position);
    // The cells of a row by its number, good until the next call; null where it has left the table.
    virtual const std::vector<Cell>* Peek(std::int64_t position);
    virtual void Set(int column, Null);
    virtual void Set(int column, double value);
    virtual void Set(int column, const QString& text);
    virtual void AddNew();
    virtual void Update();
    virtual void CancelUpdate();
    virtual void Delete();

protected:
    explicit Cursor(Database& database);

    Database& database() const { return *database_; }
    void TakeColumns(const Statement& statement);

private:
    virtual void DropStatements() noexcept = 0;

    Database* database_;
    std::vector<Column> columns_;
};

[[noreturn]] void RaiseNoCurrentRecord();

}  // namespace rillbook::ado
