#include <QtTest/QtTest>
#include <cmath>
#include <functional>

#include "app/SharedState.h"
#include "compute/Compute.h"
#include "compute/Summary.h"
#include "graphs/Chart.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/RecordingSurface.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

class TestChart : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { ResetSharedState(); }
    void cleanup();
    void Steps_data();
    void Steps();
    void Values_data();
    void Values();
    void DateLines_data();
    void DateLines();
    void MonthLines();
    void Segments_data();
    void Segments();
    void Shown_data();
    void Shown();
    void Instantaneous();
    void Daily();
    void Measured();
    void Picture();
    void Page();
    void HarmlessWithoutRules();
};

void TestChart::cleanup() {
    ResetSharedState();
    RegionalSettings() = Regional();
}

namespace {

QString Joined(const std::vector<double>& values, const std::function<QString(double)>& text) {
    QStringList texts;
    for (const double value : values) {
        texts += text(value);
    }
    return texts.join(QLatin1Char(' '));
}

QString Digits(double value) {
    return QString::number(value, 'g', 15);
}

QString DayText(DateTime t) {
    return DateLabelText(t, false);
}

// "2002-01-01 00:15:00 1.2 -" a point, with "-" for a blank; a blank row is "gap".
QString PointsText(const ChartPoints& points, std::size_t columns) {
    QStringList lines;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(points.count); ++i) {
        const ChartRow& row = points.table[i];
        QString line = std::isnan(row.date) ? QStringLiteral("gap") : MomentText(row.date);
        for (std::size_t k = 0; k < columns && !std::isnan(row.date); ++k) {
            const double value = row.values[k];
            line += std::isnan(value) ? QStringLiteral(" -") : QLatin1Char(' ') + Digits(value);
        }
        lines += line;
    }
    return lines.join(QLatin1Char('\n'));
}

}  // namespace

void TestChart::Steps_data() {
    QTest::addColumn<double>("span");
    QTest::addColumn<double>("major");
    QTest::addColumn<double>("minor");
    struct Row {
        const char* name;
        double span;
        double major;
        double minor;
    };
    const double infinite = std::numeric_limits<double>::infinity();
    const Row rows[] = {{"100", 100, 10, 2},
                        {"150", 150, 20, 5},
                        {"50", 50, 10, 2},
                        {"49", 49, 5, 1},
                        {"25", 25, 5, 1},
                        {"24.9", 24.9, 2, 0.5},
                        {"13.9", 13.9, 1, 0.2},
                        {"3", 3, 0.5, 0.1},
                        {"0.5", 0.5, 0.1, 0.02},
                        {"1000", 1000, 100, 20},
                        {"0.001", 0.001, 0.0001, 0.00002},
                        {"a decimal that falls short", 1.4, 0.2, 0.05},
                        {"a difference that falls short", 1000.3 - 1000.2, 0.01, 0.002},
                        {"9.99", 9.99, 1, 0.2},
                        {"huge", 3e300, 5e299, 1e299},
                        {"no span", 0, 0, 0},
                        {"upside down", -5, 0, 0},
                        {"too small for a step", 5e-324, 0, 0},
                        {"infinite", infinite, 0, 0},
                        {"none", kBlank, 0, 0}};
    for (const Row& row : rows) {
        QTest::newRow(row.name) << row.span << row.major << row.minor;
    }
}

void TestChart::Steps() {
    QFETCH(double, span);
    const AxisSteps steps = ValueAxisSteps(span);
    QTEST(steps.major, "major");
    QTEST(steps.minor, "minor");
}

void TestChart::Values_data() {
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<double>("step");
    QTest::addColumn<QString>("values");
    const auto row = [](const char* name, double min, double max, double step, const char* values) {
        QTest::newRow(name) << min << max << step << QString::fromLatin1(values);
    };
    row("counted from the bottom", 0.5, 4.1, 1, "0.5 1.5 2.5 3.5");
    row("the top is there", 0, 0.7, 0.1, "0 0.1 0.2 0.3 0.4 0.5 0.6 0.7");
    row("zero is zero", -0.3, 0.3, 0.1, "-0.3 -0.2 -0.1 0 0.1 0.2 0.3");
    row("far from zero", -1000.3, -999.9, 0.1, "-1000.3 -1000.2 -1000.1 -1000 -999.9");
    row("huge", 0, 3e300, 1e300, "0 1e+300 2e+300 3e+300");
    row("tiny", 0, 3e-300, 1e-300, "0 1e-300 2e-300 3e-300");
    row("beyond the numbers", -1e308, 1e308, 1e307, "");
    row("no step", 0, 1, 0, "");
    row("a step that isn't the axis'", 0, 1, 1e-9, "");
    row("upside down", 1, 0, 0.1, "");
    row("infinite", 0, std::numeric_limits<double>::infinity(), 1, "");
    row("no end", 0, kBlank, 1, "");
}

void TestChart::Values() {
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(double, step);
    QTEST(Joined(AxisValues(min, max, step), Digits), "values");
}

void TestChart::DateLines_data() {
    QTest::addColumn<double>("days");
    QTest::addColumn<qsizetype>("minor");
    QTest::addColumn<QString>("major");
    const auto row = [](double days, int minor, const char* major) {
        QTest::addRow("%g", days) << days << qsizetype{minor} << QString::fromLatin1(major);
    };
    row(0.5, 0, "");
    row(1, 25, "1/10/05 00:00, 1/10/05 12:00, 1/11/05 00:00");
    row(3, 73,
        "1/10/05 00:00, 1/10/05 12:00, 1/11/05 00:00, 1/11/05 12:00, 1/12/05 00:00, "
        "1/12/05 12:00, 1/13/05 00:00");
    row(3.5, 0, "");
    row(4, 17, "1/10/05, 1/11/05, 1/12/05, 1/13/05, 1/14/05");
    row(10, 41,
        "1/10/05, 1/11/05, 1/12/05, 1/13/05, 1/14/05, 1/15/05, 1/16/05, 1/17/05, 1/18/05, "
        "1/19/05, 1/20/05");
    row(11, 23, "1/10/05, 1/12/05, 1/14/05, 1/16/05, 1/18/05, 1/20/05");
    row(24, 49,
        "1/10/05, 1/12/05, 1/14/05, 1/16/05, 1/18/05, 1/20/05, 1/22/05, 1/24/05, 1/26/05, "
        "1/28/05, 1/30/05, 2/1/05, 2/3/05");
    row(25, 26, "1/10/05, 1/17/05, 1/24/05, 1/31/05");
    row(89, 90,
        "1/10/05, 1/17/05, 1/24/05, 1/31/05, 2/7/05, 2/14/05, 2/21/05, 2/28/05, 3/7/05, 3/14/05, "
        "3/21/05, 3/28/05, 4/4/05");
    row(90, 0, "2/1/05, 3/1/05, 4/1/05");
}

void TestChart::DateLines() {
    QFETCH(double, days);
    RegionalSettings().shortDate = QStringLiteral("dd.MM.yyyy");  // labels put the month first
    const DateAxis axis = DateAxisLines(At("2005-01-10"), At("2005-01-10") + days);
    QTEST(static_cast<qsizetype>(axis.minorLines.size()), "minor");
    QCOMPARE(axis.majorLines, axis.labels);
    QString labels;
    for (const DateTime t : axis.labels) {
        labels += (labels.isEmpty() ? QString() : QStringLiteral(", ")) +
                  DateLabelText(t, axis.labelsHaveTime);
    }
    QTEST(labels, "major");
}

void TestChart::MonthLines() {
    const DateAxis year = DateAxisLines(At("2007-10-01"), At("2008-10-01"));
    QCOMPARE(Joined(year.labels, DayText),
             QStringLiteral("10/1/07 11/1/07 12/1/07 1/1/08 2/1/08 3/1/08 4/1/08 5/1/08 6/1/08 "
                            "7/1/08 8/1/08 9/1/08 10/1/08"));
    const DateAxis longer = DateAxisLines(At("1999-11-15"), At("2000-11-16"));
    QCOMPARE(longer.majorLines.size(), std::size_t{12});
    QCOMPARE(Joined(longer.labels, DayText), QStringLiteral("12/1/99 3/1/00 6/1/00 9/1/00"));
    const DateTime end = At("9999-10-15");
    QCOMPARE(Joined(DateAxisLines(end, end + 1e12).majorLines, DayText),
             QStringLiteral("11/1/99 12/1/99"));
    QVERIFY(DateAxisLines(end + 1e6, end + 1e12).majorLines.empty());
    QVERIFY(DateAxisLines(kBlank, end).majorLines.empty());
}

void TestChart::Segments_data() {
    QTest::addColumn<QList<double>>("values");  // from day 0 on, a day apart
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("segments");
    const double b = kBlank;
    QTest::newRow("joined") << QList<double>{1, 2, 4} << 3 << "0,1-1,2 1,2-2,4";
    QTest::newRow("fewer points than rows") << QList<double>{1, 2, 4} << 2 << "0,1-1,2";
    QTest::newRow("more points than rows") << QList<double>{1, 2} << 9 << "0,1-1,2";
    QTest::newRow("a blank takes both sides")
        << QList<double>{1, 2, b, 4, 5} << 5 << "0,1-1,2 3,4-4,5";
    QTest::newRow("a lone point leaves no mark") << QList<double>{1, b, 3, b, b} << 5 << "";
    QTest::newRow("all blank") << QList<double>{b, b, b} << 3 << "";
    // 50 spans of 10 around 0 to 10, also for the first point behind a blank.
    QTest::newRow("far outside") << QList<double>{b, 9e9, 5, -1e300, 510, -490} << 6
                                 << "1,510-2,5 2,5-3,-500 3,-500-4,510 4,510-5,-490";
    // 50 spans of 4 days behind day 4.
    QTest::newRow("far behind") << (QList<double>(204, b) << 1 << 2 << 3) << 207
                                << "204,1-204,2 204,2-204,3";
    QTest::newRow("no points") << QList<double>{} << 0 << "";
    QTest::newRow("less than none") << QList<double>{1, 2} << -5 << "";
}

void TestChart::Segments() {
    QFETCH(QList<double>, values);
    QFETCH(int, count);
    ChartTable data(1);
    for (const double value : values) {
        data.push_back({static_cast<double>(data.size()) - 1, {kBlank, value, kBlank, kBlank}});
    }
    const PlotFrame frame{.from = 0, .to = 4, .yMin = 0, .yMax = 10};
    QStringList texts;
    for (const ChartSegment& s : SeriesSegments(data, frame, 2, count)) {
        texts += QStringLiteral("%1,%2-%3,%4").arg(s.t1).arg(s.v1).arg(s.t2).arg(s.v2);
    }
    QTEST(texts.join(QLatin1Char(' ')), "segments");
    QVERIFY(SeriesSegments(data, frame, 1, count).empty());
    QVERIFY(SeriesSegments(data, frame, kMaxSeries + 1, count).empty());
}

void TestChart::Shown_data() {
    QTest::addColumn<int>("outputSeries");
    QTest::addColumn<QString>("shown");
    const std::pair<int, const char*> rows[] = {
        {11000, "1000"}, {11010, "1010"},  {10203, "0101"},      {10000, "0000"},
        {0, "0000"},     {-11001, "1001"}, {-2147483647, "1111"}};
    for (const auto& [number, shown] : rows) {
        QTest::addRow("%d", number) << number << QString::fromLatin1(shown);
    }
}

void TestChart::Shown() {
    QFETCH(int, outputSeries);
    QString shown;
    for (const bool on : ShownSeries(outputSeries)) {
        shown += on ? u'1' : u'0';
    }
    QTEST(shown, "shown");
}

void TestChart::Instantaneous() {
    const ScriptedDoors doors;
    StationFixture station;
    QCOMPARE(InstantaneousPoints(1).count, 1);  // nothing but the blank row at the end
    station.WithReadings("2002-03-01", 15, {1, 2, {}, {}, {}, 3, {}, 4});
    LoadSeries(At("2002-03-01"), At("2002-03-02"), 1);
    QCOMPARE(PointsText(InstantaneousPoints(15.0 / 1440), 1),
             QStringLiteral("2002-03-01 00:00:00 1\n2002-03-01 00:15:00 2\ngap\n"
                            "2002-03-01 01:15:00 3\ngap\n2002-03-01 01:45:00 4\ngap"));
    InstTimes[2] = InstTimes[1];  // two readings at one moment
    QCOMPARE(InstantaneousPoints(15.0 / 1440).count, 7);
    QCOMPARE(InstantaneousPoints(1).count, 5);
}

void TestChart::Daily() {
    const ScriptedDoors doors;
    StationFixture station;
    QCOMPARE(DailyPoints(ShownSeries(11111)).count, 1);
    station.WithReadings("2002-03-01 10:00", 60, {1, 3})
        .WithReadings("2002-03-02 10:00", 60, {2, 6})
        .WithReadings("2002-03-04 10:00", 60, {5, 5});
    StationInfo.TimeIncrement = 1.0 / 24;
    LoadDailySeries(At("2002-03-01"), At("2002-03-31"), 1);
    QCOMPARE(PointsText(DailyPoints(ShownSeries(11111)), 4),
             QStringLiteral("2002-03-01 00:00:00 2 1 3 4\n2002-03-02 00:00:00 4 2 6 8\ngap\n"
                            "2002-03-04 00:00:00 5 5 5 10\ngap"));
    QCOMPARE(PointsText(DailyPoints(ShownSeries(10010)), 4),
             QStringLiteral("2002-03-01 00:00:00 - - 3 -\n2002-03-02 00:00:00 - - 6 -\ngap\n"
                            "2002-03-04 00:00:00 - - 5 -\ngap"));
}

void TestChart::Measured() {
    const ScriptedDoors doors;
    StationFixture station(2);
    station.WithJournalRow("2002-05-01 12:00", 1, 1, 1.5, false, 40)
        .WithJournalRow("2002-03-01", 1, {}, 2)
        .WithJournalRow("2002-04-01", 1, 3, {}, true, 60)
        .WithJournalRow("2002-04-02", 2, 3, 9);
    const auto measured = [] {
        QStringList texts;
        for (std::size_t i = 1; i <= static_cast<std::size_t>(MeasuredCount); ++i) {
            texts += MomentText(MeasuredDates[i]) + QLatin1Char(' ') + Digits(MeasuredValues[i]);
        }
        return texts.join(QStringLiteral(", "));
    };
    LoadMeasuredValues(1);
    QCOMPARE(measured(), QStringLiteral("2002-03-01 00:00:00 2, 2002-05-01 12:00:00 1.5"));
    ChannelInfo[1].Conversion = 1;
    LoadMeasuredValues(1);
    QCOMPARE(measured(), QStringLiteral("2002-04-01 00:00:00 60, 2002-05-01 12:00:00 40"));
    station.Close();
    QVERIFY(ErrorOf([] { LoadMeasuredValues(1); }) != 0);
    QCOMPARE(MeasuredCount, 0);
}

namespace {

// A row of strips of one kind as one line: "first ... last (how many)".
QStringList Folded(const QStringList& lines) {
    QStringList folded;
    const auto kind = [](const QString& line) { return line.section(QLatin1Char(' '), 2); };
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const qsizetype first = i;
        while (lines[i].startsWith(QLatin1String("strip")) && i + 1 < lines.size() &&
               kind(lines[i + 1]) == kind(lines[first])) {
            ++i;
        }
        folded += i == first ? lines[i]
                             : QStringLiteral("%1 ... %2 (%3)")
                                   .arg(lines[first], lines[i].section(QLatin1Char(' '), 1, 1))
                                   .arg(i - first + 1);
    }
    return folded;
}

// Four days of 1000 twips and 50 units of 40, where the plot is 4000 by 2000: from its corner 10.5
// is 1600 down, 25.5 is 1000.
void DrawExample(DrawingSurface& surface, bool toPrinter) {
    RegionalSettings().decimalSign = QStringLiteral(",");
    const DateTime day = At("2002-01-30");
    MeasuredDates = {0, day + 2, day - 200, day - 199, day + 204};
    MeasuredValues = {0, 25.5, 25.5, 25.5,
                      25.5};  // the second and the last on the limits, not inside
    MeasuredCount = 4;
    const double b = kBlank;
    const ChartTable data{{}, {day, {10.5, b, 0.5, 99}},   {day + 1, {30.5, b, 50.5, 99}},
                          {}, {day + 2, {20.5, b, b, 99}}, {day + 3, {60.5, b, b, 99}},
                          {}};
    const ChartTexts texts{.title1 = QStringLiteral("Weir - Stage"),
                           .title2 = QStringLiteral("Upper Creek"),
                           .xTitle = QStringLiteral("Date"),
                           .yTitle = QStringLiteral("ft")};
    DrawChart(data, day, day + 4, 0.5, 50.5, texts, 3, 6, toPrinter, surface);
}

const char* const kPicture = R"(clear white
strip 820,2620 4000x20 (225,225,225) ... 820,620 (26)
strip 820,620 20x2000 (225,225,225) ... 4820,620 (17)
strip 820,620 20x2000 (195,195,195) ... 4820,620 (5)
strip 820,2620 4000x20 (195,195,195) ... 820,620 (6)
line 820,2220 1820,1420 width 1 (0,0,225)
line 2820,1820 3820,220 width 1 (0,0,225)
line 820,2620 1820,620 width 1 (0,140,0)
circle 2820,1620 radius 34 black, filled black
circle -198180,1620 radius 34 black, filled black
circle 3170,820 radius 34 black, filled black
text 3270,720 Arial 8 black "Measured Values"
box 0,0 5240,620 width 1 white, filled white
box 0,0 820,3140 width 1 white, filled white
box 0,2620 5240,3140 width 1 white, filled white
box 4820,0 5240,3140 width 1 white, filled white
box 820,620 4820,2620 width 1 black
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
text 320,520 Arial 8 black "50,5"
text 1870,70 Arial 10 bold black "Weir - Stage"
text 1933,320 Arial 10 bold black "Upper Creek"
text 2420,2820 Arial 8 bold black "Date"
text 170,1570 Arial 8 bold black "f"
text 170,1710 Arial 8 bold black "t")";

// The picture's lines moved by the printer's margins; the titles are centred on the paper.
const char* const kPage = R"(strip 1972,3628 4000x20 (225,225,225) ... 1972,1628 (26)
strip 1972,1628 20x2000 (225,225,225) ... 5972,1628 (17)
strip 1972,1628 20x2000 (195,195,195) ... 5972,1628 (5)
strip 1972,3628 4000x20 (195,195,195) ... 1972,1628 (6)
line 1972,3228 2972,2428 width 4 (0,0,225)
line 3972,2828 4972,1228 width 4 (0,0,225)
line 1972,3628 2972,1628 width 4 (0,140,0)
circle 3972,2628 radius 34 black, filled black
circle -197028,2628 radius 34 black, filled black
circle 4322,1828 radius 34 black, filled black
text 4422,1728 Arial 8 black "Measured Values"
box 0,0 7328,1628 width 4 white, filled white
box 0,0 1972,5156 width 4 white, filled white
box 0,3628 7328,5156 width 4 white, filled white
box 5972,0 7328,5156 width 4 white, filled white
box 1972,1628 5972,3628 width 4 black
text 1622,3648 Arial 8 black "1/30/02"
text 2622,3648 Arial 8 black "1/31/02"
text 3672,3648 Arial 8 black "2/1/02"
text 4672,3648 Arial 8 black "2/2/02"
text 5672,3648 Arial 8 black "2/3/02"
text 1572,3528 Arial 8 black "0,5"
text 1472,3128 Arial 8 black "10,5"
text 1472,2728 Arial 8 black "20,5"
text 1472,2328 Arial 8 black "30,5"
text 1472,1928 Arial 8 black "40,5"
text 1472,1528 Arial 8 black "50,5"
text 2914,1078 Arial 10 bold black "Weir - Stage"
text 2977,1328 Arial 10 bold black "Upper Creek"
text 3464,3828 Arial 8 bold black "Date"
text 1322,2578 Arial 8 bold black "f"
text 1322,2718 Arial 8 bold black "t"
end of document)";

QStringList Lines(const char* text) {
    return QString::fromLatin1(text).split(QLatin1Char('\n'));
}

}  // namespace

void TestChart::Picture() {
    RecordingSurface surface(5240, 3140);
    DrawExample(surface, false);
    QVERIFY(surface.recording.lines.filter(QStringLiteral("circle")).empty());
    surface.recording.lines.clear();
    ShowMeasured = true;
    DrawExample(surface, false);
    QCOMPARE(Folded(surface.recording.lines), Lines(kPicture));
}

void TestChart::Page() {
    ScriptedDoors doors;
    const std::shared_ptr<PrintRecording> recording = doors.ExpectPrint(5156 + 720, 7328 + 720);
    const auto printer = doors.BeginDoc(QStringLiteral("Graph"), cdlLandscape);
    ShowMeasured = true;
    DrawExample(*printer, true);
    printer->EndDoc();
    QCOMPARE(Folded(recording->lines), Lines(kPage));
}

void TestChart::HarmlessWithoutRules() {
    RecordingSurface surface(5240, 3140);
    const auto draw = [&](DateTime to, double yMax) {
        surface.recording.lines.clear();
        DrawChart({{}, {0, {1}}, {1, {2}}}, 0, to, 0, yMax, {}, 9, 99, false, surface);
        return surface.recording.lines.filter(QStringLiteral("strip")).size();
    };
    for (const double yMax : {0.0, -1.0, 5e-324, std::numeric_limits<double>::infinity(), kBlank}) {
        for (const double to : {0.0, -1.0, 0.5, 3.5, kBlank}) {
            QCOMPARE(draw(to, yMax), 0);
        }
    }
    draw(1e300, 1e308);  // ends
}

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestChart)
#include "tst_chart.moc"
