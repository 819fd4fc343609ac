#pragma once

#include <glib.h>
#include <mdbtools.h>

#include <QByteArray>
#include <QByteArrayView>
#include <memory>
#include <vector>

#include "platform/access/AccessFile.h"
#include "platform/access/AccessProtocol.h"
#include "platform/access/JetRow.h"

namespace rillbook::access {

// Reads an Access file by way of libmdb: that one gives the pages, the definitions of the tables
// and which pages are theirs. Rows are taken apart here, as the library passes over what doesn't
// hang together in them, and takes a column that came after a row for part of it. Raises ReadError;
// the library may also end the process.
class JetReader {
public:
    // REQUIRES: the descriptor is a file's, and stays open.
    explicit JetReader(int descriptor);
    void WriteTables(const QStringList& wanted, FrameWriter& writer);

private:
    struct Table {
        QString name;
        std::uint32_t page = 0;  // of its definition
        bool isSystem = false;
    };
    // A definition as the library has it, and what of it rows are read by.
    struct Definition {
        std::uint32_t page = 0;
        std::shared_ptr<MdbCatalogEntry> entry;  // the table's, whose page alone is used
        std::shared_ptr<MdbTableDef> table;
        TableLayout layout;
    };
    struct RowPlace {
        QByteArrayView bytes;
        bool isDeleted = false;
        bool isElsewhere = false;  // the bytes say where
    };

    void RequireUnprotected() const;
    // The bytes stand until the next page is read.
    QByteArrayView ReadPage(std::uint32_t page);
    static bool IsDataPage(QByteArrayView page, std::uint32_t owner);
    QByteArray ReadDataPage(std::uint32_t page, std::uint32_t owner);
    RowPlace FindRow(QByteArrayView page, int row) const;
    int CountRows(QByteArrayView page) const;
    QByteArray FollowRow(std::uint32_t owner, quint32 place);
    QByteArray ReadLongValue(QByteArrayView field);

    std::vector<Table> ReadCatalog();
    Definition ReadDefinition(std::uint32_t page);
    template <typename Take>
    std::uint32_t ReadRows(const Definition& definition, Take take);
    std::vector<Value> DecodeRow(const TableLayout& layout, QByteArrayView row);
    void WriteTable(const Table& table, FrameWriter& writer);

    std::shared_ptr<MdbHandle> file_;
    qsizetype pageSize_ = 0;
    std::uint32_t pages_ = 0;
};

}  // namespace rillbook::access
