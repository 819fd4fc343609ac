#include <QLineEdit>
#include <QRadioButton>

#include "forms/reports/frmOutputSettings.h"
#include "platform/qt/UpDown.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

constexpr double kMinute = 1.0 / 1440;
constexpr int kChan = 2;

// Shows the dialog and does this in it.
void InSettings(ReportMode mode, const std::function<void(QWidget&)>& steps) {
    SettingsMode = mode;
    frmOutputSettings form;
    const NextWindow window(steps);
    form.exec();
}

QString TextOf(QWidget& form, const QString& name) {
    return Child<QLineEdit>(form, name).text();
}

// "12 optMonths to Dec 31, 2002".
QString PeriodShown(QWidget& form) {
    QString unit;
    for (const QRadioButton* option : form.findChildren<QRadioButton*>()) {
        unit += option->isChecked() ? option->objectName() : QString();
    }
    return u"%1 %2 to %3"_qs.arg(TextOf(form, u"tbN"_qs), unit, TextOf(form, u"tbEndDate"_qs));
}

// Another value for each control that the user can reach.
void ChangeEverything(QWidget& form) {
    const QString changes =
        u"tbFactor=1,000.5 tbLabel=ML tbMax=1,500 tbMin=-1 chkMin chkTotal chbPoints cbxCal "
        u"cbxRating "
        "optWeeks"_qs;
    for (const QString& change : changes.split(u' ')) {
        const QString name = change.section(u'=', 0, 0);
        if (!IsUsable(Child<QWidget>(form, name))) {
            continue;
        }
        if (change.contains(u'=')) {
            TypeText(form, name, change.section(u'=', 1));
        } else {
            Click(form, name);
        }
    }
    auto& digits = Child<UpDown>(form, u"updDigits"_qs);
    if (IsUsable(digits)) {
        Click(digits, u"up"_qs);
    }
}

}  // namespace

class TestOutputSettings : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        StationInfo.OutputChannel = kChan;
        StationInfo.TimeIncrement = 15 * kMinute;
        ChannelInfo[kChan].OutputSeries = 11000;
        ChannelInfo[kChan].Conversion = 1;
        ReportPeriodCode = u"914"_qs;
    }
    // Begin date and period code, then buttons or days picked; what is shown at load and after
    // each step.
    void Period_data() {
        const DataRows<ReportMode, QString, QString> row("mode", "steps", "shown");
        const ReportMode table = ReportMode::InstantaneousTable;
        row(table, "2002-01-31 931", "1 optMonths to Mar 02, 2002");
        row(table, "2003-03-01 941", "1 optYears to Feb 29, 2004");
        // A shorter unit's number isn't put back.
        row(table, "2002-01-01 9180 optWeeks optDays",
            "80 optDays to Mar 21, 2002|52 optWeeks to Dec 30, 2002|52 optDays to Feb 21, 2002");
        row(ReportMode::DailyTable, "2002-01-01 9180 optMonths optYears",
            "80 optDays to Mar 21, 2002|24 optMonths to Dec 31, 2003|10 optYears to Dec 31, 2011");
        row(table, "2002-01-01 9312 up optYears down optDays up",
            "12 optMonths to Dec 31, 2002|12 optMonths to Dec 31, 2002|1 optYears to Dec 31, 2002|"
            "1 optYears to Dec 31, 2002|1 optDays to Jan 01, 2002|2 optDays to Jan 02, 2002");
        row(table, "2002-01-01 921 2002-02-26",
            "1 optWeeks to Jan 07, 2002|1 optWeeks to Mar 04, 2002");
        // Of another make.
        row(table, "2002-03-15 7118", "12 optMonths to Mar 14, 2003");
        row(ReportMode::AnnualTable, "2002-03-17 9180 2003-03-01",
            "1 optYears to Feb 28, 2003|1 optYears to Feb 29, 2004");
    }
    void Period() {
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
                    Child<DTPicker>(form, u"DTPicker1"_qs).SetValue(At(qPrintable(step)));
                } else if (step.startsWith(u"opt")) {
                    Click(form, step);
                } else {
                    Click(Child<UpDown>(form, u"updN"_qs), step);
                }
                seen << PeriodShown(form);
            }
            Click(form, u"cmdOK"_qs);
        });
        QTEST(seen.join(u'|'), "shown");
        // The reports get the period that stood there last, and the next dialog shows it.
        const QString end = seen.last().section(u" to "_qs, 1);
        QCOMPARE(MonthDayYearText(ReportEndDate), end);
        QCOMPARE(ReportEndFromPeriod(ReportBeginDate, ReportPeriodCode), end);
    }

    void SavesWhatItsReportShows_data() {
        const DataRows<ReportMode, QString> row("mode", "saved");
        row(ReportMode::AnnualTable,
            "1/1/2002 to 12/31/2002, 941; 3 | 1000.5 | ML | 0 | 10 | 11000 | 1 | 0");
        row(ReportMode::InstantaneousGraph,
            "1/1/2002 to 1/28/2002, 924; 2 | 1.98 | ac-ft | -1 | 1500 | 11000 | 1 | 0; measured");
        row(ReportMode::DailyGraph,
            "1/1/2002 to 1/28/2002, 924; 2 | 1.98 | ac-ft | -1 | 1500 | 11101 | 1 | 0; measured");
        row(ReportMode::DailyTable,
            "1/1/2002 to 1/28/2002, 924; 3 | 1.98 | ac-ft | 0 | 10 | 11000 | 1 | 0");
    }
    void SavesWhatItsReportShows() {
        QFETCH(ReportMode, mode);
        InSettings(mode, [](QWidget& form) {
            ChangeEverything(form);
            Click(form, u"cmdOK"_qs);
        });
        QTEST(Settled() + (ShowMeasured ? u"; measured"_qs : QString()), "saved");
    }

    void AnnualKeepsItsYearOnCancel() {
        ReportBeginDate = At("2002-03-17");
        InSettings(ReportMode::AnnualTable, [](QWidget& form) {
            ChangeEverything(form);
            Child<DTPicker>(form, u"DTPicker1"_qs).SetValue(At("2005-01-01"));
            Click(form, u"cmdCancel"_qs);
        });
        QCOMPARE(Settled(),
                 u"3/1/2002 to 2/28/2003, 941; 2 | 1.98 | ac-ft | 0 | 10 | 11000 | 0 | 0"_qs);
        QCOMPARE(ChannelInfo[kChan].OutputFactor, 1.98);
    }

    // The period is taken before the check, the rest only after it.
    void MaxBelowMin() {
        DialogCancelled = true;
        doors_->ExpectMessage(u"Max value must be greater than Min Value"_qs);
        InSettings(ReportMode::DailyGraph, [&](QWidget& form) {
            ChangeEverything(form);
            TypeText(form, u"tbMin"_qs, u"1,500"_qs);
            Click(form, u"cmdOK"_qs);
            QVERIFY(form.isVisible() && DialogCancelled);
            QCOMPARE(Settled().section(u';', 0, 0), u"1/1/2002 to 1/28/2002, 924"_qs);
            const ChannelInfoData& channel = ChannelInfo[kChan];
            QCOMPARE(QList<double>({channel.GraphMin, channel.GraphMax}), QList<double>({0, 10}));
            QCOMPARE(channel.OutputSeries + channel.Calibration, 11000);
            form.close();
        });
    }

    // Minutes and what is typed, if anything; the hours shown and the minutes saved.
    void Increment() {
        const auto shownAndSaved = [](const QString& minutesAndTyped) {
            StationInfo.TimeIncrement = minutesAndTyped.section(u' ', 0, 0).toDouble() * kMinute;
            QString shown;
            InSettings(ReportMode::DailyTable, [&](QWidget& form) {
                shown = TextOf(form, u"tbIncre"_qs);
                if (minutesAndTyped.contains(u' ')) {
                    TypeText(form, u"tbIncre"_qs, minutesAndTyped.section(u' ', 1));
                }
                Click(form, u"cmdOK"_qs);
            });
            return u"%1 %2"_qs.arg(shown).arg(StationInfo.TimeIncrement / kMinute);
        };
        CompareEach(shownAndSaved,
                    "5 => 0.08 5; 0.1 => 0.00 0.1; 5 0.25 => 0.08 15; 5 0.5 h => 0.08 30; "
                    "15  => 0.25 60; 15 0 => 0.25 60; 15 1,000 => 0.25 60000; 15 often => 0.25 60; "
                    "15 -2 => 0.25 60; "
                    "0 => 0.00 60");
    }

    void DecimalComma() {
        UseOtherRegion();
        ChannelInfo[kChan].GraphMax = 12345.5;
        InSettings(ReportMode::InstantaneousGraph, [](QWidget& form) {
            QCOMPARE(TextOf(form, u"tbMax"_qs), u"12345,5"_qs);
            TypeText(form, u"tbMin"_qs, u"-1.500,25"_qs);
            Click(form, u"cmdOK"_qs);
        });
        QCOMPARE(Settled().section(u"; "_qs, 1),
                 u"2 | 1.98 | ac-ft | -1500.25 | 12345.5 | 11000 | 0 | 1"_qs);
    }

    // DialogCancelled before and after.
    void Closing() {
        const auto after = [](const QString& wayAndBefore) {
            const QString way = wayAndBefore.section(u' ', 0, 0);
            DialogCancelled = wayAndBefore.endsWith(u"true");
            InSettings(ReportMode::DailyTable, [&](QWidget& form) {
                if (way == u"close") {
                    form.close();
                } else if (way.startsWith(u"cmd")) {
                    Click(form, way);
                } else {
                    QTest::keyClick(&form, way == u"Esc" ? Qt::Key_Escape : Qt::Key_Return);
                }
            });
            return QVariant(DialogCancelled).toString();
        };
        CompareEach(after,
                    "cmdOK true => false; Return true => false; cmdCancel false => true; "
                    "Esc false => true; close false => true");
    }

private:
    // The report's period, and what the station's file has of the rest.
    QString Settled() const {
        const QString stored = station_->Dump(
            "SELECT digitsout, outputfactor, outputfactorstring, graphmin, graphmax, "
            "outputseries, calibration, conversion FROM Information");
        return u"%1 to %2, %3; "_qs.arg(ShortDateText(ReportBeginDate),
                                        ShortDateText(ReportEndDate), ReportPeriodCode) +
               stored.section(u'\n', kChan - 1, kChan - 1);
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestOutputSettings)
#include "tst_outputsettings.moc"
