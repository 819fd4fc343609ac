#include <QClipboard>
#include <QFile>
#include <QMenu>
#include <QTemporaryDir>
#include <QTimer>

#include "forms/main/DesktopApplication.h"
#include "forms/main/NotesEdit.h"
#include "forms/main/StationTree.h"
#include "forms/main/frmMain.h"
#include "platform/ado/AdoError.h"
#include "tests/support/FormTest.h"

using namespace rillbook;

namespace {

// The program in a folder of its own.
class Program {
public:
    // With stations, in a new project; without, as it stands after its start.
    explicit Program(const QStringList& stations = {}, int channels = 1) {
        ResetSharedState();
        LoadAppSettings();
        window = std::make_unique<frmMain>();
        window->show();
        if (!stations.isEmpty()) {
            NewProject();
        }
        for (const QString& station : stations) {
            AddStation(station, channels);
        }
    }
    ~Program() {
        window.reset();
        ResetSharedState();
        Application::SetPath({});
    }

    QString File(const QString& name) const { return folder_.filePath(name); }
    // A text in which the folder's name is "~".
    QString Short(QString text) const { return text.replace(folder_.path(), u"~"_qs); }
    QString ProjectText(const QString& name = u"p.prj"_qs) const {
        return Short(QString::fromUtf8(ReadBytes(File(name)))).remove(u'\r');
    }
    // Puts a project there in which "~" is the folder, and opens it.
    void OpenProject(QByteArray text) {
        text.replace("~", folder_.path().toUtf8()).replace("\n", "\r\n");
        WriteBytes(File(u"p.prj"_qs), text);
        Choose("Open", u"p.prj"_qs);
    }

    void Choose(const char* item, const QString& name) {
        doors.AnswerFileDialog(File(name));
        Trigger(*window, QString::fromLatin1(item));
    }
    void NewProject() { Choose("mnuFileProjectNew", u"p.prj"_qs); }
    void AddStation(const QString& name, int channels = 1) {
        CreateStationFile(File(name), channels);
        Choose("mnuFileStationOpen", name);
    }
    // Chooses a station that is missing.
    void FailToAdd(const QString& name) {
        doors.ExpectMessage(File(name) + u" not found!"_qs);
        Choose("mnuFileStationOpen", name);
    }
    void AddAccessFile(const QString& name) {
        WriteBytes(File(name),
                   ReadBytes(QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/station_2000.mdb")));
    }
    // What is told of NAME.mdb.
    QString Converted(const QString& name) const {
        return u"%1.mdb was converted; the Access file is now %2.access.mdb."_qs.arg(File(name),
                                                                                     name);
    }

    StationTree& Tree() { return Child<StationTree>(*window, u"TreeView1"_qs); }
    // Channel 0 is the station's node.
    QString ClickNode(int station, int channel) {
        QTest::mouseClick(Tree().viewport(), Qt::LeftButton, {}, NodePoint(station, channel));
        return Story();
    }
    void DoubleClickNode(int station, int channel) {
        ClickNode(station, channel);
        QTest::mouseDClick(Tree().viewport(), Qt::LeftButton, {}, NodePoint(station, channel));
    }
    // "2 [b.mdb] open: b.mdb, channel 1": how many stations, and the selected node.
    QString Story() {
        const QTreeWidgetItem* node = Tree().currentItem();
        const QString open = u"open: %1, channel %2"_qs.arg(StationTitle);
        return u"%1 [%2] %3"_qs.arg(Tree().topLevelItemCount())
            .arg(node != nullptr ? node->text(0) : QString(),
                 StationConnection->State() == 0 ? u"none open"_qs
                                                 : open.arg(StationInfo.OutputChannel));
    }
    QString Stored(const QString& name, const QString& query) const {
        return Short(DumpTable(File(name), query));
    }
    // Those of these menu items, buttons and parts that a user can use.
    QStringList Usable(QStringList names) const {
        names.removeIf([this](const QString& name) {
            const auto* item = window->findChild<QAction*>(name);
            if (item == nullptr) {
                return !window->findChild<QWidget*>(name)->isVisible();
            }
            const auto* menu = qobject_cast<const QMenu*>(item->associatedObjects().value(0));
            return !item->isEnabled() || (menu != nullptr && !menu->isEnabled());
        });
        return names;
    }

    ScriptedDoors doors;
    std::unique_ptr<frmMain> window;

private:
    QPoint NodePoint(int station, int channel) {
        QTreeWidgetItem* node = Tree().topLevelItem(station);
        node = channel == 0 ? node : node->child(channel - 1);
        Tree().scrollToItem(node);
        return Tree().visualItemRect(node).center();
    }

    QTemporaryDir folder_;
};

}  // namespace

class TestMain : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnAnyWarning(); }

    void enablesWhatEachStateAllows() {
        const auto names = [](const char* text) { return QString::fromLatin1(text).split(u' '); };
        const auto always = names(
            "mnuFileExit mnuFileProjectNew mnuFileProjectOpen mnuHelpAbout mnuHelpContent "
            "mnuHelpIndex New Open");
        const auto ofProject = names(
            "lblProjName mnuFileProjectClose mnuFileProjectSave mnuFileStationNew "
            "mnuFileStationOpen Save tbProjectName TreeView1");
        const auto ofStation = names(
            "Frame1 mnuEditCalibration mnuRat mnuFileImport mnuFileImportSetup "
            "mnuFileStationClose mnuFileStationSave mnuOutAnnual mnuOutDailyG mnuOutDailyT "
            "mnuOutInstG mnuOutInstT");
        const auto all = always + ofProject + ofStation;
        Program program;
        QCOMPARE(program.Usable(all), always);
        program.NewProject();
        QCOMPARE(program.Usable(all), always + ofProject);
        program.AddStation(u"a.mdb"_qs);
        QCOMPARE(program.Usable(all), all);
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        Trigger(*program.window, u"mnuFileProjectClose"_qs);
        QCOMPARE(program.Usable(all), always);
    }

    void savesProjectAndSettingsAtExit() {
        Program program;
        program.window->close();
        QVERIFY(program.doors.settings.isEmpty());
        program.window->show();
        program.NewProject();
        TypeText(*program.window, u"tbProjectName"_qs, u"Upper \"wild\" basin"_qs);
        program.window->move(4000, -10);
        Trigger(*program.window, u"mnuFileExit"_qs);
        QCOMPARE(program.ProjectText(),
                 u"\"Rillbook\",\"100\"\n0\n#2002-01-01#,\"921\"\n\"Upper wild basin\"\n"_qs);
        const auto& settings = program.doors.settings;
        QCOMPARE(program.Short(settings[u"InitDir"_qs]), u"~/"_qs);
        QCOMPARE(settings[u"MainTop"_qs] + u' ' + settings[u"MainLeft"_qs], u"-150 32767"_qs);
    }

    void leavesOutTheStationThatIsGone() {
        Program program;
        CreateStationFile(program.File(u"a.mdb"_qs));
        CreateStationFile(program.File(u"c.MDB"_qs), 2);
        program.doors.ExpectMessage(program.File(u"gone.mdb"_qs) + u" not found!"_qs);
        const char* whole =
            "\"Rillbook\",\"202\"\n3\n\"~/a.mdb\",\"a.mdb\"\n\"~/gone.mdb\",\"gone.mdb\"\n"
            "\"~/c.MDB\",\"c.MDB\"\n#2002-03-15#,\"7312\"\n\"Upper, lower\"\n";
        program.OpenProject(whole);
        QCOMPARE(program.Story(), u"2 [c.MDB] open: c.MDB, channel 1"_qs);
        QCOMPARE(MomentText(ReportEndDate), u"2003-03-14 00:00:00"_qs);
        Trigger(*program.window, u"Save"_qs);
        QCOMPARE(program.ProjectText(),
                 u"\"Rillbook\",\"100\"\n2\n\"~/a.mdb\",\"a.mdb\"\n\"~/c.MDB\",\"c.MDB\"\n"
                 "#2002-03-15#,\"9312\"\n\"Upper, lower\"\n"_qs);
        // It may come back, and the project with it.
        QCOMPARE(program.ProjectText(u"p.prj.bak"_qs), QString::fromLatin1(whole));
    }

    void convertsTheProjectsAccessFiles() {
        Program program({u"own.mdb"_qs});
        QStringList lines{u"\"~/own.mdb\",\"own.mdb\""_qs};
        QStringList told;
        for (int i = 0; i < 10; ++i) {
            lines += u"\"~/s%1.mdb\",\"s%1\""_qs.arg(i);
            program.AddAccessFile(u"s%1.mdb"_qs.arg(i));
            told += program.Converted(u"s%1"_qs.arg(i));
        }
        const QByteArray project =
            u"\"Rillbook\",\"100\"\n11\n%1\n#2019-08-21#,\"921\"\n\"\"\n"_qs.arg(lines.join(u'\n'))
                .toUtf8();
        const QString question =
            u"10 of the stations are Access files. To open them, Rillbook makes station files of "
            "them and keeps the Access files beside them under other names. Convert them?"_qs;
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        program.doors.ExpectMessage(question, MsgBoxAnswer::No);
        program.OpenProject(project);
        QCOMPARE(program.Story(), u"1 [own.mdb] none open"_qs);
        Trigger(*program.window, u"Save"_qs);
        QCOMPARE(program.ProjectText(u"p.prj.bak"_qs), QString::fromUtf8(project));
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        program.doors.ExpectMessage(question, MsgBoxAnswer::Yes);
        program.doors.ExpectMessage(told.join(u'\n'));
        program.OpenProject(project);
        QCOMPARE(program.Story(), u"11 [s9] open: s9, channel 1"_qs);
    }

    void convertsTheAccessFileThatIsChosen() {
        Program program({u"a.mdb"_qs, u"b.mdb"_qs});
        program.AddAccessFile(u"c.mdb"_qs);
        const QString question =
            u"%1 is an Access file. To open it, Rillbook makes a station file "
            "of it and keeps the Access file beside it under another name. "
            "Convert it?"_qs;
        program.doors.ExpectMessage(question.arg(program.File(u"c.mdb"_qs)), MsgBoxAnswer::Yes);
        program.doors.ExpectMessage(program.Converted(u"c"_qs));
        program.Choose("mnuFileStationOpen", u"c.mdb"_qs);
        QCOMPARE(program.Story(), u"3 [c.mdb] open: c.mdb, channel 1"_qs);
        // An old copy was put in the place of a station that is in the tree.
        program.AddAccessFile(u"a.mdb"_qs);
        program.doors.ExpectMessage(question.arg(program.File(u"a.mdb"_qs)), MsgBoxAnswer::No);
        QCOMPARE(program.ClickNode(0, 0), u"3 [a.mdb] none open"_qs);
        program.doors.ExpectMessage(question.arg(program.File(u"a.mdb"_qs)), MsgBoxAnswer::Yes);
        program.doors.ExpectMessage(program.Converted(u"a"_qs));
        QCOMPARE(program.ClickNode(0, 0), u"3 [a.mdb] open: a.mdb, channel 1"_qs);
    }

    void takesAndRemovesStations() {
        Program program({u"a.mdb"_qs});
        program.AddStation(u"b.mdb"_qs, 2);
        program.doors.ExpectMessage(u"Station already in project."_qs);
        program.Choose("mnuFileStationOpen", u"a.mdb"_qs);
        QCOMPARE(program.Story(), u"2 [b.mdb] open: a.mdb, channel 1"_qs);
        Trigger(*program.window, u"mnuFileStationClose"_qs);
        QCOMPARE(program.Story(), u"1 [a.mdb] open: a.mdb, channel 1"_qs);
        program.Choose("mnuFileStationOpen", u"b.mdb"_qs);
        // The station left behind, which has one channel, stores the channel that was clicked.
        program.ClickNode(0, 0);
        program.ClickNode(1, 2);
        Trigger(*program.window, u"mnuFileStationClose"_qs);
        QCOMPARE(program.Story(), u"1 [a.mdb] open: a.mdb, channel 1"_qs);
        Trigger(*program.window, u"mnuFileStationClose"_qs);
        QCOMPARE(program.Story(), u"0 [] none open"_qs);
    }

    // The second station's file and the channel clicked in it (0 for its own node); the channel
    // that it stored before, the selected node, what is open, and the channel that the first one
    // stored.
    void followsTheSelectedNode() {
        const auto followed = [](const QString& clicked) {
            const QString second = clicked.section(u' ', 0, 0);
            const int channel = clicked.section(u' ', 1).toInt();
            Program program({u"a.mdb"_qs, second}, 12);
            QTest::keyClick(&program.Tree(), Qt::Key_Up);
            const QString stored = u"SELECT outputchannel FROM Information LIMIT 1"_qs;
            program.ClickNode(0, 2);
            const QString left = program.Stored(second, stored);
            const QString story = program.ClickNode(1, channel).section(u' ', 1);
            return QStringList{left, story, program.Stored(u"a.mdb"_qs, stored)}.join(u", ");
        };
        CompareEach(followed,
                    "b.mdb 12 => 12, [12: Channel 12 - Stage (ft)] open: b.mdb, channel 12, 12; "
                    "b.mdb 0 => 12, [b.mdb] open: b.mdb, channel 1, 1; "
                    "gauge7 2 => 12, [2: Channel 2 - Stage (ft)] open: gauge7, channel 2, 2");
    }

    // Days of the report, and the lower end of an axis up to 10.
    void showsTheGraphOnADoubleClick() {
        const auto shown = [](const QString& daysAndMin) {
            Program program({u"a.mdb"_qs}, 2);
            ReportEndDate = ReportBeginDate + daysAndMin.section(u' ', 0, 0).toInt();
            ChannelInfo[2].GraphMin = daysAndMin.section(u' ', 1).toDouble();
            ChannelInfo[2].GraphMax = 10;
            DialogCancelled = true;
            const MessageLog noData;
            QString form;
            const NextWindow window([&](QWidget& opened) {
                form = u"%1 of %2"_qs.arg(opened.objectName()).arg(StationInfo.OutputChannel);
                opened.close();
            });
            program.DoubleClickNode(0, 2);
            // The window that came up took the release.
            program.ClickNode(0, 1);
            return u"%1, then %2"_qs.arg(form).arg(StationInfo.OutputChannel);
        };
        CompareEach(shown,
                    "366 10 => frmInstG of 2, then 1; 367 10 => frmOutputSettings of 2, then 1; "
                    "400 9 => frmInstG of 2, then 1");
    }

    // The station that was left is closed by then. Either opens as soon as it can.
    void opensTheSelectedStationThatIsClosed() {
        Program program({u"a.mdb"_qs, u"b.mdb"_qs}, 2);
        const auto openLater = [&](const std::function<void()>& choose) {
            program.ClickNode(1, 0);
            QFile::rename(program.File(u"a.mdb"_qs), program.File(u"gone.mdb"_qs));
            program.doors.ExpectMessage(program.File(u"a.mdb"_qs) + u" not found!"_qs);
            QStringList story{program.ClickNode(0, 2)};
            QTest::mouseClick(program.Tree().viewport(), Qt::RightButton);
            QApplication::activePopupWidget()->close();
            story += program.Usable({u"Frame1"_qs, u"mnuRat2"_qs});
            QFile::rename(program.File(u"gone.mdb"_qs), program.File(u"a.mdb"_qs));
            choose();
            return story.join(QString()) + u", then "_qs + program.Story();
        };
        const QString opened =
            u"2 [2: Channel 2 - Stage (ft)] none open, "
            "then 2 [2: Channel 2 - Stage (ft)] open: a.mdb, channel 2"_qs;
        QCOMPARE(openLater([&] { program.ClickNode(0, 2); }), opened);
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
            QCOMPARE(openLater([&] { QTest::keyClick(&program.Tree(), key); }), opened);
        }
        QVERIFY(openLater([&] { program.ClickNode(1, 0); }).endsWith(u"open: b.mdb, channel 1"));
    }

    // Nothing of the station that was open, its channel or its name, changes by a failed command.
    void returnsToTheOpenStation() {
        Program program({u"a.mdb"_qs, u"b.mdb"_qs}, 2);
        const QString story = program.ClickNode(0, 2);
        // The station can't store its channel.
        StationConnection->Execute(
            u"CREATE TRIGGER kept BEFORE UPDATE ON Information "
            "BEGIN SELECT RAISE(ABORT, 'kept'); END"_qs);
        program.FailToAdd(u"none.mdb"_qs);
        QCOMPARE(program.Story(), story);
        StationConnection->Execute(u"DROP TRIGGER kept"_qs);
        TypeText(*program.window, u"tbName"_qs, u"Upper weir"_qs);
        program.FailToAdd(u"none.mdb"_qs);
        QCOMPARE(program.Story(), story);
        const auto failToCreate = [&](const QString& name, const QString& reason) {
            program.doors.ExpectMessage(program.File(name) + u" could not be created: "_qs +
                                        reason);
            program.Choose("mnuFileStationNew", name);
            return program.Story();
        };
        QCOMPARE(failToCreate(u"none/c.mdb"_qs, u"No such file or directory"_qs), story);
        {
            const FullDisk full(4096);
            QCOMPARE(failToCreate(u"c.mdb"_qs, u"The disk is full"_qs), story);
        }
        // Without the template, over the open station, whose file stays.
        Application::SetPath(program.File(u"bin"_qs));
        QCOMPARE(failToCreate(u"a.mdb"_qs,
                              program.File(u"bin/template.mdb: No such file or directory"_qs)),
                 story);
        QCOMPARE(program.window->Text(StationPanel::Item::Name), u"Upper weir"_qs);
        QCOMPARE(program.Usable({u"Frame1"_qs, u"mnuFileImport"_qs}).size(), 2);
        // A station that is lost while it is added again is reported once.
        QFile::remove(program.File(u"a.mdb"_qs));
        program.doors.ExpectMessage(
            program.File(u"a.mdb"_qs) +
                u" was removed or replaced by another program while it was open. Nothing can be "
                "saved in it. Save the station under another name?"_qs,
            MsgBoxAnswer::No);
        program.FailToAdd(u"a.mdb"_qs);
        QVERIFY(program.Story().endsWith(u"none open"_qs));
    }

    void showsTheChannelsOfTheOpenStation() {
        Program program({u"a.mdb"_qs, u"b.mdb"_qs, u"c.mdb"_qs}, 3);
        const auto channels = [&] {
            QStringList counts;
            for (int i = 0; i < program.Tree().topLevelItemCount(); ++i) {
                counts += QString::number(program.Tree().topLevelItem(i)->childCount());
            }
            return counts.join(u' ');
        };
        // New stations over one that is closed and over the open one.
        program.Choose("mnuFileStationNew", u"b.mdb"_qs);
        QCOMPARE(program.Story(), u"3 [b.mdb] open: b.mdb, channel 1"_qs);
        QCOMPARE(channels(), u"3 1 3"_qs);
        program.ClickNode(0, 3);
        program.Choose("mnuFileStationNew", u"a.mdb"_qs);
        QCOMPARE(program.Story(), u"3 [a.mdb] open: a.mdb, channel 1"_qs);
        QCOMPARE(channels(), u"1 1 3"_qs);
        // Backups with fewer and more channels.
        CreateStationFile(program.File(u"c.mdb"_qs), 2);
        QCOMPARE(program.ClickNode(2, 3),
                 u"3 [2: Channel 2 - Stage (ft)] open: c.mdb, channel 2"_qs);
        CreateStationFile(program.File(u"b.mdb"_qs), 4);
        program.ClickNode(1, 0);
        QCOMPARE(channels(), u"1 4 2"_qs);
    }

    // By another name, a link or another case, a station is the same one.
    void knowsAStationByItsFile() {
        Program program({u"a.mdb"_qs, u"b.mdb"_qs});
        QVERIFY(QFile::link(u"a.mdb"_qs, program.File(u"link.mdb"_qs)));
        program.doors.ExpectMessage(u"Station already in project."_qs);
        program.Choose("mnuFileStationOpen", u"link.mdb"_qs);
        QCOMPARE(program.ClickNode(0, 0), u"2 [a.mdb] open: link.mdb, channel 1"_qs);
    }

    void closesTheStationOfTheProjectThatIsLeft() {
        Program program({u"a.mdb"_qs});
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        program.OpenProject("\"Rillbook\",\"100\"\n0\n#2002-01-01#,\"921\"\n\"\"\n");
        QCOMPARE(program.Story(), u"0 [] none open"_qs);
        QVERIFY(program.Usable({u"Frame1"_qs, u"mnuFileImport"_qs, u"mnuOutAnnual"_qs}).isEmpty());
    }

    void refusesAStationAsAProject() {
        Program program({u"a.mdb"_qs});
        const QByteArray station = ReadBytes(program.File(u"a.mdb"_qs));
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        program.doors.ExpectMessage(program.File(u"a.mdb"_qs) +
                                    u"\nThis is not a project file."_qs);
        program.Choose("Open", u"a.mdb"_qs);
        QCOMPARE(program.Story(), u"1 [a.mdb] open: a.mdb, channel 1"_qs);
        program.window->close();
        QVERIFY(program.ProjectText().contains(u"~/a.mdb"_qs));
        QCOMPARE(ReadBytes(program.File(u"a.mdb"_qs)).left(16), station.left(16));
    }

    void asksBeforeItLeavesAProject() {
        Program program({u"a.mdb"_qs});
        const auto leave = [&](const QString& command, MsgBoxAnswer answer) {
            program.doors.ExpectMessage(u"Save Current Project?"_qs, answer);
            Trigger(*program.window, command);
            const bool saved = QFile::exists(program.File(u"p.prj"_qs));
            return program.Short(ProjectPath) + (saved ? u" saved"_qs : QString());
        };
        QCOMPARE(leave(u"Open"_qs, MsgBoxAnswer::Cancel), u"~/p.prj"_qs);
        QCOMPARE(leave(u"mnuFileProjectClose"_qs, MsgBoxAnswer::Cancel), u"~/p.prj"_qs);
        program.doors.CancelFileDialog();
        QCOMPARE(leave(u"New"_qs, MsgBoxAnswer::No), u"~/p.prj"_qs);
        program.doors.AnswerFileDialog(program.File(u"q.prj"_qs));
        QCOMPARE(leave(u"New"_qs, MsgBoxAnswer::Yes), u"~/q.prj saved"_qs);
        // A new project leaves the station open, and the tree empty.
        Trigger(*program.window, u"mnuFileStationClose"_qs);
        QTest::mouseClick(program.Tree().viewport(), Qt::RightButton);
        QCOMPARE(program.Story(), u"0 [] open: a.mdb, channel 1"_qs);
        QCOMPARE(leave(u"mnuFileProjectClose"_qs, MsgBoxAnswer::Yes), u" saved"_qs);
        QVERIFY(QFile::exists(program.File(u"q.prj"_qs)));
    }

    void importsALoggerFile() {
        Program program({u"a.mdb"_qs});
        WriteBytes(program.File(u"log.csv"_qs),
                   "Time,Stage\n01/02/02 00:00,1.5\n01/03/02 00:15,1.6\n");
        program.doors.ExpectMessage(ImportMessage(2, 1, 0));
        program.Choose("mnuFileImport", u"log.csv"_qs);
        QCOMPARE(program.Stored(u"a.mdb"_qs,
                                u"SELECT noofrec, begdate, EndDate, importdir FROM Information"_qs),
                 u"2 | 1/2/2002 | 1/3/2002 | ~/"_qs);
        QCOMPARE(program.doors.pointers, (std::vector<int>{vbHourglass, vbDefault}));
    }

    void makesANewStation() {
        Program program({u"a.mdb"_qs});
        program.Choose("mnuFileStationNew", u"b.mdb"_qs);
        const QString story = u"2 [b.mdb] open: b.mdb, channel 1"_qs;
        QCOMPARE(program.Story(), story);
        program.doors.ExpectMessage(
            u"A project can't hold a station with a double quote in its path: "_qs +
            program.File(u"c\".mdb"_qs));
        program.Choose("mnuFileStationNew", u"c\".mdb"_qs);
        QCOMPARE(program.Story(), story);
    }

    void keepsAnUnreadableProjectBesideTheNewOne() {
        Program program;
        CreateStationFile(program.File(u"a.mdb"_qs));
        const char* cut = "\"Rillbook\",\"100\"\n2\n\"~/a.mdb\",\"a.mdb\"\n";
        program.doors.ExpectMessage(program.File(u"p.prj"_qs) +
                                    u"\nCould not read past station 2 of 2."_qs);
        program.OpenProject(cut);
        QCOMPARE(program.Story(), u"1 [a.mdb] open: a.mdb, channel 1"_qs);
        Trigger(*program.window, u"Save"_qs);
        QCOMPARE(program.ProjectText(u"p.prj.bak"_qs), QString::fromLatin1(cut));
        Trigger(*program.window, u"Save"_qs);
        QCOMPARE(program.ProjectText(u"p.prj.bak"_qs), QString::fromLatin1(cut));
    }

    void saysThatTheProjectCantBeSaved() {
        Program program;
        program.Choose("mnuFileProjectNew", u"missing/p.prj"_qs);
        const QString failure = program.File(u"missing/p.prj"_qs) +
                                u" could not be saved: No such file or directory"_qs;
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::Yes);
        program.doors.ExpectMessage(failure);
        Trigger(*program.window, u"mnuFileProjectClose"_qs);
        QCOMPARE(program.Short(ProjectPath), u"~/missing/p.prj"_qs);
        const QString atExit = failure + u"\nCancel leaves without saving the project."_qs;
        program.doors.ExpectMessage(atExit, MsgBoxAnswer::Retry);
        program.doors.ExpectMessage(atExit, MsgBoxAnswer::Cancel);
        program.window->close();
        QVERIFY(!program.window->isVisible());
    }

    void takesTextsThatTheFileCanHold() {
        Program program({u"a.mdb"_qs});
        // Older releases wrote line ends of two characters; untouched, they stay.
        program.window->SetText(StationPanel::Item::Notes, u"Two\r\nlines"_qs);
        QCOMPARE(program.window->Text(StationPanel::Item::Notes), u"Two\r\nlines"_qs);
        TypeText(*program.window, u"tbName"_qs, QString(60, u'n'));
        TypeText(*program.window, u"tbNotes"_qs, u"Gate code 12"_qs);
        QGuiApplication::clipboard()->setText(QString(300, u'x'));
        auto& notes = Child<NotesEdit>(*program.window, u"tbNotes"_qs);
        QTest::keyClick(&notes, Qt::Key_V, Qt::ControlModifier);
        QTest::keyClicks(&notes, u"y"_qs);
        Trigger(*program.window, u"mnuFileStationSave"_qs);
        QCOMPARE(program.Stored(u"a.mdb"_qs, u"SELECT Name, notes FROM Information"_qs),
                 QString(50, u'n') + u" | Gate code 12"_qs + QString(243, u'x'));
    }

    void showsTheReportUnlessCancelled() {
        const auto shown = [](const QString& item) {
            Program program({u"a.mdb"_qs});
            const NextWindow cancelled([](QWidget& form) { Click(form, u"cmdCancel"_qs); });
            Trigger(*program.window, item);
            program.doors.ExpectMessage(u"No data within dates!"_qs);
            const NextWindow settings([](QWidget& form) { Click(form, u"cmdOK"_qs); });
            QString report;
            const NextWindow window([&](QWidget& form) {
                report = form.objectName();
                form.close();
            });
            Trigger(*program.window, item + u'2');
            return report;
        };
        CompareEach(shown,
                    "mnuOutInstG => frmInstG; mnuOutDailyG => frmDailyG; mnuOutInstT => frmInstT; "
                    "mnuOutDailyT => frmDailyT; mnuOutAnnual => frmAnnualT");
    }

    // The event loop goes on after a failure that nothing caught.
    void tellsAnUnforeseenFailure() {
        Program program;
        program.doors.ExpectMessage(u"disk I/O error"_qs);
        QTimer::singleShot(0, qApp, [] { throw AdoError(adErrGeneral, u"disk I/O error"_qs); });
        QTRY_COMPARE(program.doors.shownMessages.size(), std::size_t{1});
    }
};

int main(int argc, char* argv[]) {
    DesktopApplication application(argc, argv);
    TestMain test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_main.moc"
