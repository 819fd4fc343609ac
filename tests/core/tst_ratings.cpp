#include <QtTest/QtTest>

#include "compute/Ratings.h"
#include "platform/ado/Connection.h"
#include "store/StationDatabase.h"
#include "tests/support/DataRows.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

class TestRatings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void FlowOfDepth_data() {
        const DataRows<QString, QString, QString, QString> row("rule", "rating", "depths", "flows");
        // 3 * (3 - 1)^2, and no flow at or below 1
        row("equation", "equation 2002-01-01: 1 2 3", "3 1.5 1 0.5 -4", "12 0.75 0 0 0");
        // 2 * 4^1.5, 2 * 0.25^1.5
        row("fractional exponent", "equation 2002-01-01: -0.5 1.5 2", "3.5 -0.25", "16 0.25");
        row("beyond the doubles", "equation 2002-01-01: 0 400 1", "10", "inf");
        // Slopes 20 and 10: below 1 the first goes on, above 4 the second.
        row("table", "table 2002-01-01: 4 50 1 10 2 30", "3 2 4 1 0.5 0 5 1.25",
            "40 30 50 10 0 -10 60 15");
        row("one point", "table 2002-01-01: 2 30", "0 2 9", "30 30 30");
        row("equal depths at both ends", "table 2002-01-01: 1 10 1 10 2 30 3 40 3 40",
            "0.5 1 1.5 3 4", "10 10 20 40 40");
        row("no points", "table 2002-01-01:", "-1 0 0.5 7", "-1 0 0.5 7");
    }
    void FlowOfDepth() {
        QFETCH(QString, rating);
        QFETCH(QString, depths);
        ScriptedDoors doors;
        StationFixture station;
        Tell(station, rating);
        QTEST(Flows(depths), "flows");
    }

    void RowsOfOlderReleases() {
        ScriptedDoors doors;
        StationFixture station;
        Tell(station, QStringLiteral("table 2002-01-01: 0 0 1 5"));
        StationConnection->Execute(QStringLiteral("UPDATE ConversionEq SET RatingTable = NULL"));
        QCOMPARE(Flows(QStringLiteral("2")), QStringLiteral("10"));
        Tell(station, QStringLiteral("equation 2002-02-01: 1 2 3"));
        StationConnection->Execute(
            QStringLiteral("ALTER TABLE ConversionEq DROP COLUMN RatingTable"));
        QCOMPARE(Flows(QStringLiteral("3")), QStringLiteral("12"));
    }

    void FlowInTime_data() {
        const DataRows<QString, QString, QString, QString> row("rule", "ratings", "times", "flows");
        row("one rating serves all time", "equation 2002-03-01: 0 1 7",
            "1850-01-01,2002-02-28,2002-03-01,2002-03-02,5000-01-01", "7 7 7 7 7");
        row("a rating applies from just after its time",
            "equation 2002-03-01: 0 1 7; equation2 2002-04-01: 0 1 100; "
            "equation 2002-05-01 12:00: 0 1 8",
            "2002-02-01,2002-04-02,2002-05-01 12:00,2002-05-01 12:00:01", "7 7 7 8");
        // A depth of 1: tables give 10, 20 and 30, the equation 7. The second table comes into
        // force while the equation rules, and its time is past when the third takes over.
        row("tables and an equation by turns",
            "table 2002-01-01: 0 0 1 10; table 2002-02-01: 0 0 1 20; equation 2002-02-02: 0 1 7; "
            "table 2002-03-01: 0 0 1 30; table2 2002-03-01: 0 0 1 900",
            "2001-01-01,2002-02-01,2002-02-01 00:01,2002-02-15,2002-03-01,2002-03-02,4000-01-01",
            "10 10 20 7 7 30 30");
    }
    void FlowInTime() {
        QFETCH(QString, ratings);
        QFETCH(QString, times);
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station, ratings);
        Load();
        QTEST(AtEach(times, [](DateTime t) { return ValueText(ApplyRating(t, 1)); }), "flows");
    }

private:
    static void Load() {
        LoadRatingRows(1);
        LoadRatingTables(1);
        RatingCursor = TableCursor = 1;
    }
    static QString Flows(const QString& depths) {
        Load();
        QStringList flows;
        for (const QString& depth : depths.split(QLatin1Char(' '))) {
            flows += ValueText(ApplyRating(At("2002-06-01"), depth.toDouble()));
        }
        return flows.join(QLatin1Char(' '));
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestRatings)
#include "tst_ratings.moc"
