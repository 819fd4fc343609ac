#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/access/AccessFile.h"

// How Access lays out a row: bytes in, values out, nothing of the file around them. What doesn't
// hang together raises ReadError with Damaged.
namespace rillbook::access {

// The numbers are the file's own.
enum class StoredType : std::uint8_t {
    YesNo = 1,
    Byte = 2,
    Integer = 3,
    Long = 4,
    Currency = 5,
    Single = 6,
    Double = 7,
    DateTime = 8,
    Text = 10,
    Object = 11,
    Memo = 12,
    Numeric = 16
};

struct StoredColumn {
    QString name;
    int type = 0;           // a StoredType, or one that no station has
    int size = 0;           // in bytes; of a text of variable length, the most that it can have
    int number = 0;         // among all columns that the table ever had
    bool isFixed = false;   // stands at fixedOffset in each row, else in a place of its own length
    int fixedOffset = 0;    // counted from behind the row's count of columns
    int variableIndex = 0;  // among the columns of variable length, dropped ones included
    int precision = 0;      // of a numeric
    int scale = 0;
};

struct TableLayout {
    bool isJet3 = false;
    int everColumns = 0;          // dropped ones included; a row has as many or fewer
    int everVariableColumns = 0;  // the same
    std::vector<StoredColumn> columns;
};

// Whether a table or a column can have the name.
bool IsName(const QString& text);

Column::Type ContentOf(const StoredColumn& column);

// Raises where columns overlap, are named or numbered alike, or have a name or a size that can't
// be.
void RequireConsistent(const TableLayout& table);

// The bytes of each column's value, nothing where it is NULL. A column that the table got after the
// row was written is NULL. A yes/no is a value without bytes where it is yes, and nothing where no.
// REQUIRES: RequireConsistent has passed the table.
using Fields = std::vector<std::optional<QByteArrayView>>;
Fields TakeApart(const TableLayout& table, QByteArrayView row);

// REQUIRES: the bytes of a memo are its text, wherever it lay.
Value DecodeValue(const TableLayout& table, const StoredColumn& column,
                  std::optional<QByteArrayView> bytes);

}  // namespace rillbook::access
