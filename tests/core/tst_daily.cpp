#include <QtTest/QtTest>
#include <numeric>

#include "compute/Compute.h"
#include "compute/Summary.h"
#include "store/FormStuff.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

class TestDaily : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void Days_data();
    void Days();
    void DayOfQuarterHours();
    void StepOfTheIncrementIsNoGap();
};

constexpr double kMinute = 1.0 / 1440;

void TestDaily::Days_data() {
    QTest::addColumn<double>("increment");
    QTest::addColumn<Story>("readings");
    QTest::addColumn<QString>("days");

    QTest::newRow("one reading gives no day")
        << 15 * kMinute << Story([](StationFixture& s) { s.WithReadings("2002-03-01", 15, {3}); })
        << "";
    QTest::newRow("two readings")  // (3 + 5) / 2
        << 15 * kMinute << Story([](StationFixture& s) {
               s.WithReadings("2002-03-01", 15, {3, 5});
           })
        << "2002-03-01 4 3 5 8";
    QTest::newRow("weights of 0.5, 1 and 1 hour")  // (2 * 0.5 + 4 + 6) / 2.5
        << 60 * kMinute << Story([](StationFixture& s) {
               s.WithReadings("2002-03-01", 30, {2, 4, {}, 6});
           })
        << "2002-03-01 4.4 2 6 12";
    QTest::newRow("midnight belongs to the new day")
        << 15 * kMinute << Story([](StationFixture& s) {
               s.WithReadings("2002-03-01 23:45", 15, {2, 4});
           })
        << "2002-03-01 2 2 2 2\n2002-03-02 4 4 4 4";
    QTest::newRow("the last interval before midnight isn't cut there")
        // 23:00 weighs 30 minutes, 23:30 an hour: (2 * 0.5 + 8) / 1.5
        << 60 * kMinute << Story([](StationFixture& s) {
               s.WithReadings("2002-03-01 23:00", 30, {2, 8, {}, 1});
           })
        << "2002-03-01 6 2 8 10\n2002-03-02 1 1 1 1";
    QTest::newRow("a reading ahead of a gap weighs the increment")  // (1 + 4 + 7) / 3
        << 15 * kMinute << Story([](StationFixture& s) {
               s.WithReadings("2002-03-01", 15, {1, 4}).WithRecord("2002-03-01 06:15", {7});
           })
        << "2002-03-01 4 1 7 12";
    QTest::newRow("days without readings have no entry")
        << 15 * kMinute << Story([](StationFixture& s) {
               s.WithReadings("2002-03-01 12:00", 15, {-1, -3})
                   .WithReadings("2002-03-05 12:00", 15, {2, 4});
           })
        << "2002-03-01 -2 -3 -1 -4\n2002-03-05 3 2 4 6";
    QTest::newRow("no time increment, no day") << 0.0 << Story([](StationFixture& s) {
        s.WithReadings("2002-03-01 12:00", 720, {1, 2, 3, 4});
    }) << "";
    // The journal voids what lies in the three hours from 00:00 to 03:00, except at 00:00 itself.
    const auto visits = [](StationFixture& s) {
        ChannelInfo[1].Calibration = 1;
        s.WithJournalRow("2002-03-01", 1, 0, 0)
            .WithJournalRow("2002-03-01 01:30", 1, 0, {})
            .WithJournalRow("2002-03-01 03:00", 1, 0, 0);
    };
    QTest::newRow("readings without a value are left out")  // 2 at 00:00, 5 at 04:00, 8 at 05:00
        << 60 * kMinute << Story([visits](StationFixture& s) {
               visits(s);
               s.WithReadings("2002-03-01", 60, {2, 99, 99, 99, 5, 8});
           })
        << "2002-03-01 5 2 8 15";
    QTest::newRow("only the last reading has a value")
        << 60 * kMinute << Story([visits](StationFixture& s) {
               visits(s);
               s.WithReadings("2002-03-01 02:00", 60, {99, 99, 5});
           })
        << "";
    QTest::newRow("only the first reading has a value")
        << 60 * kMinute << Story([visits](StationFixture& s) {
               visits(s);
               s.WithReadings("2002-03-01", 60, {2, 99, 99});
           })
        << "2002-03-01 2 2 2 2";
}

void TestDaily::Days() {
    QFETCH(double, increment);
    QFETCH(Story, readings);
    ScriptedDoors doors;
    StationFixture station;
    readings(station);
    StationInfo.TimeIncrement = increment;
    LoadDailySeries(At("2002-02-01"), At("2002-04-01"), 1);
    QTEST(DaysText(), "days");
    QVERIFY(InstCount > 0);  // the instantaneous series stays
}

void TestDaily::DayOfQuarterHours() {
    ScriptedDoors doors;
    StationFixture station;
    std::vector<StationFixture::Reading> readings(97);  // the last is the next midnight's
    for (std::size_t i = 0; i < readings.size(); ++i) {
        readings[i] = static_cast<double>(i * i % 61);
    }
    const double sum = std::accumulate(readings.begin(), readings.end() - 1, 0.0,
                                       [](double total, const auto& r) { return total + *r; });
    station.WithReadings("2002-03-01", 15, readings);
    StationInfo.TimeIncrement = 15 * kMinute;
    LoadDailySeries(At("2002-03-01"), At("2002-03-01") + 1.0, 1);
    // The plain average to the last bit: a mean on half a digit must round as it does.
    QCOMPARE(QString::number(DailyMean[1], 'g', 17), QString::number(sum / 96, 'g', 17));
    QCOMPARE(DaysText(), QStringLiteral("2002-03-01 %1 0 60 %2\n2002-03-02 5 5 5 5")
                             .arg(ValueText(sum / 96), ValueText(sum)));
    LoadDailySeries(At("2002-03-01"), At("2002-03-01") + 0.99, 1);
    QCOMPARE(DailyCount, 1);

    doors.ExpectMessage(QStringLiteral("No data within dates!"));
    LoadDailySeries(At("2010-01-01"), At("2010-02-01"), 1);
    QCOMPARE(DailyCount, 0);
}

void TestDaily::StepOfTheIncrementIsNoGap() {
    for (const int seconds : {1, 60, 300, 900, 3600, 5400}) {
        for (int n = 1; n < 5000; ++n) {
            const DateTime step = MomentOf(37000, n * seconds) - MomentOf(37000, (n - 1) * seconds);
            QVERIFY2(!IsGap(step, MomentOf(0, seconds)), qPrintable(QString::number(seconds)));
        }
        QVERIFY(IsGap(MomentOf(0, seconds + 1), MomentOf(0, seconds)));
    }
}

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestDaily)
#include "tst_daily.moc"
