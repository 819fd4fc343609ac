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
#include "tests/support/DataRows.h"
#include "tests/support/ReportedChannel.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

MSFlexGrid& Grid(QWidget& form) {
    return Child<MSFlexGrid>(form, u"MSFlexGrid1"_qs);
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
            lines << (label.isEmpty() ? QString() : label + u": "_qs) + cells.join(u", ");
        }
    }
    return lines.join(u'\n');
}

QString SheetText(QWidget& form) {
    return QStringList{Child<QLabel>(form, u"lblTitle1"_qs).text(),
                       Child<QLabel>(form, u"lblTitle2"_qs).text(),
                       Child<QLineEdit>(form, u"tbPMax"_qs).text(), CellsText(Grid(form))}
        .join(u'\n');
}

// Shows the report, does this in it, and closes it.
void InReport(const std::function<void(QWidget&)>& steps) {
    frmAnnualT form(u"Upper basin"_qs);
    const NextWindow window([&](QWidget&) {
        steps(form);
        form.close();
    });
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
    void init() {
        FailOnAnyWarning();
        doors_.emplace();
        station_.emplace();
        DescribeReportedChannel();
    }
    void cleanup() {
        station_.reset();
        doors_.reset();
        RegionalSettings() = Regional();
    }

    void showsTheSheet_data() {
        QTest::addColumn<Story>("story");
        QTest::addColumn<QString>("menu");
        QTest::addColumn<QString>("sheet");
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
               "Min: Jan 150, Feb 20, Total 20\nMax: Jan 300, Feb 300, Total 300\n"
               "Total (ac-ft): Jan 891.00, Feb 633.60, Total 1,524.60";
        QTest::newRow("decimal comma and grouped digits")
            << Story([](StationFixture& station) {
                   station.WithReadings("2002-03-31", 720, {1234.5, 1234.5, -0.25, -0.25})
                       .WithReadings("2002-04-02", 720, {1500, 1500});
                   RegionalSettings().decimalSign = u","_qs;
                   RegionalSettings().groupSign = u"."_qs;
                   RegionalSettings().leadingZero = false;
               })
            << "mnuMeans"
            << "Kettle Creek - Daily Mean Stage (ft)\nJan-2002 to Dec-2002\n"
               "1.500,00 ft on Apr 2, 2002\n" CALENDAR_YEAR
               "1: Apr -,25\n2: Apr 1.500,00\n31: Mar 1.234,50\n"
               "Avg: Mar 1.234,50, Apr 749,88, Total 992,19\n"  // 1499.75 / 2, 1984.38 / 2
               "Min: Mar 1234,5, Apr -0,25, Total -0,25\nMax: Mar 1234,5, Apr 1500, Total 1500\n"
               "Total (ac-ft): Mar 2.444,31, Apr 2.969,51, Total 5.413,82";  // * 1.98: 2969.505
        QTest::newRow("a water year from the middle of October")
            << Story([](StationFixture& station) {
                   station.WithReadings("2001-10-14", 720, {9, 9, 1, 6})
                       .WithReadings("2002-10-14", 720, {5, 5, 7});
                   ReportBeginDate = At("2001-10-15");
                   ReportEndDate = At("2002-10-14");
               })
            << "mnuMin"
            << "Kettle Creek - Daily Minimum Stage (ft)\nOct-2001 to Oct-2002\n"
               "6.00 ft on Oct 15, 2001\n"
               "Oct, Nov, Dec, Jan, Feb, Mar, Apr, May, Jun, Jul, Aug, Sep, Total\n"
               "14: Oct 5.00\n15: Oct 1.00\nAvg: Oct 3.00, Total 3.00\nMin: Oct 1, Total 1\n"
               "Max: Oct 5, Total 5\nTotal (ac-ft): Oct 11.88, Total 11.88";
    }
    void showsTheSheet() {
        QFETCH(Story, story);
        QFETCH(QString, menu);
        story(*station_);
        InReport([&](QWidget& form) {
            Trigger(form, menu);
            QTEST(SheetText(form), "sheet");
        });
    }

    void changesTheStatistic() {
        WinterDays(*station_);
        InReport([&](QWidget& form) {
            const QString means =
                u"Kettle Creek - Daily Mean Stage (ft)\nJan-2002 to Dec-2002\n"
                "30.00 ft on Jan 31, 2002\n" CALENDAR_YEAR
                "1: Feb 15.25\n3: Feb 1.50\n30: Jan 12.50\n31: Jan 25.00\n"
                "Avg: Jan 18.75, Feb 8.38, Total 13.57\n"  // 16.75 / 2, 27.13 / 2
                "Min: Jan 12.5, Feb 1.5, Total 1.5\nMax: Jan 25, Feb 15.25, Total 25\n"
                "Total (ac-ft): Jan 74.25, Feb 33.17, Total 107.42"_qs;  // 1.98 * 37.5, * 16.75
            QCOMPARE(SheetText(form), means);
            Trigger(form, u"mnuTotal"_qs);
            QVERIFY(
                SheetText(form).endsWith(u"Max: Jan 50, Feb 30.5, Total 50\n"
                                         "Total (ac-ft): Jan 148.50, Feb 66.33, Total 214.83"_qs));
            Trigger(form, u"mnuMeans"_qs);
            QCOMPARE(SheetText(form), means);
            Grid(form).SetSelection(31, 1, 32, 2);
            Trigger(form, u"mnuEditCopy"_qs);
            QCOMPARE(doors_->clipboardText, u"30\t12.50\r31\t25.00"_qs);
        });
    }

    void rebuildsUnlessTheSettingsAreCancelled() {
        WinterDays(*station_);
        InReport([&](QWidget& form) {
            doors_->pointers.clear();
            const NextWindow cancel([](QWidget& dialog) {
                QVERIFY(!Child<QWidget>(dialog, u"optDays"_qs).isEnabled());
                Click(dialog, u"cmdCancel"_qs);
            });
            Trigger(form, u"mnuEditSettings"_qs);
            QVERIFY(doors_->pointers.empty());

            // A year without readings: the sheet is cleared, the peak stands.
            doors_->ExpectMessage(u"No data within dates!"_qs);
            const NextWindow settings([](QWidget& dialog) {
                Child<DTPicker>(dialog, u"DTPicker1"_qs).SetValue(At("2005-04-01"));
                Click(dialog, u"cmdOK"_qs);
            });
            Trigger(form, u"mnuEditSettings"_qs);
            QCOMPARE(SheetText(form),
                     u"Kettle Creek - Daily Mean Stage (ft)\nApr-2005 to Mar-2006\n"
                     "30.00 ft on Jan 31, 2002\n"
                     "Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec, Jan, Feb, Mar, Total"_qs);
            QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
        });
    }

    // Left, top, width and height in twips, and the state; the user restores the window.
    void remembersItsPlace_data() {
        const int last = 15 * (QGuiApplication::primaryScreen()->availableGeometry().right() - 612);
        const DataRows<QString, QString> row("remembered", "after");
        row("100 100 9200 6500 0", "100 100 9200 6500 0");
        row("100 100 9200 6500 2", "100 100 9200 6500 0");
        row("30000 100 9200 6500 0", u"%1 100 9200 6500 0"_qs.arg(last));  // off the screen
    }
    void remembersItsPlace() {
        QFETCH(QString, remembered);
        std::int16_t* const settings[] = {&AnnualL, &AnnualT, &AnnualW, &AnnualH, &AnnualM};
        for (int i = 0; i < 5; ++i) {
            *settings[i] = remembered.section(u' ', i, i).toShort();
        }
        WinterDays(*station_);
        InReport([&](QWidget& form) {
            QCOMPARE(form.isMaximized(), remembered.endsWith(u'2'));
            form.setWindowState(Qt::WindowNoState);
            QCoreApplication::processEvents();
        });
        QStringList after;
        for (const std::int16_t* setting : settings) {
            after += QString::number(*setting);
        }
        QTEST(after.join(u' '), "after");
    }

private:
    std::optional<ScriptedDoors> doors_;
    std::optional<StationFixture> station_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestAnnual)
#include "tst_annual.moc"
