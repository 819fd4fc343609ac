#include <QAction>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QtTest/QtTest>

#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "forms/reports/frmAnnualT.h"
#include "platform/qt/DTPicker.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
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

QString Peak(QWidget& form) {
    return Child<QLineEdit>(form, Name("tbPMax")).text();
}

// The cells that hold a text, "Avg: Jan 1.20, Total 1.20" a row under the names in row 1. Days
// without a value are left out.
QString CellsText(const MSFlexGrid& grid) {
    QStringList lines;
    for (int row = 0; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int col = 0; col < grid.Cols(); ++col) {
            const QString text = grid.TextMatrix(row, col);
            if (col != 1 && !text.isEmpty()) {
                cells << (row < 2 ? text : grid.TextMatrix(1, col) + u' ' + text);
            }
        }
        if (!cells.isEmpty()) {
            const QString label = grid.TextMatrix(row, 1);
            lines << (label.isEmpty() ? QString() : label + QStringLiteral(": ")) +
                         cells.join(u", ");
        }
    }
    return lines.join(u'\n');
}

QString SheetText(QWidget& form) {
    return QStringList{Child<QLabel>(form, Name("lblTitle1")).text(),
                       Child<QLabel>(form, Name("lblTitle2")).text(), Peak(form),
                       CellsText(Grid(form))}
        .join(u'\n');
}

// Shows the report and does this in it.
void InReport(const std::function<void(QWidget&)>& steps) {
    frmAnnualT form(QStringLiteral("Upper basin"));
    const NextWindow window(steps);
    form.exec();
}

// Readings at midnight and noon, so that each day's mean is plain; February 2 has none.
void WinterDays(StationFixture& station) {
    station.WithReadings("2002-01-30", 720, {10, 15, 20, 30})
        .WithReadings("2002-02-01", 720, {30, 0.5})
        .WithReadings("2002-02-03", 720, {1, 2});
}

// A line of the sheet's text, to stand between others.
#define CALENDAR_YEAR "Jan, Feb, Mar, Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec, Total\n"

}  // namespace

class TestAnnual : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void Sheet_data();
    void Sheet();
    void EmptySheet();
    void ChangesStatistic();
    void SettingsRebuild();
    void CopiesSelection();
    void RemembersPlace_data();
    void RemembersPlace();
    void GridFollowsForm();
    void LongTitleIsWhole();

private:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

void TestAnnual::init() {
    FailOnAnyWarning();
    doors_ = std::make_unique<ScriptedDoors>();
    station_ = std::make_unique<StationFixture>();
    DescribeReportedChannel();
}

void TestAnnual::cleanup() {
    station_.reset();
    doors_.reset();
    RegionalSettings() = Regional();
}

void TestAnnual::Sheet_data() {
    QTest::addColumn<Story>("story");
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QString>("sheet");

    QTest::newRow("daily means")
        << Story(WinterDays) << "mnuMeans"
        << "Kettle Creek - Daily Mean Stage (ft)\nJan-2002 to Dec-2002\n"
           "30.00 ft on Jan 31, 2002\n" CALENDAR_YEAR
           "1: Feb 15.25\n3: Feb 1.50\n30: Jan 12.50\n31: Jan 25.00\n"
           "Avg: Jan 18.75, Feb 8.38, Total 13.57\n"  // 16.75 / 2, 27.13 / 2
           "Min: Jan 12.5, Feb 1.5, Total 1.5\n"
           "Max: Jan 25, Feb 15.25, Total 25\n"
           "Total (ac-ft): Jan 74.25, Feb 33.17, Total 107.42";  // 1.98 * 37.5, 1.98 * 16.75
    QTest::newRow("daily maximums of a rated channel")
        << Story([](StationFixture& station) {
               WinterDays(station);
               station.WithEquation("2000-01-01", 1, 0, 1, 10);  // tenfold
               ChannelInfo[1].Conversion = 1;
           })
        << "mnuMax"
        << "Kettle Creek - Daily Maximum Flow (cfs)\nJan-2002 to Dec-2002\n"
           "300.00 cfs on Jan 31, 2002\n" CALENDAR_YEAR
           "1: Feb 300.00\n3: Feb 20.00\n30: Jan 150.00\n31: Jan 300.00\n"
           "Avg: Jan 225.00, Feb 160.00, Total 192.50\n"
           "Min: Jan 150, Feb 20, Total 20\n"
           "Max: Jan 300, Feb 300, Total 300\n"
           "Total (ac-ft): Jan 891.00, Feb 633.60, Total 1,524.60";
    QTest::newRow("daily minimums, and a peak of the maximums")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-02-28", 720, {-4, 6, -2, 5});
           })
        << "mnuMin"
        << "Kettle Creek - Daily Minimum Stage (ft)\nJan-2002 to Dec-2002\n"
           "6.00 ft on Feb 28, 2002\n" CALENDAR_YEAR
           "1: Mar -2.00\n28: Feb -4.00\n"
           "Avg: Feb -4.00, Mar -2.00, Total -3.00\n"
           "Min: Feb -4, Mar -2, Total -4\n"
           "Max: Feb -4, Mar -2, Total -2\n"
           "Total (ac-ft): Feb -7.92, Mar -3.96, Total -11.88";
    QTest::newRow("statistics of what the cells show")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-01-01", 720, {2.5, 2.5, 2.5, 2.5});
               ChannelInfo[1].DigitsOut = 0;
               ChannelInfo[1].OutputFactor = 1;
               ChannelInfo[1].OutputFactorString.clear();
           })
        << "mnuMeans"
        << "Kettle Creek - Daily Mean Stage (ft)\nJan-2002 to Dec-2002\n3 ft on Jan 1, "
           "2002\n" CALENDAR_YEAR
           "1: Jan 3\n2: Jan 3\nAvg: Jan 3, Total 3\nMin: Jan 3, Total 3\nMax: Jan 3, Total 3\n"
           "Total (): Jan 6, Total 6";
    QTest::newRow("decimal comma and grouped digits")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-03-31", 720, {1234.5, 1234.5, -0.25, -0.25})
                   .WithReadings("2002-04-02", 720, {1500, 1500});
               RegionalSettings().decimalSign = QStringLiteral(",");
               RegionalSettings().groupSign = QStringLiteral(".");
               RegionalSettings().leadingZero = false;
           })
        << "mnuMeans"
        << "Kettle Creek - Daily Mean Stage (ft)\nJan-2002 to Dec-2002\n"
           "1.500,00 ft on Apr 2, 2002\n" CALENDAR_YEAR
           "1: Apr -,25\n2: Apr 1.500,00\n31: Mar 1.234,50\n"
           "Avg: Mar 1.234,50, Apr 749,88, Total 992,19\n"  // 1499.75 / 2, 1984.38 / 2
           "Min: Mar 1234,5, Apr -0,25, Total -0,25\n"
           "Max: Mar 1234,5, Apr 1500, Total 1500\n"
           "Total (ac-ft): Mar 2.444,31, Apr 2.969,51, Total 5.413,82";  // * 1.98: 2969.505
    QTest::newRow("a water year from the middle of October")
        << Story([](StationFixture& station) {
               station.WithReadings("2001-10-14", 720, {9, 9, 1, 3})
                   .WithReadings("2002-10-14", 720, {5, 5, 7});
               ReportBeginDate = At("2001-10-15");
               ReportEndDate = At("2002-10-14");
           })
        << "mnuMeans"
        << "Kettle Creek - Daily Mean Stage (ft)\nOct-2001 to Oct-2002\n5.00 ft on Oct 14, 2002\n"
           "Oct, Nov, Dec, Jan, Feb, Mar, Apr, May, Jun, Jul, Aug, Sep, Total\n"
           "14: Oct 5.00\n15: Oct 2.00\nAvg: Oct 3.50, Total 3.50\nMin: Oct 2, Total 2\n"
           "Max: Oct 5, Total 5\nTotal (ac-ft): Oct 13.86, Total 13.86";
    QTest::newRow("two years: the later day stands, the peak is of both")
        << Story([](StationFixture& station) {
               station.WithReadings("2002-05-01", 720, {9, 9})
                   .WithReadings("2003-05-01", 720, {4, 6});
               ReportEndDate = At("2003-12-31");
           })
        << "mnuTotal"
        << "Kettle Creek - Daily Total Stage (ft)\nJan-2002 to Dec-2003\n9.00 ft on May 1, "
           "2002\n" CALENDAR_YEAR
           "1: May 10.00\nAvg: May 10.00, Total 10.00\nMin: May 10, Total 10\n"
           "Max: May 10, Total 10\nTotal (ac-ft): May 19.80, Total 19.80";
}

void TestAnnual::Sheet() {
    QFETCH(Story, story);
    QFETCH(QString, menu);
    story(*station_);
    InReport([&](QWidget& form) {
        QCOMPARE(form.windowTitle(), QStringLiteral("Summary Table - Upper basin"));
        Trigger(form, menu);
        QTEST(SheetText(form), "sheet");
        form.close();
    });
}

void TestAnnual::EmptySheet() {
    doors_->ExpectMessage(QStringLiteral("No data within dates!"));
    InReport([](QWidget& form) {
        const MSFlexGrid& grid = Grid(form);
        QCOMPARE(CellsText(grid) + u'\n', Name(CALENDAR_YEAR));
        QStringList labels;
        for (int row = 0; row < grid.Rows(); ++row) {
            labels << grid.TextMatrix(row, 1);
        }
        QCOMPARE(
            labels.join(u' '),
            QStringLiteral("  1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 "
                           "26 27 28 29 30 31  Avg Min Max Total (ac-ft)"));
        QCOMPARE(Peak(form), QString());
        form.close();
    });
}

void TestAnnual::ChangesStatistic() {
    WinterDays(*station_);
    InReport([](QWidget& form) {
        const QString atLoad = SheetText(form);
        const auto checked = [&form] {
            QStringList items;
            for (const char* item : {"mnuMeans", "mnuMax", "mnuMin", "mnuTotal"}) {
                if (Child<QAction>(form, Name(item)).isChecked()) {
                    items << Name(item);
                }
            }
            return items.join(u' ');
        };
        QCOMPARE(checked(), QStringLiteral("mnuMeans"));

        Trigger(form, Name("mnuTotal"));
        QCOMPARE(checked(), QStringLiteral("mnuTotal"));
        QCOMPARE(SheetText(form),
                 QStringLiteral("Kettle Creek - Daily Total Stage (ft)\nJan-2002 to Dec-2002\n"
                                "30.00 ft on Jan 31, 2002\n" CALENDAR_YEAR
                                "1: Feb 30.50\n3: Feb 3.00\n30: Jan 25.00\n31: Jan 50.00\n"
                                "Avg: Jan 37.50, Feb 16.75, Total 27.13\n"
                                "Min: Jan 25, Feb 3, Total 3\n"
                                "Max: Jan 50, Feb 30.5, Total 50\n"
                                "Total (ac-ft): Jan 148.50, Feb 66.33, Total 214.83"));

        Trigger(form, Name("mnuMeans"));
        QCOMPARE(SheetText(form), atLoad);
        Trigger(form, Name("mnuMeans"));
        QCOMPARE(checked(), QStringLiteral("mnuMeans"));
        form.close();
    });
}

void TestAnnual::SettingsRebuild() {
    WinterDays(*station_);
    InReport([&](QWidget& form) {
        const std::size_t rebuilt = doors_->pointers.size();
        SettingsMode = ReportMode::DailyGraph;
        {
            const NextWindow settings([](QWidget& dialog) {
                QVERIFY(!Child<QWidget>(dialog, Name("optDays")).isEnabled());
                Click(dialog, Name("cmdCancel"));
            });
            Trigger(form, Name("mnuEditSettings"));
        }
        QCOMPARE(doors_->pointers.size(), rebuilt);

        // A year without readings: the sheet is cleared, the peak stands.
        doors_->ExpectMessage(QStringLiteral("No data within dates!"));
        const NextWindow settings([](QWidget& dialog) {
            Child<DTPicker>(dialog, Name("DTPicker1")).SetValue(At("2005-04-01"));
            Click(dialog, Name("cmdOK"));
        });
        Trigger(form, Name("mnuEditSettings"));
        QCOMPARE(
            SheetText(form),
            QStringLiteral("Kettle Creek - Daily Mean Stage (ft)\nApr-2005 to Mar-2006\n"
                           "30.00 ft on Jan 31, 2002\n"
                           "Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec, Jan, Feb, Mar, Total"));
        QCOMPARE(doors_->pointers,
                 (std::vector<int>{vbHourglass, vbDefault, vbHourglass, vbDefault}));
        form.close();
    });
}

void TestAnnual::CopiesSelection() {
    WinterDays(*station_);
    doors_->clipboardText = QStringLiteral("old");
    InReport([&](QWidget& form) {
        Grid(form).SetSelection(31, 1, 32, 2);
        Trigger(form, Name("mnuEditCopy"));
        QCOMPARE(doors_->clipboardText, QStringLiteral("30\t12.50\r31\t25.00"));

        // By keys alone: the grid has the focus when the form opens.
        form.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        QTest::keyClick(form.focusWidget(), Qt::Key_Up);
        QTest::keyClick(form.focusWidget(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(doors_->clipboardText, QStringLiteral("29"));
        form.close();
    });
}

void TestAnnual::RemembersPlace_data() {
    using Place = QList<int>;  // left, top, width, height in twips, state
    QTest::addColumn<Place>("remembered");
    QTest::addColumn<QString>("change");
    QTest::addColumn<QRect>("shown");
    QTest::addColumn<Place>("after");
    const QRect usual(7, 7, 613, 433);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const int rightmost = screen.right() + 1 - 613;
    const struct {
        const char* name;
        Place remembered;
        const char* change;
        QRect shown;  // in pixels; null: maximised
        Place after;
    } rows[] = {
        {"left alone", {100, 100, 9200, 6500, 0}, "", usual, {100, 100, 9200, 6500, 0}},
        {"moved", {100, 100, 9200, 6500, 0}, "move", usual, {300, 450, 9600, 6000, 0}},
        {"maximised", {100, 100, 9200, 6500, 0}, "maximise", usual, {100, 100, 9200, 6500, 2}},
        {"minimised", {100, 100, 9200, 6500, 0}, "minimise", usual, {100, 100, 9200, 6500, 1}},
        {"restored", {100, 100, 9200, 6500, 2}, "restore", QRect(), {100, 100, 9200, 6500, 0}},
        {"half off the screen, where it was put",
         {9000, 100, 9200, 6500, 0},
         "",
         QRect(600, 7, 613, 433),
         {9000, 100, 9200, 6500, 0}},
        {"on a monitor that is gone",
         {30000, 100, 9200, 6500, 0},
         "",
         QRect(rightmost, 7, 613, 433),
         {15 * rightmost, 100, 9200, 6500, 0}},
        {"above the screen",
         {100, -6000, 9200, 6500, 0},
         "",
         QRect(7, 0, 613, 433),
         {100, 0, 9200, 6500, 0}}};
    for (const auto& row : rows) {
        QTest::newRow(row.name) << row.remembered << row.change << row.shown << row.after;
    }
}

void TestAnnual::RemembersPlace() {
    QFETCH(QList<int>, remembered);
    QFETCH(QString, change);
    QFETCH(QRect, shown);
    std::int16_t* const settings[] = {&AnnualL, &AnnualT, &AnnualW, &AnnualH, &AnnualM};
    for (int i = 0; i < 5; ++i) {
        *settings[i] = static_cast<std::int16_t>(remembered[i]);
    }
    WinterDays(*station_);
    InReport([&](QWidget& form) {
        if (shown.isNull()) {
            QVERIFY(form.isMaximized());
        } else {
            QCOMPARE(QRect(form.pos(), form.size()), shown);
        }
        if (change == u"move") {
            form.move(20, 30);
            form.resize(640, 400);
        } else if (change == u"maximise") {
            form.showMaximized();
        } else if (change == u"minimise") {
            form.showMinimized();
        } else if (change == u"restore") {
            form.showNormal();
        }
        QCoreApplication::processEvents();
        Trigger(form, Name("mnuFileExit"));
    });
    QList<int> after;
    for (const std::int16_t* setting : settings) {
        after << *setting;
    }
    QTEST(after, "after");
}

void TestAnnual::GridFollowsForm() {
    WinterDays(*station_);
    InReport([](QWidget& form) {
        const MSFlexGrid& grid = Grid(form);
        QCOMPARE(grid.geometry(), QRect(8, 56, 586, 326));  // 9195 - 400, 6495 - 1600 twips
        form.resize(700, 500);
        QCOMPARE(grid.geometry(), QRect(8, 56, 673, 393));
        form.setMinimumSize(1, 1);
        form.resize(130, 110);
        QCOMPARE(grid.geometry(), QRect(8, 56, 673, 393));
        form.close();
    });
}

void TestAnnual::LongTitleIsWhole() {
    WinterDays(*station_);
    ChannelInfo[1].RecSta = QStringLiteral("Kettle Creek at the upper bridge of Mill Lane, rain");
    InReport([](QWidget& form) {
        const auto& title = Child<QLabel>(form, Name("lblTitle1"));
        const QRect peak = Child<QLabel>(form, Name("Label7")).geometry();
        QVERIFY(title.width() >= title.sizeHint().width());
        for (const char* other : {"lblTitle1", "lblTitle2", "tbPMax"}) {
            QVERIFY2(!peak.intersects(Child<QWidget>(form, Name(other)).geometry()), other);
        }
        form.close();
    });
}

}  // namespace rillbook

QTEST_MAIN(rillbook::TestAnnual)
#include "tst_annual.moc"
