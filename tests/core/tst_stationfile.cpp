// An open station and its file: refused with a reason, gone while it is open, left by exit().
#include <sqlite3.h>

#include <QProcess>
#include <cstdlib>
#include <functional>

#include "import/Import.h"
#include "import/StationShape.h"
#include "store/Journal.h"
#include "store/RatingStore.h"
#include "tests/support/CoreTest.h"

using namespace rillbook;
using Item = StationPanel::Item;

namespace {

using Step = std::function<void(StationFixture&)>;

// Makes this program one that opens a station and leaves by exit().
const QString kLeave = u"leave"_qs;

const QString kLogger = u"01/01/02 00:00,1\r\n"_qs;

}  // namespace

class TestStationFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void reasonOfARefusal_data() {
        const DataRows<QString, QString> row("state", "reason");
        row("a text", "The file is not a station database.");
        row("cut short", "The file is cut short.");
        row("locked", "Another program is using the file.");
        row("companion of another file",
            "%1-wal is beside the file and belongs to another one. Move it to another folder and "
            "open the station again.");
    }
    void reasonOfARefusal() {
        QFETCH(QString, state);
        QFETCH(QString, reason);
        ScriptedDoors doors;
        StationFixture station;
        station.Close();
        const QString path = station.Path();
        sqlite3* other = nullptr;
        if (state == u"a text"_qs) {
            WriteBytes(path, "01/01/02 00:00,1.2\r\n");
        } else if (state == u"cut short"_qs) {
            WriteBytes(path, ReadBytes(path).chopped(4096));
        } else if (state == u"locked"_qs) {
            sqlite3_open(qPrintable(path), &other);
            sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
        } else {
            const QString another = station.Folder() + u"/other.mdb"_qs;
            RunPlainSql(another, "PRAGMA journal_mode = WAL; CREATE TABLE t(a);");
            RunPlainSql(another, "CREATE TABLE u(a); INSERT INTO u VALUES (randomblob(9000))",
                        true);
            QVERIFY(QFile::rename(another + u"-wal"_qs, path + u"-wal"_qs));
        }
        const QString before = FolderText(station.Folder());
        doors.ExpectMessage(path + u" not found!\n"_qs +
                            (reason.contains(u'%') ? reason.arg(path) : reason));
        QVERIFY(!OpenDB(path));
        QCOMPARE(FolderText(station.Folder()), before);
        sqlite3_close(other);
    }

    void readsAStationInUtf16() {
        const ScriptedDoors doors;
        StationFixture station;
        station.Close();
        const QString path = station.Folder() + u"/wide.mdb"_qs;
        RunPlainSql(path, "PRAGMA encoding = 'UTF-16be';" +
                              ReadBytes(u"" RILLBOOK_SOURCE_DIR "/data/template.sql"_qs) +
                              "UPDATE Information SET Name = 'Søndre \xE2\x82\xAC', recdesc = 'ζ'");
        QVERIFY(OpenDB(path));
        QCOMPARE(station.panel.texts[Item::Name], u"Søndre €"_qs);
        QCOMPARE(ChannelInfo[1].RecDesc, u"ζ"_qs);
        WriteJournal(1, {{true, At("2003-01-01"), 3, 4, {}, u"Eis ❄"_qs}});
        UpgradeCalibration();
        QCOMPARE(ReadJournal(1).front().notes, u"Eis ❄"_qs);
        CloseDB();
        QCOMPARE(DumpTable(path, u"SELECT Name FROM Information"_qs), u"Søndre €"_qs);
    }

    // Each save asks, and writes nothing into what is in the station's place by then.
    void findsThatTheFileIsGone_data() {
        QTest::addColumn<Step>("gone");
        QTest::newRow("removed") << Step([](auto& station) { QFile::remove(station.Path()); });
        QTest::newRow("replaced") << Step([](auto& station) {
            const QString other = station.Folder() + u"/other"_qs;
            CreateStationFile(other);
            std::rename(qPrintable(other), qPrintable(station.Path()));
        });
        QTest::newRow("written over") << Step([](auto& station) {
            QFile file(station.Path());
            QVERIFY(file.open(QIODevice::ReadWrite));
            file.seek(18);
            file.write("\1\1");
        });
    }
    void findsThatTheFileIsGone() {
        QFETCH(Step, gone);
        const std::pair<const char*, Step> saves[] = {
            {"journal", [](auto&) { WriteJournal(1, {}); }},
            {"equation",
             [](auto&) {
                 WriteEquation(1, 5, {.time = 5, .A = {}, .r = {}, .c = {}, .notes = {}});
             }},
            {"table",
             [](auto&) {
                 WriteTable(1, 5, {.time = 5, .notes = {}}, {{1, 1}});
             }},
            {"rating", [](auto&) { DeleteRating(1, 5); }},
            {"setup",
             [](auto&) { ReshapeStation({.importType = 0, .dateWidth = 1, .channels = {{}}}); }},
            {"header", [](auto&) { WriteStationInfo(); }},
            {"import", [](auto& station) { ImportFile(station.LoggerFile(kLogger.toUtf8())); }},
            {"closing", [](auto&) { CloseDB(); }},
        };
        for (const auto& [name, save] : saves) {
            ScriptedDoors doors;
            StationFixture station;
            station.WithRecord("2002-01-01 00:15", {1.5});
            gone(station);
            const QByteArray there = ReadBytes(station.Path());
            const QString question = station.Path() +
                                     u" was removed or replaced by another program while it was "
                                     "open. Nothing can be saved in it. Save the station under "
                                     "another name?"_qs;
            doors.ExpectMessage(question, MsgBoxAnswer::No);
            try {
                save(station);
            } catch (const AdoError& error) {
                QCOMPARE(error.Cause(), AdoCause::Moved);
            }
            QVERIFY2(ReadBytes(station.Path()) == there, name);
            if (StationConnection->State() == 0) {
                continue;
            }
            // A change that no command has checked.
            QCOMPARE(ErrorOf([] { StationConnection->Execute(u"DELETE * FROM Records"_qs); }),
                     adErrGeneral);
            const QString elsewhere = station.Folder() + u"/elsewhere.mdb"_qs;
            doors.ExpectMessage(question, MsgBoxAnswer::Yes);
            doors.AnswerFileDialog(elsewhere);
            if (qstrcmp(name, "import") == 0) {
                doors.ExpectMessage(ImportMessage(1, 0, 0));
            }
            save(station);
            QCOMPARE(StationPath, elsewhere);
            QCOMPARE(station.panel.formerPath, station.Path());
            CloseDB();
            QCOMPARE(DumpTable(elsewhere, u"Records"_qs).section(u'\n', -1),
                     u"2002-01-01 00:15:00 | 1.5"_qs);
            QVERIFY2(ReadBytes(station.Path()) == there, name);
        }
    }

    // As after the loss of the display.
    void closesTheStationAtExit() {
        StationFixture station;
        station.Close();
        const QString program = QCoreApplication::applicationFilePath();
        QCOMPARE(QProcess::execute(program, {kLeave, station.Path()}), 3);
        QCOMPARE(station.Dump("SELECT Name FROM Information"), u"typed"_qs);
        QCOMPARE(QDir(station.Folder()).entryList(QDir::Files), QStringList(u"station.mdb"_qs));
    }
};

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) != kLeave) {
        TestStationFile test;
        return QTest::qExec(&test, argc, argv);
    }
    FakePanel panel;
    StationConnection = std::make_unique<Connection>();
    std::atexit(CloseAtExit);
    OpenDB(arguments.value(2));
    panel.texts[Item::Name] = u"typed"_qs;
    std::exit(3);
}
#include "tst_stationfile.moc"
