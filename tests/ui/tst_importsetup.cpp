#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include "compute/Compute.h"
#include "forms/main/StationTree.h"
#include "forms/main/frmMain.h"
#include "import/frmImport.h"
#include "platform/qt/CellTextBox.h"
#include "platform/qt/UpDown.h"
#include "tests/support/DataRows.h"
#include "tests/support/FormTest.h"

using namespace rillbook;

namespace {

void StepChannels(QWidget& form, int steps) {
    for (int i = 0; i < std::abs(steps); ++i) {
        Child<UpDown>(form, u"updChan"_qs).Step(steps > 0 ? 1 : -1);
    }
}

void GoTo(QWidget& form, int row, int col) {
    GridOf(form).setFocus();
    GridOf(form).SetSelection(row, col, row, col);
}

const QString kDecrease = QStringLiteral(
    "You have decreased the number of channels. Data will be erased.  Do you want to continue?");

}  // namespace

class TestImportSetup : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        station_->WithRecord("2002-01-01", {1.5, 2.5});
        ChannelInfo[1] = Channel(9, "ft", "Stage", "Gauge");
        ChannelInfo[2] = Channel(7, "C", "Temperature", "Well");
    }
    void cleanup() {
        form_.reset();
        FormTest::cleanup();
    }

    void storesWhatWasTyped() {
        Show();
        Child<QComboBox>(*form_, u"cmbFileType"_qs).setCurrentIndex(2);
        StepChannels(*form_, 1);
        QCOMPARE(FilledRows(*form_).section(u'\n', 3), u"4: 9|||"_qs);
        GoTo(*form_, 1, 1);
        PressKeys(*form_, u"14⏎1,012x⏎"_qs);
        GoTo(*form_, 4, 2);
        PressKeys(*form_, u"mV⏎"_qs);
        QCOMPARE(GridOf(*form_).Row(), 4);  // the last one
        GoTo(*form_, 4, 4);
        PressKeys(*form_, u"Battery"_qs);  // still being typed
        Click(*form_, u"cmdOK"_qs);
        QCOMPARE(form_->result(), static_cast<int>(QDialog::Accepted));
        station_->Close();
        QCOMPARE(
            station_->Dump("SELECT channels, importtype, importdtwidth FROM Information LIMIT 1"),
            u"3 | 2 | 14"_qs);
        QCOMPARE(station_->Dump("SELECT importwidth, reclabel, recdesc, recsta, digitsout,"
                                " graphmax, outputseries FROM Information"),
                 u"1012 | ft | Stage | Gauge | 2 | 10 | 11000\n"
                 "7 | C | Temperature | Well | 2 | 10 | 11000\n"
                 "9 | mV | NULL | Battery | 2 | 10 | 11000"_qs);
        QCOMPARE(station_->Dump("Records"), u"2002-01-01 00:00:00 | 1.5 | 2.5 | NULL"_qs);
    }

    void editsCells() {
        Show();
        GoTo(*form_, 2, 3);
        PressKeys(*form_, u"Le⎋✎ 2"_qs);  // dropped, and begun anew
        GoTo(*form_, 3, 3);  // leaving the box in any way keeps its text, where it was typed
        PressKeys(*form_, u"⌫"_qs);
        QCOMPARE(FilledRows(*form_).section(u'\n', 1), u"2: 9|ft|Stage 2|Gauge\n3: 7|C||Well"_qs);
    }

    // The column of widths, which this layout hides, is skipped. Undo restores rows with their
    // typed texts.
    void tabsAndUndoes() {
        Show();
        GoTo(*form_, 3, 3);
        PressKeys(*form_, u"⇥⇥⇧⇥x⇧⇥⇧⇥⇧⇥y⇥"_qs);
        const QString typed = u"2: 9|ft|Stage|y\n3: 7|C|Temperature|x"_qs;
        QCOMPARE(FilledRows(*form_).section(u'\n', 1), typed);
        QCOMPARE(SelectionOf(GridOf(*form_)), u"3,2 in 3,2 to 3,2"_qs);
        StepChannels(*form_, -1);
        PressKeys(*form_, u"⌃z"_qs);
        QCOMPARE(FilledRows(*form_).section(u'\n', 1), typed);
        QCOMPARE(Child<QLineEdit>(*form_, u"tbChan"_qs).text(), u"2"_qs);
        PressKeys(*form_, u"⌃z⌃⇧z⌃⇧z"_qs);
        QCOMPARE(FilledRows(*form_).section(u'\n', 1), u"2: 9|ft|Stage|Gauge"_qs);
        QCOMPARE(Child<QLineEdit>(*form_, u"tbChan"_qs).text(), u"1"_qs);
    }

    // A channel that is taken away and brought back shows what is stored; hidden widths are kept.
    void countsChannelsStepByStep() {
        Show();
        GoTo(*form_, 3, 3);
        PressKeys(*form_, u"Level⏎"_qs);
        StepChannels(*form_, -1);
        QCOMPARE(FilledRows(*form_), u"1: 16||date|\n2: 9|ft|Stage|Gauge"_qs);
        StepChannels(*form_, 2);
        QCOMPARE(FilledRows(*form_).section(u'\n', 2), u"3: 7|C|Temperature|Well\n4: 9|||"_qs);
        QCOMPARE(GridOf(*form_).ColWidth(1), 0);
        Child<QComboBox>(*form_, u"cmbFileType"_qs).setCurrentIndex(3);
        QCOMPARE(GridOf(*form_).ColWidth(1), 795);
        for (const auto& [steps, count] : {std::pair(-10, u"1"_qs), {120, u"99"_qs}}) {
            StepChannels(*form_, steps);
            QCOMPARE(Child<QLineEdit>(*form_, u"tbChan"_qs).text(), count);
        }
    }

    void asksBeforeItErases() {
        StationInfo.OutputChannel = 2;
        Show();
        StepChannels(*form_, -1);
        const QString before = FolderText(station_->Folder());
        doors_->ExpectMessage(kDecrease, MsgBoxAnswer::No);
        Click(*form_, u"cmdOK"_qs);
        QVERIFY(form_->isVisible());
        QVERIFY(doors_->shownMessages.back().byEnter == MsgBoxAnswer::No);
        QCOMPARE(FolderText(station_->Folder()), before);
        QCOMPARE(StationInfo.Channels, std::int16_t{2});
        doors_->ExpectMessage(kDecrease, MsgBoxAnswer::Yes);
        Click(*form_, u"cmdOK"_qs);
        QVERIFY(!form_->isVisible());
        QCOMPARE(StationInfo.OutputChannel, std::int16_t{1});
        QCOMPARE(station_->Dump("Records"), u"2002-01-01 00:00:00 | 1.5"_qs);
        QCOMPARE(station_->Dump("SELECT recsta FROM Information"), u"Gauge"_qs);
    }

    void refusesWidths_data() {
        const DataRows<int, QString, QString> row("row", "width", "message");
        const QString range = u"The width of %1 must be between 0 and 32767."_qs;
        for (const char* width : {"16.5", "", "wide", "1,6"}) {
            row(1, width, "The width of the date must be a whole number.");
        }
        for (const char* width : {"-1", "32768", "1,000,000", "1e300"}) {
            row(1, width, range.arg(u"the date"_qs));
        }
        row(2, "40000", range.arg(u"channel 1"_qs));
        row(3, "-2", range.arg(u"channel 2"_qs));
    }
    void refusesWidths() {
        QFETCH(int, row);
        QFETCH(QString, width);
        QFETCH(QString, message);
        Show();
        Child<QComboBox>(*form_, u"cmbFileType"_qs).setCurrentIndex(2);
        TypeCell(*form_, row, 1, width);
        StepChannels(*form_, 1);
        doors_->ExpectMessage(message);
        Click(*form_, u"cmdOK"_qs);
        QCOMPARE(doors_->shownMessages.back().title, u"Warning"_qs);
        QCOMPARE(SelectionOf(GridOf(*form_)), u"%1,1 in %1,1 to %1,4"_qs.arg(row));
        QVERIFY(form_->isVisible() && GridOf(*form_).hasFocus());
        QCOMPARE(StationInfo.Channels, std::int16_t{2});
    }

    void tellsWhyNothingWasStored() {
        Show();
        StepChannels(*form_, 1);
        station_->Close();
        const QString before = FolderText(station_->Folder());
        QFile::setPermissions(station_->Path(), QFile::Permissions(0x4444));
        QFile::setPermissions(station_->Folder(), QFile::Permissions(0x7777));
        {
            const OrdinaryUser user;
            station_->Open();
            doors_->ExpectMessage(
                u"The import setup could not be stored: The file can't be changed: "_qs +
                station_->Path());
            Click(*form_, u"cmdOK"_qs);
            station_->Close();
        }
        QVERIFY(form_->isVisible());
        QFile::setPermissions(station_->Path(), QFile::Permissions(0x6666));
        QCOMPARE(FolderText(station_->Folder()), before);
    }

    void keepsAnUnknownLayoutUntilOneIsChosen() {
        for (const int unknown : {7, -1}) {
            StationInfo.ImportType = static_cast<std::int16_t>(unknown);
            Show();
            QCOMPARE(Child<QComboBox>(*form_, u"cmbFileType"_qs).currentIndex(), -1);
            Click(*form_, u"cmdOK"_qs);
            QCOMPARE(station_->Dump("SELECT importtype FROM Information LIMIT 1"),
                     QString::number(unknown));
        }
        Show();
        Child<QComboBox>(*form_, u"cmbFileType"_qs).setCurrentIndex(1);
        Click(*form_, u"cmdOK"_qs);
        QCOMPARE(station_->Dump("SELECT importtype FROM Information LIMIT 1"), u"1"_qs);
    }

    // Readings of which the header doesn't know aren't erased without a question either.
    void asksForWhatTheHeaderForgot() {
        StationInfo.Channels = 1;
        Show();
        doors_->ExpectMessage(kDecrease, MsgBoxAnswer::No);
        Click(*form_, u"cmdOK"_qs);
        QCOMPARE(station_->Dump("Records"), u"2002-01-01 00:00:00 | 1.5 | 2.5"_qs);
    }

    // The column of readings that a header has lost count of is put right; the space of what was
    // deleted is given back.
    void repairsAndCompacts() {
        RunPlainSql(
            station_->Path(),
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 3999) "
            "INSERT INTO Records SELECT 37622 + i / 86400.0, 1, 2 FROM n");
        StationConnection->Execute(u"DELETE * FROM Records WHERE DateTime > #1/1/2003#"_qs);
        station_->Close();
        RunPlainSql(station_->Path(), "ALTER TABLE Records DROP COLUMN chan2");
        const qint64 size = QFileInfo(station_->Path()).size();
        station_->Open();
        Show();
        Click(*form_, u"cmdOK"_qs);
        station_->Close();
        QCOMPARE(station_->Dump("Records"),
                 u"2002-01-01 00:00:00 | 1.5 | NULL\n2003-01-01 00:00:00 | 1 | NULL"_qs);
        QVERIFY(QFileInfo(station_->Path()).size() < size / 2);
    }

    // By the main window, from a new station on: as many channels as there can be, then one, then
    // two.
    void ninetyNineChannels() {
        station_->Close();
        frmMain window;
        window.show();
        const auto choose = [&](const char* item, const QString& path) {
            doors_->AnswerFileDialog(path);
            Trigger(window, QString::fromLatin1(item));
        };
        choose("mnuFileProjectNew", station_->Folder() + u"/p.prj"_qs);
        choose("mnuFileStationNew", station_->Folder() + u"/wide.mdb"_qs);
        const auto setUp = [&](int steps) {
            const NextWindow setup([&](QWidget& form) {
                StepChannels(form, steps);
                Click(form, u"cmdOK"_qs);
            });
            Trigger(window, u"mnuFileImportSetup"_qs);
        };
        auto& tree = Child<StationTree>(window, u"TreeView1"_qs);
        setUp(98);
        QCOMPARE(tree.topLevelItemCount(), 1);
        QCOMPARE(tree.topLevelItem(0)->childCount(), 99);
        QCOMPARE(Child<QLabel>(window, u"lblChannels"_qs).text(), u"99"_qs);
        QByteArray line = "01/01/02 00:15";
        for (int chan = 1; chan <= 99; ++chan) {
            line += ',' + QByteArray::number(chan + 0.5);
        }
        doors_->ExpectMessage(ImportMessage(1, 0, 0));
        choose("mnuFileImport", station_->LoggerFile(line + '\n'));
        tree.setCurrentItem(tree.topLevelItem(0)->child(98));
        QTest::keyClick(&tree, Qt::Key_Up);
        QCOMPARE(StationInfo.OutputChannel, std::int16_t{98});
        LoadSeries(At("2002-01-01"), At("2002-01-02"), 99);
        QCOMPARE(SeriesText(), u"2002-01-01 00:15:00 99.5"_qs);
        doors_->ExpectMessage(kDecrease, MsgBoxAnswer::Yes);
        setUp(-98);
        QCOMPARE(tree.topLevelItem(0)->childCount(), 1);
        setUp(1);
        Trigger(window, u"mnuFileExit"_qs);
        QCOMPARE(DumpTable(station_->Folder() + u"/wide.mdb"_qs, u"Records"_qs),
                 u"2002-01-01 00:15:00 | 1.5 | NULL"_qs);
    }

private:
    static ChannelInfoData Channel(std::int16_t width, const char* units, const char* label,
                                   const char* description) {
        ChannelInfoData channel = ChannelInfo[1];
        channel.ImportWidth = width;
        channel.RecLabel = QString::fromLatin1(units);
        channel.RecDesc = QString::fromLatin1(label);
        channel.RecSta = QString::fromLatin1(description);
        return channel;
    }

    void Show() {
        form_ = std::make_unique<frmImport>();
        form_->show();
        QVERIFY(QTest::qWaitForWindowActive(form_.get()));
    }

    std::unique_ptr<frmImport> form_;
};

QTEST_MAIN(TestImportSetup)
#include "tst_importsetup.moc"
