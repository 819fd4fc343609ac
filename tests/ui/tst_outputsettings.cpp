#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QtTest/QtTest>

#include "app/SharedState.h"
#include "forms/reports/frmOutputSettings.h"
#include "platform/qt/DTPicker.h"
#include "platform/qt/UpDown.h"
#include "platform/text/Numbers.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

using enum ReportMode;

constexpr double kMinute = 1.0 / 1440;
constexpr int kChan = 2;

// Shows the dialog, does this in it, and presses OK where that leaves it open.
void InSettings(ReportMode mode, const std::function<void(QWidget&)>& steps) {
    SettingsMode = mode;
    frmOutputSettings form;
    const NextWindow window([&](QWidget&) {
        steps(form);
        if (form.isVisible()) {
            Click(form, u"cmdOK"_qs);
        }
    });
    form.exec();
}

QString TextOf(QWidget& form, const QString& name) {
    return Child<QLineEdit>(form, name).text();
}

void PickDate(QWidget& form, const QString& date) {
    Child<DTPicker>(form, u"DTPicker1"_qs).SetValue(At(qPrintable(date)));
}

// "12 Months to Dec 31, 2002".
QString PeriodShown(QWidget& form) {
    QString unit;
    for (const QRadioButton* option : form.findChildren<QRadioButton*>()) {
        unit += option->isChecked() ? option->objectName().sliced(3) : QString();
    }
    return u"%1 %2 to %3"_qs.arg(TextOf(form, u"tbN"_qs), unit, TextOf(form, u"tbEndDate"_qs));
}

// Another value for each control that the user can reach.
void ChangeEverything(QWidget& form) {
    const std::pair<QString, QString> changes[] = {
        {u"tbFactor"_qs, u"0.5"_qs}, {u"tbLabel"_qs, u"ML"_qs}, {u"tbMax"_qs, u"12.5"_qs},
        {u"tbMin"_qs, u"-1"_qs},     {u"chkMin"_qs, {}},        {u"chkTotal"_qs, {}},
        {u"chbPoints"_qs, {}},       {u"cbxCal"_qs, {}},        {u"cbxRating"_qs, {}},
        {u"optWeeks"_qs, {}}};
    for (const auto& [name, text] : changes) {
        if (IsUsable(Child<QWidget>(form, name))) {
            text.isEmpty() ? Click(form, name) : TypeText(form, name, text);
        }
    }
    if (auto& digits = Child<UpDown>(form, u"updDigits"_qs); IsUsable(digits)) {
        Click(digits, u"up"_qs);
    }
}

}  // namespace

class TestOutputSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        station_.emplace(kChan);
        StationInfo.OutputChannel = kChan;
        ChannelInfoData& channel = ChannelInfo[kChan];
        channel.DigitsOut = 2;
        channel.OutputFactor = 1.98;
        channel.OutputFactorString = u"ac-ft"_qs;
        channel.GraphMin = 0;
        channel.GraphMax = 10;
        channel.OutputSeries = 11000;
        WriteStationInfo();
        ReportBeginDate = At("2002-01-01");
        ReportPeriodCode = u"921"_qs;
    }
    void cleanup() {
        station_.reset();
        RegionalSettings() = Regional();
    }

    void showsThePeriod_data() {
        QTest::addColumn<ReportMode>("mode");
        QTest::addColumn<QString>("steps");  // begin date, period code, buttons or days picked
        QTest::addColumn<QString>("shown");  // at load and after each step
        const ReportMode table = InstantaneousTable;
        QTest::newRow("month's end") << table << "2002-01-31 931"
                                     << "1 Months to Mar 02, 2002";
        QTest::newRow("leap day") << table << "2003-03-01 941"
                                  << "1 Years to Feb 29, 2004";
        QTest::newRow("other make") << table << "2002-03-15 7118"
                                    << "12 Months to Mar 14, 2003";
        QTest::newRow("a shorter unit's number isn't put back")
            << table << "2002-01-01 9180 optWeeks optDays"
            << "80 Days to Mar 21, 2002|52 Weeks to Dec 30, 2002|52 Days to Feb 21, 2002";
        QTest::newRow("longest, readings") << table << "2002-01-01 9380 optYears"
                                           << "12 Months to Dec 31, 2002|1 Years to Dec 31, 2002";
        QTest::newRow("longest, table of days")
            << DailyTable << "2002-01-01 9180 optMonths optYears"
            << "80 Days to Mar 21, 2002|24 Months to Dec 31, 2003|10 Years to Dec 31, 2011";
        QTest::newRow("longest, graph of days")
            << DailyGraph << "2002-01-01 9325 optYears"
            << "24 Months to Dec 31, 2003|3 Years to Dec 31, 2004";
        QTest::newRow("spinning stops at both ends")
            << table << "2002-01-01 9312 up optYears down optDays up"
            << "12 Months to Dec 31, 2002|12 Months to Dec 31, 2002|1 Years to Dec 31, 2002|"
               "1 Years to Dec 31, 2002|1 Days to Jan 01, 2002|2 Days to Jan 02, 2002";
        QTest::newRow("another begin") << table << "2002-01-01 921 2002-02-26"
                                       << "1 Weeks to Jan 07, 2002|1 Weeks to Mar 04, 2002";
        QTest::newRow("annual") << AnnualTable << "2002-03-17 9180 2003-03-01"
                                << "1 Years to Feb 28, 2003|1 Years to Feb 29, 2004";
    }
    void showsThePeriod() {
        QFETCH(ReportMode, mode);
        QFETCH(QString, steps);
        QStringList todo = steps.split(u' ');
        ReportBeginDate = At(qPrintable(todo.takeFirst()));
        ReportPeriodCode = todo.takeFirst();
        QStringList seen;
        InSettings(mode, [&](QWidget& form) {
            seen << PeriodShown(form);
            for (const QString& step : todo) {
                if (step.startsWith(u'2')) {
                    PickDate(form, step);
                } else {
                    Click(step.startsWith(u"opt") ? form : Child<UpDown>(form, u"updN"_qs), step);
                }
                seen << PeriodShown(form);
            }
        });
        QTEST(seen.join(u'|'), "shown");
        // The reports, and the next dialog, get the period that stood there last.
        QCOMPARE(MonthDayYearText(ReportEndDate), seen.last().section(u" to "_qs, 1));
        QCOMPARE(ReportEndFromPeriod(ReportBeginDate, ReportPeriodCode),
                 MonthDayYearText(ReportEndDate));
    }

    void savesWhatItsReportShows_data() {
        QTest::addColumn<ReportMode>("mode");
        QTest::addColumn<QString>("saved");
        const QString table = u"1/1/2002 924; 3 | 1.98 | ac-ft | 0 | 10 | 11000 | 1 | 1; 0"_qs;
        const QString graph = u"1/1/2002 924; 2 | 1.98 | ac-ft | -1 | 12.5 | %1 | 1 | 1; 1"_qs;
        QTest::newRow("annual") << AnnualTable
                                << "1/1/2002 941; 3 | 0.5 | ML | 0 | 10 | 11000 | 1 | 1; 0";
        QTest::newRow("graph of readings") << InstantaneousGraph << graph.arg(11000);
        QTest::newRow("graph of days") << DailyGraph << graph.arg(11101);
        QTest::newRow("table of readings") << InstantaneousTable << table;
        QTest::newRow("table of days") << DailyTable << table;
    }
    void savesWhatItsReportShows() {
        QFETCH(ReportMode, mode);
        ReportPeriodCode = u"914"_qs;
        InSettings(mode, ChangeEverything);
        QTEST(Saved(), "saved");
    }

    void annualKeepsItsYearOnCancel() {
        ReportBeginDate = At("2002-03-17");
        InSettings(AnnualTable, [](QWidget& form) {
            ChangeEverything(form);
            PickDate(form, u"2005-01-01"_qs);
            Click(form, u"cmdCancel"_qs);
        });
        WriteStationInfo();
        QCOMPARE(Saved(), u"3/1/2002 941; 2 | 1.98 | ac-ft | 0 | 10 | 11000 | 0 | 0; 0"_qs);
        QCOMPARE(ShortDateText(ReportEndDate), u"2/28/2003"_qs);
    }

    void staysUpWithMaxBelowMin() {
        DialogCancelled = true;
        doors_.ExpectMessage(u"Max value must be greater than Min Value"_qs);
        InSettings(DailyGraph, [](QWidget& form) {
            ChangeEverything(form);
            TypeText(form, u"tbMin"_qs, u"12.5"_qs);
            Click(form, u"cmdOK"_qs);
            QVERIFY(form.isVisible() && DialogCancelled);
            form.close();
        });
        // The period is taken before the check, the rest only after it.
        WriteStationInfo();
        QCOMPARE(Saved(), u"1/1/2002 921; 2 | 1.98 | ac-ft | 0 | 10 | 11000 | 0 | 0; 0"_qs);
    }

    void readsTheDigitsOfTheSeries() {
        const std::pair<std::int16_t, QString> rows[] = {
            {11000, u"1000"_qs}, {10101, u"0101"_qs}, {0, u"0000"_qs}, {111, u"1100"_qs}};
        for (const auto& [series, boxes] : rows) {
            ChannelInfo[kChan].OutputSeries = series;
            QString shown;
            InSettings(DailyGraph, [&](QWidget& form) {
                for (const char* box : {"chkMean", "chkMin", "chkMax", "chkTotal"}) {
                    const bool on = Child<QCheckBox>(form, QString::fromLatin1(box)).isChecked();
                    shown += on ? u'1' : u'0';
                }
            });
            QCOMPARE(shown, boxes);
            QCOMPARE(QString::number(ChannelInfo[kChan].OutputSeries), u'1' + boxes);
        }
    }

    void keepsTheIncrementBehindItsText() {
        const std::tuple<double, QString, QString, double> rows[] = {
            {5, u"0.08"_qs, u"-"_qs, 5},  // left alone
            {5, u"0.08"_qs, u"0.5 h"_qs, 30},
            {15, u"0.25"_qs, u""_qs, 60},
            {15, u"0.25"_qs, u"-2"_qs, 60},
            {0, u"0.00"_qs, u"-"_qs, 60}};
        for (const auto& [minutes, shown, typed, saved] : rows) {
            StationInfo.TimeIncrement = minutes * kMinute;
            InSettings(DailyTable, [&, text = shown, change = typed](QWidget& form) {
                QCOMPARE(TextOf(form, u"tbIncre"_qs), text);
                if (change != u"-") {
                    TypeText(form, u"tbIncre"_qs, change);
                }
            });
            QCOMPARE(StationInfo.TimeIncrement, saved * kMinute);
        }
    }

    void takesDecimalCommas() {
        RegionalSettings().decimalSign = u","_qs;
        RegionalSettings().groupSign = u"."_qs;
        ChannelInfo[kChan].GraphMax = 12345.5;
        InSettings(InstantaneousGraph, [](QWidget& form) {
            QCOMPARE(TextOf(form, u"tbMax"_qs), u"12345,5"_qs);
            TypeText(form, u"tbMin"_qs, u"-0,25"_qs);
            TypeText(form, u"tbIncre"_qs, u"0,5"_qs);
        });
        QVERIFY(Saved().contains(u"| -0.25 | 12345.5 |"));
        QCOMPARE(StationInfo.TimeIncrement, 30 * kMinute);
    }

    // Escape is Cancel; the title bar's close leaves the last dialog's answer.
    void tellsHowItWasClosed() {
        for (const bool before : {true, false}) {
            DialogCancelled = before;
            InSettings(DailyTable, [](QWidget& form) { form.close(); });
            QCOMPARE(DialogCancelled, before);
        }
        InSettings(DailyTable, [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
        QVERIFY(DialogCancelled);
    }

private:
    // What the dialog settles, but for the increment: the channel's part as the file has it.
    QString Saved() const {
        const QString channels = station_->Dump(
            "SELECT digitsout, outputfactor, outputfactorstring, graphmin, graphmax, "
            "outputseries, calibration, conversion FROM Information");
        return u"%1 %2; %3; %4"_qs.arg(ShortDateText(ReportBeginDate), ReportPeriodCode,
                                       channels.section(u'\n', kChan - 1, kChan - 1),
                                       QString::number(ShowMeasured ? 1 : 0));
    }

    ScriptedDoors doors_;
    std::optional<StationFixture> station_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestOutputSettings)
#include "tst_outputsettings.moc"
