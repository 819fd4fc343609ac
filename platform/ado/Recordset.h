#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <cstdint>
#include <memory>
#include <optional>
#include <variant>

#include "platform/ado/AdoError.h"

namespace rillbook {

class Connection;
class Recordset;

enum CursorTypeEnum {
    adOpenUnspecified = -1,
    adOpenForwardOnly = 0,
    adOpenKeyset = 1,
    adOpenDynamic = 2,
    adOpenStatic = 3
};

enum LockTypeEnum {
    adLockUnspecified = -1,
    adLockReadOnly = 1,
    adLockPessimistic = 2,
    adLockOptimistic = 3
};

// What a column holds, by its declared type.
enum DataTypeEnum {
    adSmallInt = 2,
    adSingle = 4,
    adDouble = 5,
    adDate = 7,
    adVariant = 12,  // a type that isn't known
    adVarWChar = 202
};

// The database's NULL.
using Null = std::monostate;

// NULL, a number (a date-time is one), or a text.
using Variant = std::variant<Null, double, QString>;

// One column of a recordset's current row: a light handle, good while the recordset is open.
class Field {
public:
    QString Name() const;
    DataTypeEnum Type() const;

    Variant Value() const;
    bool IsNull() const;
    // A number stored as a number, or a text that is one; nothing for NULL and for other texts.
    std::optional<double> NumberIfAny() const {
        double number = 0;
        return ReadNumber(number) ? std::optional(number) : std::nullopt;
    }
    bool IsNumeric() const { return NumberIfAny().has_value(); }
    // Raises adErrTypeMismatch for NULL and for a text that isn't a number.
    double Number() const;
    // A number as plain text, a date-time column as general date text, a SINGLE with the fewest
    // digits that tell it from its neighbours (1.2, not 1.20000004768372). Raises adErrTypeMismatch
    // for NULL.
    QString Text() const;

    // The column's declared type converts: SINGLE rounds to 32 bits; SMALLINT rounds to a whole
    // number (halves to even); a text for a number column must be a number as a whole (point as
    // decimal sign), one for a DATETIME column a date-time; numbers for text columns become plain
    // text. Raises adErrTypeMismatch where it can't, also for the empty text in a number or
    // DATETIME column, for NaN and infinity, and for a number beyond the column's range;
    // adErrTextTooLong beyond TEXT(n). A refused value leaves the field as it was.
    void SetValue(Null);
    void SetValue(double value);
    void SetValue(const QString& value);
    void SetValue(const Variant& value);

private:
    friend class Recordset;
    Field(Recordset* recordset, int ordinal) : recordset_(recordset), ordinal_(ordinal) {}
    // Behind NumberIfAny, which is called for each reading: an optional returned from another
    // translation unit goes through memory.
    bool ReadNumber(double& number) const;
    Recordset* recordset_;
    int ordinal_;
};

// A walk over a table or a query, forward, and the changing of its rows.
//
// Read-only recordsets (lock type unspecified or read-only) stream their rows and hold one at a
// time. Updatable ones (adLockOptimistic) hold the keys of their rows, read when the first row is
// asked for: a recordset opened only to append never reads the table. A row that has left the table
// since is passed over. Their source is a table's name, or a SELECT on one table.
//
// A changed row is written at Update, and also when the cursor moves off it or AddNew begins
// another; Close drops a change that hasn't been written. If a write fails, the change stays
// pending until CancelUpdate.
class Recordset {
public:
    Recordset();
    ~Recordset();
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    CursorTypeEnum CursorType = adOpenUnspecified;
    LockTypeEnum LockType = adLockUnspecified;

    // `source` is a table's name or a SELECT in the program's own dialect. Arguments left
    // unspecified take the two properties above. The cursor stands on the first row, or at EOF.
    void Open(const QString& source, Connection& connection,
              CursorTypeEnum cursorType = adOpenUnspecified,
              LockTypeEnum lockType = adLockUnspecified, int options = -1);
    void Close();
    // 0 closed, 1 open.
    int State() const;

    bool Eof();
    // Raises adErrNoCurrentRecord on an empty recordset.
    void MoveFirst();
    void MoveLast();
    // Raises adErrNoCurrentRecord when at EOF already.
    void MoveNext();

    // Exact for every cursor type.
    std::int64_t RecordCount();

    // The current row's number, from 1; 0 at EOF.
    std::int64_t AbsolutePosition();
    // Goes to a row by its number, after writing a pending change; to the next one that is still
    // there, or to EOF, where that row has left the table. Raises adErrNoCurrentRecord outside 1 to
    // RecordCount, and adErrNotUpdatable on a read-only recordset.
    void SetAbsolutePosition(std::int64_t position);

    // Sets the texts of a row, by its number, as Field::Text gives them, and NULL as the null text.
    // The cursor stays where it is; a pending change of that row shows. False, and no texts, where
    // the row has left the table. Raises as SetAbsolutePosition does.
    bool PeekTexts(std::int64_t position, QStringList& texts);

    // Raises adErrItemNotFound. Names in any case.
    Field Fields(int ordinal);
    Field Fields(QStringView name);
    int FieldCount();

    // Writes a pending change first. The new row's fields are NULL until set.
    void AddNew();
    // Raises adErrDuplicate where the key is taken. After an AddNew the new row is current and the
    // last one. No-op without a pending change.
    void Update();
    void CancelUpdate();
    // The cursor then stands on the next row (or at EOF).
    void Delete();

    // Moves forward from the current row, itself included, to the first that meets the criterion,
    // or to EOF. A criterion is a column, one of = <> < <= > >=, and a number or a date-time
    // literal between # signs.
    void Find(const QString& criterion);

private:
    friend class Field;
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace rillbook
