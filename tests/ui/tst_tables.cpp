#include <QAction>
#include <QElapsedTimer>
#include <QLabel>
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
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

MSFlexGrid& Grid(QWidget& form) {
    return Child<MSFlexGrid>(form, u"MSFlexGrid1"_qs);
}

// The label, then every row: "|DateTime|ft", the fixed cells included.
QString TableText(QWidget& form) {
    const MSFlexGrid& grid = Grid(form);
    QStringList lines{Child<QLabel>(form, u"Label1"_qs).text()};
    for (int row = 0; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int col = 0; col < grid.Cols(); ++col) {
            cells << grid.TextMatrix(row, col);
        }
        lines << cells.join(u'|');
    }
    return lines.join(u'\n') + u'\n';
}

// Shows a table and does this in it.
void InTable(bool daily, const std::function<void(QWidget&)>& steps) {
    std::unique_ptr<ReportForm> form;
    if (daily) {
        form = std::make_unique<frmDailyT>(u"Upper basin"_qs);
    } else {
        form = std::make_unique<frmInstT>(u"Upper basin"_qs);
    }
    const NextWindow window(steps);
    form->exec();
}

}  // namespace

class TestTables : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        doors_ = std::make_unique<ScriptedDoors>();
        station_ = std::make_unique<StationFixture>(2);
        DescribeReportedChannel();
        ReportBeginDate = At("2002-01-31");
        ReportEndDate = At("2002-02-02");
    }
    void cleanup() {
        station_.reset();
        doors_.reset();
        RegionalSettings() = Regional();
    }

    void EachReading() {
        station_->WithReadings("2002-01-30 23:45", 15, {1, 2, 1234.625, {}, -0.001})
            .WithReadings("2002-02-02 23:59:59", 1.0 / 60, {3, 4, 5});
        InTable(false, [&](QWidget& form) {
            QCOMPARE(form.windowTitle(), u"Instantaneous Table - Upper basin"_qs);
            QCOMPARE(TableText(form),
                     u"Kettle Creek - Stage\n|DateTime|ft\n|1/31/2002|2.00\n"
                     "|1/31/2002 12:15:00 AM|1,234.63\n"
                     "|1/31/2002 12:45:00 AM|0.00\n"
                     "|2/2/2002 11:59:59 PM|3.00\n|2/3/2002|4.00\n"_qs);
            QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
            QVERIFY(QTest::qWaitForWindowActive(&form));
            QTest::keyClick(&Grid(form), Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(doors_->clipboardText, u"1/31/2002"_qs);
            Trigger(form, u"mnuFileExit"_qs);
        });
    }

    // A rated channel, a day without readings, and a midnight after the last day.
    void EachDay() {
        station_->WithReadings("2002-01-31", 720, {1000, 1001})
            .WithReadings("2002-02-02", 720, {0.5, 2, 7})
            .WithEquation("2000-01-01", 1, 0, 1, 10);  // tenfold
        ChannelInfo[1].Conversion = 1;
        RegionalSettings().shortDate = u"dd.MM.yyyy"_qs;
        RegionalSettings().decimalSign = u","_qs;
        RegionalSettings().groupSign = u"."_qs;
        InTable(true, [&](QWidget& form) {
            QCOMPARE(form.windowTitle(), u"Daily Summary Table - Upper basin"_qs);
            QCOMPARE(TableText(form),
                     u"Kettle Creek - Flow (cfs)\n|Date|Mean|Min|Max|Total\n"
                     "|31.01.2002|10.005,00|10.000,00|10.010,00|20.010,00\n"
                     "|01.02.2002||||\n"
                     "|02.02.2002|12,50|5,00|20,00|25,00\n"_qs);
            Grid(form).SetSelection(2, 1, 3, 3);
            Trigger(form, u"mnuEditCopy"_qs);
            QCOMPARE(doors_->clipboardText, u"01.02.2002\t\t\r02.02.2002\t12,50\t5,00"_qs);
            Trigger(form, u"mnuFileExit"_qs);
        });
    }

    void SettingsRebuild_data() {
        QTest::addColumn<bool>("daily");
        QTest::addColumn<QString>("cancelled");
        QTest::addColumn<QString>("confirmed");
        QTest::newRow("instantaneous") << false
                                       << u"Kettle Creek - Stage\n|DateTime|ft\n|2/1/2002|1.00\n"
                                          "|2/1/2002 12:00:00 PM|5.00\n"_qs
                                       << u"Alder Brook - Rain\n|DateTime|in\n|2/1/2002|0.125\n"
                                          "|2/1/2002 12:00:00 PM|0.375\n"_qs;
        QTest::newRow("daily")
            << true
            << u"Kettle Creek - Stage (ft)\n|Date|Mean|Min|Max|Total\n"
               "|1/31/2002||||\n|2/1/2002|3.00|1.00|5.00|6.00\n|2/2/2002||||\n"_qs
            << u"Alder Brook - Rain (in)\n|Date|Mean|Min|Max|Total\n"
               "|2/1/2002|0.250|0.125|0.375|0.500\n|2/2/2002||||\n"_qs;
    }
    void SettingsRebuild() {
        QFETCH(bool, daily);
        station_->WithRecord("2002-02-01", {1, 0.125}).WithRecord("2002-02-01 12:00", {5, 0.375});
        ChannelInfoData& rain = ChannelInfo[2];
        rain.RecSta = u"Alder Brook"_qs;
        rain.RecDesc = u"Rain"_qs;
        rain.RecLabel = u"in"_qs;
        rain.DigitsOut = 3;
        ReportPeriodCode = u"912"_qs;
        InTable(daily, [](QWidget& form) {
            const auto settings = [&](const QString& button) {
                SettingsMode = ReportMode::InstantaneousGraph;
                const NextWindow dialog([&](QWidget& opened) {
                    QVERIFY(!Child<QWidget>(opened, u"tbMax"_qs).isVisible());
                    Child<DTPicker>(opened, u"DTPicker1"_qs).SetValue(At("2002-02-01"));
                    Click(opened, button);
                });
                Trigger(form, u"mnuEditSettings"_qs);
                return TableText(form);
            };
            QTEST(settings(u"cmdCancel"_qs), "cancelled");
            StationInfo.OutputChannel = 2;
            QTEST(settings(u"cmdOK"_qs), "confirmed");
            form.close();
        });
    }

    void TenYearsOpenAtOnce() {
        RunPlainSql(
            station_->Path(),
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 350591) "
            "INSERT INTO Records(DateTime, chan1) SELECT 37257 + i / 96.0, 1.25 + i % 400 FROM n");
        ReportBeginDate = At("2002-01-01");
        ReportEndDate = At("2011-12-31");
        QElapsedTimer clock;
        clock.start();
        LoadSeries(ReportBeginDate, ReportEndDate + 1, 1);
        const qint64 loading = clock.restart();
        frmInstT form(u"Upper basin"_qs);
        form.show();
        form.grab();
        const qint64 opening = clock.restart() - loading;  // loads them anew
        MSFlexGrid& grid = Grid(form);
        for (const int row : {200000, 5, 350592}) {
            grid.SetTopRow(row);
            grid.grab();
        }
        const qint64 scrolling = clock.restart();
        grid.selectAll();
        Trigger(form, u"mnuEditCopy"_qs);
        const qint64 copying = clock.restart();
        QCOMPARE(doors_->clipboardText.count(u'\r'), 350591);
        QVERIFY(doors_->clipboardText.endsWith(u"\r12/31/2011 11:45:00 PM\t192.25"_qs));
        QVERIFY2(opening < 1000 && scrolling < 1500 && copying < 4000,
                 qPrintable(u"%1, %2, %3 ms"_qs.arg(opening).arg(scrolling).arg(copying)));
    }

private:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestTables)
#include "tst_tables.moc"
