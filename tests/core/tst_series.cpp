#include <QtTest/QtTest>
#include <cmath>

#include "compute/Compute.h"
#include "platform/ado/Recordset.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

class TestSeries : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void BoundsAreInclusive_data();
    void BoundsAreInclusive();
    void RawReadingsNeedNoReferences();
    void RatingSeesTheCorrectedReading();
    void ReferencesCarryNothingOver();
    void ReadingThatTheJournalVoids();
    void OnlyReadingsAreKept();
    void WhatIsMissingIsTold_data();
    void WhatIsMissingIsTold();
    void DatabaseFailureLeavesNoSeries_data();
    void DatabaseFailureLeavesNoSeries();
};

const DateTime kBegin = At("2002-03-01");
const DateTime kEnd = At("2002-03-02");

void TestSeries::BoundsAreInclusive_data() {
    QTest::addColumn<DateTime>("from");
    QTest::addColumn<DateTime>("to");
    QTest::addColumn<QString>("series");

    // Reports pass their last day + 1, the yearly sheet its last day + 0.99: 23:45:36.
    QTest::newRow("a whole day and the midnight behind it")
        << kBegin << kBegin + 1.0
        << "2002-03-01 00:00:00 2\n2002-03-01 23:45:36 3\n2002-03-01 23:45:37 4\n"
           "2002-03-02 00:00:00 5";
    QTest::newRow("to 0.99 of a day")
        << kBegin << kBegin + 0.99 << "2002-03-01 00:00:00 2\n2002-03-01 23:45:36 3";
    QTest::newRow("one instant") << kEnd << kEnd << "2002-03-02 00:00:00 5";
    QTest::newRow("bounds with a time of day")
        << At("2002-02-28 23:59:59") << At("2002-03-01 00:00:01")
        << "2002-02-28 23:59:59 1\n2002-03-01 00:00:00 2";
}

void TestSeries::BoundsAreInclusive() {
    QFETCH(DateTime, from);
    QFETCH(DateTime, to);
    ScriptedDoors doors;
    StationFixture station;
    station.WithRecord("2002-03-02", {5})
        .WithRecord("2002-02-28 23:59:59", {1})
        .WithRecord("2002-03-01", {2})
        .WithRecord("2002-03-01 23:45:37", {4})
        .WithRecord("2002-03-01 23:45:36", {3})
        .WithRecord("2002-03-02 00:00:01", {6});
    LoadSeries(from, to, 1);
    QTEST(SeriesText(), "series");
}

void TestSeries::RawReadingsNeedNoReferences() {
    ScriptedDoors doors;
    StationFixture station(2);
    station.WithRecord("2002-03-01", {7, 0.1});
    for (const char* table : {"Calibration", "ConversionEq", "ConversionT"}) {
        StationConnection->Execute(QStringLiteral("DROP TABLE ") + QLatin1String(table));
    }
    ChannelInfo[1].Calibration = ChannelInfo[1].Conversion = 1;
    ChannelInfo[2].Calibration = ChannelInfo[2].Conversion = 2;  // only 1 turns a step on
    LoadSeries(kBegin, kEnd, 2);
    QCOMPARE(InstCount, 1);
    QCOMPARE(InstValues[1], static_cast<double>(0.1F));  // as the store keeps it, in 32 bits
}

void TestSeries::RatingSeesTheCorrectedReading() {
    ScriptedDoors doors;
    StationFixture station(2);
    station.WithReadings("2002-03-01", 60, {1, 2, 3}, 2)
        .WithJournalRow("2002-03-01", 2, 1, 2)
        .WithJournalRow("2002-03-01 02:00", 2, 1, 4)
        .WithEquation("2002-01-01", 2, 1, 2, 3)
        .WithTable("2002-03-01 01:00", 2, {{0, 0}, {1, 100}});
    ChannelInfo[2].Calibration = ChannelInfo[2].Conversion = 1;
    LoadSeries(kBegin, kEnd, 2);
    // 3 * (1 + 1 - 1)^2; 3 * (2 + 2 - 1)^2; 100 * (3 + 3)
    QCOMPARE(SeriesText(), QStringLiteral("2002-03-01 00:00:00 3\n2002-03-01 01:00:00 27\n"
                                          "2002-03-01 02:00:00 600"));
}

void TestSeries::ReferencesCarryNothingOver() {
    ScriptedDoors doors;
    StationFixture station(2);
    station.WithReadings("2002-03-01", 60, {1, 1})
        .WithJournalRow("2002-02-01", 1, 0, 5)
        .WithJournalRow("2002-02-02", 1, 0, 10)
        .WithJournalRow("2002-03-01", 2, 0, 7);
    ChannelInfo[1].Calibration = ChannelInfo[2].Calibration = 1;
    LoadSeries(kBegin, kEnd, 1);
    const QString first = SeriesText();
    LoadSeries(kBegin, kEnd, 2);
    QCOMPARE(InstCount, 0);  // channel 2 has no reading
    LoadSeries(kBegin, kEnd, 1);
    QCOMPARE(SeriesText(), first);
    QCOMPARE(first, QStringLiteral("2002-03-01 00:00:00 11\n2002-03-01 01:00:00 11"));
}

void TestSeries::ReadingThatTheJournalVoids() {
    ScriptedDoors doors;
    StationFixture station;
    station.WithReadings("2002-03-01", 60, {1, 2, 3})
        .WithJournalRow("2002-03-01", 1, 0, 1)
        .WithJournalRow("2002-03-01 01:00", 1, 0, {})
        .WithJournalRow("2002-03-01 01:30", 1, 0, 1)
        .WithTable("2002-01-01", 1, {{2, 30}});  // 30 whatever the depth
    ChannelInfo[1].Calibration = ChannelInfo[1].Conversion = 1;
    LoadSeries(kBegin, kEnd, 1);
    QCOMPARE(SeriesText(), QStringLiteral("2002-03-01 00:00:00 30\n2002-03-01 01:00:00 nan\n"
                                          "2002-03-01 02:00:00 30"));
}

void TestSeries::OnlyReadingsAreKept() {
    ScriptedDoors doors;
    StationFixture station(2);
    station.WithRecord("2002-03-01 00:00", {1})
        .WithRecord("2002-03-01 00:15", {{}})
        .WithRecord("2002-03-01 00:30", {3});
    LoadSeries(kBegin, kEnd, 1);
    QCOMPARE(SeriesText(), QStringLiteral("2002-03-01 00:00:00 1\n2002-03-01 00:30:00 3"));
    LoadSeries(kBegin, kEnd, 2);  // rows, but no reading in any: nothing is told
    QCOMPARE(InstCount, 0);
    QCOMPARE(InstTimes.size(), 5U);  // 0 to N + 1
    QCOMPARE(InstValues.size(), 5U);
}

void TestSeries::WhatIsMissingIsTold_data() {
    QTest::addColumn<bool>("offset");
    QTest::addColumn<bool>("rating");
    QTest::addColumn<DateTime>("from");
    QTest::addColumn<QString>("message");

    const QString noRating = QStringLiteral("No rating/conversion data this channel");
    const QString noOffset = QStringLiteral("No offset data for this channel");
    const QString noData = QStringLiteral("No data within dates!");
    QTest::newRow("rating") << false << true << kBegin << noRating;
    QTest::newRow("offset") << true << false << kBegin << noOffset;
    QTest::newRow("both: the rating alone") << true << true << kBegin << noRating;
    QTest::newRow("offset, and no readings") << true << false << At("2010-01-01") << noOffset;
    QTest::newRow("no readings") << false << false << At("2010-01-01") << noData;
    QTest::newRow("begin behind the end") << false << false << At("2002-03-03") << noData;
}

void TestSeries::WhatIsMissingIsTold() {
    QFETCH(bool, offset);
    QFETCH(bool, rating);
    QFETCH(DateTime, from);
    QFETCH(QString, message);
    ScriptedDoors doors;
    StationFixture station(2);
    station.WithReadings("2002-03-01", 720, {1, 2, 3, 4, 5, 6})
        .WithEquation("2002-01-01", 2, 0, 1, 1)
        .WithJournalRow("2002-01-01", 1, 1, 2, false);
    LoadSeries(kBegin, kEnd, 1);
    QCOMPARE(InstCount, 3);

    ChannelInfo[1].Calibration = offset ? 1 : 0;
    ChannelInfo[1].Conversion = rating ? 1 : 0;
    doors.ExpectMessage(message);
    LoadSeries(from, std::max(kEnd, std::floor(from) - 1), 1);
    QCOMPARE(InstCount, 0);
    doors.Verify();
    QCOMPARE(doors.shownMessages[0].title, QStringLiteral("Rillbook"));
    QCOMPARE(doors.shownMessages[0].icon, MsgBoxIcon::Exclamation);
    QCOMPARE(doors.shownMessages[0].buttons, MsgBoxButtons::Ok);
}

void TestSeries::DatabaseFailureLeavesNoSeries_data() {
    QTest::addColumn<QString>("lost");
    QTest::newRow("readings") << "Records";
    QTest::newRow("journal") << "Calibration";
    QTest::newRow("ratings") << "ConversionEq";
    QTest::newRow("rating tables") << "ConversionT";
}

void TestSeries::DatabaseFailureLeavesNoSeries() {
    QFETCH(QString, lost);
    ScriptedDoors doors;
    StationFixture station;
    station.WithReadings("2002-03-01", 60, {1, 2})
        .WithJournalRow("2002-01-01", 1, 1, 2)
        .WithEquation("2002-01-01", 1, 0, 1, 1);
    ChannelInfo[1].Calibration = ChannelInfo[1].Conversion = 1;
    LoadSeries(kBegin, kEnd, 1);
    QCOMPARE(InstCount, 2);

    StationConnection->Execute(QStringLiteral("DROP TABLE ") + lost);
    QString reason;
    try {
        Recordset().Open(QStringLiteral("SELECT * FROM ") + lost, *StationConnection);
    } catch (const AdoError& error) {
        reason = error.Description();
    }
    QVERIFY(!reason.isEmpty());
    doors.ExpectMessage(QStringLiteral("The readings can't be read: ") + reason);
    LoadSeries(kBegin, kEnd, 1);
    QCOMPARE(InstCount, 0);
    QCOMPARE(doors.shownMessages[0].icon, MsgBoxIcon::Exclamation);
}

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestSeries)
#include "tst_series.moc"
