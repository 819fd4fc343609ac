#include <QInputMethodEvent>
#include <QMenu>
#include <QRegularExpression>

#include "forms/reference/frmCalibration.h"
#include "platform/ado/Connection.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

// "¶" ends an edit and goes on in the cell to its right, "§" is a text too long to be stored.
void Press(QWidget& form, QString keys) {
    PressKeys(form, keys.replace(u"¶"_qs, u"⏎↑→"_qs).replace(u'§', QString(256, u'n')));
}

// The pages with the texts of one height together: "1008 10 bold: 1152 Journal".
QString PagesText(const PrintRecording& print) {
    static const QRegularExpression text(u"^text (\\d+),(\\d+) Arial (.*) black \"(.*)\"$"_qs);
    QString pages = print.name;
    QString place;
    for (const QString& line : print.lines) {
        const QRegularExpressionMatch found = text.match(line);
        const QString here = u'\n' + found.captured(2) + u' ' + found.captured(3) + u':';
        if (!found.hasMatch()) {
            pages += u'\n' + line;
        } else if (here != place) {
            pages += here;
        }
        place = here;
        if (!found.captured(4).isEmpty()) {
            pages += u" %1 %2"_qs.arg(found.captured(1), found.captured(4));
        }
    }
    return pages.replace(ShortDateText(Now()), u"today"_qs);
}

#define SHOWN "1: |1/5/2002|1.5|1.75|0.25|12.5|clear"
#define STORED "1 | 2002-01-05 00:00:00 | 0 | 1.5 | 1.75 | 12.5 | clear"
#define OTHER_CHANNEL "2 | 2002-01-05 00:00:00 | 1 | 9 | 9 | NULL | NULL"

}  // namespace

class TestJournal : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        station_->WithJournalRow("2002-01-05", 1, 1.5, 1.75, false, 12.5, u"clear"_qs)
            .WithJournalRow("2002-01-05", 2, 9, 9);
        // As older releases had it.
        StationConnection->Execute(u"ALTER TABLE Calibration ALTER COLUMN notes TEXT(10)"_qs);
    }

    // By keys alone, from the cell where the window opens: the first of row 2.
    void Saves_data() {
        const DataRows<QString, QString, QString> row("keys", "shown", "stored");
        const QString before = QStringLiteral(OTHER_CHANNEL "\n" STORED);
        // Out of order.
        row(" →3/1/2002 9:30¶2¶2.25¶→4¶High since noon⏎←←←←←Feb 1, 2002¶¶¶→¶⏎",
            SHOWN "\n2: |2/1/2002|||||\n3:  x|3/1/2002 9:30:00 AM|2|2.25|0.25|4|High since noon",
            before +
                u"\n1 | 2002-03-01 09:30:00 | 1 | 2 | 2.25 | 4 | High since noon"
                "\n1 | 2002-02-01 00:00:00 | 0 | NULL | NULL | NULL | "_qs);
        row("→3/1/2002¶2,600.25 ft¶none¶→1,234.5¶¶⏎",
            SHOWN "\n2: |3/1/2002|2600.25|0|-2,600.25|1234.5|",
            before + u"\n1 | 2002-03-01 00:00:00 | 0 | 2600.25 | 0 | 1234.5 | "_qs);
        row(" →→1¶2⏎", SHOWN, before);  // no date
        row(" →→1⇥2⇧⇥⇧⇥ ⏎", SHOWN, before);
        row("→3/1/2002⇥ ⇥ ⇥ ⇥ ⇥", SHOWN "\n2: |3/1/2002|||||",
            before + u"\n1 | 2002-03-01 00:00:00 | 0 | NULL | NULL | NULL | "_qs);
        row("→3.2.2002 14:05¶-0,5¶1,25¶→1.000¶⏎",
            "1: |05.01.2002|1,5|1,75|0,25|12,5|clear\n2: |03.02.2002 14:05:00|-0,5|1,25|1,75|1000|",
            before + u"\n1 | 2002-02-03 14:05:00 | 0 | -0.5 | 1.25 | 1000 | "_qs);
    }
    void Saves() {
        QFETCH(QString, keys);
        if (keys.contains(u",5")) {
            UseOtherRegion();
        }
        DialogCancelled = true;
        InJournal([&](QWidget& form) {
            Press(form, keys);
            Close(form, MsgBoxAnswer::Yes);
        });
        QTEST(Stored(), "stored");
        QVERIFY(!DialogCancelled);
        InJournal([](QWidget& form) {
            QTEST(FilledRows(form), "shown");
            form.close();
        });
        QVERIFY(DialogCancelled);
    }

    void Refuses_data() {
        const DataRows<QString, QString, QString> row("keys", "message", "selected");
        const QString date = u"Must have valid date entries."_qs;
        const QString readings = u"All selected rows must have values for logger and actual."_qs;
        const QString twice = u"All dates must be unique."_qs;
        row("→1/5/2002¶1¶1⏎⇟⇟⇟", twice, "2,2 in 2,1 to 2,7");
        row("↑ ↓→1/5/2002⏎", twice, "2,2 in 2,1 to 2,7");  // the ticked row has its readings
        // Before dates are compared.
        row(" →1/5/2002⇥1⇥", readings, "2,4 in 2,1 to 2,7");
        row(" →3/1/2002⇥ ⇥1⇥", readings, "2,3 in 2,1 to 2,7");
        row("→1/5/2002⏎soon⏎", date, "3,2 in 3,1 to 3,7");
        row("→10:30⏎", date, "2,2 in 2,1 to 2,7");
        row("→1/5/2002 0:00⏎↑↑→→→→→§",  // another spelling of the date passes
            "The journal could not be saved: Notes of 1/5/2002: The text is longer than 255 "
            "characters.",
            "1,7 in 1,1 to 1,7");
        row("↑→→→→→→windy⏎", "The journal could not be saved: The disk is full",
            "2,7 in 2,7 to 2,7");
    }
    void Refuses() {
        QFETCH(QString, keys);
        QFETCH(QString, message);
        InJournal([&](QWidget& form) {
            const bool failure = message.contains(u"saved"_qs);
            Press(form, keys);
            {
                const FullDisk disk(message.endsWith(u"disk is full"_qs) ? 4096 : 100'000'000);
                Trigger(form, u"mnuEditCopy"_qs);  // ends the edit
                const QString typed = FilledRows(form);
                doors_->ExpectMessage(u"Save changes?"_qs, MsgBoxAnswer::Yes);
                doors_->ExpectMessage(message);
                form.close();
                QVERIFY(form.isVisible());
                QCOMPARE(FilledRows(form), typed);
                QTEST(SelectionOf(GridOf(form)), "selected");
                QVERIFY(GridOf(form).hasFocus() && GridOf(form).RowIsVisible(GridOf(form).Row()));
            }
            QCOMPARE(Stored(), QStringLiteral(STORED "\n" OTHER_CHANNEL));
            const ScriptedDoors::ShownMessage& shown = doors_->shownMessages.back();
            QCOMPARE(shown.title, failure ? u"Rillbook"_qs : u"Warning"_qs);
            QCOMPARE(shown.icon, failure ? MsgBoxIcon::Exclamation : MsgBoxIcon::Information);
            Close(form, MsgBoxAnswer::No);
        });
    }

    // What asks whether to save, and how the window may then be left.
    void Asks_data() {
        const DataRows<bool, QString, QString, QString> row("asks", "keys", "deed", "shown");
        const QString ticked = u"1:  x|1/5/2002|1.5|1.75|0.25|12.5|clear"_qs;
        row(false, "→↓", "", SHOWN);
        row(false, "→→", "mnuEditCopy", SHOWN);
        row(true, "↑→→→→x", "", SHOWN);
        row(true, "↑→→2.5", "", "1: |1/5/2002|2.5|1.75|-0.75|12.5|clear");
        row(true, "↑ ", "", ticked);
        row(true, "", "click", ticked);
        row(true, "→→", "mnuEditPaste", SHOWN "\n2: ||3||||");
        row(true, "↑", "mnuEditIns", "2: |1/5/2002|1.5|1.75|0.25|12.5|clear");
        row(true, "↑", "mnuEditDel", "");
    }
    void Asks() {
        QFETCH(bool, asks);
        QFETCH(QString, keys);
        QFETCH(QString, deed);
        DialogCancelled = false;
        doors_->clipboardText = u"3\r\n"_qs;
        InJournal([&](QWidget& form) {
            Press(form, keys);
            if (deed == u"click"_qs) {  // with Shift the current cell stays
                QTest::mouseClick(
                    GridOf(form).viewport(), Qt::LeftButton, Qt::ShiftModifier,
                    GridOf(form).visualRect(GridOf(form).model()->index(0, 0)).center());
            } else if (!deed.isEmpty()) {
                Trigger(form, deed);
            }
            if (asks) {
                for (int i = 0; i < 3; ++i) {
                    doors_->ExpectMessage(u"Save changes?"_qs, MsgBoxAnswer::Cancel);
                }
                form.close();  // ends an edit under way
                Press(form, u"⎋"_qs);
                Trigger(form, u"mnuFileExit"_qs);
                QVERIFY(form.isVisible() && !DialogCancelled);
                const ScriptedDoors::ShownMessage& asked = doors_->shownMessages.back();
                QCOMPARE(asked.icon, MsgBoxIcon::Exclamation);
                QCOMPARE(asked.buttons, MsgBoxButtons::YesNoCancel);
                QCOMPARE(asked.title, u"Rillbook"_qs);
            }
            QTEST(FilledRows(form), "shown");
            if (asks) {
                doors_->ExpectMessage(u"Save changes?"_qs, MsgBoxAnswer::No);
            }
            form.close();
        });
        QVERIFY(DialogCancelled);
        QCOMPARE(Stored(), QStringLiteral(STORED "\n" OTHER_CHANNEL));
    }

    void TypesAndUndoes_data() {
        const DataRows<QString, QString, QString> row("keys", "shown", "cell");
        row("→8/20/2002 09:30⇥1.75⇥1.80⇥", SHOWN "\n2: |8/20/2002 09:30|1.75|1.80|0.05||", "2,6");
        row("→⇥⇥⇥⇥⇥⇧⇥⇧⇥✎5⇧⇥", SHOWN "\n2: |||||5|", "2,4");
        row("⌃⇥⇧⇥⇧⇥⇧⇥⇧⇥⇧⇥⇧⇥⇧⇥⇧⇥", SHOWN, "1,2");  // nowhere else to go
        row("⇟⇟⇟⇟⇟⇟→→→→→→✎q⇥↑", SHOWN "\n51: ||||||q", "50,7");
        row("→→→→→→Öffnung⇥", SHOWN "\n2: ||||||Öffnung", "3,2");
        row("→→→→→→🌊 wave⏎", SHOWN "\n2: ||||||🌊 wave", "3,7");
        row("↑→→→⌫", "1: |1/5/2002|1.5|||12.5|clear", "1,4");
        row("↑→→→→⌫", SHOWN, "1,5");
        row("↑→→→⌫⌃z", SHOWN, "1,4");
        row("↑→→→2⏎⌃z⌃⇧z", "1: |1/5/2002|1.5|2|0.50|12.5|clear", "1,4");
        row("↑→→→2⏎3⏎⌃z⌃z⌃z⌃y", "1: |1/5/2002|1.5|2|0.50|12.5|clear", "1,4");
        row("↑→→→✎34⌃z⏎", SHOWN, "2,4");  // of the text alone
        row("↑→→→2⏎⌃z✎34⌃z⌃y⏎", "1: |1/5/2002|1.5|1.7534|0.25|12.5|clear", "2,4");
        row("↑ ⌃z", SHOWN, "1,1");
    }
    void TypesAndUndoes() {
        QFETCH(QString, keys);
        InJournal([&](QWidget& form) {
            Press(form, keys);
            QTEST(FilledRows(form), "shown");
            QTEST(SelectionOf(GridOf(form)).section(u' ', 0, 0), "cell");
            qobject_cast<QDialog*>(&form)->done(0);  // asks nothing
        });
    }

    void Composes() {
        InJournal([&](QWidget& form) {
            MSFlexGrid& grid = GridOf(form);
            const auto compose = [&](const QString& preedit, const QString& done) {
                QInputMethodEvent event(preedit, {});
                event.setCommitString(done);
                QCoreApplication::sendEvent(form.focusWidget(), &event);
            };
            QVERIFY(!grid.testAttribute(Qt::WA_InputMethodEnabled));  // Use
            Press(form, u"→→→→→→"_qs);
            QVERIFY(grid.testAttribute(Qt::WA_InputMethodEnabled));
            compose(u"´"_qs, {});
            QVERIFY(grid.hasFocus());
            compose({}, u"É"_qs);
            Press(form, u"tiage⏎"_qs);
            Press(form, u"↑↑"_qs);
            compose(u"´"_qs, {});  // and nothing comes of it
            compose({}, {});
            compose(u"´"_qs, {});
            QVERIFY(grid.hasFocus());
            Trigger(form, u"mnuEditCopy"_qs);
            QCOMPARE(FilledRows(form), QStringLiteral(SHOWN "\n2: ||||||Étiage"));
            Close(form, MsgBoxAnswer::No);
        });
    }

    // Offsets are right at once, and one undo takes each of these back.
    void Pastes_data() {
        const DataRows<QString, QString, QString, QString> row("text", "cells", "shown", "message");
        row("7\t7.5\r\n8\t8.25\r\n", "1 4 2 3",
            "1: |1/5/2002|7|7.5|0.50|12.5|clear\n2: ||8|8.25|0.25||", "");
        row("7\n8\n9", "1 3 2 3", "1: |1/5/2002|7|1.75|-5.25|12.5|clear\n2: ||8||||",
            "2 of 3 rows were pasted. Select as many rows as are to be filled.");
        row("7\t8\r\t9", "1 3 2 3", "1: |1/5/2002|7|1.75|-5.25|12.5|clear",
            "1 of 2 columns were pasted. Select as many columns as are to be filled.");
        row("7\t8\t\r9\r", "1 3 1 3", "1: |1/5/2002|7|1.75|-5.25|12.5|clear",
            "1 of 2 rows and 1 of 3 columns were pasted. Select as many rows and columns as are to "
            "be filled.");
        row("x\nX\n x \nyes\n\n", "1 1 5 1",
            "1:  x|1/5/2002|1.5|1.75|0.25|12.5|clear\n2:  x||||||\n3:  x||||||", "");
        row("\"high\r\nwa\tter \"\"6\"\"\"\r\n\"low\"\r\n\"a\"b", "2 7 4 7",
            SHOWN "\n2: ||||||high wa ter \"6\"\n3: ||||||\"low\"\n4: ||||||\"a\"b", "");
        row("", "1 3 1 4", SHOWN, "");
        row("9\t9\t9", "1 3 1 5", "1: |1/5/2002|9|9|0.00|12.5|clear", "");
    }
    void Pastes() {
        QFETCH(QString, text);
        QFETCH(QString, message);
        QFETCH(QString, cells);
        const QStringList c = cells.split(u' ');
        doors_->clipboardText = text;
        InJournal([&](QWidget& form) {
            GridOf(form).SetSelection(c[0].toInt(), c[1].toInt(), c[2].toInt(), c[3].toInt());
            if (!message.isEmpty()) {
                doors_->ExpectMessage(message);
            }
            Press(form, u"⌃v"_qs);
            QTEST(FilledRows(form), "shown");
            Trigger(form, u"mnuEditDel"_qs);
            Trigger(form, u"mnuEditIns"_qs);
            while (Child<QAction>(form, u"mnuEditUndo"_qs).isEnabled()) {
                Trigger(form, u"mnuEditUndo"_qs);
            }
            QCOMPARE(FilledRows(form), QStringLiteral(SHOWN));
            form.close();  // as it was: no question
        });
    }

    // Old stations have such notes.
    void LineBreaksInNotes() {
        UpgradeCalibration();
        const QString notes = u"ice\r\n\tat the gauge\n"_qs;
        station_->WithJournalRow("2002-01-06", 1, 2, 2, true, {}, notes);
        const auto print = doors_->ExpectPrint();
        InJournal([&](QWidget& form) {
            GridOf(form).SetSelection(1, 7, 2, 6);
            Press(form, u"⌃c"_qs);
            QCOMPARE(doors_->clipboardText,
                     u"Discharge\tNotes\r12.5\tclear\r\tice at the gauge"_qs);
            Trigger(form, u"mnuFilePrint"_qs);
            QVERIFY(PagesText(*print).contains(u" 7152 ice at the gauge\n"_qs));
            Press(form, u"↓✎⎋✎⏎"_qs);
            Close(form, MsgBoxAnswer::Yes);
        });
        QVERIFY(Stored().contains(notes));
    }

    void LeavesAloneWhatItCantRead() {
        StationConnection->Execute(u"ALTER TABLE Calibration DROP COLUMN notes"_qs);
        const QString before = station_->Dump("Calibration");
        doors_->ExpectMessage(u"The journal could not be read: There is no field notes."_qs);
        InJournal([&](QWidget& form) {
            QVERIFY(!GridOf(form).isEnabled() && !Child<QMenu>(form, u"mnuEdit"_qs).isEnabled());
            form.close();
        });
        QVERIFY(DialogCancelled);
        QCOMPARE(station_->Dump("Calibration"), before);
    }

    // Rows are 235 high; a page is left once they reach 2692. A wave takes two places of a text.
    void Prints() {
        const QString a49(49, u'a');
        const QString b69(69, u'b');
        UpgradeCalibration();
        station_
            ->WithJournalRow("2002-01-06 12:00", 1, 2, 2, true, {}, a49 + u"\U0001F30A"_qs + b69)
            .WithJournalRow("2002-01-07", 1, 3, {})
            .WithJournalRow("2002-01-08", 1, {}, {})
            .WithJournalRow("2002-01-09", 1, 4, 4)
            .WithJournalRow("2002-01-10", 1, 5, 5);
        doors_->CancelPrinter();
        const auto print = doors_->ExpectPrint(14000, 5700);
        print->turnedTo = 2;
        InJournal([&](QWidget& form) {
            Press(form, u"↑↑→⌫"_qs);  // nothing from here on
            Trigger(form, u"mnuFilePrint"_qs);
            Trigger(form, u"mnuFilePrint"_qs);
            form.close();
        });
        const QString header =
            u"\n1008 10 bold: 1152 Journal and Calibration Offsets"
            "\n1258 10 bold: 1152 Kettle Creek Stage"_qs;
        const QString footer =
            u"\n4192 8 italic: 1152 station.mdb    today"
            "\n4392 8 italic: 1152 Rillbook v1.0.0"_qs;
        QCOMPARE(PagesText(*print),
                 u"Journal and Offsets - Kettle Creek Stage"_qs + header +
                     u"\n1708 9 bold: 1152 DateTime 3152 Logger 4152 Actual 5152 Offset 6152 "
                     u"Discharge 7152 Notes"
                     "\n1943 9: 1152 1/5/2002 3152 1.5 4152 1.75 5152 0.25 6152 12.5 7152 clear"
                     "\n2178 9: 1152 1/6/2002 12:00:00 PM 3152 2 4152 2 5152 0.00 7152 "_qs +
                     a49 + u"\n2413 9: 7152 \U0001F30A"_qs + b69.left(48) + u"\n2648 9: 7152 "_qs +
                     b69.mid(48) + footer + u"\nnew page"_qs + header +
                     u"\n1708 9: 1152 1/7/2002 3152 3\n1943 9: 1152 1/8/2002"_qs + footer +
                     u"\nend of document"_qs);
        QCOMPARE(print->dialogTitle, u"Print"_qs);
        QCOMPARE(print->dialogOrientation, 1);
        QCOMPARE(print->orientation, 1);
        QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
    }

    // Nothing of the notes is cut off by the edge of the paper.
    void PrintsOnNarrowPaper() {
        UpgradeCalibration();
        station_->WithJournalRow("2002-01-06", 1, 2, 2, true, {}, u"123456789"_qs.repeated(2));
        const auto print = doors_->ExpectPrint(8700, 15840);
        InJournal([&](QWidget& form) {
            Trigger(form, u"mnuFilePrint"_qs);
            form.close();
        });
        QVERIFY(PagesText(*print).contains(u" 7152 1234567891\n2413 9: 7152 23456789"_qs));
    }

private:
    void InJournal(const std::function<void(QWidget& form)>& steps) {
        frmCalibration form(printer_);
        const NextWindow window([&](QWidget& opened) {
            opened.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&opened));
            steps(opened);
            if (opened.isVisible()) {
                FailTest(u"The journal was left open"_qs);
                form.done(0);  // asks nothing
            }
        });
        form.exec();
    }
    void Close(QWidget& form, MsgBoxAnswer answer) {
        doors_->ExpectMessage(u"Save changes?"_qs, answer);
        form.close();
    }
    QString Stored() const {
        return station_->Dump(
            "SELECT chan, DateTime, read2, read1, actual1, discharge, notes FROM Calibration");
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestJournal)
#include "tst_journal.moc"
