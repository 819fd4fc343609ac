#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "forms/main/DesktopApplication.h"
#include "forms/main/NotesEdit.h"
#include "forms/main/StationTree.h"
#include "forms/main/frmMain.h"
#include "platform/ado/AdoError.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "store/StationDatabase.h"
#include "tests/support/MessageLog.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

using namespace rillbook;

namespace {

// The program as it stands after its start, in a folder of its own.
class Program {
public:
    Program() {
        ResetSharedState();
        LoadAppSettings();
        window = std::make_unique<frmMain>();
        window->show();
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

    void Choose(const char* item, const QString& name) {
        doors.AnswerFileDialog(File(name));
        Trigger(*window, QString::fromLatin1(item));
    }
    void NewProject() { Choose("mnuFileProjectNew", u"p.prj"_qs); }
    void AddStation(const QString& name, int channels = 1) {
        CreateStationFile(File(name), channels);
        Choose("mnuFileStationOpen", name);
    }

    StationTree& Tree() { return Child<StationTree>(*window, u"TreeView1"_qs); }
    // Channel 0 is the station's node.
    void ClickNode(int station, int channel, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(Tree().viewport(), button, {}, NodePoint(station, channel));
    }
    void DoubleClickNode(int station, int channel) {
        ClickNode(station, channel);
        QTest::mouseDClick(Tree().viewport(), Qt::LeftButton, {}, NodePoint(station, channel));
    }
    // "a.mdb [b.mdb] | open: b.mdb, channel 1": the stations, the selected node in brackets.
    QString Story() {
        QStringList nodes;
        for (QTreeWidgetItemIterator node(&Tree()); *node != nullptr; ++node) {
            const QString text = (*node)->text(0);
            if (*node == Tree().currentItem()) {
                nodes += u'[' + text + u']';
            } else if ((*node)->parent() == nullptr) {
                nodes += text;
            }
        }
        return nodes.join(u' ') + u" | "_qs +
               (StationConnection->State() == 0
                    ? u"none open"_qs
                    : u"open: %1, channel %2"_qs.arg(StationTitle).arg(StationInfo.OutputChannel));
    }
    QString StoredChannel(const QString& name) const {
        return DumpTable(File(name), u"SELECT outputchannel FROM Information LIMIT 1"_qs);
    }
    // What a user can use, the constant items of the pop-ups left out.
    QString Enabled() const {
        QStringList names;
        for (const QAction* item : window->findChildren<QAction*>()) {
            const auto* menu =
                item->associatedObjects().isEmpty()
                    ? nullptr
                    : qobject_cast<const QMenu*>(item->associatedObjects().constFirst());
            if (item->isEnabled() && !item->isSeparator() && !item->objectName().endsWith(u'2') &&
                (menu == nullptr || menu->isEnabled())) {
                names += item->objectName();
            }
        }
        for (const QWidget* part : window->centralWidget()->findChildren<QWidget*>(
                 QString(), Qt::FindDirectChildrenOnly)) {
            if (part->isVisible()) {
                names += part->objectName();
            }
        }
        names.removeAll(QString());
        names.sort(Qt::CaseInsensitive);
        return names.join(u' ');
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

const QString kEmptyProject = u"\"Rillbook\",\"100\"\n0\n#2002-01-01#,\"921\"\n\"\"\n"_qs;

}  // namespace

class TestMain : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnAnyWarning(); }

    void enablesWhatEachStateAllows() {
        Program program;
        const QString nothing =
            u"mnuFileExit mnuFileProjectNew mnuFileProjectOpen mnuHelpAbout New Open Toolbar1"_qs;
        QCOMPARE(program.Enabled(), nothing);
        program.NewProject();
        QCOMPARE(program.Enabled(),
                 u"lblProjName mnuFileExit mnuFileProjectClose mnuFileProjectNew "
                 "mnuFileProjectOpen mnuFileProjectSave mnuFileStationNew mnuFileStationOpen "
                 "mnuHelpAbout New Open Save tbProjectName Toolbar1 TreeView1"_qs);
        program.AddStation(u"a.mdb"_qs);
        QCOMPARE(
            program.Enabled(),
            u"Frame1 lblProjName mnuFileExit mnuFileImport mnuFileProjectClose "
            "mnuFileProjectNew mnuFileProjectOpen mnuFileProjectSave mnuFileStationClose "
            "mnuFileStationNew mnuFileStationOpen mnuFileStationSave mnuHelpAbout "
            "mnuOutAnnual mnuOutDailyG mnuOutDailyT mnuOutInstG mnuOutInstT New Open Save tbProjectName Toolbar1 TreeView1"_qs);
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        Trigger(*program.window, u"mnuFileProjectClose"_qs);
        QCOMPARE(program.Enabled(), nothing);
    }

    void savesProjectAndSettingsAtExit() {
        Program program;
        program.window->close();
        QVERIFY(program.doors.settings.isEmpty());
        program.window->show();
        program.NewProject();
        program.window->move(4000, -10);
        Trigger(*program.window, u"mnuFileExit"_qs);
        QVERIFY(!program.window->isVisible());
        QCOMPARE(program.ProjectText(), kEmptyProject);
        QCOMPARE(u"%1 %2 %3"_qs.arg(program.Short(program.doors.settings[u"InitDir"_qs]),
                                    program.doors.settings[u"MainTop"_qs],
                                    program.doors.settings[u"MainLeft"_qs]),
                 u"~/ -150 32767"_qs);
    }

    void leavesOutTheStationThatIsGone() {
        Program program;
        QByteArray text = "\"Rillbook\",\"202\"\r\n3\r\n";
        for (const char* name : {"a.mdb", "gone.mdb", "c.MDB"}) {
            const QString path = program.File(QString::fromLatin1(name));
            text += "\"" + path.toUtf8() + "\",\"" + name + "\"\r\n";
        }
        WriteBytes(program.File(u"p.prj"_qs),
                   text + "#2002-03-15#,\"7312\"\r\n\"Upper, lower\"\r\n");
        CreateStationFile(program.File(u"a.mdb"_qs));
        CreateStationFile(program.File(u"c.MDB"_qs), 2);
        program.doors.ExpectMessage(program.File(u"gone.mdb"_qs) + u" not found!"_qs);
        program.Choose("Open", u"p.prj"_qs);
        QCOMPARE(program.Story(), u"a.mdb [c.MDB] | open: c.MDB, channel 1"_qs);
        QCOMPARE(MomentText(ReportEndDate), u"2003-03-14 00:00:00"_qs);
        Trigger(*program.window, u"Save"_qs);
        QCOMPARE(program.ProjectText(),
                 u"\"Rillbook\",\"100\"\n2\n\"~/a.mdb\",\"a.mdb\"\n\"~/c.MDB\",\"c.MDB\"\n"
                 "#2002-03-15#,\"9312\"\n\"Upper, lower\"\n"_qs);
    }

    void takesAStationOnce() {
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        program.AddStation(u"b.mdb"_qs);
        program.doors.ExpectMessage(u"Station already in project."_qs);
        program.Choose("mnuFileStationOpen", u"a.mdb"_qs);
        QCOMPARE(program.Story(), u"a.mdb [b.mdb] | open: a.mdb, channel 1"_qs);
    }

    void followsTheSelectedNode_data() {
        QTest::addColumn<QString>("second");  // file name of the second station
        QTest::addColumn<int>("channels");    // of both
        QTest::addColumn<int>("channel");     // clicked in the second; 0 for its own node
        QTest::addColumn<QString>("story");
        QTest::newRow("channel") << u"b.mdb"_qs << 3 << 3
                                 << u"a.mdb b.mdb [3: Channel 3 - Stage (ft)] | "
                                    "open: b.mdb, channel 3"_qs;
        QTest::newRow("two digits")
            << u"b.mdb"_qs << 12 << 12
            << u"a.mdb b.mdb [12: Channel 12 - Stage (ft)] | open: b.mdb, channel 12"_qs;
        QTest::newRow("station") << u"b.mdb"_qs << 2 << 0
                                 << u"a.mdb [b.mdb] | open: b.mdb, channel 1"_qs;
        QTest::newRow("name that ends in a digit")
            << u"gauge7"_qs << 2 << 2
            << u"a.mdb gauge7 [2: Channel 2 - Stage (ft)] | open: gauge7, channel 2"_qs;
    }
    void followsTheSelectedNode() {
        QFETCH(QString, second);
        QFETCH(int, channels);
        QFETCH(int, channel);
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs, channels);
        program.AddStation(second, channels);
        program.ClickNode(0, 2);
        QCOMPARE(StationInfo.OutputChannel, 2);
        QCOMPARE(program.StoredChannel(second), u"2"_qs);
        program.ClickNode(1, channel);
        QTEST(program.Story(), "story");
        QCOMPARE(program.StoredChannel(u"a.mdb"_qs), QString::number(std::max(1, channel)));
    }

    void clicksOnceForADoubleClick() {
        StationTree tree;
        QStringList told;
        connect(&tree, &StationTree::NodeClick, &tree, [&] { told += u"NodeClick"_qs; });
        connect(&tree, &StationTree::Click, &tree, [&] { told += u"Click"_qs; });
        connect(&tree, &StationTree::DblClick, &tree, [&] { told += u"DblClick"_qs; });
        QTest::mouseClick(tree.viewport(), Qt::LeftButton);
        QTest::mouseDClick(tree.viewport(), Qt::LeftButton);
        QTest::mouseRelease(tree.viewport(), Qt::LeftButton);
        QCOMPARE(told.join(u' '), u"NodeClick Click DblClick"_qs);
        // The window that came up took the release.
        QTest::mouseDClick(tree.viewport(), Qt::LeftButton);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton);
        QCOMPARE(told.sliced(3).join(u' '), u"DblClick NodeClick Click"_qs);
    }

    void showsTheGraphOnADoubleClick_data() {
        QTest::addColumn<int>("days");  // from the first to the last day of the report
        QTest::addColumn<double>("graphMin");
        QTest::addColumn<QString>("window");
        QTest::newRow("a year, no axis") << 366 << 10.0 << u"frmInstG of channel 2"_qs;
        QTest::newRow("longer, no axis") << 367 << 10.0 << u"frmOutputSettings of channel 2"_qs;
        QTest::newRow("longer, with an axis") << 400 << 9.0 << u"frmInstG of channel 2"_qs;
        QTest::newRow("backwards, no axis") << -1 << 10.0 << u"frmInstG of channel 2"_qs;
    }
    void showsTheGraphOnADoubleClick() {
        QFETCH(int, days);
        QFETCH(double, graphMin);
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs, 2);
        program.AddStation(u"b.mdb"_qs);
        program.ClickNode(0, 1);
        ReportEndDate = ReportBeginDate + days;
        ChannelInfo[2].GraphMin = graphMin;
        ChannelInfo[2].GraphMax = 10;
        QString window;
        const NextWindow shown([&](QWidget& form) {
            window = u"%1 of channel %2"_qs.arg(form.objectName()).arg(StationInfo.OutputChannel);
            form.close();
        });
        DialogCancelled = true;
        MessageLog noData;
        program.DoubleClickNode(0, 2);
        QTEST(window, "window");
    }

    void showsNoGraphWithoutAStation() {
        Program program;
        program.NewProject();
        program.AddStation(u"b.mdb"_qs);
        program.AddStation(u"a.mdb"_qs);
        QVERIFY(QFile::remove(program.File(u"b.mdb"_qs)));
        program.doors.ExpectMessage(program.File(u"b.mdb"_qs) + u" not found!"_qs);
        program.ClickNode(0, 0);
        program.DoubleClickNode(1, 1);
        QCOMPARE(program.Story(), u"b.mdb a.mdb [1: Channel 1 - Stage (ft)] | none open"_qs);
    }

    // The station left behind is closed by then, and a click on it doesn't open it again.
    void tellsOnceOfAStationThatIsGone() {
        Program program;
        program.NewProject();
        for (const QString& name : {u"a.mdb"_qs, u"b.mdb"_qs, u"c.mdb"_qs}) {
            program.AddStation(name);
        }
        QFile::remove(program.File(u"a.mdb"_qs));
        program.doors.ExpectMessage(program.File(u"a.mdb"_qs) + u" not found!"_qs);
        program.ClickNode(0, 1);
        QVERIFY(!program.Enabled().contains(u"Frame1"_qs));
        program.ClickNode(2, 0);
        QCOMPARE(program.Story(), u"a.mdb b.mdb [c.mdb] | none open"_qs);
        program.ClickNode(1, 0);
        QCOMPARE(program.Story(), u"a.mdb [b.mdb] c.mdb | open: b.mdb, channel 1"_qs);
    }

    void followsTheKeyboard() {
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs, 2);
        program.AddStation(u"b.mdb"_qs, 2);
        QTest::keyClick(&program.Tree(), Qt::Key_Up);
        QCOMPARE(program.Story(),
                 u"a.mdb [2: Channel 2 - Stage (ft)] b.mdb | open: a.mdb, channel 2"_qs);
    }

    void removesStations() {
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        program.AddStation(u"b.mdb"_qs, 2);
        program.ClickNode(0, 0);
        // The station left behind, which has one channel, stores the channel that was clicked.
        program.ClickNode(1, 2);
        Trigger(*program.window, u"mnuFileStationClose"_qs);
        QCOMPARE(program.Story(), u"[a.mdb] | open: a.mdb, channel 1"_qs);
        Trigger(*program.window, u"mnuFileStationClose"_qs);
        QCOMPARE(program.Story(), u" | none open"_qs);
        QVERIFY(!program.Enabled().contains(u"Frame1"_qs));
    }

    // A new project leaves the station open, and the tree empty.
    void removesNothingFromAnEmptyTree() {
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        program.doors.ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        program.Choose("New", u"q.prj"_qs);
        Trigger(*program.window, u"mnuFileStationClose"_qs);
        QTest::mouseClick(program.Tree().viewport(), Qt::RightButton);
        QCOMPARE(QApplication::activePopupWidget(), nullptr);
        QCOMPARE(program.Story(), u" | open: a.mdb, channel 1"_qs);
    }

    void popsUpTheMenuOfTheSelectedNode() {
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        for (const auto& [selected, menu] : {std::pair(1, u"mnuPopup"_qs), {0, u"mnuPopup2"_qs}}) {
            program.ClickNode(0, selected);
            const QString story = program.Story();
            program.ClickNode(0, 1 - selected, Qt::RightButton);
            QVERIFY(QApplication::activePopupWidget() != nullptr);
            QCOMPARE(QApplication::activePopupWidget()->objectName(), menu);
            QApplication::activePopupWidget()->close();
            QCOMPARE(program.Story(), story);
        }
    }

    void asksBeforeItLeavesAProject_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("choice");  // of the file dialog: a file, cancelled, or no dialog
        QTest::addColumn<QString>("result");  // is it saved, and which project is open
        const int yes = static_cast<int>(MsgBoxAnswer::Yes);
        const int no = static_cast<int>(MsgBoxAnswer::No);
        const int cancel = static_cast<int>(MsgBoxAnswer::Cancel);
        QTest::newRow("new, yes") << u"New"_qs << yes << u"q.prj"_qs << u"true ~/q.prj"_qs;
        QTest::newRow("new, no, cancelled")
            << u"mnuFileProjectNew"_qs << no << u"cancelled"_qs << u"false ~/p.prj"_qs;
        QTest::newRow("open, cancel") << u"Open"_qs << cancel << u""_qs << u"false ~/p.prj"_qs;
        QTest::newRow("close, yes") << u"mnuFileProjectClose"_qs << yes << u""_qs << u"true "_qs;
        QTest::newRow("close, cancel")
            << u"mnuFileProjectClose"_qs << cancel << u""_qs << u"false ~/p.prj"_qs;
    }
    void asksBeforeItLeavesAProject() {
        QFETCH(QString, command);
        QFETCH(int, answer);
        QFETCH(QString, choice);
        Program program;
        program.NewProject();
        program.doors.ExpectMessage(u"Save Current Project?"_qs, static_cast<MsgBoxAnswer>(answer));
        if (choice == u"cancelled") {
            program.doors.CancelFileDialog();
        } else if (!choice.isEmpty()) {
            program.doors.AnswerFileDialog(program.File(choice));
        }
        Trigger(*program.window, command);
        const bool saved = QFile::exists(program.File(u"p.prj"_qs));
        QTEST(u"%1 %2"_qs.arg(QVariant(saved).toString(), program.Short(ProjectPath)), "result");
    }

    void importsALoggerFile() {
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        WriteBytes(program.File(u"log.csv"_qs),
                   "Time,Stage\n01/02/02 00:00,1.5\n01/03/02 00:15,1.6\n");
        program.doors.ExpectMessage(
            u" 2 Readable Records,  1 Unreadable Records(s), and  0 Dupulicate(s)."_qs);
        program.Choose("mnuFileImport", u"log.csv"_qs);
        const FileRequest& request = program.doors.fileRequests.back();
        QCOMPARE(request.title, u"File Import - a.mdb"_qs);
        QCOMPARE(program.Short(DumpTable(program.File(u"a.mdb"_qs),
                                         u"SELECT noofrec, begdate, EndDate, importdir "
                                         "FROM Information"_qs)),
                 u"2 | 1/2/2002 | 1/3/2002 | ~/"_qs);
        QCOMPARE(program.doors.pointers, (std::vector<int>{vbHourglass, vbDefault}));
    }

    void makesANewStation_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("hasTemplate");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("story");
        QTest::newRow("from the template")
            << u"b.mdb"_qs << true << u""_qs << u"a.mdb [b.mdb] | open: b.mdb, channel 1"_qs;
        QTest::newRow("no template") << u"b.mdb"_qs << false << u""_qs << u"[a.mdb] | none open"_qs;
        QTest::newRow("a path that no project can hold")
            << u"b\".mdb"_qs << true
            << u"A project can't hold a station with a double quote in its path: %1"_qs
            << u"[a.mdb] | open: a.mdb, channel 1"_qs;
    }
    void makesANewStation() {
        QFETCH(QString, name);
        QFETCH(bool, hasTemplate);
        QFETCH(QString, message);
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        if (!hasTemplate) {
            Application::SetPath(program.File(u"nowhere"_qs));
        }
        if (!message.isEmpty()) {
            program.doors.ExpectMessage(message.arg(program.File(name)));
        }
        program.Choose("mnuFileStationNew", name);
        QTEST(program.Story(), "story");
        if (StationConnection->State() == 0) {
            // The pop-ups' items are there all the same, and do nothing.
            Trigger(*program.window, u"mnuFileImport2"_qs);
            Trigger(*program.window, u"mnuOutAnnual2"_qs);
        }
    }

    void keepsAnUnreadableProjectBesideTheNewOne() {
        Program program;
        CreateStationFile(program.File(u"a.mdb"_qs));
        const QByteArray cut = "\"Rillbook\",\"100\"\r\n2\r\n\"" +
                               program.File(u"a.mdb"_qs).toUtf8() + "\",\"a.mdb\"\r\n";
        WriteBytes(program.File(u"p.prj"_qs), cut);
        program.doors.ExpectMessage(program.File(u"p.prj"_qs) +
                                    u"\nIt could not be read from station 2 of 2 on."_qs);
        program.Choose("mnuFileProjectOpen", u"p.prj"_qs);
        QCOMPARE(program.Story(), u"[a.mdb] | open: a.mdb, channel 1"_qs);
        Trigger(*program.window, u"mnuFileProjectSave"_qs);
        QCOMPARE(ReadBytes(program.File(u"p.prj.bak"_qs)), cut);
        WriteBytes(program.File(u"p.prj.bak"_qs), "kept");
        Trigger(*program.window, u"mnuFileProjectSave"_qs);
        QCOMPARE(ReadBytes(program.File(u"p.prj.bak"_qs)), "kept");
    }

    void saysThatTheProjectCantBeSaved() {
        Program program;
        program.Choose("mnuFileProjectNew", u"missing/p.prj"_qs);
        const QString failure = program.File(u"missing/p.prj"_qs) +
                                u" could not be saved: No such file or directory"_qs;
        program.doors.ExpectMessage(failure);
        Trigger(*program.window, u"Save"_qs);
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

    void takesTextsThatTheFilesCanHold() {
        Program program;
        program.NewProject();
        TypeText(*program.window, u"tbProjectName"_qs, u"Upper \"wild\" basin"_qs);
        program.AddStation(u"a.mdb"_qs);
        auto& notes = Child<NotesEdit>(*program.window, u"tbNotes"_qs);
        TypeText(*program.window, u"tbName"_qs, QString(60, u'n'));
        TypeText(*program.window, u"tbNotes"_qs, u"Gate code 12"_qs);
        QGuiApplication::clipboard()->setText(QString(300, u'x'));
        QTest::keyClick(&notes, Qt::Key_V, Qt::ControlModifier);
        QTest::keyClicks(&notes, u"y"_qs);
        QCOMPARE(notes.toPlainText(), u"Gate code 12"_qs + QString(243, u'x'));
        QTest::keyClick(&notes, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(notes.toPlainText(), u"Gate code 12"_qs);
        QTest::keyClick(&notes, Qt::Key_Tab);
        QVERIFY(!notes.hasFocus());
        Trigger(*program.window, u"mnuFileStationSave"_qs);
        program.window->close();
        QCOMPARE(DumpTable(program.File(u"a.mdb"_qs), u"SELECT Name, notes FROM Information"_qs),
                 QString(50, u'n') + u" | Gate code 12"_qs);
        QVERIFY(program.ProjectText().endsWith(u"\"Upper wild basin\"\n"));
    }

    // Older releases wrote line ends of two characters, and other programs longer texts.
    void leavesUntouchedNotesAsTheyAre() {
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        const QString notes = u"Two lines\r\n"_qs + QString(255, u'x');
        program.window->SetText(StationPanel::Item::Notes, notes);
        QCOMPARE(program.window->Text(StationPanel::Item::Notes), notes);
        TypeText(*program.window, u"tbNotes"_qs, u"none"_qs);
        QCOMPARE(program.window->Text(StationPanel::Item::Notes), u"none"_qs);
    }

    void showsTheReportUnlessCancelled_data() {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("report");
        for (const auto& [item, form] : {std::pair{"mnuOutInstG", "frmInstG"},
                                         {"mnuOutDailyG", "frmDailyG"},
                                         {"mnuOutInstT", "frmInstT"},
                                         {"mnuOutDailyT", "frmDailyT"},
                                         {"mnuOutAnnual", "frmAnnualT"}}) {
            QTest::newRow(item) << QString::fromLatin1(item) << QString::fromLatin1(form);
        }
    }

    void showsTheReportUnlessCancelled() {
        QFETCH(QString, item);
        Program program;
        program.NewProject();
        program.AddStation(u"a.mdb"_qs);
        {
            const NextWindow settings([](QWidget& form) { Click(form, u"cmdCancel"_qs); });
            Trigger(*program.window, item);
        }
        QString shown;
        program.doors.ExpectMessage(u"No data within dates!"_qs);
        const NextWindow settings([](QWidget& form) { Click(form, u"cmdOK"_qs); });
        const NextWindow report([&](QWidget& form) {
            shown = form.objectName();
            form.close();
        });
        Trigger(*program.window, item + u'2');
        QTEST(shown, "report");
    }

    void tellsItsVersion() {
        Program program;
        QString about;
        const NextWindow box([&](QWidget& form) {
            about = form.windowTitle() + u", "_qs + Child<QLabel>(form, u"lblVersion"_qs).text();
            Click(form, u"cmdOK"_qs);
        });
        Trigger(*program.window, u"mnuHelpAbout"_qs);
        QCOMPARE(about, u"About Rillbook, Version 1.0.0"_qs);
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
