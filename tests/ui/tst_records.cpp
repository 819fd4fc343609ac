#include <QComboBox>

#include "forms/records/frmEditRecords.h"
#include "forms/reports/frmInstT.h"
#include "platform/qt/DataGrid.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

void Activate(QWidget& form) {
    form.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    QCoreApplication::processEvents();  // the focus follows
}

QAbstractItemView& Grid(QWidget& form) {
    return Child<DataGrid>(form, u"DataGrid1"_qs);
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

// "Chan 1 (Stage), 2002-01-01 00:00:00 to 2002-01-01 00:15:30".
QString ChoiceText(QWidget& dialog) {
    const auto moment = [&](const QString& picker) {
        return MomentText(Child<DTPicker>(dialog, picker).Value());
    };
    return Child<QComboBox>(dialog, u"cboChannels"_qs).currentText() + u", "_qs +
           moment(u"DTPicker1"_qs) + u" to "_qs + moment(u"DTPicker2"_qs);
}

// "1" and "1 all" choose channel 1 and the range offered or Select All; "0 2002-01-01~2002-01-02".
void Choose(QWidget& dialog, const QString& choice) {
    const QString range = choice.section(u' ', 1);
    Child<QComboBox>(dialog, u"cboChannels"_qs).setCurrentIndex(choice.left(1).toInt());
    if (range == u"all"_qs) {
        Click(dialog, u"cmdSelectALl"_qs);
    } else if (!range.isEmpty()) {
        const QStringList ends = range.split(u'~');
        Child<DTPicker>(dialog, u"DTPicker1"_qs).SetValue(At(qPrintable(ends[0])));
        Child<DTPicker>(dialog, u"DTPicker2"_qs).SetValue(At(qPrintable(ends[1])));
    }
}

// Clicks Delete..., and then back into the grid.
void InDelete(QWidget& form, const std::function<void(QWidget& dialog)>& steps) {
    const NextWindow window([&steps](QWidget& dialog) {
        Activate(dialog);
        steps(dialog);
        dialog.close();
    });
    Click(form, u"cmdDelete"_qs);
    Activate(form);
    Grid(form).setFocus();
}

// Presses keys. "[1 all]" is a deletion, "[]" notes what
// the dialog offers and cancels, "[* all]" cancels after Select All. "?" notes the current cell and
// what the grid shows, "@" clicks OK.
void Do(QWidget& form, const QString& script, QStringList& notes) {
    for (qsizetype i = 0; i < script.size(); ++i) {
        if (script[i] == u'[') {
            const QString choice = script.mid(i + 1, script.indexOf(u']', i) - i - 1);
            InDelete(form, [&](QWidget& dialog) {
                if (choice.isEmpty()) {
                    notes += ChoiceText(dialog);
                } else {
                    Choose(dialog, choice);
                    Click(dialog, choice[0] == u'*' ? u"cmdCancel"_qs : u"cmdOK"_qs);
                }
            });
            i += choice.size() + 1;
        } else if (script[i] == u'?') {
            const QModelIndex cell = Grid(form).currentIndex();
            notes += u"%1,%2: "_qs.arg(cell.row()).arg(cell.column()) + GridText(form);
        } else if (script[i] == u'@') {
            Click(form, u"cmdOK"_qs);
            notes += form.isVisible() ? u"open"_qs : u"closed"_qs;
        } else {
            PressKeys(form, script.mid(i, 1));
        }
        QCoreApplication::processEvents();  // messages come between the keys
    }
}

#define REST "; 00:15:30 | 1.5 | NULL; 00:30:00 | -1 | 30"
#define ALL "00:00:00 | 1.2 | 10" REST
#define SHOWN "1/1/2002|1.2|10; 1/1/2002 12:15:30 AM|1.5|; 1/1/2002 12:30:00 AM|-1|30"
#define TAKEN "! There is a record of 1/1/2002 12:30:00 AM already."
#define GONE "! The record isn't in the table any more."

}  // namespace

class TestRecords : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        station_->WithRecord("2002-01-01", {1.2, 10})
            .WithRecord("2002-01-01 00:15:30", {1.5, {}})
            .WithRecord("2002-01-01 00:30", {-1, 30});
    }

    // From the first cell on; what is stored stands before the window closes.
    void Works_data() {
        const DataRows<QString, QString, QString> row("script", "stored", "notes");
        row("?", ALL, "0,0: " SHOWN);
        row("→2.5⇥3⏎", "00:00:00 | 2.5 | 3" REST, "");
        row("→✎5⏎?", "00:00:00 | 5 | 10" REST,
            "1,1: 1/1/2002|5|10; 1/1/2002 12:15:30 AM|1.5|; 1/1/2002 12:30:00 AM|-1|30");
        row("→2.5↑", ALL, "");  // not left yet
        row("1/1/2002 0:20⏎", "00:15:30 | 1.5 | NULL; 00:20:00 | 1.2 | 10; 00:30:00 | -1 | 30", "");
        row("1/1/2002 0:30⇥⇥9↓↓↑", ALL, TAKEN);
        row("→⌫←1/1/2002 0:30↓?", ALL, TAKEN "; 1,0: " SHOWN);
        row("→9⇥1,5⏎↓", "00:00:00 | 9 | 10" REST, "! \"1,5\" is not a number.");
        row("13/1/2002⏎", ALL, "! \"13/1/2002\" is not a date and time.");
        row(" ⏎", ALL, "! A record can't be without its DateTime.");
        // Ways to leave the window; after a refusal it stays.
        row("→7@", "00:00:00 | 7 | 10" REST, "closed");
        row("→7⇥8⎋⎋", "00:00:00 | 7 | 10" REST, "");
        row("1/1/2002 0:30@?", ALL, TAKEN "; open; 0,0: " SHOWN);
        // What the dialog offers.
        row("[]", ALL, "All Channels, 2002-01-01 00:00:00 to 2002-01-01 00:00:00");
        row("→→↓9[]", "00:00:00 | 1.2 | 10; 00:15:30 | 1.5 | 9; 00:30:00 | -1 | 30",
            "Chan 2 (Stage), 2002-01-01 00:15:30 to 2002-01-01 00:15:30");
        row("[* all]?", ALL, "2,0: " SHOWN);
        // Whole records: the grid shows what it read.
        row("↓[0]?", "00:00:00 | 1.2 | 10; 00:30:00 | -1 | 30", "1,0: " SHOWN);
        row("[0 2002-01-01~2002-01-01 00:15:30]", "00:30:00 | -1 | 30", "");
        row("[0 2002-01-01 00:00:01~2002-01-01 00:15:29]", ALL, "");
        // A time that is free again belongs to another record then.
        row("[0]↓1/1/2002⏎↑↑→9⏎?", "00:00:00 | 1.5 | NULL; 00:30:00 | -1 | 30",
            GONE "; 0,1: 1/1/2002|1.2|10; 1/1/2002|1.5|; 1/1/2002 12:30:00 AM|-1|30");
        row("[0 all]→5↑6⏎?[1][2 all][0 all]", "", GONE "; " GONE "; 1,1: " SHOWN);
        // One channel.
        row("↓[1]?", "00:00:00 | 1.2 | 10; 00:15:30 | NULL | NULL; 00:30:00 | -1 | 30",
            "2,0: 1/1/2002|1.2|10; 1/1/2002 12:15:30 AM||; 1/1/2002 12:30:00 AM|-1|30");
        row("[2 2002-01-01 00:15:30~2002-01-01 00:30]?",
            "00:00:00 | 1.2 | 10; 00:15:30 | 1.5 | NULL; 00:30:00 | -1 | NULL",
            "2,0: 1/1/2002|1.2|10; 1/1/2002 12:15:30 AM|1.5|; 1/1/2002 12:30:00 AM|-1|");
        row("1/2/2002⏎[1 2002-01-01~2002-01-01 00:30]?",
            "00:15:30 | NULL | NULL; 00:30:00 | NULL | 30; 2002-01-02 00:00:00 | 1.2 | 10",
            "2,0: 1/2/2002|1.2|10; 1/1/2002 12:15:30 AM||; 1/1/2002 12:30:00 AM||30");
    }
    void Works() {
        QFETCH(QString, script);
        MessageLog log;
        InEditor([&](QWidget& form) {
            Do(form, script, log.texts);
            QTEST(Stored(), "stored");
        });
        QTEST(log.texts.join(u"; "_qs), "notes");
    }

    void ShowsWhatItIsOf() {
        InEditor([](QWidget& form) {
            QString titles = form.windowTitle();
            for (int col = 0; col < 3; ++col) {
                titles += u'|' + Grid(form).model()->headerData(col, Qt::Horizontal).toString();
            }
            QCOMPARE(titles,
                     u"Edit Records - station.mdb|DateTime|Kettle Creek Stage|"
                     "Channel 2 Stage"_qs);
            // Longer than the times in view.
            const auto& grid = Child<DataGrid>(form, u"DataGrid1"_qs);
            const QString longest = GeneralDateText(At("2028-12-28 22:58:58"));
            QVERIFY(grid.fontMetrics().horizontalAdvance(longest) + 7 <= grid.columnWidth(0));
            InDelete(form, [&form](QWidget& dialog) {
                const QPoint button = Child<QWidget>(form, u"cmdDelete"_qs).pos();
                QCOMPARE(dialog.pos() - form.pos() - button, QPoint(-147, -80));
            });
        });
        QCOMPARE(doors_->pointers.size(), 4U);
        QCOMPARE(doors_->MousePointer(), int{vbDefault});
    }

    void EditsInOtherRegions() {
        UseOtherRegion();
        QStringList notes;
        InEditor([&](QWidget& form) { Do(form, u"2.1.2002 14:05⇥1.234,5⏎?"_qs, notes); });
        QCOMPARE(notes.join(u"; "_qs),
                 u"1,1: 02.01.2002 14:05:00|1234,5|10; "
                 "01.01.2002 00:15:30|1,5|; 01.01.2002 00:30:00|-1|30"_qs);
        QCOMPARE(Stored().section(u"; "_qs, 2), u"2002-01-02 14:05:00 | 1234.5 | 10"_qs);
        QCOMPARE(Statistics(), u"3: 01.01.2002 to 02.01.2002"_qs);
    }

    void LivesWithAnEmptyTable() {
        QStringList notes;
        InEditor([&](QWidget& form) { Do(form, u"[0 all]"_qs, notes); });
        QCOMPARE(Statistics(), u"Empty:  to "_qs);
        InEditor([&](QWidget& form) {
            QTest::keySequence(&Grid(form), QKeySequence::Copy);
            Do(form, u"→↓5⏎⌫✎⇥[][0 all][1 all]?"_qs, notes);
        });
        const QString today = MomentText(DayOf(Now()));
        QCOMPARE(notes.join(u"; "_qs), u"All Channels, %1 to %1; -1,-1: "_qs.arg(today));
    }

    // The last row can be neither changed nor deleted.
    void DeletesAllOrNothing() {
        for (const QString& change : {u"UPDATE"_qs, u"DELETE"_qs}) {
            StationConnection->Execute(
                u"CREATE TRIGGER stuck%1 BEFORE %1 ON Records WHEN OLD.chan2 = 30 "
                "BEGIN SELECT RAISE(ABORT, 'stuck'); END"_qs.arg(change));
        }
        MessageLog log;
        InEditor([&](QWidget& form) {
            Do(form, u"[0 all][1 all]"_qs, log.texts);
            StationConnection->Execute(u"DROP TRIGGER stuckUPDATE"_qs);
            Do(form, u"→↑5⏎"_qs, log.texts);
        });
        QCOMPARE(log.texts.join(u'|'),
                 u"! Nothing was deleted: stuck|! Nothing was deleted: stuck"_qs);
        QCOMPARE(Stored(), u"00:00:00 | 1.2 | 10; 00:15:30 | 5 | NULL; 00:30:00 | -1 | 30"_qs);
    }

    void LeavesAReadOnlyFile() {
        station_->Close();
        QFile::setPermissions(station_->Path(), QFile::Permissions(0x4444));
        QFile::setPermissions(station_->Folder(), QFile::Permissions(0x5555));
        const OrdinaryUser user;
        station_->Open();
        MessageLog log;
        InEditor([&](QWidget& form) { Do(form, u"→7⏎?[0 all][1 all]"_qs, log.texts); });
        QCOMPARE(
            log.texts.join(u"; "_qs).replace(u"attempt to write a readonly database"_qs, u"-"_qs),
            u"! The record of 1/1/2002 could not be stored: -; 1,1: " SHOWN
            "; ! Nothing was deleted: -; ! Nothing was deleted: -"_qs);
    }

    // The row that was typed is refused; all others, and what is typed next, are in the new file.
    void GoesOnInAnotherFile() {
        const QString elsewhere = station_->Folder() + u"/elsewhere.mdb"_qs;
        ScriptedDoors doors;
        doors.ExpectMessage(
            u"The record of 1/1/2002 could not be stored: The file was removed or replaced by "
            "another program: "_qs +
            station_->Path());
        doors.ExpectMessage(
            station_->Path() +
                u" was removed or replaced by another program while it was open. "
                "Nothing can be saved in it. Save the station under another name?"_qs,
            MsgBoxAnswer::Yes);
        doors.AnswerFileDialog(elsewhere);
        QStringList notes;
        InEditor([&](QWidget& form) {
            QFile::remove(station_->Path());
            Do(form, u"→7⏎"_qs, notes);
            QCoreApplication::processEvents();
            Do(form, u"→8⏎"_qs, notes);
        });
        station_->Close();
        QCOMPARE(DumpTable(elsewhere, u"SELECT chan1 FROM Records"_qs), u"8\n1.5\n-1"_qs);
        QVERIFY(!QFile::exists(station_->Path()));
    }

    // The window's connection beside the station's.
    void WritesInTurn() {
        MessageLog log;
        InEditor([&](QWidget& form) {
            Do(form, u"→2⏎"_qs, log.texts);
            station_->WithRecord("2002-01-01 01:00", {4, 4});
            Do(form, u"3⏎"_qs, log.texts);
            {
                const Transaction other(*StationConnection);
                Do(form, u"5↑"_qs, log.texts);
            }
            Do(form, u"↓6↑"_qs, log.texts);
            // No read is left lying that keeps the companion from being folded back.
            StationConnection->Execute(u"PRAGMA wal_checkpoint(TRUNCATE)"_qs);
            QCOMPARE(QFileInfo(station_->Path() + u"-wal"_qs).size(), 0);
        });
        QCOMPARE(log.texts,
                 QStringList(u"! The record of 1/1/2002 12:30:00 AM could not be stored: "
                             "database is locked"_qs));
        station_->WithRecord("2002-01-01 02:00", {7, 7});
        station_->Close();
        QCOMPARE(QDir(station_->Folder()).entryList(QDir::Files), QStringList(u"station.mdb"_qs));
        QCOMPARE(Stored(),
                 u"00:00:00 | 2 | 10; 00:15:30 | 3 | NULL; 00:30:00 | 6 | 30; "
                 "01:00:00 | 4 | 4; 02:00:00 | 7 | 7"_qs);
    }

    void TellsWhatItCantRead() {
        StationInfo.Channels = 3;
        doors_->ExpectMessage(u"The records could not be read: no such column: chan3"_qs);
        InEditor([](QWidget& form) { QVERIFY(!Grid(form).isEnabled()); });
    }

    // Whatever became of the last dialog.
    void RebuildsTheReport() {
        frmInstT report(u"P"_qs, printer_);
        report.show();
        DialogCancelled = true;
        QStringList notes;
        const NextWindow editor([&](QWidget& form) {
            Activate(form);
            Do(form, u"→8@"_qs, notes);
        });
        Trigger(report, u"mnuEditRecords"_qs);
        QCOMPARE(GridOf(report).TextMatrix(1, 2), u"8.00"_qs);
    }

private:
    // Closes the window at the end.
    static void InEditor(const std::function<void(QWidget& form)>& steps) {
        frmEditRecords form;
        InForm(form, steps);
    }
    QString Stored() const {
        return station_->Dump("Records")
            .replace(u"2002-01-01 "_qs, QString())
            .replace(u"\n"_qs, u"; "_qs);
    }
    QString Statistics() const {
        using Item = StationPanel::Item;
        return station_->panel.Text(Item::Records) + u": "_qs +
               station_->panel.Text(Item::BeginDate) + u" to "_qs +
               station_->panel.Text(Item::EndDate);
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestRecords)
#include "tst_records.moc"
