#pragma once

#include <sqlite3.h>

#include <QByteArray>
#include <cstdint>
#include <memory>

#include "platform/ado/AdoError.h"
#include "platform/ado/Cell.h"

namespace rillbook::ado {

struct CloseHandle {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
};
using Handle = std::unique_ptr<sqlite3, CloseHandle>;

// The error of a result code of SQLite, with a description for the user.
AdoError ErrorOfCode(int extendedCode, const QString& description);

// The error of the handle's last failure.
AdoError LastError(sqlite3* handle);
[[noreturn]] void RaiseLastError(sqlite3* handle);

// One compiled statement; empty until assigned.
class Statement {
public:
    Statement() = default;
    // Raises adErrSyntax where the text isn't exactly one statement that can be run.
    Statement(sqlite3* handle, const QByteArray& sql);

    explicit operator bool() const { return statement_ != nullptr; }

    // True while there is a row. On a failure the statement is reset before the error is raised.
    bool Step();
    void Reset() noexcept;

    // Parameters count from 1.
    void Bind(int parameter, const Cell& cell);
    void Bind(int parameter, std::int64_t value);
    void Bind(int parameter, double value);
    void Bind(int parameter, const QString& text);

    // Columns count from 0.
    int ColumnCount() const { return sqlite3_column_count(statement_.get()); }
    Cell::Kind Kind(int column) const {
        return KindOf(sqlite3_column_type(statement_.get(), column));
    }
    double Number(int column) const { return sqlite3_column_double(statement_.get(), column); }
    // The kind of the value, and where that is a number, the number as well.
    Cell::Kind ReadNumber(int column, double& number) const {
        // One search for the column serves both; allowed, as the handle has no mutex.
        sqlite3_value* value = sqlite3_column_value(statement_.get(), column);
        const Cell::Kind kind = KindOf(sqlite3_value_type(value));
        if (kind == Cell::Kind::Number) {
            number = sqlite3_value_double(value);
        }
        return kind;
    }
    std::int64_t Integer(int column) const {
        return sqlite3_column_int64(statement_.get(), column);
    }
    QString Text(int column) const;
    void Read(int column, Cell& cell) const;
    QString ColumnName(int column) const;
    QByteArray DeclaredType(int column) const;

private:
    static Cell::Kind KindOf(int type) {
        switch (type) {
            case SQLITE_NULL:
                return Cell::Kind::Null;
            case SQLITE_INTEGER:
            case SQLITE_FLOAT:
                return Cell::Kind::Number;
            default:
                return Cell::Kind::Text;
        }
    }

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

// Runs statements that give no row, or whose rows nobody wants.
void Run(sqlite3* handle, const char* sql);

// The one value that a statement gives, as text; empty where there is none.
QString Ask(sqlite3* handle, const char* sql);

}  // namespace rillbook::ado
