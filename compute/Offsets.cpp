#include "compute/Offsets.h"

#include <limits>

#include "compute/ReferenceRows.h"
#include "platform/ado/Recordset.h"
#include "store/StationDatabase.h"

namespace rillbook {

std::vector<OffsetRow> OffsetRows;
std::size_t OffsetCursor = 1;

namespace {

constexpr double kNoReading = std::numeric_limits<double>::quiet_NaN();

}  // namespace

int LoadOffsetRows(int chan) {
    OffsetRows.clear();
    Recordset journal;
    journal.Open(QStringLiteral("SELECT * FROM Calibration WHERE Chan = ") + QString::number(chan) +
                     QStringLiteral(" AND read2 = 1 ORDER BY DateTime"),
                 *StationConnection, adOpenStatic, adLockReadOnly);
    const Field logger = journal.Fields(2);
    const Field actual = journal.Fields(3);
    const int untimed = ReadTimedRows(journal, journal.Fields(0), [&](DateTime time) {
        const double loggerRead = logger.NumberIfAny().value_or(kNoReading);
        const double actualRead = actual.NumberIfAny().value_or(kNoReading);
        OffsetRows.push_back({time, actualRead - loggerRead});
    });
    AddSentinels(OffsetRows, &OffsetRow::time);
    return untimed;
}

double ApplyOffset(DateTime t, double value) {
    AdvanceCursor(OffsetCursor, OffsetRows, &OffsetRow::time, t);
    const OffsetRow& before = OffsetRows[OffsetCursor];
    const OffsetRow& after = OffsetRows[OffsetCursor + 1];
    // A journal row dated at a sentinel or beyond it leaves no span; both rows then hold one
    // offset.
    const DateTime span = after.time - before.time;
    const double part = span > 0 ? (t - before.time) / span : 0;
    return value + (before.offset + part * (after.offset - before.offset));
}

}  // namespace rillbook
