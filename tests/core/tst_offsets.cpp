#include <QtTest/QtTest>
#include <cmath>

#include "compute/Offsets.h"
#include "tests/support/DataRows.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

// What a reading of 0 becomes.
QString OffsetText(DateTime t) {
    const double corrected = ApplyOffset(t, 0);
    return std::isnan(corrected) ? QStringLiteral("none") : ValueText(corrected);
}

class TestOffsets : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void OffsetInTime_data() {
        const DataRows<QString, QString, QString, QString> row("rule", "journal", "times",
                                                               "offsets");
        row("one visit holds for all time", "visit 2002-03-01 10:00: 1 1.25",
            "1890-01-01,2002-02-28,2002-03-01 10:00,2002-03-01 10:15,4000-01-01",
            "0.25 0.25 0.25 0.25 0.25");
        // 0.10 at the first, 0.30 at the second; a quarter of the way: 0.10 + 0.25 * 0.20
        row("straight line between two visits", "visit 2002-03-05: 2 2.3; visit 2002-03-01: 1 1.1",
            "2002-02-01,2002-03-01,2002-03-02,2002-03-03,2002-03-05,2002-03-05 00:15",
            "0.1 0.1 0.15 0.2 0.3 0.3");
        row("negative offset, first reading behind several visits",
            "visit 2002-01-01: 1 9; visit 2002-02-01: 1 5; visit 2002-03-01: 3 1; "
            "visit 2002-03-03: 3 2",
            "2002-03-02,2002-04-01", "-1.5 -1");
        row("visits not in use and those of other channels take no part",
            "visit 2002-03-01: 0 1; unused 2002-03-02: 0 100; visit2 2002-03-02: 0 200; "
            "visit 2002-03-03: 0 3",
            "2002-03-02,2002-03-04", "2 3");
        row("two visits at one time: a step",
            "visit 2002-03-01: 0 1; visit 2002-03-02: 0 2; visit 2002-03-02: 0 6; "
            "visit 2002-03-03: 0 8",
            "2002-03-02,2002-03-02 12:00", "2 7");
        row("a visit without a reading voids both of its intervals",
            "visit 2002-03-01: 0 1; visit 2002-03-02: - 2; visit 2002-03-03: 0 3",
            "2002-03-01,2002-03-01 12:00,2002-03-02 12:00,2002-03-03,2002-03-04",
            "1 none none none 3");
        row("a visit at the date of a sentinel", "visit 1900-01-01: 0 4",
            "1900-01-01,1900-01-01 12:00", "4 4");
    }
    void OffsetInTime() {
        QFETCH(QString, journal);
        QFETCH(QString, times);
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station, journal);
        LoadOffsetRows(1);
        OffsetCursor = 1;
        QTEST(AtEach(times, OffsetText), "offsets");
    }

    void NoRowInUse() {
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station, QStringLiteral("unused 2002-03-01: 1 2; visit2 2002-03-01: 1 2"));
        LoadOffsetRows(2);
        QCOMPARE(OffsetRows.size(), 4U);  // the row between its sentinels, and the unused entry
        LoadOffsetRows(1);
        QVERIFY(OffsetRows.empty());
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestOffsets)
#include "tst_offsets.moc"
