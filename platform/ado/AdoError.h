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

// What a failure concerns.
enum class AdoCause {
    Request,   // one value, name, key or statement; the file is in order
    ReadOnly,  // the file can't be changed
    Full,      // the disk
    Locked,    // another connection or program holds the file
    Damaged,   // not a database, or its pages are inconsistent
    Access,    // the medium, the system or the memory failed
    Moved      // the file was removed, or another one is in its place
};

class AdoError : public std::exception {
public:
    AdoError(int number, const QString& description, AdoCause cause = AdoCause::Request);

    int Number() const { return number_; }
    AdoCause Cause() const { return cause_; }
    // Whether other values of the file may fail to be read for the same reason.
    bool IsOfFile() const { return cause_ >= AdoCause::Locked; }
    const QString& Description() const { return description_; }
    const char* what() const noexcept override { return utf8_.constData(); }

private:
    int number_;
    AdoCause cause_;
    QString description_;
    QByteArray utf8_;
};

}  // namespace rillbook
