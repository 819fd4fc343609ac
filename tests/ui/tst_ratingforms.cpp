#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>

#include "forms/reference/frmRating.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

using Steps = std::function<void(QWidget&)>;

const char* const kIncomplete = "All fields must be completed as date/time or numeric.";

// The rows that hold a text, "1: 0.5 10; 2: 1.5 -".
QString CellsText(QWidget& form) {
    static const QRegularExpression empty(u"(?<=[ |])(?=\\||$)"_qs,
                                          QRegularExpression::MultilineOption);
    return FilledRows(form).replace(empty, u"-"_qs).replace(u'|', u' ').replace(u"\n"_qs, u"; "_qs);
}

void InList(const Steps& steps) {
    frmRating form;
    InForm(form, steps);
}

// Runs an item of the list's menu and does this in the editor that it opens.
void InEditor(QWidget& list, const char* item, const Steps& steps) {
    const NextWindow window(steps);
    Trigger(list, QString::fromLatin1(item));
}

void InNewTable(const Steps& steps) {
    InList([&](QWidget& list) { InEditor(list, "mnuNewTable", steps); });
}

// Types "0.5 10; 1.5 -" row by row; "-" leaves a cell alone.
void TypePoints(QWidget& editor, const QString& points) {
    GridOf(editor).setFocus();
    int row = 0;
    for (const QString& point : points.split(u"; "_qs, Qt::SkipEmptyParts)) {
        ++row;
        for (int col = 1; col <= 2; ++col) {
            GridOf(editor).SetSelection(row, col, row, col);
            const QString text = point.section(u' ', col - 1, col - 1);
            PressKeys(editor, text == u"-"_qs ? QString() : text + u'⏎');
        }
    }
}

void PressAt(MSFlexGrid& grid, int row, int col, const QString& keys) {
    grid.setFocus();
    grid.SetSelection(row, col, row, col);
    PressKeys(*grid.window(), keys);
}

void Confirm(QWidget& form) {
    Click(form, u"cmdOK"_qs);
}

}  // namespace

class TestRatingForms : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void StoresEquation_data() {
        const DataRows<QString, QString, QString, QString> row("date", "texts", "stored", "list");
        row("1/31/2002 14:05", "2.5|0.3|1.6|flood",
            "2002-01-31 14:05:00 | 1 | 0.3 | 1.6 | 2.5 | flood | 0",
            "1: 1/31/2002 2:05:00 PM Equation Q = 2.5*(ght - 0.3)^1.6 flood");
        row("2002-02-01", "-1e-7|2,500.5 ft|x|",
            "2002-02-01 00:00:00 | 1 | 2500.5 | 0 | -1e-07 | NULL | 0",
            "1: 2/1/2002 Equation Q = -1E-07*(ght - 2500.5)^0 -");
        row("01.02.2002 13:00", "2,5|0,3 m|1,6|",
            "2002-02-01 13:00:00 | 1 | 0.3 | 1.6 | 2.5 | NULL | 0",
            "1: 01.02.2002 13:00:00 Equation Q = 2.5*(ght - 0.3)^1.6 -");
    }
    void StoresEquation() {
        QFETCH(QString, date);
        QFETCH(QString, texts);
        if (date.contains(u'.')) {
            UseOtherRegion();
        }
        InList([&](QWidget& list) {
            InEditor(list, "mnuNewEquation", [&](QWidget& editor) {
                QCOMPARE(editor.windowTitle(), u"Rating Equation - Kettle Creek Stage"_qs);
                for (const QString& bad : {u""_qs, u"10:30"_qs}) {
                    TypeText(editor, u"tbDate"_qs, bad);
                    doors_->ExpectMessage(u"Not a valid Date."_qs);
                    PressKeys(editor, u"⏎"_qs);
                }
                TypeText(editor, u"tbDate"_qs, date);
                doors_->ExpectMessage(u"C must be numeric."_qs);
                PressKeys(editor, u"⏎"_qs);
                QCOMPARE(LastTitle(), u"Warning"_qs);
                int i = 0;
                for (const char* box : {"tbC", "tbA", "tbR", "tbNotes"}) {
                    TypeText(editor, QString::fromLatin1(box), texts.section(u'|', i, i));
                    ++i;
                }
                QCOMPARE(station_->Dump("ConversionEq"), QString());
                PressKeys(editor, u"⏎"_qs);
            });
            QTEST(CellsText(list), "list");
            QTEST(station_->Dump("ConversionEq"), "stored");
            // As the editor shows it, it is stored again.
            GridOf(list).setFocus();
            const NextWindow window(Confirm);
            PressKeys(list, u"⏎"_qs);
            QTEST(station_->Dump("ConversionEq"), "stored");
        });
    }

    void ChecksPoints_data() {
        const DataRows<QString, QString, QString, QString> row("date", "points", "message",
                                                               "focus");
        row("", "1 10", kIncomplete, "tbRatingDate");
        row("10:30", "1 10", kIncomplete, "tbRatingDate");
        row("1/1/2002", "", "Cancel for no data.", "1,1 in 1,1 to 1,2");
        row("1/1/2002", "1 10; 2 20; 3 30; - -; 5 50", "Remove gaps in the data.",
            "4,1 in 4,1 to 4,2");
        row("1/1/2002", "1 10; - 20; 3 30", kIncomplete, "2,1 in 2,1 to 2,2");
        row("1/1/2002", "1 10; 2 -", kIncomplete, "2,2 in 2,1 to 2,2");
        row("1/1/2002", "1 10; 1 2x", kIncomplete, "2,2 in 2,1 to 2,2");
        row("1/1/2002", "1 10; 3 30; 1 10", "All depths must be unique.", "3,1 in 3,1 to 3,2");
    }
    void ChecksPoints() {
        QFETCH(QString, date);
        QFETCH(QString, points);
        QFETCH(QString, message);
        InNewTable([&](QWidget& editor) {
            TypeText(editor, u"tbRatingDate"_qs, date);
            TypePoints(editor, points);
            const QString cells = CellsText(editor);
            doors_->ExpectMessage(message);
            Confirm(editor);
            QCOMPARE(LastTitle(), u"Warning"_qs);
            QCOMPARE(CellsText(editor), cells);
            QTEST(editor.focusWidget() == &GridOf(editor) ? SelectionOf(GridOf(editor))
                                                          : editor.focusWidget()->objectName(),
                  "focus");
            if (!points.isEmpty()) {
                doors_->ExpectMessage(u"Save changes?"_qs, MsgBoxAnswer::No);
            }
            editor.close();
        });
        QCOMPARE(station_->Dump("ConversionT") + station_->Dump("ConversionEq"), QString());
    }

    void StoresTable_data() {
        const DataRows<QString, QString, QString, QString> row("date", "points", "stored", "shown");
        row("1/31/2002 14:05", "3 1,250; 1 -.5; 1.0 11; 2 20.25",
            "1 | 3 | 1250\n1 | 1 | -0.5\n1 | 1 | 11\n1 | 2 | 20.255",
            "1/31/2002 2:05:00 PM: 1: 1 -0.5; 2: 1 11; 3: 2 20.255; 4: 3 1250");
        row("31.01.2002 14:05", "0,5 -1,25", "1 | 0.5 | -1.255",
            "31.01.2002 14:05:00: 1: 0,5 -1,255");
    }
    void StoresTable() {
        QFETCH(QString, date);
        QFETCH(QString, points);
        if (date.contains(u'.')) {
            UseOtherRegion();
        }
        InList([&](QWidget& list) {
            InEditor(list, "mnuNewTable", [&](QWidget& editor) {
                QCOMPARE(editor.windowTitle(), u"Rating Table - Kettle Creek Stage"_qs);
                QCOMPARE(GridOf(editor).TextMatrix(0, 1) + GridOf(editor).TextMatrix(0, 2),
                         u"ftcfs"_qs);
                TypeText(editor, u"tbRatingDate"_qs, date);
                PressKeys(editor, u"⏎"_qs);  // closes nothing
                TypePoints(editor, points);
                // A cell still counts that is being edited where a button takes no focus.
                PressKeys(editor, u"✎5"_qs);
                Child<QPushButton>(editor, u"cmdOK"_qs).click();
            });
            QCOMPARE(station_->Dump("SELECT chan, A, r, c, notes, RatingTable FROM ConversionEq"),
                     u"1 | NULL | NULL | NULL | NULL | 1"_qs);
            QTEST(station_->Dump("SELECT chan, depth, flow FROM ConversionT JOIN ConversionEq "
                                 "USING (chan, DateTime)"),
                  "stored");
            InEditor(list, "mnuEditRow", [](QWidget& editor) {
                const auto& when = Child<QLineEdit>(editor, u"tbRatingDate"_qs);
                QTEST(when.text() + u": "_qs + CellsText(editor), "shown");
                PressKeys(editor, u"⎋"_qs);
            });
        });
    }

    // What becomes of TellFourRatings when a row of the list is given another date, or deleted.
    void ChangesRatings_data() {
        const DataRows<QString, QString> row("story", "ratings");
        row("", "1 a, 32 b, 60 1, 60 c, 91 2, 91 d");
        row("1 to 5/1/2002", "32 b, 60 1, 60 c, 91 2, 91 d, 121 a");
        row("1 to 2/1/2002", "32 a, 60 1, 60 c, 91 2, 91 d");
        row("1 to 3/1/2002", "32 b, 60 1, 60 a, 60 c, 91 2, 91 d");
        row("4 to 5/1/2002", "1 a, 32 b, 60 1, 60 c, 121 2, 121 d");
        row("4 to 3/1/2002", "1 a, 32 b, 60 2, 60 d");
        row("4 to 1/1/2002", "1 2, 1 a, 1 d, 32 b, 60 1, 60 c");
        row("2 deleted", "1 a, 60 1, 60 c, 91 2, 91 d");
        row("3 deleted", "1 a, 32 b, 91 2, 91 d");
    }
    void ChangesRatings() {
        QFETCH(QString, story);
        TellFourRatings();
        InList([&](QWidget& list) {
            QCOMPARE(GridOf(list).Row(), 4);
            GridOf(list).SetRow(story.section(u' ', 0, 0).toInt());
            if (story.contains(u"deleted"_qs)) {
                Trigger(list, u"mnuDeleteRow"_qs);
            } else if (!story.isEmpty()) {
                InEditor(list, "mnuEditRow", [&](QWidget& editor) {
                    const bool isTable = story.startsWith(u'4');
                    TypeText(editor, isTable ? u"tbRatingDate"_qs : u"tbDate"_qs,
                             story.section(u' ', 2));
                    Confirm(editor);
                });
            }
        });
        QTEST(Ratings(1), "ratings");
        QCOMPARE(Ratings(2), u"1 9, 1 e, 1 f"_qs);
    }

    // After their heading is deleted, the points would still count.
    void DeletesBothKindsOfOneTime() {
        for (const int row : {1, 2}) {
            station_->WithEquation("2002-01-01", 1, 1, 1, 1).WithTable("2002-01-01", 1, {{1, 1}});
            InList([row](QWidget& list) {
                GridOf(list).SetRow(row);
                Trigger(list, u"mnuDeleteRow"_qs);
            });
            QCOMPARE(Ratings(1), QString());
        }
    }

    // Other programs write times with part of a second, which the list shows as whole seconds, and
    // ratings without a time.
    void OddTimes_data() {
        const DataRows<QString, int, QString, QString> row("time", "row", "date", "ratings");
        row("NULL", 1, "delete", "1 a, 32 b, 60 1, 60 c, 91 2, 91 d");
        row("NULL", 1, "1/5/2002", "1 a, 5 3, 5 z, 32 b, 60 1, 60 c, 91 2, 91 d");
        row("'soon'", 5, "delete", "1 a, 32 b, 60 1, 60 c, 91 2, 91 d");
        row("37257.000003", 2, "delete", "1 a, 32 b, 60 1, 60 c, 91 2, 91 d");
        row("37257.000003", 2, "", "1 3, 1 a, 1 z, 32 b, 60 1, 60 c, 91 2, 91 d");
        row("37257.000003", 2, "1/5/2002", "1 a, 5 3, 5 z, 32 b, 60 1, 60 c, 91 2, 91 d");
    }
    void OddTimes() {
        QFETCH(QString, time);
        QFETCH(int, row);
        QFETCH(QString, date);
        for (const bool isTable : {false, true}) {
            for (const char* table : {"ConversionEq", "ConversionT"}) {
                StationConnection->Execute(u"DELETE * FROM "_qs + QLatin1String(table));
            }
            TellFourRatings();
            StationConnection->Execute(
                u"INSERT INTO ConversionEq VALUES (%1, 1, 1, 1, 1, 'z', %2)"_qs.arg(time).arg(
                    int{isTable}));
            if (isTable) {
                StationConnection->Execute(
                    u"INSERT INTO ConversionT VALUES (1, %1, 0, 3)"_qs.arg(time));
            }
            const QString before =
                station_->Dump("SELECT typeof(DateTime), DateTime FROM ConversionEq");
            InList([&](QWidget& list) {
                GridOf(list).SetRow(row);
                if (date == u"delete"_qs) {
                    Trigger(list, u"mnuDeleteRow"_qs);
                    return;
                }
                InEditor(list, "mnuEditRow", [&](QWidget& editor) {
                    QCOMPARE(Child<QLineEdit>(editor, u"tbNotes"_qs).text(), u"z"_qs);
                    if (!date.isEmpty()) {
                        TypeText(editor, isTable ? u"tbRatingDate"_qs : u"tbDate"_qs, date);
                    }
                    Confirm(editor);
                });
            });
            // An equation has no points.
            QFETCH(QString, ratings);
            QCOMPARE(Ratings(1),
                     isTable ? ratings : ratings.remove(u"1 3, "_qs).remove(u"5 3, "_qs));
            if (date.isEmpty()) {
                QCOMPARE(station_->Dump("SELECT typeof(DateTime), DateTime FROM ConversionEq"),
                         before);
            }
        }
    }

    void NamesOfTheRatedChannel() {
        ChannelInfo[1].ConvDesc.clear();
        for (const auto& [button, names] :
             {std::pair(u"cmdCancel"_qs, u"- cfs"_qs), {u"cmdOK"_qs, u"Stage- m3/s"_qs}}) {
            InList([pressed = button](QWidget& list) {
                TypeText(list, u"tbConvLabel"_qs, u"m3/s"_qs);
                Click(list, pressed);
            });
            QCOMPARE(ChannelInfo[1].ConvDesc + u"- "_qs + ChannelInfo[1].ConvLabel, names);
        }
    }

    void FileOfAnOlderRelease() {
        TellFourRatings();
        StationConnection->Execute(u"DELETE * FROM ConversionEq WHERE RatingTable = 1"_qs);
        StationConnection->Execute(u"ALTER TABLE ConversionEq DROP COLUMN RatingTable"_qs);
        for (int i = 0; i < 2; ++i) {
            InList([](QWidget& list) {
                QCOMPARE(CellsText(list).section(u"; "_qs, 1),
                         u"2: 2/1/2002 Equation Q = 1*(ght - 1)^1 b; "
                         "3: 3/1/2002 Table - -; 4: 4/1/2002 Table - -"_qs);
            });
        }
    }

    void KeysInTheTable_data() {
        const DataRows<QString, QString> row("keys", "points and current cell");
        row("5⏎⏎", "1: 5 10; 2: 2 20 @ 1 1");
        row("↓5↑6↑", "1: 6 10; 2: 5 20 @ 1 1");
        row("5→6→", "1: 5 6; 2: 2 20 @ 1 2");
        row("→✎7←8⇱←", "1: 1 1087; 2: 2 20 @ 1 1");
        row("5⇟6⇞", "1: 5 10; 2: 2 20; 11: 6 - @ 1 1");
        row("✎⇟✎⇟✎⇟✎⇟5⇟", "1: 1 10; 2: 2 20; 41: 5 - @ 51 1");
        row("5⇥6⇥7⇥", "1: 5 6; 2: 7 20 @ 2 2");
        row("↓5⇧⇥6⇧⇥7⇥8⎋", "1: 7 8; 2: 5 20 @ 1 2");
        row("5⎋6⏎⌃z⌃z⌃⇧z", "1: 5 10; 2: 2 20 @ 1 1");
        row("5⎋⌃z", "1: 1 10; 2: 2 20 @ 1 1");
    }
    void KeysInTheTable() {
        QFETCH(QString, keys);
        station_->WithTable("2002-01-01", 1, {{1, 10}, {2, 20}});
        InList([&](QWidget& list) {
            InEditor(list, "mnuEditRow", [&](QWidget& editor) {
                const MSFlexGrid& grid = GridOf(editor);
                QCOMPARE(grid.Rows(), 53);
                GridOf(editor).setFocus();
                PressKeys(editor, keys);
                const QString shown = CellsText(editor);
                QTEST(shown + u" @ %1 %2"_qs.arg(grid.Row()).arg(grid.Col()),
                      "points and current cell");
                if (shown != u"1: 1 10; 2: 2 20"_qs) {
                    doors_->ExpectMessage(u"Save changes?"_qs, MsgBoxAnswer::No);
                }
                PressKeys(editor, u"⎋"_qs);
            });
        });
    }

    // Ctrl+Tab from anywhere; Tab from the last cell, Shift+Tab from the first, edited or not.
    void TabLeavesTheGrid() {
        InNewTable([&](QWidget& editor) {
            MSFlexGrid& grid = GridOf(editor);
            const auto after = [&](int row, int col, const QString& keys) {
                PressAt(grid, row, col, keys);
                return editor.focusWidget()->objectName();
            };
            QCOMPARE(after(50, 2, u"⇥"_qs), u"cmdIns"_qs);
            QCOMPARE(after(50, 2, u"7⇥"_qs), u"cmdIns"_qs);
            QCOMPARE(after(1, 1, u"⇧⇥"_qs), u"tbNotes"_qs);
            QCOMPARE(after(9, 1, u"8⌃⇥"_qs), u"cmdIns"_qs);
            QCOMPARE(after(9, 2, u"9⌃⇧⇥"_qs), u"tbNotes"_qs);
            QCOMPARE(CellsText(editor), u"9: 8 9; 50: - 7"_qs);
            qobject_cast<QDialog*>(&editor)->done(0);
        });
    }

    void AsksForChangedPoints() {
        station_->WithTable("2002-01-01", 1, {{1, 10}});
        InList([&](QWidget& list) {
            InEditor(list, "mnuEditRow", [&](QWidget& editor) {
                PressAt(GridOf(editor), 1, 2, u"5⎋"_qs);
                for (int i = 0; i < 3; ++i) {
                    doors_->ExpectMessage(u"Save changes?"_qs, MsgBoxAnswer::Cancel);
                }
                PressKeys(editor, u"⎋"_qs);
                Click(editor, u"cmdCancel"_qs);
                editor.close();
                QVERIFY(editor.isVisible());
                doors_->ExpectMessage(u"Save changes?"_qs, MsgBoxAnswer::Yes);
                editor.close();
            });
            QVERIFY(!DialogCancelled);
            QCOMPARE(station_->Dump("SELECT depth, flow FROM ConversionT"), u"1 | 5"_qs);
            InEditor(list, "mnuEditRow", [&](QWidget& editor) {
                PressAt(GridOf(editor), 1, 2, u"6⏎⌃z"_qs);
                Click(editor, u"cmdCancel"_qs);
            });
            QVERIFY(DialogCancelled);
        });
    }

    void RowsAndBlocks() {
        InNewTable([&](QWidget& editor) {
            MSFlexGrid& grid = GridOf(editor);
            TypePoints(editor, u"1 10; 2 20; 3 30"_qs);
            grid.SetSelection(2, 1, 3, 2);
            Click(editor, u"cmdCopy"_qs);
            QCOMPARE(doors_->clipboardText, u"2\t20\r3\t30"_qs);
            grid.SetRow(2);
            Click(editor, u"cmdIns"_qs);
            QCOMPARE(CellsText(editor), u"1: 1 10; 3: 2 20; 4: 3 30"_qs);
            doors_->clipboardText = u"7\t70\r\n8\t80\r\n"_qs;
            grid.SetSelection(2, 1, 4, 2);
            Click(editor, u"cmdPaste"_qs);
            QCOMPARE(CellsText(editor), u"1: 1 10; 2: 7 70; 3: 8 80; 4: 3 30"_qs);
            grid.SetRow(1);
            Click(editor, u"cmdDel"_qs);
            QCOMPARE(CellsText(editor), u"1: 7 70; 2: 8 80; 3: 3 30"_qs);
            PressKeys(editor, u"⌃z⌃z⌃a"_qs);
            QCOMPARE(CellsText(editor), u"1: 1 10; 3: 2 20; 4: 3 30"_qs);
            doors_->clipboardText = u"4\t40\n"_qs.repeated(60);
            doors_->ExpectMessage(
                u"50 of 60 rows were pasted. Select as many rows as are to be filled."_qs);
            Click(editor, u"cmdPaste"_qs);
            QCOMPARE(CellsText(editor).count(u" 4 40"_qs), 50);
            qobject_cast<QDialog*>(&editor)->done(0);
        });
    }

    void FullDiskKeepsTheRating() {
        TellFourRatings();
        const QString ratings = Ratings(1);
        MessageLog messages;
        const FullDisk full(QFileInfo(station_->Path() + u"-wal"_qs).size());
        for (const int row : {1, 4}) {  // an equation and a table
            InList([&](QWidget& list) {
                GridOf(list).SetRow(row);
                InEditor(list, "mnuEditRow", [&](QWidget& editor) {
                    TypeText(editor, u"tbNotes"_qs, u"z"_qs);
                    Confirm(editor);
                    QVERIFY(editor.isVisible());
                    editor.close();
                });
                GridOf(list).SetRow(row);
                Trigger(list, u"mnuDeleteRow"_qs);
                QCOMPARE(GridOf(list).Rows(), 5);
            });
            messages.texts.replaceInStrings(QRegularExpression(u": .*"_qs), QString());
            QCOMPARE(messages.texts, QStringList({u"! The rating could not be saved"_qs,
                                                  u"! The rating could not be deleted"_qs}));
            messages.texts.clear();
        }
        QVERIFY(DialogCancelled);
        QCOMPARE(Ratings(1), ratings);
    }

    // What can't be read isn't stored again without it.
    void UnreadableRatings() {
        TellFourRatings();
        StationConnection->Execute(u"ALTER TABLE ConversionT DROP COLUMN depth"_qs);
        const QString before = Ratings(1);
        MessageLog messages;
        InList([](QWidget& list) {
            InEditor(list, "mnuEditRow", [](QWidget& editor) {
                QCOMPARE(Child<QLineEdit>(editor, u"tbNotes"_qs).text(), u"d"_qs);
                QVERIFY(!Child<QPushButton>(editor, u"cmdOK"_qs).isEnabled());
                editor.close();
            });
            StationConnection->Execute(u"ALTER TABLE ConversionEq DROP COLUMN RatingTable"_qs);
            Trigger(list, u"mnuDeleteRow"_qs);
            QCOMPARE(CellsText(list).count(u"Equation Q = "_qs), 3);
        });
        QCOMPARE(Ratings(1), QString(before).remove(u", 91 2, 91 d"_qs));
        StationConnection->Execute(u"DROP TABLE ConversionEq"_qs);
        InList([](QWidget& list) { QCOMPARE(GridOf(list).Rows(), 1); });
        QCOMPARE(messages.texts.size(), 2);
        QVERIFY(messages.texts[0].startsWith(u"! The rating could not be read: "_qs));
        QVERIFY(messages.texts[1].startsWith(u"! The ratings could not be read: "_qs));
    }

private:
    void TellFourRatings() {
        station_->WithEquation("2002-01-01", 1, 1, 1, 1, u"a"_qs)
            .WithEquation("2002-02-01", 1, 1, 1, 1, u"b"_qs)
            .WithTable("2002-03-01", 1, {{0, 1}}, u"c"_qs)
            .WithTable("2002-04-01", 1, {{0, 2}}, u"d"_qs)
            .WithEquation("2002-01-01", 2, 1, 1, 1, u"e"_qs)
            .WithTable("2002-01-01", 2, {{1, 9}}, u"f"_qs);
    }
    QString LastTitle() const {
        return doors_->shownMessages.empty() ? QString() : doors_->shownMessages.back().title;
    }
    // By day of the year: the notes of the ratings, and the flows of the points.
    QString Ratings(int chan) const {
        const QString one =
            u"SELECT cast(DateTime AS INTEGER) - 37256 AS day, %1 AS what FROM %2 WHERE chan = %3"_qs;
        const QString all = one.arg(u"notes"_qs, u"ConversionEq"_qs).arg(chan) + u" UNION ALL "_qs +
                            one.arg(u"cast(flow AS INTEGER)"_qs, u"ConversionT"_qs).arg(chan);
        return station_
            ->Dump(
                qPrintable(u"SELECT day || ' ' || what FROM (%1) ORDER BY day, what"_qs.arg(all)))
            .replace(u"\n"_qs, u", "_qs);
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestRatingForms)
#include "tst_ratingforms.moc"
