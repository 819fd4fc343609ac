#include "platform/ado/Statement.h"

#include <cerrno>

#include "platform/text/SystemReason.h"

namespace rillbook::ado {

namespace {

int NumberOf(int extendedCode) {
    switch (extendedCode) {
        case SQLITE_CONSTRAINT_UNIQUE:
        case SQLITE_CONSTRAINT_PRIMARYKEY:
        case SQLITE_CONSTRAINT_ROWID:
            return adErrDuplicate;
        default:
            return (extendedCode & 0xff) == SQLITE_ERROR ? adErrSyntax : adErrGeneral;
    }
}

AdoCause CauseOf(int extendedCode) {
    constexpr int primaryCode = 0xff;
    switch (extendedCode & primaryCode) {
        case SQLITE_ERROR:
        case SQLITE_CONSTRAINT:
        case SQLITE_MISMATCH:
        case SQLITE_TOOBIG:
        case SQLITE_RANGE:
        case SQLITE_SCHEMA:
            return AdoCause::Request;
        case SQLITE_READONLY:
            return extendedCode == SQLITE_READONLY_DBMOVED ? AdoCause::Moved : AdoCause::ReadOnly;
        case SQLITE_PERM:
            return AdoCause::ReadOnly;
        case SQLITE_FULL:
            return AdoCause::Full;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return AdoCause::Locked;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_FORMAT:
            return AdoCause::Damaged;
        default:
            return AdoCause::Access;
    }
}

int LastErrorOf(sqlite3_file* file) {
    int error = 0;
    if (file != nullptr && file->pMethods != nullptr && file->pMethods->xFileControl != nullptr) {
        file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &error);
    }
    return error;
}

// A quota that is used up reaches the caller as a failed write. By then errno has other values, but
// the file keeps its own.
bool HasFilledDisk(sqlite3* handle) {
    sqlite3_file* file = nullptr;
    sqlite3_file* companion = nullptr;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_JOURNAL_POINTER, &companion);
    return rillbook::IsDiskFull(LastErrorOf(file)) || rillbook::IsDiskFull(LastErrorOf(companion));
}

bool IsDiskFull(sqlite3* handle) {
    switch (const int code = sqlite3_extended_errcode(handle); code) {
        case SQLITE_FULL:
        case SQLITE_IOERR_SHMSIZE:  // the index of the companion could not be made longer
            return true;
        case SQLITE_IOERR_WRITE:
            return HasFilledDisk(handle);
        default:
            return (code & 0xFF) == SQLITE_CANTOPEN &&
                   rillbook::IsDiskFull(sqlite3_system_errno(handle));
    }
}

}  // namespace

AdoError ErrorOfCode(int extendedCode, const QString& description) {
    return {NumberOf(extendedCode), description, CauseOf(extendedCode)};
}

AdoError LastError(sqlite3* handle) {
    const int code = sqlite3_extended_errcode(handle);
    if (IsDiskFull(handle)) {
        return {NumberOf(code), SystemReason(ENOSPC), AdoCause::Full};
    }
    return ErrorOfCode(code, QString::fromUtf8(sqlite3_errmsg(handle)));
}

void RaiseLastError(sqlite3* handle) {
    throw LastError(handle);
}

Statement::Statement(sqlite3* handle, const QByteArray& sql) {
    sqlite3_stmt* compiled = nullptr;
    const char* rest = nullptr;
    const int length = static_cast<int>(sql.size()) + 1;  // with the end mark, which saves a copy
    if (sqlite3_prepare_v2(handle, sql.constData(), length, &compiled, &rest) != SQLITE_OK) {
        throw LastError(handle);
    }
    statement_.reset(compiled);
    const QByteArray behind(rest);
    if (compiled == nullptr || !behind.trimmed().isEmpty()) {
        throw AdoError(adErrSyntax, QStringLiteral("One statement is expected."));
    }
}

bool Statement::Step() {
    const int result = sqlite3_step(statement_.get());
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result == SQLITE_DONE) {
        return false;
    }
    const AdoError error = LastError(sqlite3_db_handle(statement_.get()));
    Reset();
    throw error;
}

void Statement::Reset() noexcept {
    sqlite3_reset(statement_.get());
}

void Statement::Bind(int parameter, const Cell& cell) {
    switch (cell.kind) {
        case Cell::Kind::Null:
            sqlite3_bind_null(statement_.get(), parameter);
            break;
        case Cell::Kind::Number:
            Bind(parameter, cell.number);
            break;
        case Cell::Kind::Text:
            Bind(parameter, cell.text);
            break;
    }
}

void Statement::Bind(int parameter, std::int64_t value) {
    sqlite3_bind_int64(statement_.get(), parameter, value);
}

void Statement::Bind(int parameter, double value) {
    sqlite3_bind_double(statement_.get(), parameter, value);
}

void Statement::Bind(int parameter, const QString& text) {
    sqlite3_bind_text16(statement_.get(), parameter, text.utf16(),
                        static_cast<int>(text.size() * qsizetype{sizeof(QChar)}), SQLITE_TRANSIENT);
}

QString Statement::Text(int column) const {
    // Bytes that aren't a text count as UTF-8; a text is converted to it from any encoding.
    const int type = sqlite3_column_type(statement_.get(), column);
    const void* bytes = type == SQLITE_BLOB ? sqlite3_column_blob(statement_.get(), column)
                                            : sqlite3_column_text(statement_.get(), column);
    if (bytes == nullptr && type == SQLITE_TEXT) {
        throw ErrorOfCode(SQLITE_NOMEM, QString::fromUtf8(sqlite3_errstr(SQLITE_NOMEM)));
    }
    return QString::fromUtf8(static_cast<const char*>(bytes),
                             sqlite3_column_bytes(statement_.get(), column));
}

void Statement::Read(int column, Cell& cell) const {
    cell.kind = ReadNumber(column, cell.number);
    if (cell.kind == Cell::Kind::Text) {
        cell.text = Text(column);
    }
}

QString Statement::ColumnName(int column) const {
    return QString::fromUtf8(sqlite3_column_name(statement_.get(), column));
}

QByteArray Statement::DeclaredType(int column) const {
    return QByteArray(sqlite3_column_decltype(statement_.get(), column));
}

void Run(sqlite3* handle, const char* sql) {
    if (sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw LastError(handle);
    }
}

QString Ask(sqlite3* handle, const char* sql) {
    Statement question(handle, sql);
    return question.Step() ? question.Text(0) : QString();
}

}  // namespace rillbook::ado
