#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace rillbook::access {

// What the first bytes of a file say that it is, whatever its name. A file that is missing, empty
// or can't be read is Other.
// REQUIRES, as does ReadTables: no connection of this process lies on the file. Systems of the Unix
// kind drop all of a process's locks on a file when it closes any descriptor of it.
enum class FileKind : std::uint8_t { Other, Access, LaterAccess };
FileKind KindOf(const QString& path);

// A stored value. Numbers of every width and date-times arrive with the bits that the file has (a
// 32-bit float as the double of the same value); currency and numeric as the nearest double; yes
// is 1 and no 0. NULL, an empty text and 0 are three different values.
struct Value {
    enum class Kind : std::uint8_t { Null, Number, Text };
    Kind kind = Kind::Null;
    double number = 0;  // a date-time in days since 1899-12-30, the fraction of the stored bits
    QString text;
    friend bool operator==(const Value&, const Value&) = default;
};

// What a column holds as far as a station is concerned. Other (pictures, objects, identifiers)
// comes with NULL in place of its values.
struct Column {
    enum class Type : std::uint8_t { Number, DateTime, Text, Other };
    QString name;
    Type type = Type::Other;
};

// Takes what a file holds, in its order: first every table's name, then for each table that was
// asked for its columns, its rows in the order of the file, and its end. What the sink throws ends
// the reading and reaches the caller.
class TableSink {
public:
    virtual ~TableSink() = default;
    virtual void TakeTableNames(const QStringList& names) = 0;  // without the system's own
    virtual void BeginTable(const QString& name, const std::vector<Column>& columns) = 0;
    virtual void TakeRow(const std::vector<Value>& row) = 0;  // as many values as columns
    virtual void EndTable() = 0;
};

// Why a file can't be read; what() is a sentence for the user, without the file's name.
class ReadError : public std::runtime_error {
public:
    enum class Cause : std::uint8_t {
        Missing,    // no file, or not readable by this user
        Foreign,    // no Access file
        Later,      // of a later kind (".accdb")
        Protected,  // by a password
        Encrypted,
        InUse,    // another program holds it open
        Damaged,  // the library tells damage, what it gives doesn't hang together, or it died
        TooMuch,  // more time, memory or data than any station needs
        NoHelper  // rillbook-access isn't installed beside the program, or doesn't start
    };
    ReadError(Cause cause, const QString& text)
        : std::runtime_error(text.toStdString()), cause_(cause) {}
    Cause Why() const { return cause_; }

private:
    Cause cause_;
};

// Reads the tables named in `wanted` (case aside) in a process of its own, rillbook-access, which
// has limits on time and memory, so that a damaged or hostile file ends that process and nothing
// else. The file isn't changed and nothing comes to lie beside it. Blocks until done; raises
// ReadError. Rows given before an error must not be relied on.
void ReadTables(const QString& path, const QStringList& wanted, TableSink& sink);

}  // namespace rillbook::access
