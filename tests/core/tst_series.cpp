#include <cmath>

#include "compute/Compute.h"
#include "compute/Summary.h"
#include "import/Import.h"
#include "tests/support/CoreTest.h"

namespace rillbook {

const DateTime kBegin = At("2002-03-01");
const DateTime kEnd = At("2002-03-02");

const QString kFieldFolder = QStringLiteral(RILLBOOK_SOURCE_DIR "/../shared/data/");

// The lines of a file as columns.
QList<QStringList> Lines(const QString& name) {
    QList<QStringList> lines;
    for (const QString& line :
         QString::fromLatin1(ReadBytes(kFieldFolder + name)).split(u'\n', Qt::SkipEmptyParts)) {
        lines += line.trimmed().split(u',');
    }
    return lines;
}

class TestSeries : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void BoundsAreInclusive() {
        ScriptedDoors doors;
        StationFixture station;
        Tell(station,
             u"readings 2002-03-02 every 60: 5; readings 2002-02-28 23:59:59 every 60: 1; "
             "readings 2002-03-01 every 60: 2; readings 2002-03-01 23:45:37 every 60: 4; "
             "readings 2002-03-01 23:45:36 every 60: 3; "
             "readings 2002-03-02 00:00:01 every 60: 6"_qs);
        const auto between = [](DateTime from, DateTime to) {
            LoadSeries(from, to, 1);
            return ValuesText();
        };
        // Reports pass their last day + 1, the yearly sheet its last day + 0.99: 23:45:36.
        QCOMPARE(between(kBegin, kBegin + 1.0), u"2 3 4 5"_qs);
        QCOMPARE(between(kBegin, kBegin + 0.99), u"2 3"_qs);
        QCOMPARE(between(kEnd, kEnd), u"5"_qs);
    }

    // The stories begin with hourly readings from 2002-03-01 on.
    void Corrections_data() {
        const DataRows<QString, QString, QString> row("rule", "story", "values");
        row("records without a reading are left out", "1 - 3", "1 3");

        // 0.10 at the first visit, 0.30 at the second; a quarter of the way: 0.10 + 0.25 * 0.20
        row("straight line between two visits, constant beyond",
            "0; readings 1890-01-01 every 60: 0; readings 2002-03-02 every 1440: 0 0 0 0 0; "
            "readings 4000-01-01 every 60: 0; visit 2002-03-05: 2 2.3; visit 2002-03-01: 1 1.1",
            "0.1 0.1 0.15 0.2 0.25 0.3 0.3 0.3");
        row("visits long before the readings; those not in use and of other channels take no part",
            "0 0 0; visit 2002-01-01: 1 9; visit 2002-02-01: 1 5; visit 2002-03-01: 3 1; unused "
            "2002-03-01 01:00: 0 100; visit2 2002-03-01 01:00: 0 200; visit 2002-03-01 02:00: 3 2",
            "-2 -1.5 -1");
        row("two visits at one time: a step",
            "0 0 0 0 0; visit 2002-03-01: 0 1; visit 2002-03-01 02:00: 0 2; "
            "visit 2002-03-01 02:00: 0 6; visit 2002-03-01 04:00: 0 8",
            "1 1.5 2 7 8");
        row("a visit without a reading voids both of its intervals",
            "0 0 0 0 0 0; visit 2002-03-01: 0 1; visit 2002-03-01 02:00: - 2; "
            "visit 2002-03-01 04:00: 0 3",
            "1 nan nan nan nan 3");

        // 3 * (3 - 1)^2, and no flow at or below 1
        row("equation", "3 1.5 1 0.5 -4; equation 2002-01-01: 1 2 3", "12 0.75 0 0 0");
        // Slopes 20 and 10: below 1 the first goes on, above 4 the second.
        row("table", "3 2 4 1 0.5 0 5 1.25; table 2002-01-01: 4 50 1 10 2 30",
            "40 30 50 10 0 -10 60 15");
        row("equal depths at both ends",
            "0.5 1 1.5 3 4; table 2002-01-01: 1 10 1 10 2 30 3 40 3 40", "10 10 20 40 40");
        row("the first rating serves before its time, the others just after theirs",
            "1 1 1; readings 1850-01-01 every 60: 1; readings 5000-01-01 every 60: 1; "
            "equation 2002-03-01: 0 1 7; equation2 2002-03-01: 0 1 9; "
            "equation 2002-03-01 01:00: 0 1 8",
            "7 7 7 8 8");
        // Both apply from just after their time, and each table where it is its turn.
        row("tables and an equation by turns",
            "1 1 1 1 1 1; table 2002-01-01: 0 0 1 10; table 2002-03-01: 0 0 1 20; equation "
            "2002-03-01 01:00: 0 1 7; table 2002-03-01 04:00: 0 0 1 30; table2 2002-03-01: 0 0 1 9",
            "10 20 7 7 7 30");

        // 3 * (1 + 1 - 1)^2; 3 * (2 + 2 - 1)^2; 100 * (3 + 3)
        row("the rating sees the corrected reading",
            "1 2 3; visit 2002-03-01: 1 2; visit 2002-03-01 02:00: 1 4; "
            "equation 2002-01-01: 1 2 3; table 2002-03-01 01:00: 0 0 1 100",
            "3 27 600");
        // The table gives 30 whatever the depth.
        row("a reading that the journal voids",
            "1 2 3; visit 2002-03-01: 0 1; visit 2002-03-01 01:00: 0 -; "
            "visit 2002-03-01 01:30: 0 1; table 2002-01-01: 2 30",
            "30 nan 30");
    }
    void Corrections() {
        QFETCH(QString, story);
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station, u"readings 2002-03-01 every 60: "_qs + story);
        // Only 1 turns a step on.
        ChannelInfo[1].Calibration = story.contains(u"visit ") ? 1 : 2;
        ChannelInfo[1].Conversion =
            story.contains(u"equation ") || story.contains(u"table ") ? 1 : 2;
        LoadSeries(At("1800-01-01"), At("6000-01-01"), 2);
        QCOMPARE(InstCount, 0);  // it has rows without readings, which isn't told
        LoadSeries(At("1800-01-01"), At("6000-01-01"), 1);
        QTEST(ValuesText(), "values");
    }

    void RatingsOfOlderReleases() {
        ScriptedDoors doors;
        StationFixture station;
        Tell(station, u"readings 2002-03-01 every 60: 2 3; table 2002-01-01: 0 0 1 5"_qs);
        ChannelInfo[1].Conversion = 1;
        StationConnection->Execute(u"UPDATE ConversionEq SET RatingTable = NULL"_qs);
        LoadSeries(kBegin, kEnd, 1);
        QCOMPARE(ValuesText(), u"10 15"_qs);
        Tell(station, u"equation 2002-02-01: 1 2 3"_qs);
        StationConnection->Execute(u"ALTER TABLE ConversionEq DROP COLUMN RatingTable"_qs);
        LoadSeries(kBegin, kEnd, 1);
        QCOMPARE(ValuesText(), u"3 12"_qs);
    }

    // The rest of the report is as it would be without them.
    void RowsWithoutATimeAreLeftOut() {
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station,
             u"readings 2002-03-01 every 60: 1 2; table 2002-01-01: 0 0 1 100; "
             "visit 2002-01-01: 1 2"_qs);
        for (const char* row :
             {"Calibration VALUES (NULL, 1, 0, 9, 1, NULL, NULL)",
              "ConversionEq VALUES (NULL, 1, 0, 1, 7, NULL, 0)",
              "ConversionT VALUES (1, NULL, 0, 7)", "ConversionT VALUES (1, 'x', 1, 7)"}) {
            StationConnection->Execute(u"INSERT INTO "_qs + QLatin1String(row));
        }
        ChannelInfo[1].Calibration = ChannelInfo[1].Conversion = 1;
        for (int report = 0; report < 2; ++report) {
            doors.ExpectMessage(
                u"Rows without a date and time are left out "
                "(ratings: 1, points of rating tables: 2, journal: 1)."_qs);
            BeginReport();
            LoadSeries(kBegin, kEnd, 1);
            LoadSeries(kBegin, kEnd, 1);
            QCOMPARE(ValuesText(), u"200 300"_qs);
        }
    }

    void WhatIsMissingIsTold() {
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station,
             u"readings 2002-03-01 every 720: 1 2 3 4 5 6; "
             "equation2 2002-01-01: 0 1 1; unused 2002-01-01: 1 2"_qs);
        const auto load = [&doors](DateTime from, DateTime to, const QString& message) {
            InstCount = DailyCount = 9;  // of another channel
            doors.ExpectMessage(message);
            LoadDailySeries(from, to, 1);
            QCOMPARE(InstCount + DailyCount, 0);
        };
        load(At("2010-01-01"), At("2010-01-02"), u"No data within dates!"_qs);
        load(kEnd + 1, kEnd, u"No data within dates!"_qs);
        ChannelInfo[1].Calibration = 1;
        load(kBegin, kEnd, u"No offset data for this channel"_qs);
        ChannelInfo[1].Conversion = 1;
        load(kBegin, kEnd, u"No rating/conversion data this channel"_qs);
        Tell(station, u"equation 2002-01-01: 0 1 1; visit 2002-01-01: 0 1"_qs);
        // Each is missed before the one that is lost already.
        for (const char* lost : {"Records", "Calibration", "ConversionT", "ConversionEq"}) {
            StationConnection->Execute(u"DROP TABLE "_qs + QLatin1String(lost));
            load(kBegin, kEnd,
                 u"The readings can't be read: no such table: "_qs + QLatin1String(lost));
        }
    }

    // The increment is an hour.
    void Days_data() {
        const DataRows<QString, QString, QString> row("rule", "story", "days");
        // (2 * 0.5 + 4 + 6) / 2.5
        row("weights of 0.5, 1 and 1 hour", "readings 2002-03-01 every 30: 2 4 - 6",
            "2002-03-01 4.4 2 6 12");
        row("midnight belongs to the new day", "readings 2002-03-01 23:00 every 60: 2 4",
            "2002-03-01 2 2 2 2\n2002-03-02 4 4 4 4");
        // 23:00 weighs 30 minutes, 23:30 an hour: (2 * 0.5 + 8) / 1.5
        row("an interval isn't cut at midnight", "readings 2002-03-01 23:00 every 30: 2 8 - 1",
            "2002-03-01 6 2 8 10\n2002-03-02 1 1 1 1");
        row("days without readings have no entry",
            "readings 2002-03-01 12:00 every 60: -1 -3; readings 2002-03-05 12:00 every 60: 2 4",
            "2002-03-01 -2 -3 -1 -4\n2002-03-05 3 2 4 6");
        // The journal voids what lies in the three hours from 00:00 to 03:00, except at 00:00.
        const QString visits =
            u"visit 2002-03-01: 0 0; visit 2002-03-01 01:30: 0 -; visit 2002-03-01 03:00: 0 0; "_qs;
        row("readings without a value are left out",  // 2 at 00:00, 5 at 04:00, 8 at 05:00
            visits + u"readings 2002-03-01 every 60: 2 99 99 99 5 8"_qs, "2002-03-01 5 2 8 15");
        row("only the last reading has a value",
            visits + u"readings 2002-03-01 02:00 every 60: 99 99 5"_qs, "");
    }
    void Days() {
        QFETCH(QString, story);
        ScriptedDoors doors;
        StationFixture station;
        Tell(station, story);
        ChannelInfo[1].Calibration = story.startsWith(u"visit") ? 1 : 0;
        StationInfo.TimeIncrement = 1.0 / 24;
        LoadDailySeries(At("2002-02-01"), At("2002-04-01"), 1);
        QTEST(DaysText(), "days");
        QVERIFY(InstCount > 0);  // the instantaneous series stays
    }

    // To the last bit: a mean on half a digit must round as the plain average does.
    void MeanOfEvenReadingsIsThePlainAverage() {
        ScriptedDoors doors;
        StationFixture station;
        Tell(station,
             u"readings 2002-03-01 every 15: 0 1 4 9 16 25 36 49 3 20 39 60 22 47 13 42 12"_qs);
        StationInfo.TimeIncrement = 15 / 1440.0;
        LoadDailySeries(kBegin, kEnd, 1);
        QVERIFY(DailyMean[1] == DailyTotal[1] / 17);
        StationInfo.TimeIncrement = 0;  // no reading weighs anything
        LoadDailySeries(kBegin, kEnd, 1);
        QCOMPARE(DailyCount, 0);
    }

    // Loggers' own files against what their owners published.
    void StageCorrectedByTheJournal() {
        if (!QDir(kFieldFolder).exists()) {
            QSKIP("The field data isn't on this machine");
        }
        ScriptedDoors doors;
        StationFixture station;
        doors.ExpectMessage(ImportMessage(8841, 0, 0));
        ImportFile(kFieldFolder + u"type1_stage_raw.csv"_qs);
        Tell(station,
             u"visit 2019-08-21 11:45: 0 9; visit 2019-09-20 10:45: 0 9.75; "
             "visit 2019-09-20 11:15: 0 9; visit 2019-10-24 11:00: 0 9.3; "
             "visit 2019-10-24 11:30: 0 9; visit 2019-11-21 13:45: 0 10.5"_qs);
        ChannelInfo[1].Calibration = 1;
        LoadSeries(At("2019-08-21"), At("2019-11-22"), 1);
        QStringList differing;
        std::size_t i = 0;
        for (const QStringList& row : Lines(u"type1_stage_corrected_expected.csv"_qs)) {
            QCOMPARE(MomentText(InstTimes.at(++i)), row[0] + u":00"_qs);
            const bool byHand = row[3] == u"1";
            if (!byHand && !(std::abs(InstValues[i] - row[2].toDouble()) <= 1e-5)) {
                differing += row[0] + u' ' + row[2];
            }
        }
        QCOMPARE(differing.join(u'\n'), QString());
        QCOMPARE(static_cast<std::size_t>(InstCount), i);
    }

    void DailyMeansOfDischarge() {
        if (!QDir(kFieldFolder).exists()) {
            QSKIP("The field data isn't on this machine");
        }
        ScriptedDoors doors;
        StationFixture station;
        StationInfo.ImportType = 1;
        StationInfo.TimeIncrement = MomentOf(0, 15 * 60);
        doors.ExpectMessage(ImportMessage(216115, 0, 24));
        ImportFile(kFieldFolder + u"type2_discharge_15min.csv"_qs);
        LoadDailySeries(At("2008-01-01"), At("2016-01-01"), 1);
        QHash<QString, double> means;
        for (std::size_t i = 1; i <= static_cast<std::size_t>(DailyCount); ++i) {
            means.insert(MomentText(DailyDates[i]).left(10), DailyMean[i]);
        }
        int compared = 0;
        int withinHalf = 0;
        for (const QStringList& row : Lines(u"type2_discharge_published_daily.csv"_qs)) {
            if (row.last() == u"1" && means.contains(row[0])) {
                const double published = row[1].toDouble();
                const double difference = std::abs(means.value(row[0]) - published);
                ++compared;
                withinHalf += difference <= std::max(0.0051 * published, 0.005) ? 1 : 0;
            }
        }
        // The published rule takes trapezoids from midnight to midnight, so that not every day
        // agrees.
        QCOMPARE(QList<int>({compared, withinHalf}), QList<int>({1575, 1415}));
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestSeries)
#include "tst_series.moc"
