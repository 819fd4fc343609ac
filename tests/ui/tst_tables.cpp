#include <QAction>
#include <QElapsedTimer>
#include <QLabel>
#include <QMenuBar>
#include <QtTest/QtTest>

#include "app/SharedState.h"
#include "compute/Compute.h"
#include "forms/reports/frmDailyT.h"
#include "forms/reports/frmInstT.h"
#include "platform/qt/DTPicker.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ReportedChannel.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

QString Name(const char* text) {
    return QString::fromLatin1(text);
}

MSFlexGrid& Grid(QWidget& form) {
    return Child<MSFlexGrid>(form, Name("MSFlexGrid1"));
}

// The label, then every row: "|DateTime|ft", the fixed cells included.
QString TableText(QWidget& form) {
    const MSFlexGrid& grid = Grid(form);
    QStringList lines{Child<QLabel>(form, Name("Label1")).text()};
    for (int row = 0; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int col = 0; col < grid.Cols(); ++col) {
            cells << grid.TextMatrix(row, col);
        }
        lines << cells.join(u'|');
    }
    return lines.join(u'\n');
}

// "&Copy", "-" for a line, in brackets what can't be used.
QString MenuText(QWidget& form) {
    QStringList menus;
    for (const QAction* menu : Child<QMenuBar>(form, Name("menuBar")).actions()) {
        QStringList items;
        for (const QAction* item : menu->menu()->actions()) {
            const QString text = item->isSeparator() ? QStringLiteral("-") : item->text();
            items << (item->isEnabled() ? text : u'[' + text + u']');
        }
        menus << menu->text() + QStringLiteral(": ") + items.join(u", ");
    }
    return menus.join(u'\n');
}

// Shows a report and does this in it.
template <typename Form>
void InReport(const std::function<void(QWidget&)>& steps) {
    Form form(QStringLiteral("Upper basin"));
    const NextWindow window(steps);
    form.exec();
}

using Show = std::function<void(const std::function<void(QWidget&)>&)>;

// One row for each table; `fill` brings what stands in the columns before this one.
void RowsOfBothTables(const std::function<void(QTestData& row, bool daily)>& fill) {
    QTest::addColumn<Show>("show");
    QTestData& instantaneous = QTest::newRow("instantaneous");
    fill(instantaneous, false);
    instantaneous << Show(InReport<frmInstT>);
    QTestData& daily = QTest::newRow("daily");
    fill(daily, true);
    daily << Show(InReport<frmDailyT>);
}

}  // namespace

class TestTables : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void Instantaneous_data();
    void Instantaneous();
    void Daily_data();
    void Daily();
    void Menus_data();
    void Menus();
    void SettingsRebuild_data();
    void SettingsRebuild();
    void CopiesSelection();
    void Measures();
    void TenYearsOpenAtOnce();

private:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

void TestTables::init() {
    FailOnAnyWarning();
    doors_ = std::make_unique<ScriptedDoors>();
    station_ = std::make_unique<StationFixture>(2);
    DescribeReportedChannel();
    ReportBeginDate = At("2002-01-31");
    ReportEndDate = At("2002-02-02");
}

void TestTables::cleanup() {
    station_.reset();
    doors_.reset();
    RegionalSettings() = Regional();
}

void TestTables::Instantaneous_data() {
    QTest::addColumn<Story>("story");
    QTest::addColumn<QString>("table");

    QTest::newRow("both midnights of the period, no row for a missing value")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-01-30 23:45", 15, {1, 2, 1234.625, {}, -0.001})
                   .WithReadings("2002-02-02 23:59:59", 1.0 / 60, {3, 4, 5});
           })
        << "Kettle Creek - Stage\n|DateTime|ft\n|1/31/2002|2.00\n"
           "|1/31/2002 12:15:00 AM|1,234.63\n|1/31/2002 12:45:00 AM|0.00\n"
           "|2/2/2002 11:59:59 PM|3.00\n|2/3/2002|4.00";
    QTest::newRow("rated, no decimals")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-02-01 12:00", 60, {1.25, 2.25})
                   .WithEquation("2000-01-01", 1, 0, 1, 10);  // tenfold
               ChannelInfo[1].Conversion = 1;
               ChannelInfo[1].DigitsOut = 0;
           })
        << "Kettle Creek - Flow\n|DateTime|cfs\n|2/1/2002 12:00:00 PM|13\n"
           "|2/1/2002 1:00:00 PM|23";
    QTest::newRow("day first, decimal comma") << Story([](StationFixture& station) {
        station.WithReadings("2002-02-01 18:30", 330, {1234.5, 0.25});
        RegionalSettings().shortDate = QStringLiteral("dd.MM.yyyy");
        RegionalSettings().longTime = QStringLiteral("HH:mm:ss");
        RegionalSettings().decimalSign = QStringLiteral(",");
        RegionalSettings().groupSign = QStringLiteral(".");
    }) << "Kettle Creek - Stage\n|DateTime|ft\n|01.02.2002 18:30:00|1.234,50\n|02.02.2002|0,25";
    QTest::newRow("no reading has a value") << Story([](StationFixture& station) {
        station.WithReadings("2002-02-01", 15, {{}, {}});
    }) << "Kettle Creek - Stage\n|DateTime|ft";
}

void TestTables::Instantaneous() {
    QFETCH(Story, story);
    story(*station_);
    InReport<frmInstT>([&](QWidget& form) {
        QCOMPARE(form.windowTitle(), QStringLiteral("Instantaneous Table - Upper basin"));
        QTEST(TableText(form), "table");
        QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
        form.close();
    });
}

void TestTables::Daily_data() {
    QTest::addColumn<Story>("story");
    QTest::addColumn<QString>("table");
#define HEADINGS "\n|Date|Mean|Min|Max|Total"

    QTest::newRow("a day without readings, and a midnight after the last day")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-01-31", 720, {1000, 1001})
                   .WithReadings("2002-02-02", 720, {-1, 2, 7});
           })
        << "Kettle Creek - Stage (ft)" HEADINGS
           "\n|1/31/2002|1,000.50|1,000.00|1,001.00|2,001.00\n|2/1/2002||||\n"
           "|2/2/2002|0.50|-1.00|2.00|1.00";
    QTest::newRow("a rated day, no decimals") << Story([](StationFixture& station) {
        station.WithReadings("2002-01-31", 720, {1, 2})
            .WithEquation("2000-01-01", 1, 0, 1, 10);  // tenfold
        ChannelInfo[1].Conversion = 1;
        ChannelInfo[1].DigitsOut = 0;
        ReportEndDate = ReportBeginDate;
    }) << "Kettle Creek - Flow (cfs)" HEADINGS "\n|1/31/2002|15|10|20|30";
    QTest::newRow("day first, decimal comma")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-02-01", 720, {0.5, 1.5});
               RegionalSettings().shortDate = QStringLiteral("dd.MM.yyyy");
               RegionalSettings().decimalSign = QStringLiteral(",");
           })
        << "Kettle Creek - Stage (ft)" HEADINGS
           "\n|31.01.2002||||\n|01.02.2002|1,00|0,50|1,50|2,00\n|02.02.2002||||";
    QTest::newRow("a single reading makes no day")
        << Story([](StationFixture& station) { station.WithReadings("2002-02-01", 15, {1}); })
        << "Kettle Creek - Stage (ft)" HEADINGS "\n|1/31/2002||||\n|2/1/2002||||\n|2/2/2002||||";
#undef HEADINGS
}

void TestTables::Daily() {
    QFETCH(Story, story);
    story(*station_);
    InReport<frmDailyT>([&](QWidget& form) {
        QCOMPARE(form.windowTitle(), QStringLiteral("Daily Summary Table - Upper basin"));
        QTEST(TableText(form), "table");
        QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
        form.close();
    });
}

void TestTables::Menus_data() {
    QTest::addColumn<QString>("ratings");
    RowsOfBothTables([](QTestData& row, bool daily) {
        row << (daily ? "&Rating/Conversion..." : "&Rating/Convserion...");
    });
}

void TestTables::Menus() {
    QFETCH(Show, show);
    QFETCH(QString, ratings);
    station_->WithReadings("2002-02-01", 15, {1, 2});
    show([&](QWidget& form) {
        QCOMPARE(MenuText(form),
                 QStringLiteral("&File: &Exit\n&Edit: &Copy, -, [&Edit Records...], "
                                "[&Journal/Offsets...], [%1], -, &Settings...\n"
                                "&Help: [&Content], [&Index], -, &About Rillbook")
                     .arg(ratings));
        Trigger(form, Name("mnuFileExit"));
    });
}

void TestTables::SettingsRebuild_data() {
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("without");
    RowsOfBothTables([](QTestData& row, bool daily) {
        if (daily) {
            row << "Kettle Creek - Stage (ft)\n|Date|Mean|Min|Max|Total\n|1/31/2002||||\n"
                   "|2/1/2002|3.00|1.00|5.00|6.00\n|2/2/2002||||"
                << "Alder Brook - Rain (in)\n|Date|Mean|Min|Max|Total\n"
                   "|2/1/2002|0.250|0.125|0.375|0.500"
                << "Alder Brook - Rain (in)\n|Date|Mean|Min|Max|Total\n|4/1/2005||||";
        } else {
            row << "Kettle Creek - Stage\n|DateTime|ft\n|2/1/2002|1.00\n"
                   "|2/1/2002 12:00:00 PM|5.00"
                << "Alder Brook - Rain\n|DateTime|in\n|2/1/2002|0.125\n"
                   "|2/1/2002 12:00:00 PM|0.375"
                << "Alder Brook - Rain\n|DateTime|in";
        }
    });
}

void TestTables::SettingsRebuild() {
    QFETCH(Show, show);
    station_->WithRecord("2002-02-01", {1, 0.125}).WithRecord("2002-02-01 12:00", {5, 0.375});
    ChannelInfo[2].RecSta = QStringLiteral("Alder Brook");
    ChannelInfo[2].RecDesc = QStringLiteral("Rain");
    ChannelInfo[2].RecLabel = QStringLiteral("in");
    ChannelInfo[2].DigitsOut = 3;
    ReportPeriodCode = QStringLiteral("913");
    show([&](QWidget& form) {
        const auto settings = [&](const std::function<void(QWidget&)>& steps) {
            SettingsMode = ReportMode::InstantaneousGraph;
            const NextWindow dialog([&](QWidget& opened) {
                QVERIFY(Child<QWidget>(opened, Name("tbDigits")).isVisible());
                QVERIFY(!Child<QWidget>(opened, Name("tbFactor")).isVisible());
                steps(opened);
            });
            Trigger(form, Name("mnuEditSettings"));
        };
        const QString caption = form.windowTitle();
        QTEST(TableText(form), "before");
        settings([](QWidget& opened) {
            Child<DTPicker>(opened, Name("DTPicker1")).SetValue(At("2005-04-01"));
            Click(opened, Name("cmdCancel"));
        });
        QTEST(TableText(form), "before");

        StationInfo.OutputChannel = 2;
        ReportPeriodCode = QStringLiteral("911");
        const auto confirmFrom = [](const char* begin) {
            return [begin](QWidget& opened) {
                Child<DTPicker>(opened, Name("DTPicker1")).SetValue(At(begin));
                Click(opened, Name("cmdOK"));
            };
        };
        settings(confirmFrom("2002-02-01"));
        QTEST(TableText(form), "after");
        doors_->ExpectMessage(QStringLiteral("No data within dates!"));
        settings(confirmFrom("2005-04-01"));
        QTEST(TableText(form), "without");
        QCOMPARE(form.windowTitle(), caption);
        form.close();
    });
}

void TestTables::CopiesSelection() {
    station_->WithReadings("2002-02-01", 720, {1, 3});
    doors_->clipboardText = QStringLiteral("old");
    InReport<frmInstT>([&](QWidget& form) {
        QVERIFY(Grid(form).hasFocus());
        QTest::keyClick(&Grid(form), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(doors_->clipboardText, QStringLiteral("2/1/2002"));
        Grid(form).SetSelection(1, 1, 2, 2);
        Trigger(form, Name("mnuEditCopy"));
        QCOMPARE(doors_->clipboardText,
                 QStringLiteral("2/1/2002\t1.00\r2/1/2002 12:00:00 PM\t3.00"));
        form.close();
    });
    InReport<frmDailyT>([&](QWidget& form) {
        QTest::keyClick(&Grid(form), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&Grid(form), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(doors_->clipboardText,
                 QStringLiteral("1/31/2002\t\t\t\t\r2/1/2002\t2.00\t1.00\t3.00\t4.00\r"
                                "2/2/2002\t\t\t\t"));
        form.close();
    });
}

void TestTables::Measures() {
    station_->WithReadings("2002-02-01", 15, {1, 2, 3});
    InReport<frmInstT>([](QWidget& form) {
        const MSFlexGrid& grid = Grid(form);
        QCOMPARE(grid.ColWidth(0), 300);
        QCOMPARE(grid.ColWidth(1), 1995);  // a pixel is 15 twips
        QCOMPARE(grid.ColWidth(2), 1305);
        const QSize room = form.size() - grid.size();
        form.resize(700, 600);
        QCOMPARE(grid.size(), form.size() - room);
        form.close();
    });
    InReport<frmDailyT>([](QWidget& form) {
        const MSFlexGrid& grid = Grid(form);
        const int room = form.height() - grid.height();
        form.resize(700, 600);
        QCOMPARE(grid.size(), QSize(367, 600 - room));
        int columns = 0;
        for (int col = 0; col < grid.Cols(); ++col) {
            columns += grid.ColWidth(col);
        }
        QVERIFY2(columns < 5500, qPrintable(QString::number(columns)));
        form.close();
    });
}

void TestTables::TenYearsOpenAtOnce() {
    RunPlainSql(station_->Path(),
                "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 350591) "
                "INSERT INTO Records(DateTime, chan1) "
                "SELECT 37257 + i / 96.0, 1.25 + i % 400 FROM n");
    ReportBeginDate = At("2002-01-01");
    ReportEndDate = At("2011-12-31");
    QElapsedTimer clock;
    clock.start();
    LoadSeries(ReportBeginDate, ReportEndDate + 1, 1);
    const qint64 loading = clock.restart();
    frmInstT form(QStringLiteral("Upper basin"));
    form.show();
    form.grab();
    const qint64 opening = clock.restart();  // loads them anew
    MSFlexGrid& grid = Grid(form);
    QCOMPARE(grid.Rows(), 350593);
    for (const int row : {200000, 350000, 5}) {
        grid.SetTopRow(row);
        grid.grab();
        QCOMPARE(grid.TopRow(), row);
    }
    grid.SetTopRow(350592);
    grid.selectAll();
    grid.grab();
    const qint64 scrolling = clock.restart();
    Trigger(form, Name("mnuEditCopy"));
    const qint64 copying = clock.restart();
    QCOMPARE(doors_->clipboardText.count(u'\r'), 350591);
    QVERIFY(doors_->clipboardText.endsWith(QStringLiteral("\r12/31/2011 11:45:00 PM\t192.25")));
    const QString times = QStringLiteral("load %1, open %2, scroll %3, copy %4 ms")
                              .arg(loading)
                              .arg(opening)
                              .arg(scrolling)
                              .arg(copying);
    qInfo("%s", qPrintable(times));
    QVERIFY2(opening - loading < 1000 && scrolling < 1500 && copying < 4000, qPrintable(times));
}

}  // namespace rillbook

QTEST_MAIN(rillbook::TestTables)
#include "tst_tables.moc"
