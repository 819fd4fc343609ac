#include <QRegularExpression>
#include <QtTest/QtTest>
#include <cmath>

#include "app/SharedState.h"
#include "compute/Compute.h"
#include "compute/Summary.h"
#include "graphs/Chart.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/CompareEach.h"
#include "tests/support/RecordingSurface.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

namespace {

const double b = kBlank;

QString Digits(double value) {
    return std::isnan(value) ? u"-"_qs : QString::number(value, 'g', 15);
}

// "2002-01-01 00:15:00 1.2 -" a point, with "-" for a blank; a blank row is "gap".
QString PointsText(const ChartPoints& points, std::size_t columns) {
    QStringList lines;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(points.count); ++i) {
        const ChartRow& row = points.table[i];
        QString line = std::isnan(row.date) ? u"gap"_qs : MomentText(row.date);
        for (std::size_t k = 0; k < columns && !std::isnan(row.date); ++k) {
            line += u' ' + Digits(row.values[k]);
        }
        lines += line;
    }
    return lines.join(u'\n');
}

// Four days of 1000 twips and 50 units of 40, where the plot is 4000 by 2000: from its corner 10.5
// is 1600 down, 25.5 is 1000.
void DrawExample(DrawingSurface& surface) {
    RegionalSettings().decimalSign = QStringLiteral(",");
    const DateTime day = At("2002-01-30");
    MeasuredDates = {0, day + 2, day - 200, day - 199, day + 204};
    // The second and the last are on the limits, not inside.
    MeasuredValues = {0, 25.5, 25.5, 25.5, 25.5};
    MeasuredCount = 4;
    const ChartTable data{{}, {day, {10.5, b, 0.5, 99}},   {day + 1, {30.5, b, 50.5, 99}},
                          {}, {day + 2, {20.5, b, b, 99}}, {day + 3, {60.5, b, b, 99}},
                          {}};
    const ChartTexts texts{.title1 = QStringLiteral("Weir - Stage"),
                           .title2 = QStringLiteral("Upper Creek"),
                           .xTitle = QStringLiteral("Date"),
                           .yTitle = QStringLiteral("ft")};
    DrawChart(data, day, day + 4, 0.5, 50.5, texts, 3, 6, false, surface);
}

const char* const kPicture = R"(line 820,2220 1820,1420 width 1 (0,0,225)
line 2820,1820 3820,220 width 1 (0,0,225)
line 820,2620 1820,620 width 1 (0,140,0)
circle 2820,1620 radius 34 black, filled black
circle -198180,1620 radius 34 black, filled black
circle 3170,820 radius 34 black, filled black
text 3270,720 Arial 8 black "Measured Values"
text 470,2640 Arial 8 black "1/30/02"
text 1470,2640 Arial 8 black "1/31/02"
text 2520,2640 Arial 8 black "2/1/02"
text 3520,2640 Arial 8 black "2/2/02"
text 4520,2640 Arial 8 black "2/3/02"
text 420,2520 Arial 8 black "0,5"
text 320,2120 Arial 8 black "10,5"
text 320,1720 Arial 8 black "20,5"
text 320,1320 Arial 8 black "30,5"
text 320,920 Arial 8 black "40,5"
text 320,520 Arial 8 black "50,5")";

}  // namespace

class TestChart : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { ResetSharedState(); }
    void cleanup() {
        ResetSharedState();
        RegionalSettings() = Regional();
    }

    void DateLines() {
        RegionalSettings().shortDate = u"dd.MM.yyyy"_qs;  // labels put the month first
        // How many light and dark lines; the first two labels and the last.
        const auto lines = [](const QString& fromAndDays) {
            const DateTime from = At(qPrintable(fromAndDays.left(10)));
            const DateAxis axis = DateAxisLines(from, from + fromAndDays.mid(11).toDouble());
            QString text = u"%1 %2"_qs.arg(axis.minorLines.size()).arg(axis.majorLines.size());
            for (std::size_t i = 0; i < axis.labels.size(); ++i) {
                if (i < 2 || i + 1 == axis.labels.size()) {
                    text += u", "_qs + DateLabelText(axis.labels[i], axis.labelsHaveTime);
                }
            }
            return text;
        };
        CompareEach(lines,
                    "2005-01-10 0.5 => 0 0; 2005-01-10 3.5 => 0 0; "
                    "2005-01-10 1 => 25 3, 1/10/05 00:00, 1/10/05 12:00, 1/11/05 00:00; "
                    "2005-01-10 3 => 73 7, 1/10/05 00:00, 1/10/05 12:00, 1/13/05 00:00; "
                    "2005-01-10 4 => 17 5, 1/10/05, 1/11/05, 1/14/05; "
                    "2005-01-10 10 => 41 11, 1/10/05, 1/11/05, 1/20/05; "
                    "2005-01-10 11 => 23 6, 1/10/05, 1/12/05, 1/20/05; "
                    "2005-01-10 24 => 49 13, 1/10/05, 1/12/05, 2/3/05; "
                    "2005-01-10 25 => 26 4, 1/10/05, 1/17/05, 1/31/05; "
                    "2005-01-10 89 => 90 13, 1/10/05, 1/17/05, 4/4/05; "
                    "2005-01-10 90 => 0 3, 2/1/05, 3/1/05, 4/1/05; "
                    "2007-10-01 366 => 0 13, 10/1/07, 11/1/07, 10/1/08; "
                    "1999-11-15 367 => 0 12, 12/1/99, 3/1/00, 9/1/00; "
                    "9999-10-15 1e12 => 0 2, 11/1/99");
    }

    void Gaps() {
        const ScriptedDoors doors;
        StationFixture station;
        QCOMPARE(PointsText(InstantaneousPoints(1), 1), u"gap"_qs);
        QCOMPARE(PointsText(DailyPoints(ShownSeries(11111)), 4), u"gap"_qs);
        Tell(station,
             u"readings 2002-03-01 10:00 every 60: 1 3 - 5; readings 2002-03-02 10:00 every 60: 2 "
             "6; readings 2002-03-04 10:00 every 60: 5 5"_qs);
        StationInfo.TimeIncrement = 1.0 / 24;
        LoadDailySeries(At("2002-03-01"), At("2002-03-31"), 1);
        QCOMPARE(PointsText(InstantaneousPoints(1.0 / 24), 1),
                 u"2002-03-01 10:00:00 1\n2002-03-01 11:00:00 3\ngap\n2002-03-01 13:00:00 5\ngap\n"
                 "2002-03-02 10:00:00 2\n2002-03-02 11:00:00 6\ngap\n"
                 "2002-03-04 10:00:00 5\n2002-03-04 11:00:00 5\ngap"_qs);
        QCOMPARE(PointsText(DailyPoints(ShownSeries(-11111)), 4),
                 u"2002-03-01 00:00:00 3 1 5 9\n2002-03-02 00:00:00 4 2 6 8\ngap\n"
                 "2002-03-04 00:00:00 5 5 5 10\ngap"_qs);
        QCOMPARE(PointsText(DailyPoints(ShownSeries(10203)), 4),
                 u"2002-03-01 00:00:00 - 1 - 9\n2002-03-02 00:00:00 - 2 - 8\ngap\n"
                 "2002-03-04 00:00:00 - 5 - 10\ngap"_qs);
    }

    void MeasuredOfTheJournal() {
        const ScriptedDoors doors;
        StationFixture station(2);
        station.WithJournalRow("2002-05-01 12:00", 1, 1, 1.5, false, 40)
            .WithJournalRow("2002-03-01", 1, {}, 2)
            .WithJournalRow("2002-04-01", 1, 3, {}, true, 60)
            .WithJournalRow("2002-04-02", 2, 3, 9);
        const auto measured = [] {
            LoadMeasuredValues(1);
            ChartPoints points{ChartTable(1), MeasuredCount};
            for (std::size_t i = 1; i <= static_cast<std::size_t>(MeasuredCount); ++i) {
                points.table.push_back({MeasuredDates[i], {MeasuredValues[i]}});
            }
            return PointsText(points, 1);
        };
        QCOMPARE(measured(), u"2002-03-01 00:00:00 2\n2002-05-01 12:00:00 1.5"_qs);
        ChannelInfo[1].Conversion = 1;
        QCOMPARE(measured(), u"2002-04-01 00:00:00 60\n2002-05-01 12:00:00 40"_qs);
        station.Close();
        QVERIFY(ErrorOf([] { LoadMeasuredValues(1); }) != 0);
        QCOMPARE(MeasuredCount, 0);
    }

    void CurvesMarksAndLabels() {
        RecordingSurface surface(5240, 3140);
        ShowMeasured = true;
        DrawExample(surface);
        const QRegularExpression drawn(u"^(line|circle|text .* 8 black)"_qs);
        QCOMPARE(surface.recording.lines.filter(drawn).join(u'\n'), QString::fromLatin1(kPicture));
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestChart)
#include "tst_chart.moc"
