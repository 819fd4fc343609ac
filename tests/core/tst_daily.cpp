#include <QtTest/QtTest>
#include <numeric>

#include "compute/Compute.h"
#include "compute/Summary.h"
#include "store/FormStuff.h"
#include "tests/support/DataRows.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

class TestDaily : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void Days_data() {
        const DataRows<QString, int, QString, QString> row("rule", "increment", "story", "days");
        row("one reading gives no day", 15, "readings 2002-03-01 every 15: 3", "");
        // (2 * 0.5 + 4 + 6) / 2.5
        row("weights of 0.5, 1 and 1 hour", 60, "readings 2002-03-01 every 30: 2 4 - 6",
            "2002-03-01 4.4 2 6 12");
        row("midnight belongs to the new day", 15, "readings 2002-03-01 23:45 every 15: 2 4",
            "2002-03-01 2 2 2 2\n2002-03-02 4 4 4 4");
        // 23:00 weighs 30 minutes, 23:30 an hour: (2 * 0.5 + 8) / 1.5
        row("an interval isn't cut at midnight", 60, "readings 2002-03-01 23:00 every 30: 2 8 - 1",
            "2002-03-01 6 2 8 10\n2002-03-02 1 1 1 1");
        row("a reading ahead of a gap weighs the increment", 15,  // (1 + 4 + 7) / 3
            "readings 2002-03-01 every 15: 1 4; readings 2002-03-01 06:15 every 15: 7",
            "2002-03-01 4 1 7 12");
        row("days without readings have no entry", 15,
            "readings 2002-03-01 12:00 every 15: -1 -3; readings 2002-03-05 12:00 every 15: 2 4",
            "2002-03-01 -2 -3 -1 -4\n2002-03-05 3 2 4 6");
        row("no time increment, no day", 0, "readings 2002-03-01 12:00 every 720: 1 2 3 4", "");
        // The journal voids what lies in the three hours from 00:00 to 03:00, except at 00:00.
        const QString visits =
            u"visit 2002-03-01: 0 0; visit 2002-03-01 01:30: 0 -; visit 2002-03-01 03:00: 0 0; "_qs;
        row("readings without a value are left out", 60,  // 2 at 00:00, 5 at 04:00, 8 at 05:00
            visits + u"readings 2002-03-01 every 60: 2 99 99 99 5 8"_qs, "2002-03-01 5 2 8 15");
        row("only the last reading has a value", 60,
            visits + u"readings 2002-03-01 02:00 every 60: 99 99 5"_qs, "");
        row("only the first reading has a value", 60,
            visits + u"readings 2002-03-01 every 60: 2 99 99"_qs, "2002-03-01 2 2 2 2");
    }
    void Days() {
        QFETCH(int, increment);
        QFETCH(QString, story);
        ScriptedDoors doors;
        StationFixture station;
        Tell(station, story);
        ChannelInfo[1].Calibration = story.startsWith(u"visit") ? 1 : 0;
        StationInfo.TimeIncrement = increment / 1440.0;
        LoadDailySeries(At("2002-02-01"), At("2002-04-01"), 1);
        QTEST(DaysText(), "days");
        QVERIFY(InstCount > 0);  // the instantaneous series stays
    }

    void DayOfQuarterHours() {
        ScriptedDoors doors;
        StationFixture station;
        std::vector<StationFixture::Reading> readings(97);  // the last is the next midnight's
        for (std::size_t i = 0; i < readings.size(); ++i) {
            readings[i] = static_cast<double>(i * i % 61);
        }
        const double sum = std::accumulate(readings.begin(), readings.end() - 1, 0.0,
                                           [](double total, const auto& r) { return total + *r; });
        station.WithReadings("2002-03-01", 15, readings);
        StationInfo.TimeIncrement = 15 / 1440.0;
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

    void StepOfTheIncrementIsNoGap() {
        for (const int seconds : {1, 60, 300, 900, 3600, 5400}) {
            for (int n = 1; n < 5000; ++n) {
                const DateTime step =
                    MomentOf(37000, n * seconds) - MomentOf(37000, (n - 1) * seconds);
                QVERIFY2(!IsGap(step, MomentOf(0, seconds)), qPrintable(QString::number(seconds)));
            }
            QVERIFY(IsGap(MomentOf(0, seconds + 1), MomentOf(0, seconds)));
        }
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestDaily)
#include "tst_daily.moc"
