#include "platform/access/JetReader.h"

#include <sys/stat.h>

#include <QtEndian>
#include <array>
#include <set>

#include "platform/access/StoredBytes.h"

namespace rillbook::access {

namespace {

using Cause = ReadError::Cause;

constexpr std::uint32_t kCatalogPage = 2;
constexpr char kDataPage = 1;
constexpr char kTablePage = 2;
constexpr quint32 kLongValueOwner = 0x4C41564C;  // "LVAL"

// A row's entry in the head of its page.
constexpr int kDeletedRow = 0x8000;
constexpr int kElsewhere = 0x4000;
constexpr int kRowBegin = 0x1FFF;

constexpr quint32 kInline = 0x80000000;
constexpr quint32 kOnePage = 0x40000000;
constexpr quint32 kLongestValue = 8U << 20U;  // in bytes; notes of a field visit are some hundred

constexpr int kTableObject = 1;
constexpr quint32 kSystemObject = 0x80000002;

StoredColumn StoredColumnOf(const MdbColumn& column) {
    return {.name = QString::fromUtf8(column.name),
            .type = column.col_type,
            .size = column.col_size,
            .number = column.col_num,
            .isFixed = column.is_fixed != 0,
            .fixedOffset = column.fixed_offset,
            .variableIndex = static_cast<int>(column.var_col_num),
            .precision = column.col_prec,
            .scale = column.col_scale};
}

const StoredColumn& ColumnNamed(const TableLayout& layout, const char* name) {
    for (const StoredColumn& column : layout.columns) {
        if (column.name.compare(QLatin1String(name), Qt::CaseInsensitive) == 0) {
            return column;
        }
    }
    Raise(Cause::Damaged);
}

}  // namespace

JetReader::JetReader(int descriptor) {
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(descriptor);
    file_.reset(mdb_open(path.constData(), MDB_NOFLAGS), [](MdbHandle* handle) {
        if (handle != nullptr) {
            mdb_close(handle);
        }
    });
    struct stat status {};
    Require(file_ != nullptr && fstat(descriptor, &status) == 0);
    pageSize_ = file_->fmt->pg_size;
    Require(status.st_size % pageSize_ == 0);
    pages_ = static_cast<std::uint32_t>(status.st_size / pageSize_);
    RequireUnprotected();
}

// The library has taken the mask off the head of the file. A password lies there as it is in Jet 3;
// in Jet 4 the whole days of the date of creation lie over it, again and again.
void JetReader::RequireUnprotected() const {
    const bool isJet3 = IS_JET3(file_);
    const unsigned char* head = file_->pg_buf;
    constexpr std::size_t kPassword = 0x42;
    const std::size_t size = isJet3 ? 20 : 40;
    std::array<unsigned char, 4> mask{};
    if (!isJet3) {
        const auto created = qFromLittleEndian<double>(head + 0x72);
        Require(created > -1e9 && created < 1e9);
        qToLittleEndian(static_cast<qint32>(created), mask.data());
    }
    for (std::size_t i = 0; i < size; ++i) {
        if (head[kPassword + i] != mask[i % mask.size()]) {
            Raise(Cause::Protected);
        }
    }
    if (file_->f->db_key != 0) {
        Raise(Cause::Encrypted);
    }
}

QByteArrayView JetReader::ReadPage(std::uint32_t page) {
    Require(page > 0 && page < pages_);
    file_->cur_pg = 0;  // the library reads other pages to the same place and forgets to say so
    Require(mdb_read_pg(file_.get(), page) == pageSize_);
    return {file_->pg_buf, pageSize_};
}

bool JetReader::IsDataPage(QByteArrayView page, std::uint32_t owner) {
    return page[0] == kDataPage && Read<quint32>(page, 4) == owner;
}

QByteArray JetReader::ReadDataPage(std::uint32_t page, std::uint32_t owner) {
    const QByteArrayView bytes = ReadPage(page);
    Require(IsDataPage(bytes, owner));
    return bytes.toByteArray();
}

int JetReader::CountRows(QByteArrayView page) const {
    const qsizetype at = file_->fmt->row_count_offset;
    const int rows = Read<quint16>(page, at);
    Require(at + 2 + 2 * qsizetype{rows} <= pageSize_);
    return rows;
}

// Rows lie one before the other from the end of the page on, the places of deleted ones included.
JetReader::RowPlace JetReader::FindRow(QByteArrayView page, int row) const {
    const int rows = CountRows(page);
    Require(row < rows);
    const qsizetype table = file_->fmt->row_count_offset + 2;
    const int entry = Read<quint16>(page, table + 2 * row);
    const qsizetype begin = entry & kRowBegin;
    const qsizetype end =
        row == 0 ? pageSize_ : Read<quint16>(page, table + 2 * (row - 1)) & kRowBegin;
    Require(begin >= table + 2 * rows && begin <= end && end <= pageSize_);
    return {.bytes = page.sliced(begin, end - begin),
            .isDeleted = (entry & kDeletedRow) != 0,
            .isElsewhere = (entry & kElsewhere) != 0};
}

// A row that outgrew its page lies on another one of its table, deleted there so that it isn't met
// twice. A place is the number of the page and, in the low byte, of the row on it.
QByteArray JetReader::FollowRow(std::uint32_t owner, quint32 place) {
    constexpr int kLongestChain = 8;
    for (int i = 0; i < kLongestChain; ++i) {
        const QByteArray page = ReadDataPage(place >> 8U, owner);
        const RowPlace row = FindRow(page, static_cast<int>(place & 0xFFU));
        Require(row.isDeleted);
        if (!row.isElsewhere) {
            return row.bytes.toByteArray();
        }
        place = Read<quint32>(row.bytes, 0);
    }
    Raise(Cause::Damaged);
}

// A long value is its length, a place and four bytes of no use, then the value itself where it
// stands in the row. Else it is the row at the place, or a chain of rows that begin with the place
// of the next one.
QByteArray JetReader::ReadLongValue(QByteArrayView field) {
    constexpr qsizetype kHead = 12;
    const auto head = Read<quint32>(field, 0);
    const quint32 length = head & ~(kInline | kOnePage);
    if (length > kLongestValue) {
        Raise(Cause::TooMuch);
    }
    if ((head & kInline) != 0) {
        Require(field.size() == kHead + qsizetype{length});
        return field.sliced(kHead).toByteArray();
    }
    QByteArray value;
    auto place = Read<quint32>(field, 4);
    while (place != 0) {
        const QByteArray page = ReadDataPage(place >> 8U, kLongValueOwner);
        const RowPlace row = FindRow(page, static_cast<int>(place & 0xFFU));
        Require(!row.isDeleted && !row.isElsewhere);
        if ((head & kOnePage) != 0) {
            value = row.bytes.toByteArray();
            break;
        }
        place = Read<quint32>(row.bytes, 0);
        value.append(row.bytes.sliced(4));
        // A chain that bites its tail outgrows its length, unless it is of nothing.
        Require(row.bytes.size() > 4 && value.size() <= qsizetype{length});
    }
    Require(value.size() == qsizetype{length});
    return value;
}

JetReader::Definition JetReader::ReadDefinition(std::uint32_t page) {
    const QByteArrayView bytes = ReadPage(page);
    Require(bytes[0] == kTablePage);
    const qsizetype counts = file_->fmt->tab_num_cols_offset;
    Definition definition;
    definition.page = page;
    TableLayout& layout = definition.layout;
    layout.isJet3 = IS_JET3(file_);
    layout.everColumns = Read<quint16>(bytes, counts - 4);
    layout.everVariableColumns = Read<quint16>(bytes, counts - 2);

    definition.entry = std::make_shared<MdbCatalogEntry>();
    definition.entry->mdb = file_.get();
    definition.entry->object_type = MDB_TABLE;
    definition.entry->table_pg = page;
    definition.table.reset(mdb_read_table(definition.entry.get()), [](MdbTableDef* table) {
        if (table != nullptr) {
            mdb_free_tabledef(table);
        }
    });
    MdbTableDef* table = definition.table.get();
    Require(table != nullptr && table->usage_map != nullptr && table->map_sz > 0);
    const GPtrArray* columns = mdb_read_columns(table);
    Require(columns != nullptr && columns->len == table->num_cols && columns->len > 0);
    for (guint i = 0; i < columns->len; ++i) {
        layout.columns.push_back(StoredColumnOf(*static_cast<const MdbColumn*>(columns->pdata[i])));
    }
    RequireConsistent(layout);
    return definition;
}

template <typename Take>
std::uint32_t JetReader::ReadRows(const Definition& definition, Take take) {
    const MdbTableDef& table = *definition.table;
    std::uint32_t rows = 0;
    std::uint32_t number = 0;
    for (;;) {
        const gint32 next = mdb_map_find_next(file_.get(), table.usage_map,
                                              static_cast<unsigned int>(table.map_sz), number);
        if (next == 0) {
            break;
        }
        Require(next > static_cast<gint32>(number));
        number = static_cast<std::uint32_t>(next);
        const QByteArray page = ReadPage(number).toByteArray();
        if (!IsDataPage(page, definition.page)) {
            continue;  // the count tells whether rows are missing
        }
        for (int i = 0, count = CountRows(page); i < count; ++i) {
            const RowPlace row = FindRow(page, i);
            if (row.isDeleted) {
                continue;
            }
            take(row.isElsewhere ? FollowRow(definition.page, Read<quint32>(row.bytes, 0))
                                 : row.bytes.toByteArray());
            ++rows;
        }
    }
    Require(rows == table.num_rows);
    return rows;
}

std::vector<Value> JetReader::DecodeRow(const TableLayout& layout, QByteArrayView row) {
    const Fields fields = TakeApart(layout, row);
    std::vector<Value> values;
    values.reserve(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const StoredColumn& column = layout.columns[i];
        if (fields[i] && column.type == static_cast<int>(StoredType::Memo)) {
            values.push_back(DecodeValue(layout, column, ReadLongValue(*fields[i])));
        } else {
            values.push_back(DecodeValue(layout, column, fields[i]));
        }
    }
    return values;
}

std::vector<JetReader::Table> JetReader::ReadCatalog() {
    const Definition catalog = ReadDefinition(kCatalogPage);
    const auto indexOf = [&catalog](const char* name) {
        return static_cast<std::size_t>(&ColumnNamed(catalog.layout, name) -
                                        catalog.layout.columns.data());
    };
    const std::size_t id = indexOf("Id");
    const std::size_t name = indexOf("Name");
    const std::size_t type = indexOf("Type");
    const std::size_t flags = indexOf("Flags");
    std::vector<Table> tables;
    ReadRows(catalog, [&](const QByteArray& row) {
        const std::vector<Value> object = DecodeRow(catalog.layout, row);
        const auto word = [&object](std::size_t column) {
            return static_cast<quint32>(static_cast<qint64>(object[column].number));
        };
        if (word(type) == kTableObject) {
            Require(IsName(object[name].text));
            tables.push_back({.name = object[name].text,
                              .page = word(id) & 0xFFFFFFU,
                              .isSystem = (word(flags) & kSystemObject) != 0});
        }
    });
    std::set<std::uint32_t> pages;
    for (const Table& table : tables) {
        Require(pages.insert(table.page).second);
    }
    return tables;
}

void JetReader::WriteTable(const Table& table, FrameWriter& writer) {
    const Definition definition = ReadDefinition(table.page);
    std::vector<Column> columns;
    for (const StoredColumn& column : definition.layout.columns) {
        columns.push_back({.name = column.name, .type = ContentOf(column)});
    }
    writer.Begin(table.name, columns);
    writer.End(ReadRows(
        definition, [&](const QByteArray& row) { writer.Row(DecodeRow(definition.layout, row)); }));
}

void JetReader::WriteTables(const QStringList& wanted, FrameWriter& writer) {
    const std::vector<Table> tables = ReadCatalog();
    QStringList names;
    for (const Table& table : tables) {
        if (!table.isSystem) {
            names.append(table.name);
        }
    }
    writer.Tables(names);
    for (const Table& table : tables) {
        if (wanted.contains(table.name, Qt::CaseInsensitive)) {
            Require(!table.isSystem);  // their names are their own
            WriteTable(table, writer);
        }
    }
    writer.Done();
}

}  // namespace rillbook::access
