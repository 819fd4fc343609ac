#include "store/RatingStore.h"

#include <algorithm>

#include "platform/ado/Recordset.h"
#include "store/FieldTexts.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "store/StationInPlace.h"

namespace rillbook {

RatingTime RatingEditDate = kNewRating;

namespace {

const QString kEquations = QStringLiteral("ConversionEq");
const QString kPoints = QStringLiteral("ConversionT");

QString OfChannel(const QString& table, int chan) {
    return QStringLiteral(" FROM ") + table + QStringLiteral(" WHERE Chan = ") +
           QString::number(chan);
}

// Seventeen digits identify one double: a date literal would lose the part of a second.
QString AtTime(RatingTime time) {
    return time ? QStringLiteral(" AND DateTime = ") + QString::number(*time, 'g', 17)
                : QStringLiteral(" AND typeof(DateTime) NOT IN ('integer', 'real')");
}

QString OfKind(bool isTable) {
    return QStringLiteral(" AND RatingTable = ") + (isTable ? u'1' : u'0');
}

void Delete(const QString& rows) {
    StationConnection->Execute(QStringLiteral("DELETE *") + rows);
}

void OpenForReading(Recordset& rows, const QString& which) {
    rows.Open(QStringLiteral("SELECT *") + which, *StationConnection, adOpenStatic, adLockReadOnly);
}

QString FormulaOf(Recordset& row) {
    return QStringLiteral("Q = ") + TextOrEmpty(row.Fields(u"c")) + QStringLiteral("*(ght - ") +
           TextOrEmpty(row.Fields(u"A")) + QStringLiteral(")^") + TextOrEmpty(row.Fields(u"r"));
}

// A file of an older release that can't be changed lacks the column: its rows are equations.
bool IsTable(Recordset& row) {
    bool isTable = false;
    Attempt([&] { isTable = row.Fields(u"RatingTable").NumberIfAny() == 1.0; });
    return isTable;
}

// Adds a row of a rating to either table.
void AddRow(Recordset& rows, int chan, RatingTime time) {
    rows.AddNew();
    rows.Fields(u"chan").SetValue(static_cast<double>(chan));
    if (time) {
        rows.Fields(u"DateTime").SetValue(*time);
    }
}

}  // namespace

std::vector<ListedRating> ListRatings(int chan) {
    Recordset rows;
    OpenForReading(rows, OfChannel(kEquations, chan) + QStringLiteral(" ORDER BY DateTime"));
    std::vector<ListedRating> ratings;
    for (; !rows.Eof(); rows.MoveNext()) {
        const bool isTable = IsTable(rows);
        ratings.push_back({.time = rows.Fields(u"DateTime").NumberIfAny(),
                           .isTable = isTable,
                           .formula = isTable ? QString() : FormulaOf(rows),
                           .notes = TextOrEmpty(rows.Fields(u"notes"))});
    }
    rows.Close();
    return ratings;
}

void DeleteRating(int chan, RatingTime time) {
    RequireStationInPlace();
    Transaction transaction(*StationConnection);
    Delete(OfChannel(kPoints, chan) + AtTime(time));
    Delete(OfChannel(kEquations, chan) + AtTime(time));
    transaction.Commit();
}

std::optional<EquationRating> ReadEquation(int chan, RatingTime time) {
    Recordset row;
    OpenForReading(row, OfChannel(kEquations, chan) + AtTime(time) + OfKind(false));
    if (row.Eof()) {
        return std::nullopt;
    }
    return EquationRating{.time = row.Fields(u"DateTime").NumberIfAny(),
                          .A = ShownNumber(row.Fields(u"A")),
                          .r = ShownNumber(row.Fields(u"r")),
                          .c = ShownNumber(row.Fields(u"c")),
                          .notes = TextOrEmpty(row.Fields(u"notes"))};
}

void WriteEquation(int chan, RatingTime former, const EquationRating& rating) {
    RequireStationInPlace();
    Transaction transaction(*StationConnection);
    for (const RatingTime time : {former, rating.time}) {
        Delete(OfChannel(kEquations, chan) + AtTime(time) + OfKind(false));
    }
    Recordset rows;
    rows.Open(kEquations, *StationConnection, adOpenDynamic, adLockOptimistic);
    AddRow(rows, chan, rating.time);
    rows.Fields(u"A").SetValue(rating.A.value_or(0));
    rows.Fields(u"r").SetValue(rating.r.value_or(0));
    rows.Fields(u"c").SetValue(rating.c.value_or(0));
    SetTextOrNull(rows.Fields(u"notes"), rating.notes);
    rows.Fields(u"RatingTable").SetValue(0.0);
    rows.Update();
    rows.Close();
    transaction.Commit();
}

std::vector<TablePoint> ReadTablePoints(int chan, RatingTime time) {
    Recordset rows;
    OpenForReading(rows,
                   OfChannel(kPoints, chan) + AtTime(time) + QStringLiteral(" ORDER BY depth"));
    std::vector<TablePoint> points;
    for (; !rows.Eof(); rows.MoveNext()) {
        points.push_back({.depth = ShownNumber(rows.Fields(u"depth")),
                          .flow = ShownNumber(rows.Fields(u"flow"))});
    }
    rows.Close();
    return points;
}

std::optional<TableHead> ReadTableHead(int chan, RatingTime time) {
    Recordset row;
    OpenForReading(row, OfChannel(kEquations, chan) + AtTime(time) + OfKind(true));
    if (row.Eof()) {
        return std::nullopt;
    }
    return TableHead{.time = row.Fields(u"DateTime").NumberIfAny(),
                     .notes = TextOrEmpty(row.Fields(u"notes"))};
}

void WriteTable(int chan, RatingTime former, const TableHead& head,
                const std::vector<TablePoint>& points) {
    RequireStationInPlace();
    Transaction transaction(*StationConnection);
    for (const RatingTime time : {former, head.time}) {
        Delete(OfChannel(kEquations, chan) + AtTime(time) + OfKind(true));
        Delete(OfChannel(kPoints, chan) + AtTime(time));
    }
    Recordset rows;
    rows.Open(kPoints, *StationConnection, adOpenDynamic, adLockOptimistic);
    for (const TablePoint& point : points) {
        AddRow(rows, chan, head.time);
        rows.Fields(u"depth").SetValue(point.depth.value());
        rows.Fields(u"flow").SetValue(point.flow.value());
    }
    rows.Update();
    rows.Close();
    rows.Open(kEquations, *StationConnection, adOpenDynamic, adLockOptimistic);
    AddRow(rows, chan, head.time);
    SetTextOrNull(rows.Fields(u"notes"), head.notes);
    rows.Fields(u"RatingTable").SetValue(1.0);
    rows.Update();
    rows.Close();
    transaction.Commit();
}

namespace {

// The times of a channel's tables, in the order of their first points.
std::vector<RatingTime> TableTimes(int chan) {
    Recordset points;
    OpenForReading(points, OfChannel(kPoints, chan));
    std::vector<RatingTime> times;
    for (; !points.Eof(); points.MoveNext()) {
        const RatingTime time = points.Fields(u"DateTime").NumberIfAny();
        if (std::find(times.begin(), times.end(), time) == times.end()) {
            times.push_back(time);
        }
    }
    points.Close();
    return times;
}

void MarkEquations(Recordset& rows) {
    for (; !rows.Eof(); rows.MoveNext()) {
        const Field kind = rows.Fields(u"RatingTable");
        if (kind.IsNull()) {
            rows.Fields(u"RatingTable").SetValue(0.0);
            rows.Update();
        }
    }
}

bool HasTableRow(Recordset& rows, RatingTime time) {
    if (rows.RecordCount() == 0) {
        return false;
    }
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
        if (rows.Fields(u"RatingTable").NumberIfAny() == 1.0 &&
            rows.Fields(u"DateTime").NumberIfAny() == time) {
            return true;
        }
    }
    return false;
}

}  // namespace

void UpgradeRatings(int chan) {
    Attempt([] {
        StationConnection->Execute(
            QStringLiteral("ALTER TABLE ConversionEq ADD COLUMN RatingTable SINGLE"));
    });
    Attempt([] {
        StationConnection->Execute(
            QStringLiteral("ALTER TABLE ConversionEq ALTER COLUMN notes TEXT(255)"));
    });
    std::vector<RatingTime> times;
    Attempt([&] { times = TableTimes(chan); });
    Recordset rows;
    Attempt([&] {
        rows.Open(QStringLiteral("SELECT *") + OfChannel(kEquations, chan), *StationConnection,
                  adOpenStatic, adLockOptimistic);
    });
    Attempt([&] { MarkEquations(rows); });
    for (const RatingTime time : times) {
        // What the step before couldn't write would go along with the new row.
        Attempt([&] { rows.CancelUpdate(); });
        Attempt([&] {
            if (!HasTableRow(rows, time)) {
                AddRow(rows, chan, time);
                rows.Fields(u"RatingTable").SetValue(1.0);
                rows.Update();
            }
        });
    }
    Attempt([&] { rows.Close(); });
}

void ResetRatingStore() {
    RatingEditDate = kNewRating;
}

}  // namespace rillbook
