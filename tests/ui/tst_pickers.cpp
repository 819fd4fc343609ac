// Dates typed, pasted and stepped in the pickers of the deletion and of the output settings.
#include <QCalendarWidget>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QWheelEvent>

#include "forms/records/frmDelete.h"
#include "forms/records/frmEditRecords.h"
#include "forms/reports/frmOutputSettings.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

// Texts over any former value, "a; b; c => moment"; "=> former" is refused.

#define SAME_IN_ALL                                                                          \
    "3/15/2004; 03/15/2004; 3-15-2004; 3.15.2004; 3,15,2004; 3 15 2004; 3/15/04; 03-15-04; " \
    "3 / 15 / 2004; 3. 15, 04;  3/15-2004 ; 2004-03-15; 2004/3/15; 2004.03.15; 2004 3 15; "  \
    "Mar 15, 2004; Mar 15 2004; mar 15,2004; MARCH 15, 2004; March 15 04; Mar. 15, 2004; "   \
    "Mar-15-2004; Mar/15/2004; 15 Mar 2004; 15-Mar-2004; 15-mar-04; 15. March 2004; "        \
    "15 March, 2004; 15Mar2004; Mar15,2004; 2004 Mar 15; 2004-Mar-15; 2004, March 15"

#define NEVER_A_DATE                                                                              \
    "13/1/2004; 15/3/2004; 0/5/2004; 3/0/2004; 3/32/2004; 4/31/2004; 2/29/2003; 2/29/1900; "      \
    "3/15/204; 3/15/20045; 3/15/4; 003/15/2004; 3/015/2004; 2004-13-01; 2004-15-03; 04-2004-3; "  \
    "3/15/1800; 12/31/1800; 3/15/0004; Mrz 15, 2004; Mar Mar 2004; Mar 15, Mar; 2004 15 Mar; "    \
    "Mar 2004 15; 3//; Mar 15,; /3/15/2004; 3/15/2004/; -3/15/2004; 3/15/2004 x; 3/15/2004 "      \
    "25:00; "                                                                                     \
    "3/15/2004 24:00; 3/15/2004 13:00 PM; 3/15/2004 0:30 PM; 3/15/2004 10:60; 3/15/2004 10; "     \
    "3/15/2004 1:5; 3/15/2004 10:30:60; 3/15/2004 10:30 XM; 3/15/2004 PM; 3/15/2004 10:30:15.5; " \
    "yesterday; 1e5; 3+15+2004; 3/15/2004 10:30 4:30"

const char* const kMoments =
    "10/05/03 11:59 PM; 10/5/2003 23:59; Oct 5 2003 11:59pm => 2003-10-05 23:59:00; "
    "1/5/03 1:59 PM; 1/5/03 1:59PM; 1/5/03 1:59 p; 1/5/03 1:59p; 1/5/03, 1:59 pm; 01/05/2003 "
    "13:59; "
    "2003-01-05 13:59; 2003-01-05T13:59; 5 Jan 2003 1:59 Pm; January 5, 2003 13:59:00; "
    "1 5 03 01:59 PM; 1.5.03 1:59:00 P => 2003-01-05 13:59:00; "
    "1/5/03 1:59 AM; 1/5/03 1:59; 1/5/03 1:59 a; 1-5-03  01:59am => 2003-01-05 01:59:00; "
    "1/5/03 1:59:07 AM; 1/5/03 1:59:07 => 2003-01-05 01:59:07; "
    "3/15/2004 12:00 AM; 3/15/2004 0:00; 3/15/2004 12 am; " SAME_IN_ALL
    " => 2004-03-15 00:00:00; "
    "3/15/2004 12:30 PM; 3/15/2004 12:30 => 2004-03-15 12:30:00; "
    "3/15/2004 3 PM; 3/15/2004 3p; 3/15/2004 15:00 => 2004-03-15 15:00:00; "
    "2/29/2004 11:59:59 PM => 2004-02-29 23:59:59; 1/1/30 => 1930-01-01 00:00:00; "
    "2/28/99 11:59 AM => 1999-02-28 11:59:00; 12/31/29 => 2029-12-31 00:00:00; 1/1/1801 => "
    "1801-01-01 00:00:00; "
    "12/31/9999 11:59 PM => 9999-12-31 23:59:00; "
    "Mar 2004; 3/2004; 10/05; 1:59 PM; Mar, 2004; " NEVER_A_DATE " => former";

const char* const kDays =
    "Oct 01, 2010; Oct 01 2010; oct 1, 2010; October 1, 10; 10/1/10; 1-Oct-2010; "
    "Oct 01, 2010 11:59 PM; 10/1/2010 9:30:00 AM => 2010-10-01 00:00:00; " SAME_IN_ALL
    " => 2004-03-15 00:00:00; Feb 29, 2004 => 2004-02-29 00:00:00; "
    "May 1, 30; 1 may 30 => 1930-05-01 00:00:00; Dec 31, 29 => 2029-12-31 00:00:00; "
    "Sept 5, 2001; Sep 05, 2001; 9/5/01 => 2001-09-05 00:00:00; "
    "Jan 1, 1801 => 1801-01-01 00:00:00; Dec 31, 9999 => 9999-12-31 00:00:00; "
    "Oct, 2010; Oct 2010; 10/2010; Oct 01; Ma 15, 2004; " NEVER_A_DATE " => former";

// The hidden day of the month is 1.
const char* const kMonths =
    "Oct, 2010; Oct 2010; oct 10; 10/2010; 10-10; 2010-10; 2010/10; 2010 Oct; October, 2010; "
    "Oct. 2010; Oct2010; 10.2010; 10,10; 1 Oct 2010; Oct 31, 2010 => 2010-10-01 00:00:00; "
    "Mar, 2004; 3/04; 3 2004; " SAME_IN_ALL
    " => 2004-03-01 00:00:00; Jan, 30 => 1930-01-01 00:00:00; Dec, 29 => 2029-12-01 00:00:00; "
    "Jan 1801 => 1801-01-01 00:00:00; 12/9999 => 9999-12-01 00:00:00; "
    "13/2004; 0/2004; 04/2004/3; Mar, 204; 3/4; Dec, 1800; 10 Oct; Oct, 2010 10:30; "
    "Oct Oct; " NEVER_A_DATE " => former";

// One of the two windows with a picker, and what its DTPicker1 holds at first.
using Steps = std::function<void(QWidget& form, DTPicker& picker)>;
void InWindow(const QString& format, const char* former, const Steps& steps) {
    const auto inForm = [&](QDialog& dialog) {
        InForm(dialog, [&](QWidget& form) {
            auto& picker = Child<DTPicker>(form, u"DTPicker1"_qs);
            picker.SetValue(At(former));
            picker.setFocus();
            steps(form, picker);
        });
    };
    if (format.endsWith(u"tt")) {
        frmEditRecords editor;
        frmDelete dialog(editor);
        inForm(dialog);
    } else {
        SettingsMode = format.contains(u"d") ? ReportMode::DailyTable : ReportMode::AnnualTable;
        frmOutputSettings dialog;
        inForm(dialog);
    }
}

// The ways in which a user comes to a picker: by Tab, to each section, and by clicks.
void ComeTo(DTPicker& picker, int way) {
    constexpr int kSections = 6;
    Child<QWidget>(*picker.window(), u"cmdOK"_qs).setFocus();
    picker.setFocus(Qt::TabFocusReason);
    if (way == 0) {
        return;
    }
    if (way <= kSections) {
        QTest::keyClick(&picker, Qt::Key_Home);
        for (int i = 1; i < way; ++i) {
            QTest::keyClick(&picker, Qt::Key_Right);
        }
    } else {
        const int place = (way - kSections) * picker.width() / 5;
        QTest::mouseClick(&picker, Qt::LeftButton, {}, {place, picker.height() / 2});
    }
}
constexpr int kWays = 10;

// As spreadsheets copy it, with a line end, or by an input method.
void Insert(QWidget& control, const QString& text, bool isPasted) {
    if (isPasted) {
        QApplication::clipboard()->setText(text + u'\n');
        QTest::keyClick(&control, Qt::Key_V, Qt::ControlModifier);
    } else {
        QInputMethodEvent event;
        event.setCommitString(text);
        QApplication::sendEvent(&control, &event);
    }
}

bool IsRefused(DTPicker& picker) {
    return Child<QLabel>(picker, u"notice"_qs).isVisible();
}

}  // namespace

class TestPickers : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        station_->WithRecord("2002-01-01", {1.2, 10})
            .WithRecord("2002-01-01 00:15:30", {1.5, {}})
            .WithRecord("2002-01-01 00:30", {-1, 30});
    }

    // Every text in every window, typed and pasted, over each former value; over the three of them
    // in every way.
    void Takes_data() {
        const DataRows<QString, QString, QString> row("format", "formers", "texts");
        row("M/d/yy h:mm tt", "2005-10-29 15:00:30; 2002-01-31; 1899-02-28 11:59:59", kMoments);
        row("MMM dd, yyyy", "2009-10-31; 2004-02-29; 1850-12-11", kDays);
        row("MMM, yyyy", "2009-10-01; 2002-02-01; 1888-12-01", kMonths);
    }
    void Takes() {
        QFETCH(QString, format);
        QFETCH(QString, formers);
        QFETCH(QString, texts);
        int former = 0;
        for (const QString& moment : formers.split(u"; "_qs)) {
            InWindow(format, qPrintable(moment), [&](QWidget&, DTPicker& picker) {
                const QStringList faults =
                    Mistaken(picker, Expectations(texts), At(qPrintable(moment)), former);
                QCOMPARE(faults.join(u'\n'), QString());
            });
            ++former;
        }
    }

    // Keys from Home on; what is shown then, and what is held after Tab.
    void Keys_data() {
        const DataRows<QString, QString, QString, QString> row("format", "former", "keys", "seen");
        const QString moments = u"M/d/yy h:mm tt"_qs;
        const QString days = u"MMM dd, yyyy"_qs;
        const QString months = u"MMM, yyyy"_qs;
        const QString former = u"2002-01-31 00:15:30"_qs;
        // Steps; seconds stay until another time is chosen.
        row(moments, former, "↑", "2/28/02 12:15 AM = 2002-02-28 00:15:30");
        row(moments, former, "→↑", "2/1/02 12:15 AM = 2002-02-01 00:15:30");
        row(moments, former, "→→↓", "1/31/01 12:15 AM = 2001-01-31 00:15:30");
        row(moments, former, "→→→↓", "1/30/02 11:15 PM = 2002-01-30 23:15:00");
        row(moments, former, "→→→→↑", "1/31/02 12:16 AM = 2002-01-31 00:16:00");
        row(moments, former, "→→→→↑↓", "1/31/02 12:15 AM = 2002-01-31 00:15:30");
        row(moments, former, "→→→→⇟", "1/31/02 12:05 AM = 2002-01-31 00:05:00");
        row(moments, former, "→→→→→→→↑", "1/31/02 12:15 PM = 2002-01-31 12:15:00");
        row(moments, "9999-12-31 23:30", "→→→↑←↑←↑←↑", "12/31/99 11:59 PM = 9999-12-31 23:59:00");
        row(days, "1801-01-01", "↓→↓→↓", "Jan 01, 1801 = 1801-01-01 00:00:00");
        row(months, "2002-01-31", "↑", "Feb, 2002 = 2002-02-28 00:00:00");
        row(months, "2002-01-31", "↑↑", "Mar, 2002 = 2002-03-31 00:00:00");
        row(months, "2002-01-31", "feb→2004", "feb, 2004 = 2004-02-29 00:00:00");
        // A section's worth replaces the section.
        row(moments, former, "→15", "1/15/02 12:15 AM = 2002-01-15 00:15:30");
        row(moments, former, "2→28→03", "2/28/03 12:15 AM = 2003-02-28 00:15:30");
        row(moments, former, "→→→3→45", "1/31/02 3:45 AM = 2002-01-31 03:45:00");
        row(moments, former, "→→→→→pm", "1/31/02 12:15 pm = 2002-01-31 12:15:00");
        row(moments, "1899-02-28", "3", "3/28/99 12:00 AM = 1899-03-28 00:00:00");
        row(days, "2002-01-31", "3", "3 31, 2002 = 2002-03-31 00:00:00");
        row(days, "2002-01-31", "→⌫5", "Jan 5, 2002 = 2002-01-05 00:00:00");
        row(days, "2002-01-31", "2", "2 31, 2002 = former, refused");
        row(moments, former, "13", "13/31/02 12:15 AM = former, refused");
        row(moments, former, "→→→→5", "1/31/02 12:5 AM = former, refused");
        row(moments, former, "→→→15", "1/31/02 15:15 AM = former, refused");
        // The whole text, also if it is the one that was shown.
        row(moments, former, "1/31/02 12:15 AM", "1/31/02 12:15 AM = 2002-01-31 00:15:00");
        row(moments, former, "→3/15/20045←⌫", "3/15/2004 = 2004-03-15 00:00:00");
        row(moments, former, "2/⎋", "1/31/02 12:15 AM = 2002-01-31 00:15:30");
        row(moments, former, "2/↑", "1/31/02 12:15 AM = former, refused");
        row(moments, former, "2/⏎", "1/31/02 12:15 AM = former, refused");
        row(moments, former, "⌫→⌫→⌫", "// 12:15 AM = former, refused");
    }
    void Keys() {
        QFETCH(QString, format);
        QFETCH(QString, former);
        QFETCH(QString, keys);
        InWindow(format, qPrintable(former), [&](QWidget& form, DTPicker& picker) {
            PressKeys(form, u'⇱' + keys);
            QString seen = picker.text() + u" = "_qs;
            const bool refused = IsRefused(picker);
            QTest::keyClick(&picker, Qt::Key_Tab);
            seen +=
                refused || IsRefused(picker) ? u"former, refused"_qs : MomentText(picker.Value());
            QTEST(seen, "seen");
        });
    }

    // Years of four digits, seconds, and both ends; while something is typed, too.
    void CountsTheRange_data() {
        const DataRows<QString, QString> row("steps", "shown");
        row("1/1/02 12:00 AM⇥1/1/02 12:30 AM",
            "3 records will be deleted: from Jan 1, 2002 12:00:00 AM to Jan 1, 2002 12:30:00 AM");
        row("1/1/02 12:00 AM⇥1/1/02 12:15 AM",
            "1 record will be deleted: from Jan 1, 2002 12:00:00 AM to Jan 1, 2002 12:15:00 AM");
        row("1/1/02 0:00⇥1/1/2002 0:15:30|2",
            "Chan 2 will be emptied in 2 records: from Jan 1, 2002 12:00:00 AM to "
            "Jan 1, 2002 12:15:30 AM");
        row("10/5/35⇥10/05/36",
            "0 records will be deleted: from Oct 5, 1935 12:00:00 AM to Oct 5, 1936 12:00:00 AM");
        row("1/2/02⇥1/1/02",
            "From is after To, so nothing will be deleted: "
            "from Jan 2, 2002 12:00:00 AM to Jan 1, 2002 12:00:00 AM");
        row("1/1/02⇥1/2/",
            "Nothing will be deleted: "
            "from Jan 1, 2002 12:00:00 AM to not a date and time");
    }
    void CountsTheRange() {
        QFETCH(QString, steps);
        InWindow(u"tt"_qs, "2002-01-31", [&](QWidget& form, DTPicker&) {
            const auto& label = Child<QLabel>(form, u"lblRange"_qs);
            PressKeys(form, steps.section(u'|', 0, 0));
            Child<QComboBox>(form, u"cboChannels"_qs)
                .setCurrentIndex(steps.section(u'|', 1).toInt());
            QTEST(label.text().replace(u'\n', u' '), "shown");
            StationConnection->Execute(u"ALTER TABLE Records RENAME TO Lost"_qs);
            Child<DTPicker>(form, u"DTPicker2"_qs).SetValue(At("2003-01-01"));
            QVERIFY(label.text().startsWith(u"The records could not be counted: no such table"_qs));
        });
    }

    // What is typed into To, over a range of all records, and the ways of OK; what is left.
    void DeletesWhatIsShown_data() {
        const DataRows<QString, QString, QString> row("typed", "ways", "left");
        for (const char* ok : {"⏎", "OK"}) {
            row("10/05/03 11:59 PM", ok, "0, closed");
            row("12/31/01 11:59 PM", ok, "3, closed");
            row("1/1/02 0:15", ok, "2, closed");
            row("13/31/01", ok, "3, refused");
            row("1/1/02 1", ok, "3, refused");
        }
        // One OK after a refusal only shows it again.
        row("13/31/01", "⇥|OK", "3, refused");
        row("13/31/01", "OK|OK", "0, closed");
        row("13/31/01", "⏎|1/1/02|OK", "2, closed");
        row("13/31/01", "⎋|⏎", "0, closed");
        row("13/31/01", "⎋|⎋", "3, closed");
    }
    void DeletesWhatIsShown() {
        QFETCH(QString, typed);
        QFETCH(QString, ways);
        InWindow(u"tt"_qs, "2002-01-01", [&](QWidget& form, DTPicker&) {
            auto& to = Child<DTPicker>(form, u"DTPicker2"_qs);
            Click(form, u"cmdSelectALl"_qs);
            to.setFocus();
            PressKeys(form, typed);
            for (const QString& way : ways.split(u'|')) {
                if (way == u"OK"_qs) {
                    Click(form, u"cmdOK"_qs);
                } else {
                    PressKeys(form, way);
                }
            }
            const QString left = station_->Dump("SELECT count(*) FROM Records").trimmed();
            QTEST(left + (!form.isVisible()                ? u", closed"_qs
                          : IsRefused(to) && to.hasFocus() ? u", refused"_qs
                                                           : u", open"_qs),
                  "left");
        });
    }

    // Typed right after the window has opened.
    void SettlesTheBeginDate() {
        const auto begin = [](const QString& typed) {
            ReportBeginDate = At("2010-10-01");
            DialogCancelled = true;
            SettingsMode = ReportMode::DailyTable;
            frmOutputSettings dialog;
            InForm(dialog, [&](QWidget& form) {
                PressKeys(form, typed);
                Click(form, u"cmdOK"_qs);
            });
            return MonthDayYearText(ReportBeginDate) +
                   (DialogCancelled ? QString() : u" to "_qs + MonthDayYearText(ReportEndDate));
        };
        CompareEach(begin,
                    "Mar 15, 2004 => Mar 15, 2004 to Mar 14, 2005; "
                    "Oct 01, 2010 => Oct 01, 2010 to Sep 30, 2011; Mar 15 => Oct 01, 2010; "
                    "→→15→2004 => Oct 15, 2004 to Oct 14, 2005; Mar 45, 2004 => Oct 01, 2010");
    }

    // A click selects a section, the wheel steps it, but only with the focus.
    void FollowsTheMouse() {
        InWindow(u"tt"_qs, "2002-01-31 00:15:30", [](QWidget& form, DTPicker& picker) {
            const QPoint year(picker.fontMetrics().horizontalAdvance(u"1/31/0"_qs) + 6,
                              picker.height() / 2);
            const auto turn = [&](int notches) {
                QWheelEvent event(year, picker.mapToGlobal(year), {}, {0, notches * 120}, {}, {},
                                  Qt::NoScrollPhase, false);
                QApplication::sendEvent(&picker, &event);
            };
            QTest::mouseClick(&picker, Qt::LeftButton, {}, year);
            turn(2);
            QCOMPARE(picker.text(), u"1/31/04 12:15 AM"_qs);
            Child<QWidget>(form, u"cmdOK"_qs).setFocus();
            turn(1);
            QCOMPARE(MomentText(picker.Value()), u"2004-01-31 00:15:30"_qs);
        });
    }

    // The calendar changes the day and keeps the time; without a day there is none.
    void ShowsACalendar() {
        InWindow(u"tt"_qs, "2002-01-31 00:15:30", [](QWidget&, DTPicker& picker) {
            for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
                QTest::keyClick(&picker, Qt::Key_Down, Qt::AltModifier);
                auto& month = Child<QCalendarWidget>(picker, QString());
                QCOMPARE(month.selectedDate(), QDate(2002, 1, 31));
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
                QTest::keyClick(QApplication::focusWidget(), key);
                QVERIFY(QTest::qWaitFor(
                    [&] { return picker.findChild<QCalendarWidget*>() == nullptr; }));
            }
            QCOMPARE(MomentText(picker.Value()), u"2002-02-01 00:15:30"_qs);
        });
        InWindow(u"MMM, yyyy"_qs, "2002-01-31", [](QWidget&, DTPicker& picker) {
            QTest::keyClick(&picker, Qt::Key_F4);
            QCOMPARE(picker.findChild<QCalendarWidget*>(), nullptr);
            Click(picker, u"up"_qs);
            QCOMPARE(picker.text(), u"Feb, 2002"_qs);
        });
    }

private:
    // "text: 2002-01-31 00:00:00" for each that gave something else.
    static QStringList Mistaken(DTPicker& picker, const QMap<QString, QString>& expected,
                                DateTime former, int turn) {
        QStringList faults;
        for (auto [text, moment] : expected.asKeyValueRange()) {
            const QString wanted =
                moment == u"former"_qs ? MomentText(former) + u", refused"_qs : moment;
            for (int way = turn % 3; way < 2 * kWays; way += 3) {
                picker.SetValue(former);
                ComeTo(picker, way % kWays);
                if (way < kWays) {
                    QTest::keyClicks(&picker, text);
                } else {
                    Insert(picker, text, turn % 2 == 0);
                }
                QTest::keyClick(&picker, Qt::Key_Tab);
                const QString given =
                    MomentText(picker.Value()) + (IsRefused(picker) ? u", refused"_qs : QString());
                if (given != wanted) {
                    faults += u"%1 (%2): %3"_qs.arg(text).arg(way).arg(given);
                }
            }
            ++turn;
        }
        return faults;
    }
    // What each text means.
    static QMap<QString, QString> Expectations(const QString& texts) {
        QMap<QString, QString> expected;
        QStringList waiting;
        for (const QString& text : texts.split(u"; "_qs)) {
            waiting += text.section(u" => "_qs, 0, 0);
            if (text.contains(u" => "_qs)) {
                for (const QString& same : std::as_const(waiting)) {
                    expected.insert(same, text.section(u" => "_qs, 1));
                }
                waiting.clear();
            }
        }
        return expected;
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestPickers)
#include "tst_pickers.moc"
