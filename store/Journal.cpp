#include "store/Journal.h"

#include "platform/ado/Recordset.h"
#include "store/FieldTexts.h"
#include "store/StationDatabase.h"
#include "store/StationInPlace.h"

namespace rillbook {

namespace {

// Columns that are known by their place in the table.
constexpr int kLogger = 2;
constexpr int kActual = 3;
constexpr int kUsed = 4;
constexpr int kDischarge = 5;

void SetIfGiven(Field field, const std::optional<double>& number) {
    if (number) {
        field.SetValue(*number);
    }
}

QString OfChannel(int chan) {
    return QStringLiteral(" FROM Calibration WHERE Chan = ") + QString::number(chan);
}

}  // namespace

std::vector<JournalRow> ReadJournal(int chan) {
    Recordset visits;
    visits.Open(QStringLiteral("SELECT *") + OfChannel(chan) + QStringLiteral(" ORDER BY DateTime"),
                *StationConnection, adOpenStatic, adLockReadOnly);
    std::vector<JournalRow> rows;
    for (; !visits.Eof(); visits.MoveNext()) {
        rows.push_back({.used = visits.Fields(kUsed).NumberIfAny() == 1.0,
                        .time = visits.Fields(u"DateTime").NumberIfAny(),
                        .logger = ShownNumber(visits.Fields(kLogger)),
                        .actual = ShownNumber(visits.Fields(kActual)),
                        .discharge = ShownNumber(visits.Fields(kDischarge)),
                        .notes = TextOrEmpty(visits.Fields(u"notes"))});
    }
    visits.Close();
    return rows;
}

void WriteJournal(int chan, const std::vector<JournalRow>& rows) {
    RequireStationInPlace();
    Transaction transaction(*StationConnection);
    StationConnection->Execute(QStringLiteral("DELETE *") + OfChannel(chan));
    Recordset visits;
    visits.Open(QStringLiteral("Calibration"), *StationConnection, adOpenDynamic, adLockOptimistic);
    for (const JournalRow& row : rows) {
        if (!row.time) {
            continue;
        }
        visits.AddNew();
        visits.Fields(u"chan").SetValue(static_cast<double>(chan));
        visits.Fields(kUsed).SetValue(row.used ? 1.0 : 0.0);
        visits.Fields(u"DateTime").SetValue(*row.time);
        SetIfGiven(visits.Fields(kLogger), row.logger);
        SetIfGiven(visits.Fields(kActual), row.actual);
        SetIfGiven(visits.Fields(kDischarge), row.discharge);
        visits.Fields(u"notes").SetValue(row.notes);
    }
    visits.Update();
    visits.Close();
    transaction.Commit();
}

}  // namespace rillbook
