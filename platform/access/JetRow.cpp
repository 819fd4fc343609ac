#include "platform/access/JetRow.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "platform/access/StoredBytes.h"
#include "platform/text/CodePage.h"

namespace rillbook::access {

namespace {

// The range of date-times that Access can show, the years 100 to 9999.
constexpr double kFirstDay = -657434;
constexpr double kBehindLastDay = 2958466;

bool Is(const StoredColumn& column, StoredType type) {
    return column.type == static_cast<int>(type);
}

// Nothing where the type doesn't settle the size.
std::optional<int> SizeOf(int type) {
    switch (StoredType{static_cast<std::uint8_t>(type)}) {
        case StoredType::YesNo:
            return 0;
        case StoredType::Byte:
            return 1;
        case StoredType::Integer:
            return 2;
        case StoredType::Long:
        case StoredType::Single:
            return 4;
        case StoredType::Currency:
        case StoredType::Double:
        case StoredType::DateTime:
            return 8;
        case StoredType::Numeric:
            return 17;
        case StoredType::Text:
        case StoredType::Object:
        case StoredType::Memo:
            break;
    }
    return std::nullopt;
}

// The types that a file of these kinds has, those that no station has among them: 9 bytes,
// 13 and 14 of unknown use, 15 identifiers.
bool IsType(int type) {
    constexpr int kLast = static_cast<int>(StoredType::Numeric);
    return type >= static_cast<int>(StoredType::YesNo) && type <= kLast;
}

// Where the fixed columns end that a row of the count of columns has.
int FixedEnd(const TableLayout& table, int rowColumns) {
    int end = 0;
    for (const StoredColumn& column : table.columns) {
        if (column.isFixed && column.size > 0 && column.number < rowColumns) {
            end = std::max(end, column.fixedOffset + column.size);
        }
    }
    return end;
}

bool HasDropped(const TableLayout& table) {
    return table.everColumns != static_cast<int>(table.columns.size());
}

// Whether bytes may lie between and behind the fixed columns: those of dropped ones, and a byte for
// a yes/no, whose value isn't there.
bool MayHaveGaps(const TableLayout& table) {
    return HasDropped(table) ||
           std::any_of(table.columns.begin(), table.columns.end(),
                       [](const StoredColumn& column) { return Is(column, StoredType::YesNo); });
}

// A row from its two ends inwards: the count of columns in front; behind, the null mask and before
// it, where the table has columns of variable length, where these begin.
class RowParts {
public:
    RowParts(const TableLayout& table, QByteArrayView row)
        : table_(table), row_(row), headSize_(table.isJet3 ? 1 : 2) {
        columns_ = table.isJet3 ? Read<quint8>(row) : Read<quint16>(row);
        Require(columns_ > 0 && columns_ <= table.everColumns);
        mask_ = row.size() - (columns_ + 7) / 8;
        Require(mask_ >= headSize_);
        const bool neverVariable =
            table.everVariableColumns == 0 ||
            (!HasDropped(table) && std::none_of(table.columns.begin(), table.columns.end(),
                                                [this](const StoredColumn& column) {
                                                    return !column.isFixed &&
                                                           column.number < columns_;
                                                }));
        if (neverVariable) {
            RequireFixedArea(mask_);
        } else if (table.isJet3) {
            ReadJet3Offsets();
        } else {
            ReadJet4Offsets();
        }
    }

    bool Has(const StoredColumn& column) const {
        return column.number < columns_ &&
               ((row_[mask_ + column.number / 8] >> (column.number % 8)) & 1) != 0;
    }

    std::optional<QByteArrayView> Field(const StoredColumn& column) const {
        if (column.isFixed) {
            return Has(column)
                       ? std::optional(row_.sliced(headSize_ + column.fixedOffset, column.size))
                       : std::nullopt;
        }
        const bool isThere = column.variableIndex + 1 < static_cast<int>(offsets_.size());
        if (!isThere) {
            Require(!Has(column));
            return std::nullopt;
        }
        const auto index = static_cast<std::size_t>(column.variableIndex);
        const int begin = offsets_[index];
        const int size = offsets_[index + 1] - begin;
        if (!Has(column)) {
            Require(size == 0);
            return std::nullopt;
        }
        return row_.sliced(begin, size);
    }

private:
    void RequireFixedArea(qsizetype end) const {
        const int needed = FixedEnd(table_, columns_);
        const qsizetype area = end - headSize_;
        Require(MayHaveGaps(table_) ? area >= needed : area == needed);
    }

    // `table` is where the offsets begin in the row, behind all values.
    void RequireOffsets(qsizetype table) const {
        RequireFixedArea(offsets_.front());
        // A row that was made shorter in its place has something of the longer one, or zeros,
        // between its values and the offsets.
        Require(std::is_sorted(offsets_.begin(), offsets_.end()) && offsets_.back() <= table);
        if (!HasDropped(table_)) {
            const auto expected = std::count_if(
                table_.columns.begin(), table_.columns.end(), [this](const StoredColumn& column) {
                    return !column.isFixed && column.number < columns_;
                });
            Require(static_cast<std::ptrdiff_t>(offsets_.size()) == expected + 1);
        }
    }

    void ReadJet4Offsets() {
        const int count = Read<quint16>(row_, mask_ - 2);
        Require(count <= table_.everVariableColumns);
        for (int i = 0; i <= count; ++i) {
            offsets_.push_back(Read<quint16>(row_, mask_ - 2 - 2 * (i + 1)));
        }
        RequireOffsets(mask_ - 2 - 2 * (count + 1));
    }

    // One byte each, and between them and their count the indexes at which the next 256 bytes of
    // the row begin; there is one more of those where the row's length asks for it and the values'
    // doesn't.
    void ReadJet3Offsets() {
        const int count = Read<quint8>(row_, mask_ - 1);
        Require(count <= table_.everVariableColumns);
        auto jumps = static_cast<int>((row_.size() - 1) / 256);
        const qsizetype first = mask_ - 2 - jumps;
        const qsizetype behindValues = first - count;
        if (behindValues / 256 < jumps) {
            --jumps;
        }
        int used = 0;
        for (int i = 0; i <= count; ++i) {
            while (used < jumps && Read<quint8>(row_, mask_ - 2 - used) == i) {
                ++used;
            }
            offsets_.push_back(Read<quint8>(row_, first - i) + 256 * used);
        }
        RequireOffsets(behindValues);
    }

    const TableLayout& table_;
    QByteArrayView row_;
    int headSize_;
    int columns_ = 0;
    qsizetype mask_ = 0;        // where it begins
    std::vector<int> offsets_;  // of the columns of variable length, and where the last one ends
};

// Two bytes a character; behind the mark FF FE one byte for those whose other one is 0, a zero byte
// changing from the one to the other.
QString Jet4Text(QByteArrayView bytes) {
    const bool isPacked = bytes.size() >= 2 && bytes[0] == '\xFF' && bytes[1] == '\xFE';
    QString text;
    bool isShort = isPacked;
    for (qsizetype i = isPacked ? 2 : 0; i < bytes.size();) {
        if (isPacked && bytes[i] == 0) {
            isShort = !isShort;
            ++i;
        } else if (isShort) {
            text.append(QChar(ushort{Read<quint8>(bytes, i)}));
            ++i;
        } else {
            text.append(QChar(Read<quint16>(bytes, i)));
            i += 2;
        }
    }
    Require(text.isValidUtf16());
    return text;
}

// An integer of four words, the highest first, that is divided by 10 to the scale.
double NumericOf(QByteArrayView bytes, int scale) {
    const auto sign = Read<quint8>(bytes);
    Require(sign == 0 || sign == 0x80);
    std::array<quint32, 4> words;
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = Read<quint32>(bytes, 1 + 4 * static_cast<qsizetype>(i));
    }
    QByteArray digits;
    for (int i = 0; i < 39; ++i) {
        quint64 rest = 0;
        for (quint32& word : words) {
            const quint64 part = (rest << 32U) + word;
            word = static_cast<quint32>(part / 10);
            rest = part % 10;
        }
        digits.prepend(static_cast<char>('0' + rest));
    }
    // Through the decimal text, so that the double is the nearest one.
    const double value = (digits + 'e' + QByteArray::number(-scale)).toDouble();
    return sign == 0 ? value : -value;
}

double DateTimeOf(QByteArrayView bytes) {
    const auto days = Read<double>(bytes);
    Require(std::isfinite(days) && days >= kFirstDay && days < kBehindLastDay);
    return days;
}

double NumberOf(const StoredColumn& column, QByteArrayView bytes) {
    switch (StoredType{static_cast<std::uint8_t>(column.type)}) {
        case StoredType::Byte:
            return Read<quint8>(bytes);
        case StoredType::Integer:
            return Read<qint16>(bytes);
        case StoredType::Long:
            return Read<qint32>(bytes);
        case StoredType::Currency:
            return (QByteArray::number(Read<qint64>(bytes)) + "e-4").toDouble();
        case StoredType::Single:
            return double{Read<float>(bytes)};
        case StoredType::Double:
            return Read<double>(bytes);
        case StoredType::DateTime:
            return DateTimeOf(bytes);
        case StoredType::Numeric:
            return NumericOf(bytes, column.scale);
        default:
            return 0;
    }
}

}  // namespace

bool IsName(const QString& text) {
    constexpr qsizetype kLongest = 64;
    return !text.isEmpty() && text.size() <= kLongest &&
           std::none_of(text.begin(), text.end(), [](QChar character) {
               return character.category() == QChar::Other_Control ||
                      character == QChar::ReplacementCharacter;
           });
}

Column::Type ContentOf(const StoredColumn& column) {
    if (Is(column, StoredType::Text) || Is(column, StoredType::Memo)) {
        return Column::Type::Text;
    }
    if (Is(column, StoredType::DateTime)) {
        return Column::Type::DateTime;
    }
    return SizeOf(column.type) ? Column::Type::Number : Column::Type::Other;
}

void RequireConsistent(const TableLayout& table) {
    std::vector<bool> numbers(static_cast<std::size_t>(table.everColumns));
    std::vector<bool> variables(static_cast<std::size_t>(table.everVariableColumns));
    std::vector<std::pair<int, int>> places;
    const auto takeOnce = [](std::vector<bool>& taken, int index) {
        Require(index >= 0 && index < static_cast<int>(taken.size()));
        const auto at = static_cast<std::size_t>(index);
        Require(!taken[at]);
        taken[at] = true;
    };
    QStringList names;
    for (const StoredColumn& column : table.columns) {
        Require(IsName(column.name) && !names.contains(column.name, Qt::CaseInsensitive));
        names.append(column.name);
        takeOnce(numbers, column.number);
        Require(IsType(column.type));
        const std::optional<int> size = SizeOf(column.type);
        Require(!size || *size == column.size);
        Require(!Is(column, StoredType::Numeric) ||
                (column.precision <= 28 && column.scale <= column.precision));
        const bool isLong = Is(column, StoredType::Memo) || Is(column, StoredType::Object);
        Require(!isLong || (!column.isFixed && column.size == 0));
        if (column.isFixed) {
            Require(column.fixedOffset >= 0 && column.size >= 0);
            if (column.size > 0) {  // a yes/no lies anywhere
                places.emplace_back(column.fixedOffset, column.fixedOffset + column.size);
            }
        } else {
            takeOnce(variables, column.variableIndex);
        }
    }
    std::sort(places.begin(), places.end());
    int end = 0;
    for (const auto& [begin, behind] : places) {
        Require(MayHaveGaps(table) ? begin >= end : begin == end);
        end = std::max(end, behind);
    }
}

Fields TakeApart(const TableLayout& table, QByteArrayView row) {
    const RowParts parts(table, row);
    Fields fields;
    fields.reserve(table.columns.size());
    for (const StoredColumn& column : table.columns) {
        if (Is(column, StoredType::YesNo)) {
            fields.push_back(parts.Has(column) ? std::optional(QByteArrayView()) : std::nullopt);
        } else {
            fields.push_back(parts.Field(column));
        }
    }
    return fields;
}

Value DecodeValue(const TableLayout& table, const StoredColumn& column,
                  std::optional<QByteArrayView> bytes) {
    if (Is(column, StoredType::YesNo)) {
        return {.kind = Value::Kind::Number, .number = bytes ? 1.0 : 0.0, .text = {}};
    }
    const Column::Type content = ContentOf(column);
    if (!bytes || content == Column::Type::Other) {
        return {};
    }
    if (content != Column::Type::Text) {
        return {.kind = Value::Kind::Number, .number = NumberOf(column, *bytes), .text = {}};
    }
    const QString text = table.isJet3 ? DecodeText(bytes->toByteArray()) : Jet4Text(*bytes);
    const int characterSize = table.isJet3 ? 1 : 2;
    Require(Is(column, StoredType::Memo) || text.size() * characterSize <= column.size);
    return {.kind = Value::Kind::Text, .number = 0, .text = text};
}

}  // namespace rillbook::access
