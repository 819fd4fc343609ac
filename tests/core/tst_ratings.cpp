#include <QtTest/QtTest>

#include "compute/Ratings.h"
#include "platform/ado/Connection.h"
#include "store/StationDatabase.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

class TestRatings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void FlowOfDepth_data();
    void FlowOfDepth();
    void FlowInTime_data();
    void FlowInTime();
};

void Load() {
    LoadRatingRows(1);
    LoadRatingTables(1);
    RatingCursor = TableCursor = 1;
}

void TestRatings::FlowOfDepth_data() {
    QTest::addColumn<Story>("rating");
    QTest::addColumn<QList<double>>("depths");
    QTest::addColumn<QString>("flows");

    QTest::newRow("equation")  // 3 * (3 - 1)^2, and no flow at or below 1
        << Story([](StationFixture& s) { s.WithEquation("2002-01-01", 1, 1, 2, 3); })
        << QList<double>{3, 1.5, 1, 0.5, -4} << "12 0.75 0 0 0";
    QTest::newRow("equation of a fractional exponent")  // 2 * 4^1.5, 2 * 0.25^1.5
        << Story([](StationFixture& s) { s.WithEquation("2002-01-01", 1, -0.5, 1.5, 2); })
        << QList<double>{3.5, -0.25} << "16 0.25";
    QTest::newRow("equation beyond the doubles")
        << Story([](StationFixture& s) { s.WithEquation("2002-01-01", 1, 0, 400, 1); })
        << QList<double>{10} << "inf";
    // Slopes 20 and 10: below 1 the first goes on, above 4 the second.
    QTest::newRow("table") << Story([](StationFixture& s) {
        s.WithTable("2002-01-01", 1, {{4, 50}, {1, 10}, {2, 30}});
    }) << QList<double>{3, 2, 4, 1, 0.5, 0, 5, 1.25}
                           << "40 30 50 10 0 -10 60 15";
    QTest::newRow("table of one point") << Story([](StationFixture& s) {
        s.WithTable("2002-01-01", 1, {{2, 30}});
    }) << QList<double>{0, 2, 9} << "30 30 30";
    QTest::newRow("equal depths at both ends") << Story([](StationFixture& s) {
        s.WithTable("2002-01-01", 1, {{1, 10}, {1, 10}, {2, 30}, {3, 40}, {3, 40}});
    }) << QList<double>{0.5, 1, 1.5, 3, 4} << "10 10 20 40 40";
    QTest::newRow("table's row without points")
        << Story([](StationFixture& s) { s.WithTable("2002-01-01", 1, {}); })
        << QList<double>{-1, 0, 0.5, 7} << "-1 0 0.5 7";
    QTest::newRow("row that isn't told apart yet") << Story([](StationFixture& s) {
        s.WithTable("2002-01-01", 1, {{0, 0}, {1, 5}});
        StationConnection->Execute(QStringLiteral("UPDATE ConversionEq SET RatingTable = NULL"));
    }) << QList<double>{2} << "10";
    QTest::newRow("file of an older release") << Story([](StationFixture& s) {
        s.WithEquation("2002-01-01", 1, 1, 2, 3);
        StationConnection->Execute(
            QStringLiteral("ALTER TABLE ConversionEq DROP COLUMN RatingTable"));
    }) << QList<double>{3} << "12";
}

void TestRatings::FlowOfDepth() {
    QFETCH(Story, rating);
    QFETCH(QList<double>, depths);
    ScriptedDoors doors;
    StationFixture station;
    rating(station);
    Load();
    QStringList flows;
    for (const double depth : depths) {
        flows += ValueText(ApplyRating(At("2002-06-01"), depth));
    }
    QTEST(flows.join(QLatin1Char(' ')), "flows");
}

void TestRatings::FlowInTime_data() {
    QTest::addColumn<Story>("ratings");
    QTest::addColumn<QString>("times");
    QTest::addColumn<QString>("flows");

    QTest::newRow("one rating serves all time")
        << Story([](StationFixture& s) { s.WithEquation("2002-03-01", 1, 0, 1, 7); })
        << "1850-01-01,2002-02-28,2002-03-01,2002-03-02,5000-01-01"
        << "7 7 7 7 7";
    QTest::newRow("a rating applies from just after its time") << Story([](StationFixture& s) {
        s.WithEquation("2002-03-01", 1, 0, 1, 7)
            .WithEquation("2002-04-01", 2, 0, 1, 100)
            .WithEquation("2002-05-01 12:00", 1, 0, 1, 8);
    }) << "2002-02-01,2002-04-02,2002-05-01 12:00,2002-05-01 12:00:01"
                                                               << "7 7 7 8";
    // A depth of 1: tables give 10, 20 and 30, the equation 7. The second table comes into force
    // while the equation rules, and its time is past when the third takes over.
    QTest::newRow("tables and an equation by turns") << Story([](StationFixture& s) {
        s.WithTable("2002-01-01", 1, {{0, 0}, {1, 10}})
            .WithTable("2002-02-01", 1, {{0, 0}, {1, 20}})
            .WithEquation("2002-02-02", 1, 0, 1, 7)
            .WithTable("2002-03-01", 1, {{0, 0}, {1, 30}})
            .WithTable("2002-03-01", 2, {{0, 0}, {1, 900}});
    }) << "2001-01-01,2002-02-01,2002-02-01 00:01,2002-02-15,2002-03-01,2002-03-02,4000-01-01"
                                                     << "10 10 20 7 7 30 30";
}

void TestRatings::FlowInTime() {
    QFETCH(Story, ratings);
    QFETCH(QString, times);
    ScriptedDoors doors;
    StationFixture station(2);
    ratings(station);
    Load();
    QTEST(AtEach(times, [](DateTime t) { return ValueText(ApplyRating(t, 1)); }), "flows");
}

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestRatings)
#include "tst_ratings.moc"
