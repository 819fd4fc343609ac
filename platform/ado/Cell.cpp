#include "platform/ado/Cell.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "platform/text/DateTime.h"
#include "platform/text/Numbers.h"

namespace rillbook::ado {

namespace {

// The calendar of date-times: 100-01-01 to the last moment of 9999-12-31.
constexpr double kFirstDay = -657434;
constexpr double kDayAfterLast = 2958466;

[[noreturn]] void RaiseMismatch() {
    throw AdoError(adErrTypeMismatch, QStringLiteral("The value doesn't suit the column's type."));
}

double RequireRange(double value, bool inRange) {
    if (!inRange) {
        RaiseMismatch();
    }
    return value;
}

double ConvertNumber(ColumnType::Kind kind, double value) {
    switch (kind) {
        case ColumnType::Kind::Single:
            RequireRange(value, std::abs(value) <= std::numeric_limits<float>::max());
            return static_cast<double>(static_cast<float>(value));
        case ColumnType::Kind::SmallInt: {
            const double whole = std::nearbyint(value);  // halves to even
            return RequireRange(whole, whole >= std::numeric_limits<std::int16_t>::min() &&
                                           whole <= std::numeric_limits<std::int16_t>::max());
        }
        case ColumnType::Kind::DateTime:
            return RequireRange(value, value >= kFirstDay && value < kDayAfterLast);
        default:
            return value;
    }
}

bool AssignNumber(Cell& cell, double value) {
    const bool same = cell.kind == Cell::Kind::Number && cell.number == value;
    cell.kind = Cell::Kind::Number;
    cell.number = value;
    return !same;
}

bool AssignText(Cell& cell, const ColumnType& type, const QString& text) {
    if (type.width > 0 && text.size() > type.width) {
        throw AdoError(adErrTextTooLong,
                       QStringLiteral("The text is longer than %1 characters.").arg(type.width));
    }
    const bool same = cell.kind == Cell::Kind::Text && cell.text == text;
    cell.kind = Cell::Kind::Text;
    cell.text = text;
    return !same;
}

}  // namespace

ColumnType ParseColumnType(const QByteArray& declared) {
    QByteArray name = declared.toUpper();
    name.replace(' ', QByteArray());
    qsizetype width = 0;
    const qsizetype open = name.indexOf('(');
    if (open >= 0 && name.endsWith(')')) {
        width = name.mid(open + 1, name.size() - open - 2).toInt();
        name.truncate(open);
    }
    if (name == "SINGLE") {
        return {ColumnType::Kind::Single, 0};
    }
    if (name == "SMALLINT") {
        return {ColumnType::Kind::SmallInt, 0};
    }
    if (name == "DOUBLE") {
        return {ColumnType::Kind::Double, 0};
    }
    if (name == "DATETIME") {
        return {ColumnType::Kind::DateTime, 0};
    }
    if (name == "TEXT") {
        return {ColumnType::Kind::Text, width};
    }
    return {};
}

bool Assign(Cell& cell, const ColumnType&, Null) {
    const bool same = cell.kind == Cell::Kind::Null;
    cell.kind = Cell::Kind::Null;
    return !same;
}

bool Assign(Cell& cell, const ColumnType& type, double value) {
    if (!std::isfinite(value)) {
        RaiseMismatch();
    }
    if (type.kind == ColumnType::Kind::Text) {
        return AssignText(cell, type, PlainNumberText(value));
    }
    return AssignNumber(cell, ConvertNumber(type.kind, value));
}

bool Assign(Cell& cell, const ColumnType& type, const QString& text) {
    if (type.kind == ColumnType::Kind::Text || type.kind == ColumnType::Kind::Other) {
        return AssignText(cell, type, text);
    }
    const std::optional<double> value =
        type.kind == ColumnType::Kind::DateTime ? ReadDateTime(text) : WholeNumber(text);
    if (!value) {
        RaiseMismatch();
    }
    return AssignNumber(cell, ConvertNumber(type.kind, *value));
}

std::optional<double> WholeNumber(const QString& text) {
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

QString NumberText(const ColumnType& type, double value) {
    if (type.kind == ColumnType::Kind::DateTime) {
        return GeneralDateText(value);
    }
    if (type.kind != ColumnType::Kind::Single ||
        std::abs(value) > std::numeric_limits<float>::max() ||
        static_cast<double>(static_cast<float>(value)) != value) {
        return PlainNumberText(value);
    }
    // The digits that a 32-bit reading was given, not those of its neighbour among 64-bit numbers:
    // 1.2, not 1.20000004768372.
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<float>(value)).ptr;
    double shortest = value;
    std::from_chars(digits, end, shortest);
    return PlainNumberText(shortest);
}

}  // namespace rillbook::ado
