#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

#include "platform/ado/Recordset.h"

namespace rillbook::ado {

// What a column's declared type says about the values that it takes. A type that isn't known takes
// numbers and texts as they are.
struct ColumnType {
    enum class Kind : std::uint8_t { Other, Single, SmallInt, Double, DateTime, Text };
    Kind kind = Kind::Other;
    qsizetype width = 0;  // of a Text, in characters; 0 is any
};

// Case and blanks don't count.
ColumnType ParseColumnType(const QByteArray& declared);

// A value outside the database. Its text keeps its memory when a number takes its place, so that
// appending readings allocates nothing.
struct Cell {
    enum class Kind : std::uint8_t { Null, Number, Text };
    Kind kind = Kind::Null;
    double number = 0;
    QString text;
};

// Each converts as Field::SetValue promises and says whether the cell differs from before; where it
// raises, the cell is as it was.
bool Assign(Cell& cell, const ColumnType& type, Null);
bool Assign(Cell& cell, const ColumnType& type, double value);
bool Assign(Cell& cell, const ColumnType& type, const QString& text);

// The number that a text is as a whole, point as decimal sign; nothing for infinity and NaN.
std::optional<double> WholeNumber(const QString& text);

// A number of a column as Field::Text shows it.
QString NumberText(const ColumnType& type, double value);

}  // namespace rillbook::ado
