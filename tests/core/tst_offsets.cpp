#include <QtTest/QtTest>
#include <cmath>

#include "compute/Offsets.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

class TestOffsets : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void OffsetInTime_data();
    void OffsetInTime();
    void NoRowInUse();
    void JournalOfManyYears();
};

// What a reading of 0 becomes.
QString OffsetText(DateTime t) {
    const double corrected = ApplyOffset(t, 0);
    return std::isnan(corrected) ? QStringLiteral("none") : ValueText(corrected);
}

void TestOffsets::OffsetInTime_data() {
    QTest::addColumn<Story>("journal");
    QTest::addColumn<QString>("times");
    QTest::addColumn<QString>("offsets");

    QTest::newRow("one visit holds for all time")
        << Story([](StationFixture& s) { s.WithJournalRow("2002-03-01 10:00", 1, 1.0, 1.25); })
        << "1890-01-01,2002-02-28,2002-03-01 10:00,2002-03-01 10:15,4000-01-01"
        << "0.25 0.25 0.25 0.25 0.25";
    // 0.10 at the first, 0.30 at the second; a quarter of the way: 0.10 + 0.25 * 0.20
    QTest::newRow("straight line between two visits") << Story([](StationFixture& s) {
        s.WithJournalRow("2002-03-05", 1, 2.0, 2.3).WithJournalRow("2002-03-01", 1, 1.0, 1.1);
    }) << "2002-02-01,2002-03-01,2002-03-02,2002-03-03,2002-03-05,2002-03-05 00:15"
                                                      << "0.1 0.1 0.15 0.2 0.3 0.3";
    QTest::newRow("negative offset, first reading behind several visits")
        << Story([](StationFixture& s) {
               s.WithJournalRow("2002-01-01", 1, 1, 9)
                   .WithJournalRow("2002-02-01", 1, 1, 5)
                   .WithJournalRow("2002-03-01", 1, 3.0, 1.0)
                   .WithJournalRow("2002-03-03", 1, 3.0, 2.0);
           })
        << "2002-03-02,2002-04-01"
        << "-1.5 -1";
    QTest::newRow("visits not in use and those of other channels take no part")
        << Story([](StationFixture& s) {
               s.WithJournalRow("2002-03-01", 1, 0, 1)
                   .WithJournalRow("2002-03-02", 1, 0, 100, false)
                   .WithJournalRow("2002-03-02", 2, 0, 200)
                   .WithJournalRow("2002-03-03", 1, 0, 3);
           })
        << "2002-03-02,2002-03-04"
        << "2 3";
    QTest::newRow("two visits at one time: a step") << Story([](StationFixture& s) {
        s.WithJournalRow("2002-03-01", 1, 0, 1)
            .WithJournalRow("2002-03-02", 1, 0, 2)
            .WithJournalRow("2002-03-02", 1, 0, 6)
            .WithJournalRow("2002-03-03", 1, 0, 8);
    }) << "2002-03-02,2002-03-02 12:00"
                                                    << "2 7";
    QTest::newRow("a visit without a reading voids both of its intervals")
        << Story([](StationFixture& s) {
               s.WithJournalRow("2002-03-01", 1, 0, 1)
                   .WithJournalRow("2002-03-02", 1, {}, 2)
                   .WithJournalRow("2002-03-03", 1, 0, 3);
           })
        << "2002-03-01,2002-03-01 12:00,2002-03-02 12:00,2002-03-03,2002-03-04"
        << "1 none none none 3";
    QTest::newRow("a visit at the date of a sentinel")
        << Story([](StationFixture& s) { s.WithJournalRow("1900-01-01", 1, 0, 4); })
        << "1900-01-01,1900-01-01 12:00"
        << "4 4";
}

void TestOffsets::OffsetInTime() {
    QFETCH(Story, journal);
    QFETCH(QString, times);
    ScriptedDoors doors;
    StationFixture station(2);
    journal(station);
    LoadOffsetRows(1);
    OffsetCursor = 1;
    QTEST(AtEach(times, OffsetText), "offsets");
}

void TestOffsets::NoRowInUse() {
    ScriptedDoors doors;
    StationFixture station(2);
    station.WithJournalRow("2002-03-01", 1, 1, 2, false).WithJournalRow("2002-03-01", 2, 1, 2);
    LoadOffsetRows(2);
    QCOMPARE(OffsetRows.size(), 4U);  // the row between its sentinels, and the unused entry
    LoadOffsetRows(1);
    QVERIFY(OffsetRows.empty());
}

void TestOffsets::JournalOfManyYears() {
    ScriptedDoors doors;
    StationFixture station;
    for (int week = 0; week < 450; ++week) {
        const QByteArray day = MomentText(At("2002-01-01") + 7 * week).toLatin1();
        station.WithJournalRow(day.constData(), 1, 0, week);
    }
    LoadOffsetRows(1);
    OffsetCursor = 1;
    // 2,800 days are 400 weeks; a week and 3.5 days on: 401.5
    QCOMPARE(ValueText(ApplyOffset(At("2002-01-01") + 2810.5, 0)), QStringLiteral("401.5"));
}

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestOffsets)
#include "tst_offsets.moc"
