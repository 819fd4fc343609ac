#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScreen>

#include "forms/reports/frmAnnualT.h"
#include "forms/reports/frmDailyT.h"
#include "forms/reports/frmInstT.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

using enum ReportMode;

// Shows a table, does this in it, and closes it.
void InTable(ReportMode mode, const std::function<void(QWidget&)>& steps) {
    const QString project = u"Upper basin"_qs;
    CommonDialog printer;
    std::unique_ptr<ReportForm> form;
    if (mode == InstantaneousTable) {
        form = std::make_unique<frmInstT>(project, printer);
    } else if (mode == DailyTable) {
        form = std::make_unique<frmDailyT>(project, printer);
    } else {
        form = std::make_unique<frmAnnualT>(project, printer);
    }
    InForm(*form, steps);
}

QStringList RowTexts(const MSFlexGrid& grid, int row) {
    QStringList texts;
    for (int col = 0; col < grid.Cols(); ++col) {
        texts << grid.TextMatrix(row, col);
    }
    return texts;
}

// The label, then every row: "|DateTime|ft", the fixed cells included.
QString TableText(QWidget& form) {
    QString text = Child<QLabel>(form, u"Label1"_qs).text() + u'\n';
    for (int row = 0; row < GridOf(form).Rows(); ++row) {
        text += RowTexts(GridOf(form), row).join(u'|') + u'\n';
    }
    return text;
}

// The annual table: titles, peak, and the cells that hold a text, "Avg: Jan 1.20, Total 1.20" a row
// under the names in row 1. Days without a value are left out.
QString SheetText(QWidget& form) {
    QStringList lines{Child<QLabel>(form, u"lblTitle1"_qs).text(),
                      Child<QLabel>(form, u"lblTitle2"_qs).text(),
                      Child<QLineEdit>(form, u"tbPMax"_qs).text()};
    const QStringList months = RowTexts(GridOf(form), 1);
    lines << months.sliced(2).join(u", ");
    for (int row = 2; row < GridOf(form).Rows(); ++row) {
        const QStringList texts = RowTexts(GridOf(form), row);
        QStringList cells;
        for (int col = 2; col < texts.size(); ++col) {
            if (!texts[col].isEmpty()) {
                cells << months[col] + u' ' + texts[col];
            }
        }
        if (!cells.isEmpty()) {
            lines << texts[1] + u": "_qs + cells.join(u", ");
        }
    }
    return lines.join(u'\n');
}

// Prints the annual table by these buttons of the dialog that asks what to print.
void PrintSheet(const QStringList& buttons = {u"cmdOK"_qs}, const QString& peak = {}) {
    InTable(AnnualTable, [&](QWidget& form) {
        if (!peak.isNull()) {
            TypeText(form, u"tbPMax"_qs, peak);
        }
        const NextWindow dialog([&](QWidget& opened) {
            for (const QString& button : buttons) {
                Click(opened, button);
            }
            opened.close();
        });
        Trigger(form, u"mnuFilePrint"_qs);
    });
}

// A page of the sheet without its bold headings: the cells that hold a text, "2153,9638 1.5", and
// what else is drawn.
QString PageText(const Recording& recording) {
    static const QRegularExpression cell(u"^text (\\d+,\\d+) Arial 8 black \"(.*)\"$"_qs);
    QStringList lines;
    for (const QString& line : recording.lines) {
        const QRegularExpressionMatch found = cell.match(line);
        if (!found.hasMatch() && !line.contains(u" bold "_qs)) {
            lines << line;
        } else if (!found.captured(2).isEmpty()) {
            lines << found.captured(1) + u' ' + found.captured(2);
        }
    }
    return lines.join(u'\n').replace(ShortDateText(Now()), u"today"_qs);
}

// Readings at midnight and noon, so that each day's mean is plain; February 2 has none.
void WinterDays(StationFixture& station) {
    station.WithReadings("2002-01-30", 720, {10, 15, 20, 30, 30, 0.5})
        .WithReadings("2002-02-03", 720, {1, 2});
}

}  // namespace

class TestTables : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void EachReading() {
        ReportBeginDate = At("2002-01-31");
        ReportEndDate = At("2002-02-02");
        station_->WithReadings("2002-01-30 23:45", 15, {1, 2, 1234.625, {}, -0.001})
            .WithReadings("2002-02-02 23:59:59", 1.0 / 60, {3, 4, 5});
        InTable(InstantaneousTable, [&](QWidget& form) {
            QCOMPARE(TableText(form),
                     u"Kettle Creek - Stage\n|DateTime|ft\n|1/31/2002|2.00\n"
                     "|1/31/2002 12:15:00 AM|1,234.63\n"
                     "|1/31/2002 12:45:00 AM|0.00\n"
                     "|2/2/2002 11:59:59 PM|3.00\n|2/3/2002|4.00\n"_qs);
            QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
            QTest::keyClick(&GridOf(form), Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(doors_->clipboardText, u"1/31/2002"_qs);
        });
    }

    // A rated channel, a day without readings, and a midnight after the last day.
    void EachDay() {
        ReportBeginDate = At("2002-01-31");
        ReportEndDate = At("2002-02-02");
        station_->WithReadings("2002-01-31", 720, {1000, 1001})
            .WithReadings("2002-02-02", 720, {0.5, 2, 7})
            .WithEquation("2000-01-01", 1, 0, 1, 10);  // tenfold
        ChannelInfo[1].Conversion = 1;
        RegionalSettings().shortDate = u"dd.MM.yyyy"_qs;
        RegionalSettings().decimalSign = u","_qs;
        RegionalSettings().groupSign = u"."_qs;
        InTable(DailyTable, [&](QWidget& form) {
            QCOMPARE(TableText(form),
                     u"Kettle Creek - Flow (cfs)\n|Date|Mean|Min|Max|Total\n"
                     "|31.01.2002|10.005,00|10.000,00|10.010,00|20.010,00\n"
                     "|01.02.2002||||\n"
                     "|02.02.2002|12,50|5,00|20,00|25,00\n"_qs);
            GridOf(form).SetSelection(2, 1, 3, 3);
            Trigger(form, u"mnuEditCopy"_qs);
            QCOMPARE(doors_->clipboardText, u"01.02.2002\t\t\r02.02.2002\t12,50\t5,00"_qs);
        });
    }

    void SettingsRebuild() {
        ReportBeginDate = At("2002-01-31");
        ReportEndDate = At("2002-02-01");
        ReportPeriodCode = u"912"_qs;
        station_->WithRecord("2002-02-01", {1, 0.125}).WithRecord("2002-02-01 12:00", {5, 0.375});
        ChannelInfo[2].RecSta = u"Alder Brook"_qs;
        ChannelInfo[2].DigitsOut = 3;
        InTable(DailyTable, [](QWidget& form) {
            QString tables;
            for (const QString& button : {u"cmdCancel"_qs, u"cmdOK"_qs}) {
                SettingsMode = InstantaneousGraph;
                const NextWindow dialog([&](QWidget& opened) {
                    QVERIFY(!Child<QWidget>(opened, u"tbMax"_qs).isVisible());
                    Child<DTPicker>(opened, u"DTPicker1"_qs).SetValue(At("2002-02-01"));
                    Click(opened, button);
                });
                Trigger(form, u"mnuEditSettings"_qs);
                tables += TableText(form);
                StationInfo.OutputChannel = 2;
            }
            QCOMPARE(tables,
                     u"Kettle Creek - Stage (ft)\n|Date|Mean|Min|Max|Total\n"
                     "|1/31/2002||||\n|2/1/2002|3.00|1.00|5.00|6.00\n"
                     "Alder Brook - Stage (ft)\n|Date|Mean|Min|Max|Total\n"
                     "|2/1/2002|0.250|0.125|0.375|0.500\n|2/2/2002||||\n"_qs);
        });
    }

    // A window that changed something has the report read the records anew; one that didn't, not.
    void EditorsRebuild_data() {
        const DataRows<QString, bool, QString, bool> row("item", "changes", "button", "rebuilds");
        row("mnuCal", false, "", false);
        row("mnuCal", true, "No", false);
        row("mnuCal", true, "Yes", true);
        row("mnuRat", false, "cmdCancel", false);
        row("mnuRat", true, "cmdCancel", true);  // a rating was deleted
        row("mnuRat", false, "cmdOK", true);
    }
    void EditorsRebuild() {
        QFETCH(QString, item);
        QFETCH(bool, changes);
        QFETCH(QString, button);
        const bool isJournal = item == u"mnuCal"_qs;
        station_->WithRecord("2002-02-01", {1, 2}).WithEquation("2002-01-01", 1, 0, 1, 1);
        if (isJournal && changes) {
            doors_->ExpectMessage(u"Save changes?"_qs,
                                  button == u"Yes" ? MsgBoxAnswer::Yes : MsgBoxAnswer::No);
        }
        InTable(InstantaneousTable, [&](QWidget& form) {
            const QString before = TableText(form);
            station_->WithRecord("2002-02-02", {3, 4});
            const NextWindow editor([&](QWidget& opened) {
                if (changes) {
                    Trigger(opened, isJournal ? u"mnuEditIns"_qs : u"mnuDeleteRow"_qs);
                }
                isJournal ? void(opened.close()) : Click(opened, button);
            });
            Trigger(form, item);
            QTEST(TableText(form) != before, "rebuilds");
        });
    }

    void TenYearsOpenAtOnce() {
        RunPlainSql(
            station_->Path(),
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 350591) "
            "INSERT INTO Records(DateTime, chan1) SELECT 37257 + i / 96.0, 1.25 + i % 400 FROM n");
        ReportEndDate = At("2011-12-31");
        QElapsedTimer clock;
        clock.start();
        frmInstT form(u"Upper basin"_qs, printer_);
        form.show();
        form.grab();
        const qint64 opening = clock.restart();
        GridOf(form).selectAll();
        Trigger(form, u"mnuEditCopy"_qs);
        QVERIFY2(opening < 2000 && clock.elapsed() < 4000, qPrintable(QString::number(opening)));
        QCOMPARE(doors_->clipboardText.count(u'\r'), 350591);
        QVERIFY(doors_->clipboardText.endsWith(u"\r12/31/2011 11:45:00 PM\t192.25"_qs));
    }

    void AnnualSheet_data() {
        QTest::addColumn<Story>("story");
        QTest::addColumn<QString>("menu");
        QTest::addColumn<QString>("sheet");
        QTest::newRow("daily maximums of a rated channel, with a decimal comma")
            << Story([](StationFixture& station) {
                   WinterDays(station);
                   station.WithReadings("2002-04-01", 720, {0.025, 0.025})
                       .WithEquation("2000-01-01", 1, 0, 1, 10);  // tenfold
                   ChannelInfo[1].Conversion = 1;
                   RegionalSettings().decimalSign = u","_qs;
                   RegionalSettings().groupSign = u"."_qs;
                   RegionalSettings().leadingZero = false;
               })
            << "mnuMax"
            << "Kettle Creek - Daily Maximum Flow (cfs)\nJan-2002 to Dec-2002\n"
               "300,00 cfs on Jan 31, 2002\n"
               "Jan, Feb, Mar, Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec, Total\n"
               "1: Feb 300,00, Apr ,25\n3: Feb 20,00\n30: Jan 150,00\n31: Jan 300,00\n"
               "Avg: Jan 225,00, Feb 160,00, Apr ,25, Total 128,42\n"  // 385.25 / 3
               "Min: Jan 150, Feb 20, Apr 0,25, Total 0,25\n"
               "Max: Jan 300, Feb 300, Apr 0,25, Total 300\n"
               "Total (ac-ft): Jan 891,00, Feb 633,60, Apr ,50, Total 1.525,10";  // 1.98 * 0.25
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
    void AnnualSheet() {
        QFETCH(Story, story);
        QFETCH(QString, menu);
        story(*station_);
        InTable(AnnualTable, [&](QWidget& form) {
            Trigger(form, u"mnuTotal"_qs);
            Trigger(form, menu);
            QTEST(SheetText(form), "sheet");
        });
    }

    // A year without readings: the sheet is cleared, the peak stays on the screen alone.
    void AnnualSettingsRebuild() {
        WinterDays(*station_);
        InTable(AnnualTable, [&](QWidget& form) {
            Trigger(form, u"mnuTotal"_qs);
            QVERIFY(SheetText(form).contains(u"\nMax: Jan 50, Feb 30.5, Total 50\n"_qs));
            const NextWindow cancel([](QWidget& dialog) { Click(dialog, u"cmdCancel"_qs); });
            Trigger(form, u"mnuEditSettings"_qs);
            doors_->ExpectMessage(u"No data within dates!"_qs);
            const NextWindow settings([](QWidget& dialog) {
                Child<DTPicker>(dialog, u"DTPicker1"_qs).SetValue(At("2005-04-01"));
                Click(dialog, u"cmdOK"_qs);
            });
            Trigger(form, u"mnuEditSettings"_qs);
            QCOMPARE(SheetText(form),
                     u"Kettle Creek - Daily Total Stage (ft)\nApr-2005 to Mar-2006\n"
                     "30.00 ft on Jan 31, 2002\n"
                     "Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec, Jan, Feb, Mar, Total"_qs);
            QCOMPARE(doors_->MousePointer(), int{vbDefault});
            const auto page = doors_->ExpectPrint();
            const NextWindow print([](QWidget& dialog) { Click(dialog, u"cmdOK"_qs); });
            Trigger(form, u"mnuFilePrint"_qs);
            QVERIFY(page->Text().endsWith(u"end of document"_qs));
            QVERIFY(!page->Text().contains(u"Peak"_qs));
        });
    }

    // Left, top, width and height in twips, and the state; the user restores the window.
    void AnnualRemembersItsPlace() {
        WinterDays(*station_);
        const auto restored = [](const QString& remembered) {
            std::int16_t* const settings[] = {&AnnualL, &AnnualT, &AnnualW, &AnnualH, &AnnualM};
            for (int i = 0; i < 5; ++i) {
                *settings[i] = remembered.section(u' ', i, i).toShort();
            }
            InTable(AnnualTable, [&](QWidget& form) {
                QCOMPARE(form.isMaximized(), remembered.endsWith(u'2'));
                form.setWindowState(Qt::WindowNoState);
                QCoreApplication::processEvents();
            });
            return u"%1 %2 %3 %4 %5"_qs.arg(AnnualL).arg(AnnualT).arg(AnnualW).arg(AnnualH).arg(
                AnnualM);
        };
        const int last = QGuiApplication::primaryScreen()->availableGeometry().right() - 612;
        const QString table =
            u"100 100 9200 6500 2 => 100 100 9200 6500 0; "
            "30000 100 9200 6500 0 => %1 100 9200 6500 0"_qs;  // off the screen
        CompareEach(restored, qPrintable(table.arg(15 * last)));
    }

    void PrintsAPage() {
        WinterDays(*station_);
        const auto recording = doors_->ExpectPrint(11906, 16838);  // A4
        PrintSheet({u"cmdOK"_qs}, u"by the high-water mark"_qs);
        QCOMPARE(recording->name, u"Summary Table - Upper basin"_qs);
        QCOMPARE(recording->orientation, 2);
        QCOMPARE(PageText(*recording),
                 u"text 1152,1008 Arial 10 black \"Kettle Creek - Daily Mean Stage (ft)\"\n"
                 "text 1152,1258 Arial 10 black \"Jan-2002 to Dec-2002\"\n"
                 "1152,1608 Instantaneous Peak: by the high-water mark\n"
                 "3685,2038 15.25\n"
                 "3785,2499 1.50\n"
                 "2668,8716 12.50\n"
                 "2668,8947 25.00\n"
                 "2668,9407 18.75\n3785,9407 8.38\n14866,9407 13.57\n"
                 "2768,9637 12.5\n3885,9637 1.5\n15066,9637 1.5\n"
                 "2968,9868 25\n3685,9868 15.25\n15166,9868 25\n"
                 "2668,10098 74.25\n3685,10098 33.17\n14766,10098 107.42\n"
                 "text 1152,10398 Arial 8 italic black \"station.mdb    today\"\n"
                 "text 1152,10598 Arial 8 italic black \"Rillbook v1.0.0\"\nend of document"_qs);
        const QRegularExpression heading(u" bold black \"[^\"]"_qs);
        const QStringList headings = recording->lines.filter(heading);
        QCOMPARE(headings.size(), 48);
        QCOMPARE(headings.first(), u"text 2868,1808 Arial 8 bold black \"Jan\""_qs);
        QCOMPARE(headings.last(), u"text 852,10098 Arial 8 bold black \"Total (ac-ft)\""_qs);
    }

    // All else stands where it does on the whole page.
    void LeavesOutWhatIsNotWanted() {
        WinterDays(*station_);
        const auto whole = doors_->ExpectPrint();
        PrintSheet();
        const std::pair<QString, QString> parts[] = {{u"chkTotal"_qs, u",10432 "_qs},
                                                     {u"chkPMax"_qs, u",1608 "_qs}};
        for (const auto& leftOut : parts) {
            const auto part = doors_->ExpectPrint();
            PrintSheet({leftOut.first, u"cmdOK"_qs});
            QStringList expected = whole->lines;
            const auto isLeftOut = [&](const QString& s) { return s.contains(leftOut.second); };
            QVERIFY(expected.removeIf(isLeftOut) > 0);
            QCOMPARE(part->lines, expected);
        }
    }

    void CancelledPrintsNothing() {
        WinterDays(*station_);
        DialogCancelled = false;
        PrintSheet({u"cmdCancel"_qs});
        QVERIFY(DialogCancelled);
        DialogCancelled = false;
        PrintSheet({});  // closed by its title bar
        QVERIFY(DialogCancelled);
        doors_->CancelPrinter();
        PrintSheet();
        QVERIFY(!DialogCancelled);
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestTables)
#include "tst_tables.moc"
