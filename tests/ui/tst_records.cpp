#include <QComboBox>
#include <QtTest/QtTest>

#include "app/SharedState.h"
#include "forms/records/frmEditRecords.h"
#include "forms/reports/frmInstT.h"
#include "platform/ado/Connection.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/qt/DTPicker.h"
#include "platform/qt/DataGrid.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "tests/support/DataRows.h"
#include "tests/support/Hardship.h"
#include "tests/support/MessageLog.h"
#include "tests/support/ReportedChannel.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StatementFault.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

DataGrid& Grid(QWidget& form) {
    return Child<DataGrid>(form, u"DataGrid1"_qs);
}

void Activate(QWidget& form) {
    form.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    QCoreApplication::processEvents();  // the focus follows
}

// Types into whatever has the focus; signs stand for keys. Messages come between the keys.
void Press(QWidget& form, const QString& keys) {
    static const QMap<QChar, Qt::Key> signs = {
        {u'→', Qt::Key_Right},  {u'←', Qt::Key_Left},   {u'↑', Qt::Key_Up},
        {u'↓', Qt::Key_Down},   {u'⏎', Qt::Key_Return}, {u'⇥', Qt::Key_Tab},
        {u'⎋', Qt::Key_Escape}, {u'✎', Qt::Key_F2},     {u'⌫', Qt::Key_Delete}};
    for (const QChar key : keys) {
        if (signs.contains(key)) {
            QTest::keyClick(form.focusWidget(), signs[key]);
        } else {
            QTest::keyClick(form.focusWidget(), key.toLatin1());
        }
        QCoreApplication::processEvents();
    }
}

// "1/1/2002|1.2|10; 1/1/2002 12:15:30 AM|1.5|".
QString GridText(QWidget& form) {
    const QAbstractItemModel& rows = *Grid(form).model();
    QStringList lines;
    for (int row = 0; row < rows.rowCount(); ++row) {
        QStringList cells;
        for (int col = 0; col < rows.columnCount(); ++col) {
            cells += rows.index(row, col).data().toString();
        }
        lines += cells.join(u'|');
    }
    return lines.join(u"; "_qs);
}

QString CurrentCell(QWidget& form) {
    const QModelIndex cell = Grid(form).currentIndex();
    return u"%1,%2"_qs.arg(cell.row()).arg(cell.column());
}

#define FIRST "00:00:00 | 1.2 | 10"
#define SECOND "00:15:30 | 1.5 | NULL"
#define THIRD "00:30:00 | -1 | 30"
#define SHOWN "1/1/2002|1.2|10; 1/1/2002 12:15:30 AM|1.5|; 1/1/2002 12:30:00 AM|-1|30"

}  // namespace

class TestRecords : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        doors_ = std::make_unique<ScriptedDoors>();
        station_ = std::make_unique<StationFixture>(2);
        DescribeReportedChannel();
        station_->WithRecord("2002-01-01", {1.2, 10})
            .WithRecord("2002-01-01 00:15:30", {1.5, {}})
            .WithRecord("2002-01-01 00:30", {-1, 30});
    }
    void cleanup() {
        station_.reset();
        doors_.reset();
        RegionalSettings() = Regional();
    }

    void ShowsTheTable() {
        InEditor([this](QWidget& form) {
            QCOMPARE(form.windowTitle(), u"Edit Records - station.mdb"_qs);
            QCOMPARE(GridText(form), QStringLiteral(SHOWN));
            QStringList headings;
            for (int col = 0; col < 3; ++col) {
                headings += Grid(form).model()->headerData(col, Qt::Horizontal).toString();
            }
            QCOMPARE(headings.join(u'|'), u"DateTime|Kettle Creek Stage|Channel 2 Stage"_qs);
            QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
            Click(form, u"cmdOK"_qs);
            QCOMPARE(doors_->pointers,
                     (std::vector<int>{vbHourglass, vbDefault, vbHourglass, vbDefault}));
        });
    }

    // By keys from the first cell on; `row` is the one that holds the change.
    void Edits_data() {
        const DataRows<QString, QString, QString> row("keys", "stored", "messages");
        row("→2.5↓", "00:00:00 | 2.5 | 10", "");
        row("→2.5⇥3⏎", "00:00:00 | 2.5 | 3", "");
        row("→✎5⏎", "00:00:00 | 5 | 10", "");
        row("→1,234.5⏎", "00:00:00 | 1234.5 | 10", "");
        row("→7⎋⏎", FIRST, "");
        row("→⌫→ ⌫⏎", "00:00:00 | NULL | NULL", "");
        row("⌫↓", FIRST, "");
        row("→2.5↑", FIRST, "");  // not left yet
        row("1/1/2002 0:20→", FIRST, "");
        row("1/1/2002 0:20⏎", "00:20:00 | 1.2 | 10", "");
        row("1/1/2002 0:30⇥⇥9↓", FIRST, "There is a record of 1/1/2002 12:30:00 AM already.");
        row("→⌫←1/1/2002 0:30↓↓↓", FIRST, "There is a record of 1/1/2002 12:30:00 AM already.");
        row("→1,5⏎↓", FIRST, "\"1,5\" is not a number.");
        row("→9⇥ten⏎↓", "00:00:00 | 9 | 10", "\"ten\" is not a number.");
        row("→1e99⏎", FIRST, "\"1e99\" is too large a number.");
        row("13/1/2002⏎", FIRST, "\"13/1/2002\" is not a date and time.");
        row(" ⏎", FIRST, "A record can't be without its DateTime.");
    }
    void Edits() {
        QFETCH(QString, keys);
        QFETCH(QString, stored);
        QFETCH(QString, messages);
        InEditor([&](QWidget& form) {
            if (!messages.isEmpty()) {
                doors_->ExpectMessage(messages);
            }
            Press(form, keys);
            QCOMPARE(Changed(), stored);
            if (!messages.isEmpty()) {
                QCOMPARE(doors_->shownMessages.back().icon, MsgBoxIcon::Exclamation);
                Press(form, u"↓"_qs);
                QCOMPARE(Changed(), stored);
            }
            form.close();
        });
    }

    void EditsInOtherRegions() {
        RegionalSettings() = {.decimalSign = u","_qs,
                              .groupSign = u"."_qs,
                              .shortDate = u"dd.MM.yyyy"_qs,
                              .longTime = u"HH:mm:ss"_qs};
        InEditor([this](QWidget& form) {
            QCOMPARE(GridText(form),
                     u"01.01.2002|1,2|10; 01.01.2002 00:15:30|1,5|; "
                     "01.01.2002 00:30:00|-1|30"_qs);
            Press(form, u"2.1.2002 14:05⇥1.234,5⏎"_qs);
            // Where it was, though it is the last one now.
            QCOMPARE(GridText(form).section(u';', 0, 0), u"02.01.2002 14:05:00|1234,5|10"_qs);
            form.close();
        });
        QCOMPARE(Stored(), QStringLiteral(SECOND "; " THIRD "; 2002-01-02 14:05:00 | 1234.5 | 10"));
        QCOMPARE(Statistics(), u"3: 01.01.2002 to 02.01.2002"_qs);
    }

    // A refused row keeps the window and the dialog away once; what was typed is gone then.
    void ClosesWithARow_data() {
        const DataRows<QString, QString, QString> row("button", "keys", "stored");
        for (const char* button : {"cmdOK", "", "cmdDelete"}) {
            row(button, "→7", "00:00:00 | 7 | 10");
            row(button, "1/1/2002 0:30", FIRST);
            row(button, "→x", FIRST);
        }
    }
    void ClosesWithARow() {
        QFETCH(QString, button);
        QFETCH(QString, keys);
        QFETCH(QString, stored);
        const auto deed = [&](QWidget& form) {
            if (button.isEmpty()) {
                form.close();
            } else {
                Click(form, button);
            }
        };
        InEditor([&](QWidget& form) {
            Press(form, keys);
            if (stored == QStringLiteral(FIRST)) {
                MessageLog log;
                deed(form);
                QCOMPARE(log.texts.size(), 1);
                QVERIFY(form.isVisible());
                QCOMPARE(GridText(form), QStringLiteral(SHOWN));
            }
            std::optional<NextWindow> dialog;
            if (button == u"cmdDelete"_qs) {
                dialog.emplace([](QWidget& opened) { Click(opened, u"cmdCancel"_qs); });
            }
            deed(form);
            QCOMPARE(form.isVisible(), dialog.has_value());
            QCOMPARE(Changed(), stored);
            form.close();
        });
    }

    // In the dialog: keys in the editor bring it up on a cell.
    void Offers_data() {
        const DataRows<QString, QString> row("keys", "offered");
        row("", "All Channels: 2002-01-01 00:00:00 to 2002-01-01 00:00:00");
        row("→↓", "Chan 1 (Stage): 2002-01-01 00:15:30 to 2002-01-01 00:15:30");
        row("→→↓↓", "Chan 2 (Stage): 2002-01-01 00:30:00 to 2002-01-01 00:30:00");
        row("↓1/3/2002 7:05⏎↑", "All Channels: 2002-01-03 07:05:00 to 2002-01-03 07:05:00");
    }
    void Offers() {
        QFETCH(QString, keys);
        InEditor([&](QWidget& form) {
            Press(form, keys);
            InDelete(form, [&form](QWidget& dialog) {
                QCOMPARE(dialog.windowTitle(), u"Delete"_qs);
                QTEST(ChoiceText(dialog), "offered");
                const QWidget& button = Child<QWidget>(form, u"cmdDelete"_qs);
                QCOMPARE(dialog.pos() - form.pos() - button.pos(), QPoint(-147, -80));
                Click(dialog, u"cmdCancel"_qs);
            });
            form.close();
        });
    }

    void PicksTimes_data() {
        const DataRows<int, QString, QString> row("section", "keys", "picked");
        row(QDateTimeEdit::MonthSection, "↑", "2/1/02 12:15 AM = 2002-02-01 00:15:30");
        row(QDateTimeEdit::DaySection, "7", "1/7/02 12:15 AM = 2002-01-07 00:15:30");
        row(QDateTimeEdit::MinuteSection, "↑", "1/1/02 12:16 AM = 2002-01-01 00:16:00");
        row(QDateTimeEdit::MinuteSection, "↑↓", "1/1/02 12:15 AM = 2002-01-01 00:15:30");
        row(QDateTimeEdit::YearSection, "98", "1/1/98 12:15 AM = 1998-01-01 00:15:30");
        row(QDateTimeEdit::AmPmSection, "pm", "1/1/02 12:15 PM = 2002-01-01 12:15:00");
    }
    void PicksTimes() {
        QFETCH(int, section);
        QFETCH(QString, keys);
        InEditor([&](QWidget& form) {
            Press(form, u"↓"_qs);
            InDelete(form, [&](QWidget& dialog) {
                auto& picker = Child<DTPicker>(dialog, u"DTPicker2"_qs);
                picker.setFocus();
                picker.setSelectedSection(static_cast<QDateTimeEdit::Section>(section));
                Press(dialog, keys);
                QTEST(picker.text() + u" = "_qs + MomentText(picker.Value()), "picked");
                Click(dialog, u"cmdCancel"_qs);
            });
            form.close();
        });
    }

    // "all" is Select All; nothing leaves the range that the dialog offers on the second record.
    void Deletes_data() {
        const DataRows<int, QString, QString, QString, QString, QString> row(
            "choice", "range", "stored", "shown", "current", "statistics");
        const QString whole = u"3: 1/1/2002 to 1/1/2002"_qs;
        const QString all = QStringLiteral(FIRST "; " SECOND "; " THIRD);
        row(0, "", FIRST "; " THIRD, SHOWN, "1,1", "2: 1/1/2002 to 1/1/2002");
        row(0, "2002-01-01 to 2002-01-01 00:15:30", THIRD, SHOWN, "1,1", "1: 1/1/2002 to 1/1/2002");
        row(0, "2002-01-01 to 2002-01-01 00:15:29", SECOND "; " THIRD, SHOWN, "1,1",
            "2: 1/1/2002 to 1/1/2002");
        row(0, "all", "", SHOWN, "2,1", "Empty:  to ");
        row(0, "2002-01-02 to 2002-01-01", all, SHOWN, "1,1", whole);
        row(1, "2002-01-02 to 2002-01-01", all, SHOWN, "1,1", whole);
        row(1, "2002-01-02 to 2002-01-03", all, SHOWN, "2,1", whole);
        row(1, "", FIRST "; 00:15:30 | NULL | NULL; " THIRD,
            "1/1/2002|1.2|10; 1/1/2002 12:15:30 AM||; 1/1/2002 12:30:00 AM|-1|30", "2,1", whole);
        row(2, "2002-01-01 to 2002-01-01 00:29:59", "00:00:00 | 1.2 | NULL; " SECOND "; " THIRD,
            "1/1/2002|1.2|; 1/1/2002 12:15:30 AM|1.5|; 1/1/2002 12:30:00 AM|-1|30", "2,1", whole);
        row(2, "all", "00:00:00 | 1.2 | NULL; " SECOND "; 00:30:00 | -1 | NULL",
            "1/1/2002|1.2|; 1/1/2002 12:15:30 AM|1.5|; 1/1/2002 12:30:00 AM|-1|", "2,1", whole);
    }
    void Deletes() {
        QFETCH(int, choice);
        QFETCH(QString, range);
        InEditor([&](QWidget& form) {
            Press(form, u"→↓"_qs);
            InDelete(form, [&](QWidget& dialog) {
                Choose(dialog, choice, range);
                Click(dialog, u"cmdOK"_qs);
                QVERIFY(!dialog.isVisible());
            });
            QTEST(Stored(), "stored");
            QTEST(GridText(form), "shown");
            QTEST(CurrentCell(form), "current");
            form.close();
            QTEST(Statistics(), "statistics");
        });
    }

    void CancelsADeletion() {
        InEditor([this](QWidget& form) {
            InDelete(form, [](QWidget& dialog) {
                Click(dialog, u"cmdSelectALl"_qs);
                QCOMPARE(ChoiceText(dialog),
                         u"All Channels: 2002-01-01 00:00:00 to 2002-01-01 00:30:00"_qs);
                Click(dialog, u"cmdCancel"_qs);
            });
            QCOMPARE(CurrentCell(form), u"2,0"_qs);
            QCOMPARE(Stored(), QStringLiteral(FIRST "; " SECOND "; " THIRD));
            form.close();
        });
    }

    void RefusesDeletedRows() {
        InEditor([this](QWidget& form) {
            InDelete(form, [](QWidget& dialog) {
                Choose(dialog, 0, u"all"_qs);
                Click(dialog, u"cmdOK"_qs);
            });
            Grid(form).setFocus();
            doors_->ExpectMessage(
                u"The record of 1/1/2002 12:30:00 AM could not be stored: "
                "The row isn't in the table any more."_qs);
            Press(form, u"→5↑"_qs);
            doors_->ExpectMessage(u"The record isn't in the table any more."_qs);
            Press(form, u"6⏎"_qs);
            QCOMPARE(GridText(form), u"1/1/2002|1.2|10; ||; ||"_qs);
            for (const int choice : {0, 2}) {
                InDelete(form, [choice](QWidget& dialog) {
                    Click(dialog, u"cmdSelectALl"_qs);
                    Choose(dialog, choice, {});
                    Click(dialog, u"cmdOK"_qs);
                });
            }
            form.close();
        });
        QCOMPARE(Stored(), QString());
    }

    void EditsAnEmptyTable() {
        StationConnection->Execute(u"DELETE * FROM Records"_qs);
        InEditor([](QWidget& form) {
            Press(form, u"→↓5⏎⌫✎⇥"_qs);
            for (const int choice : {0, 1}) {
                InDelete(form, [choice](QWidget& dialog) {
                    const QString today = MomentText(DayOf(Now()));
                    Click(dialog, u"cmdSelectALl"_qs);
                    QCOMPARE(ChoiceText(dialog), u"All Channels: %1 to %1"_qs.arg(today));
                    Choose(dialog, choice, {});
                    Click(dialog, u"cmdOK"_qs);
                });
            }
            QCOMPARE(GridText(form) + CurrentCell(form), u"-1,-1"_qs);
            form.close();
        });
        QCOMPARE(Statistics(), u"Empty:  to "_qs);
    }

    // Whichever statement fails.
    void DeletesAllOrNothing_data() {
        const DataRows<int, QString> row("choice", "stored");
        row(0, "");
        row(1, "00:00:00 | NULL | 10; 00:15:30 | NULL | NULL; 00:30:00 | NULL | 30");
    }
    void DeletesAllOrNothing() {
        QFETCH(int, choice);
        const QString before = Stored();
        bool struck = true;
        InEditor([&](QWidget& form) {
            for (int statement = 1; struck; ++statement) {
                InDelete(form, [&](QWidget& dialog) {
                    Choose(dialog, choice, u"all"_qs);
                    MessageLog log;
                    {
                        const StatementFault fault(statement, StatementFault::Kind::Fails);
                        Click(dialog, u"cmdOK"_qs);
                        struck = fault.HasStruck();
                    }
                    QCOMPARE(dialog.isVisible(), struck);
                    QCOMPARE(log.texts.value(0).startsWith(u"! Nothing was deleted: "_qs), struck);
                    dialog.close();
                });
                if (struck) {
                    QCOMPARE(Stored(), before);
                    QCOMPARE(GridText(form), QStringLiteral(SHOWN));
                }
            }
            QTEST(Stored(), "stored");
            form.close();
        });
    }

    void LeavesAReadOnlyFile() {
        station_->Close();
        QFile::setPermissions(station_->Path(), QFile::Permissions(0x4444));
        QFile::setPermissions(station_->Folder(), QFile::Permissions(0x5555));
        const OrdinaryUser user;
        station_->Open();
        const QString reason = u"attempt to write a readonly database"_qs;
        InEditor([&](QWidget& form) {
            doors_->ExpectMessage(u"The record of 1/1/2002 could not be stored: "_qs + reason);
            Press(form, u"→7⏎"_qs);
            QCOMPARE(GridText(form), QStringLiteral(SHOWN));
            for (const int choice : {0, 1}) {
                doors_->ExpectMessage(u"Nothing was deleted: "_qs + reason);
                InDelete(form, [&](QWidget& dialog) {
                    Choose(dialog, choice, u"all"_qs);
                    Click(dialog, u"cmdOK"_qs);
                    dialog.close();
                });
            }
            form.close();
        });
    }

    // The window's connection beside the station's.
    void WritesInTurn() {
        InEditor([this](QWidget& form) {
            Press(form, u"→2⏎"_qs);
            station_->WithRecord("2002-01-01 01:00", {4, 4});
            Press(form, u"3⏎"_qs);
            QCOMPARE(Stored(),
                     u"00:00:00 | 2 | 10; 00:15:30 | 3 | NULL; " THIRD "; 01:00:00 | 4 | 4"_qs);
            {
                const Transaction other(*StationConnection);
                doors_->ExpectMessage(
                    u"The record of 1/1/2002 12:30:00 AM could not be stored: "
                    "database is locked"_qs);
                Press(form, u"5↑"_qs);
            }
            Press(form, u"↓5↑"_qs);
            // No read is left lying that keeps the companion from being folded back.
            StationConnection->Execute(u"PRAGMA wal_checkpoint(TRUNCATE)"_qs);
            QCOMPARE(QFileInfo(station_->Path() + u"-wal"_qs).size(), 0);
            form.close();
        });
        station_->WithRecord("2002-01-01 02:00", {6, 6});
        QCOMPARE(Statistics(), u"4: 1/1/2002 to 1/1/2002"_qs);
        station_->Close();
        QCOMPARE(QDir(station_->Folder()).entryList(QDir::Files), QStringList(u"station.mdb"_qs));
        QCOMPARE(Stored().section(u"; "_qs, 2),
                 u"00:30:00 | 5 | 30; 01:00:00 | 4 | 4; "
                 "02:00:00 | 6 | 6"_qs);
    }

    void TellsWhatItCantRead() {
        StationInfo.Channels = 3;
        doors_->ExpectMessage(u"The records could not be read: no such column: chan3"_qs);
        InEditor([](QWidget& form) {
            QVERIFY(!Grid(form).isEnabled());
            Press(form, u"⎋"_qs);
            QVERIFY(!form.isVisible());
        });
    }

    // Whatever became of the last dialog.
    void RebuildsTheReport() {
        frmInstT report(u"P"_qs, cdbprinter_);
        report.show();
        for (const bool cancelled : {true, false}) {
            DialogCancelled = cancelled;
            const QString reading = cancelled ? u"8"_qs : u"9"_qs;
            const NextWindow editor([&](QWidget& form) {
                Press(form, u"→"_qs + reading);
                Click(form, u"cmdOK"_qs);
            });
            Trigger(report, u"mnuEditRecords"_qs);
            const auto& table = Child<MSFlexGrid>(report, u"MSFlexGrid1"_qs);
            QCOMPARE(table.TextMatrix(1, 2), reading + u".00"_qs);
        }
    }

private:
    static QString ChoiceText(QWidget& dialog) {
        const auto moment = [&](const QString& picker) {
            return MomentText(Child<DTPicker>(dialog, picker).Value());
        };
        return Child<QComboBox>(dialog, u"cboChannels"_qs).currentText() + u": "_qs +
               moment(u"DTPicker1"_qs) + u" to "_qs + moment(u"DTPicker2"_qs);
    }
    // "2002-01-01 to 2002-01-02", or "all".
    static void Choose(QWidget& dialog, int choice, const QString& range) {
        Child<QComboBox>(dialog, u"cboChannels"_qs).setCurrentIndex(choice);
        if (range == u"all"_qs) {
            Click(dialog, u"cmdSelectALl"_qs);
        } else if (!range.isEmpty()) {
            const QStringList ends = range.split(u" to "_qs);
            Child<DTPicker>(dialog, u"DTPicker1"_qs).SetValue(At(qPrintable(ends[0])));
            Child<DTPicker>(dialog, u"DTPicker2"_qs).SetValue(At(qPrintable(ends[1])));
        }
    }
    static void InDelete(QWidget& form, const std::function<void(QWidget& dialog)>& steps) {
        const NextWindow window([&steps](QWidget& dialog) {
            Activate(dialog);
            steps(dialog);
        });
        Click(form, u"cmdDelete"_qs);
        Activate(form);
    }
    QString Statistics() const {
        const auto text = [this](StationPanel::Item item) { return station_->panel.Text(item); };
        return text(StationPanel::Item::Records) + u": "_qs + text(StationPanel::Item::BeginDate) +
               u" to "_qs + text(StationPanel::Item::EndDate);
    }
    void InEditor(const std::function<void(QWidget& form)>& steps) {
        frmEditRecords form;
        const NextWindow window([&](QWidget& opened) {
            Activate(opened);
            steps(opened);
        });
        form.exec();
    }
    QString Stored() const {
        return station_->Dump("Records")
            .replace(u"2002-01-01 "_qs, QString())
            .replace(u"\n"_qs, u"; "_qs);
    }
    // The first row, where the others are as they were.
    QString Changed() const {
        QStringList rows = Stored().split(u"; "_qs);
        return rows.removeOne(QStringLiteral(SECOND)) && rows.removeOne(QStringLiteral(THIRD))
                   ? rows.join(u"; "_qs)
                   : Stored();
    }

    CommonDialog cdbprinter_;
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestRecords)
#include "tst_records.moc"
