#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QtTest>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "compute/Compute.h"
#include "forms/main/StationTree.h"
#include "forms/main/frmMain.h"
#include "import/Import.h"
#include "import/frmImport.h"
#include "platform/qt/CellTextBox.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/qt/UpDown.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "tests/support/Hardship.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

using namespace rillbook;

namespace {

QString GridText(QWidget& form) {
    const MSFlexGrid& grid = GridOf(form);
    QStringList lines;
    for (int row = 1; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int col = 0; col < grid.Cols(); ++col) {
            cells += grid.TextMatrix(row, col);
        }
        lines += cells.join(u'|');
    }
    return lines.join(u'\n');
}

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

class TestImportSetup : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        doors_ = std::make_unique<ScriptedDoors>();
        station_ = std::make_unique<StationFixture>(2);
        station_->WithRecord("2002-01-01", {1.5, 2.5});
        ChannelInfo[1] = Channel(9, "ft", "Stage", "Gauge");
        ChannelInfo[2] = Channel(7, "C", "Temperature", "Well");
    }
    void cleanup() {
        form_.reset();
        station_.reset();
        doors_.reset();
    }

    void storesWhatWasTyped() {
        Show();
        QCOMPARE(GridText(*form_), u"|16||date|\n1|9|ft|Stage|Gauge\n2|7|C|Temperature|Well"_qs);
        Child<QComboBox>(*form_, u"cmbFileType"_qs).setCurrentIndex(2);
        StepChannels(*form_, 1);
        QCOMPARE(GridText(*form_).section(u'\n', 3), u"3|9|||"_qs);
        GoTo(*form_, 1, 1);
        PressKeys(*form_, u"14⏎12x⏎"_qs);
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
                 u"12 | ft | Stage | Gauge | 2 | 10 | 11000\n"
                 "7 | C | Temperature | Well | 2 | 10 | 11000\n"
                 "9 | mV | NULL | Battery | 2 | 10 | 11000"_qs);
        QCOMPARE(station_->Dump("Records"), u"2002-01-01 00:00:00 | 1.5 | 2.5 | NULL"_qs);
    }

    void editsCells() {
        Show();
        CellTextBox& box = Child<CellTextBox>(*form_, u"tbSel"_qs);
        GoTo(*form_, 2, 3);
        PressKeys(*form_, u"Le⎋"_qs);  // dropped
        QCOMPARE(GridOf(*form_).TextMatrix(2, 3), u"Stage"_qs);
        QVERIFY(GridOf(*form_).hasFocus() && !box.isVisible());
        QTest::keyClick(&GridOf(*form_), Qt::Key_F2);
        PressKeys(*form_, u" 2"_qs);
        QVERIFY(box.isVisible());
        GoTo(*form_, 3, 3);  // leaving the box in any way keeps its text, where it was typed
        QCOMPARE(GridText(*form_).section(u'\n', 1),
                 u"1|9|ft|Stage 2|Gauge\n2|7|C|Temperature|Well"_qs);
        PressKeys(*form_, u"⌫"_qs);
        QCOMPARE(GridText(*form_).section(u'\n', 2), u"2|7|C||Well"_qs);
    }

    // A channel that is taken away and brought back shows what is stored; widths stay behind
    // layouts that have none.
    void countsChannelsStepByStep() {
        Show();
        GoTo(*form_, 3, 3);
        PressKeys(*form_, u"Level⏎"_qs);
        StepChannels(*form_, -1);
        QCOMPARE(GridText(*form_), u"|16||date|\n1|9|ft|Stage|Gauge"_qs);
        StepChannels(*form_, 2);
        QCOMPARE(GridText(*form_).section(u'\n', 2), u"2|7|C|Temperature|Well\n3|9|||"_qs);
        QCOMPARE(GridOf(*form_).ColWidth(1), 0);
        Child<QComboBox>(*form_, u"cmbFileType"_qs).setCurrentIndex(3);
        QCOMPARE(GridOf(*form_).ColWidth(1), 795);
        StepChannels(*form_, -10);
        QCOMPARE(Child<QLineEdit>(*form_, u"tbChan"_qs).text(), u"1"_qs);
        StepChannels(*form_, 120);
        QCOMPARE(Child<QLineEdit>(*form_, u"tbChan"_qs).text(), u"99"_qs);
        QCOMPARE(GridOf(*form_).Rows(), 101);
    }

    void asksBeforeItErases() {
        StationInfo.OutputChannel = 2;
        Show();
        StepChannels(*form_, -1);
        const QString before = FolderText(station_->Folder());
        doors_->ExpectMessage(kDecrease, MsgBoxAnswer::No);
        Click(*form_, u"cmdOK"_qs);
        QVERIFY(form_->isVisible());
        QCOMPARE(FolderText(station_->Folder()), before);
        QCOMPARE(StationInfo.Channels, std::int16_t{2});
        doors_->ExpectMessage(kDecrease, MsgBoxAnswer::Yes);
        Click(*form_, u"cmdOK"_qs);
        QVERIFY(!form_->isVisible());
        QCOMPARE(StationInfo.OutputChannel, std::int16_t{1});
        QCOMPARE(station_->Dump("Records"), u"2002-01-01 00:00:00 | 1.5"_qs);
        QCOMPARE(station_->Dump("SELECT recsta FROM Information"), u"Gauge"_qs);
    }

    void refusesADateWidthThatIsNone() {
        Show();
        GridOf(*form_).SetTextMatrix(1, 1, u"16.5"_qs);
        StepChannels(*form_, 1);
        doors_->ExpectMessage(u"The width of the date must be a whole number."_qs);
        Click(*form_, u"cmdOK"_qs);
        QCOMPARE(doors_->shownMessages.back().title, u"Warning"_qs);
        QVERIFY(form_->isVisible());
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
        for (int i = 0; i < 4000; ++i) {
            station_->WithRecord(
                qPrintable(u"2003-01-%1 00:%2:%3"_qs.arg(1 + i / 3600, 2, 10, QChar(u'0'))
                               .arg(i / 60 % 60, 2, 10, QChar(u'0'))
                               .arg(i % 60, 2, 10, QChar(u'0'))),
                {1, 2});
        }
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

    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
    std::unique_ptr<frmImport> form_;
};

QTEST_MAIN(TestImportSetup)
#include "tst_importsetup.moc"
