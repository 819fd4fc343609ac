#pragma once

#include <QString>
#include <exception>

namespace rillbook {

// The failures that the program tells apart, by the numbers of the provider.
enum AdoErrorNumber : int {
    adErrDuplicate = -2147217887,     // 0x80040E21: the unique key has this value already
    adErrTypeMismatch = -2147352571,  // 0x80020005: the value doesn't suit the column
    adErrTextTooLong = -2147217833,   // 0x80040E57: more characters than the column's width
    adErrGeneral = -2147467259,   // 0x80004005: can't be opened, disk full, I/O, locked, damaged
    adErrSyntax = -2147217900,    // 0x80040E14: a statement that can't be run; no such table
    adErrItemNotFound = 3265,     // no field of that name or number
    adErrObjectClosed = 3704,     // the connection or recordset is closed
    adErrObjectOpen = 3705,       // already open
    adErrNoCurrentRecord = 3021,  // at EOF or BOF where a row is needed
    adErrNotUpdatable = 3251      // the lock type doesn't allow changes
};

class AdoError : public std::exception {
public:
    AdoError(int number, const QString& description);

    int Number() const { return number_; }
    const QString& Description() const { return description_; }
    const char* what() const noexcept override { return utf8_.constData(); }

private:
    int number_;
    QString description_;
    QByteArray utf8_;
};

}  // namespace rillbook
