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

constexpr double kMinute = 1.0 / 1440;
constexpr int kChan = 2;

QString Name(const char* text) {
    return QString::fromLatin1(text);
}

// Shows the dialog and does this in it.
void InSettings(ReportMode mode, const std::function<void(QWidget&)>& steps) {
    SettingsMode = mode;
    frmOutputSettings form;
    const NextWindow window(steps);
    form.exec();
}

QString TextOf(QWidget& form, const char* name) {
    return Child<QLineEdit>(form, Name(name)).text();
}

// "12 optMonths to Dec 31, 2002".
QString PeriodShown(QWidget& form) {
    QString unit;
    for (const QRadioButton* option : form.findChildren<QRadioButton*>()) {
        unit += option->isChecked() ? option->objectName() : QString();
    }
    return QStringLiteral("%1 %2 to %3").arg(TextOf(form, "tbN"), unit, TextOf(form, "tbEndDate"));
}

QString PeriodText() {
    return QStringLiteral("%1 to %2, %3")
        .arg(ShortDateText(ReportBeginDate), ShortDateText(ReportEndDate), ReportPeriodCode);
}

// What the dialog settles apart from the period, as the station's file has it.
QString Stored(const StationFixture& station) {
    return station
        .Dump(
            "SELECT digitsout, outputfactor, outputfactorstring, graphmin, graphmax, "
            "outputseries, calibration, conversion FROM Information")
        .section(u'\n', kChan - 1, kChan - 1);
}

// Another value for each control that the user can reach.
void ChangeEverything(QWidget& form) {
    const auto reach = [&form](const char* name) {
        return IsUsable(Child<QWidget>(form, Name(name)));
    };
    for (const auto& [name, text] : {std::pair("tbFactor", "0.5"), std::pair("tbLabel", "ML"),
                                     std::pair("tbMax", "12.5"), std::pair("tbMin", "-1")}) {
        if (reach(name)) {
            TypeText(form, Name(name), Name(text));
        }
    }
    for (const char* name :
         {"chkMin", "chkTotal", "chbPoints", "cbxCal", "cbxRating", "optWeeks"}) {
        if (reach(name)) {
            Click(form, Name(name));
        }
    }
    if (reach("updDigits")) {
        Click(Child<UpDown>(form, Name("updDigits")), Name("up"));
    }
}

}  // namespace

class TestOutputSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void Period_data();
    void Period();
    void SavesWhatItsReportShows_data();
    void SavesWhatItsReportShows();
    void AnnualKeepsItsYearOnCancel();
    void MaxBelowMin();
    void Series_data();
    void Series();
    void Increment_data();
    void Increment();
    void DecimalComma();
    void Closing_data();
    void Closing();

private:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

void TestOutputSettings::init() {
    FailOnAnyWarning();
    RegionalSettings() = Regional();
    doors_ = std::make_unique<ScriptedDoors>();
    station_ = std::make_unique<StationFixture>(kChan);
    StationInfo.OutputChannel = kChan;
    StationInfo.TimeIncrement = 15 * kMinute;
    ChannelInfoData& channel = ChannelInfo[kChan];
    channel.DigitsOut = 2;
    channel.OutputFactor = 1.98;
    channel.OutputFactorString = QStringLiteral("ac-ft");
    channel.GraphMin = 0;
    channel.GraphMax = 10;
    channel.OutputSeries = 11000;
    ReportBeginDate = At("2002-01-01");
    ReportPeriodCode = QStringLiteral("921");
}

void TestOutputSettings::cleanup() {
    station_.reset();
    doors_.reset();
    RegionalSettings() = Regional();
}

void TestOutputSettings::Period_data() {
    QTest::addColumn<ReportMode>("mode");
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("shown");

    const ReportMode table = ReportMode::InstantaneousTable;
    const struct {
        const char* name;
        ReportMode mode;
        const char* steps;  // begin date, period code, then buttons or days picked
        const char* shown;  // at load and after each step
    } rows[] = {
        {"a month from January 1", table, "2002-01-01 931", "1 optMonths to Jan 31, 2002"},
        {"a month from January 31 runs on into March", table, "2002-01-31 931",
         "1 optMonths to Mar 02, 2002"},
        {"months into the next year", table, "2002-11-15 933", "3 optMonths to Feb 14, 2003"},
        {"a year from March 1 ends on the leap day", table, "2003-03-01 941",
         "1 optYears to Feb 29, 2004"},
        {"a shorter unit's number isn't put back", table, "2002-01-01 9180 optWeeks optDays",
         "80 optDays to Mar 21, 2002|52 optWeeks to Dec 30, 2002|52 optDays to Feb 21, 2002"},
        {"months and years of a table of readings", table, "2002-01-01 9180 optMonths optYears",
         "80 optDays to Mar 21, 2002|12 optMonths to Dec 31, 2002|1 optYears to Dec 31, 2002"},
        {"months and years of a table of days", ReportMode::DailyTable,
         "2002-01-01 9180 optMonths optYears",
         "80 optDays to Mar 21, 2002|24 optMonths to Dec 31, 2003|10 optYears to Dec 31, 2011"},
        {"years of a graph of days", ReportMode::DailyGraph, "2002-01-01 9325 optYears",
         "24 optMonths to Dec 31, 2003|3 optYears to Dec 31, 2004"},
        {"two years at load", table, "2002-01-01 9324", "12 optMonths to Dec 31, 2002"},
        {"spinning stops at both ends", table, "2002-01-01 9312 up optYears down optDays up",
         "12 optMonths to Dec 31, 2002|12 optMonths to Dec 31, 2002|1 optYears to Dec 31, 2002|"
         "1 optYears to Dec 31, 2002|1 optDays to Jan 01, 2002|2 optDays to Jan 02, 2002"},
        {"another begin date", table, "2002-01-01 921 2002-02-26",
         "1 optWeeks to Jan 07, 2002|1 optWeeks to Mar 04, 2002"},
        {"a code of another make", table, "2002-03-15 7118", "12 optMonths to Mar 14, 2003"},
        {"a code of an unknown unit", table, "2002-03-15 9518", "12 optMonths to Mar 14, 2003"},
        {"the annual table's own year", ReportMode::AnnualTable, "2002-03-17 9180 2003-03-01",
         "1 optYears to Feb 28, 2003|1 optYears to Feb 29, 2004"}};
    for (const auto& row : rows) {
        QTest::newRow(row.name) << row.mode << row.steps << row.shown;
    }
}

void TestOutputSettings::Period() {
    QFETCH(ReportMode, mode);
    QFETCH(QString, steps);

    QStringList todo = steps.split(u' ');
    ReportBeginDate = At(qPrintable(todo.takeFirst()));
    ReportPeriodCode = todo.takeFirst();
    QStringList seen;
    QString end;
    InSettings(mode, [&](QWidget& form) {
        seen << PeriodShown(form);
        for (const QString& step : todo) {
            if (step.startsWith(u'2')) {
                Child<DTPicker>(form, Name("DTPicker1")).SetValue(At(qPrintable(step)));
            } else if (step.startsWith(u"opt")) {
                Click(form, step);
            } else {
                Click(Child<UpDown>(form, Name("updN")), step);
            }
            seen << PeriodShown(form);
        }
        end = TextOf(form, "tbEndDate");
        Click(form, Name("cmdOK"));
    });
    QTEST(seen.join(u'|'), "shown");
    // The period that the reports get, and the next dialog shows, is the one that stood there last.
    QCOMPARE(MonthDayYearText(ReportEndDate), end);
    QCOMPARE(ReportEndFromPeriod(ReportBeginDate, ReportPeriodCode), end);
}

void TestOutputSettings::SavesWhatItsReportShows_data() {
    QTest::addColumn<ReportMode>("mode");
    QTest::addColumn<QString>("saved");
    const struct {
        const char* name;
        ReportMode mode;
        const char* saved;
    } rows[] = {
        {"annual table", ReportMode::AnnualTable,
         "1/1/2002 to 12/31/2002, 941; 3 | 0.5 | ML | 0 | 10 | 11000 | 1 | 1"},
        {"graph of readings", ReportMode::InstantaneousGraph,
         "1/1/2002 to 1/28/2002, 924; 2 | 1.98 | ac-ft | -1 | 12.5 | 11000 | 1 | 1; measured"},
        {"graph of days", ReportMode::DailyGraph,
         "1/1/2002 to 1/28/2002, 924; 2 | 1.98 | ac-ft | -1 | 12.5 | 11101 | 1 | 1; measured"},
        {"table of readings", ReportMode::InstantaneousTable,
         "1/1/2002 to 1/28/2002, 924; 3 | 1.98 | ac-ft | 0 | 10 | 11000 | 1 | 1"},
        {"table of days", ReportMode::DailyTable,
         "1/1/2002 to 1/28/2002, 924; 3 | 1.98 | ac-ft | 0 | 10 | 11000 | 1 | 1"}};
    for (const auto& row : rows) {
        QTest::newRow(row.name) << row.mode << row.saved;
    }
}

void TestOutputSettings::SavesWhatItsReportShows() {
    QFETCH(ReportMode, mode);
    ReportPeriodCode = QStringLiteral("914");
    InSettings(mode, [](QWidget& form) {
        ChangeEverything(form);
        Click(form, Name("cmdOK"));
    });
    QTEST(PeriodText() + QStringLiteral("; ") + Stored(*station_) +
              (ShowMeasured ? QStringLiteral("; measured") : QString()),
          "saved");
}

void TestOutputSettings::AnnualKeepsItsYearOnCancel() {
    const QString before = Stored(*station_);
    ReportBeginDate = At("2002-03-17");
    InSettings(ReportMode::AnnualTable, [](QWidget& form) {
        ChangeEverything(form);
        Child<DTPicker>(form, Name("DTPicker1")).SetValue(At("2005-01-01"));
        Click(form, Name("cmdCancel"));
    });
    QCOMPARE(PeriodText(), QStringLiteral("3/1/2002 to 2/28/2003, 941"));
    QCOMPARE(Stored(*station_), before);
    QCOMPARE(ChannelInfo[kChan].OutputFactor, 1.98);
}

void TestOutputSettings::MaxBelowMin() {
    DialogCancelled = true;
    doors_->ExpectMessage(QStringLiteral("Max value must be greater than Min Value"));
    InSettings(ReportMode::DailyGraph, [&](QWidget& form) {
        ChangeEverything(form);
        TypeText(form, Name("tbMin"), QStringLiteral("12.5"));
        Click(form, Name("cmdOK"));

        QVERIFY(form.isVisible());
        QVERIFY(DialogCancelled);
        QVERIFY(!doors_->shownMessages.empty());
        QCOMPARE(doors_->shownMessages.back().icon, MsgBoxIcon::Exclamation);
        // The period is taken before the check, the rest only after it.
        QCOMPARE(PeriodText(), QStringLiteral("1/1/2002 to 1/7/2002, 921"));
        const ChannelInfoData& channel = ChannelInfo[kChan];
        QCOMPARE(channel.GraphMin, 0.0);
        QCOMPARE(channel.GraphMax, 10.0);
        QCOMPARE(channel.OutputSeries, 11000);
        QCOMPARE(channel.Calibration, 0);
        form.close();
    });
}

void TestOutputSettings::Series_data() {
    QTest::addColumn<int>("series");
    QTest::addColumn<QString>("boxes");  // mean, minimum, maximum, total
    const std::pair<int, const char*> rows[] = {
        {11000, "1000"}, {10101, "0101"}, {11111, "1111"}, {0, "0000"}, {111, "1100"}};
    for (const auto& [series, boxes] : rows) {
        QTest::addRow("%d", series) << series << boxes;
    }
}

void TestOutputSettings::Series() {
    QFETCH(int, series);
    ChannelInfo[kChan].OutputSeries = static_cast<std::int16_t>(series);
    QString boxes;
    InSettings(ReportMode::DailyGraph, [&](QWidget& form) {
        for (const char* box : {"chkMean", "chkMin", "chkMax", "chkTotal"}) {
            boxes += Child<QCheckBox>(form, Name(box)).isChecked() ? u'1' : u'0';
        }
        Click(form, Name("cmdOK"));
    });
    QTEST(boxes, "boxes");
    QCOMPARE(QString::number(ChannelInfo[kChan].OutputSeries), u'1' + boxes);
}

void TestOutputSettings::Increment_data() {
    QTest::addColumn<double>("minutes");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("saved");
    const struct {
        const char* name;
        double minutes;
        const char* shown;
        const char* typed;  // "-": left alone
        double saved;
    } rows[] = {{"more exact than its text", 5, "0.08", "-", 5},
                {"below the text's last place", 0.1, "0.00", "-", 0.1},
                {"typed", 5, "0.08", "0.25", 15},
                {"read from the left", 5, "0.08", "0.5 h", 30},
                {"empty", 15, "0.25", "", 60},
                {"zero", 15, "0.25", "0", 60},
                {"no number", 15, "0.25", "often", 60},
                {"below zero", 15, "0.25", "-2", 60},
                {"never set", 0, "0.00", "-", 60}};
    for (const auto& row : rows) {
        QTest::newRow(row.name) << row.minutes << row.shown << row.typed << row.saved;
    }
}

void TestOutputSettings::Increment() {
    QFETCH(QString, shown);
    QFETCH(QString, typed);
    QFETCH(double, minutes);
    QFETCH(double, saved);
    StationInfo.TimeIncrement = minutes * kMinute;
    InSettings(ReportMode::DailyTable, [&](QWidget& form) {
        QCOMPARE(TextOf(form, "tbIncre"), shown);
        if (typed != u"-") {
            TypeText(form, Name("tbIncre"), typed);
        }
        Click(form, Name("cmdOK"));
    });
    QCOMPARE(StationInfo.TimeIncrement, saved * kMinute);
}

void TestOutputSettings::DecimalComma() {
    RegionalSettings().decimalSign = QStringLiteral(",");
    RegionalSettings().groupSign = QStringLiteral(".");
    ChannelInfo[kChan].GraphMax = 12345.5;
    InSettings(ReportMode::AnnualTable, [](QWidget& form) {
        QCOMPARE(TextOf(form, "tbFactor"), QStringLiteral("1,98"));
        QCOMPARE(TextOf(form, "tbIncre"), QStringLiteral("0,25"));
        TypeText(form, Name("tbIncre"), QStringLiteral("0,5"));
        Click(form, Name("cmdOK"));
    });
    InSettings(ReportMode::InstantaneousGraph, [](QWidget& form) {
        QCOMPARE(TextOf(form, "tbMax"), QStringLiteral("12345,5"));
        TypeText(form, Name("tbMin"), QStringLiteral("-0,25"));
        Click(form, Name("cmdOK"));
    });
    QCOMPARE(Stored(*station_),
             QStringLiteral("2 | 1.98 | ac-ft | -0.25 | 12345.5 | 11000 | 0 | 0"));
    QCOMPARE(StationInfo.TimeIncrement, 30 * kMinute);
}

void TestOutputSettings::Closing_data() {
    QTest::addColumn<QString>("way");
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("after");
    const struct {
        const char* way;
        bool before;
        bool after;
    } rows[] = {{"cmdOK", true, false}, {"Return", true, false}, {"cmdCancel", false, true},
                {"Esc", false, true},   {"close", false, false}, {"close", true, true}};
    for (const auto& row : rows) {
        QTest::addRow("%s, %d before", row.way, row.before) << row.way << row.before << row.after;
    }
}

void TestOutputSettings::Closing() {
    QFETCH(QString, way);
    QFETCH(bool, before);
    DialogCancelled = before;
    InSettings(ReportMode::DailyTable, [&](QWidget& form) {
        if (way == u"close") {
            form.close();
        } else if (way.startsWith(u"cmd")) {
            Click(form, way);
        } else {
            QTest::keyClick(&Child<QWidget>(form, Name("tbIncre")),
                            way == u"Esc" ? Qt::Key_Escape : Qt::Key_Return);
        }
    });
    QTEST(DialogCancelled, "after");
}

}  // namespace rillbook

QTEST_MAIN(rillbook::TestOutputSettings)
#include "tst_outputsettings.moc"
