#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <thread>

#include "platform/desktop/KeptFile.h"
#include "store/FileError.h"
#include "tests/support/CoreTest.h"
#include "tests/support/Hardship.h"

using namespace rillbook;
using Item = StationPanel::Item;

namespace {

// The stations of a project file, a line each, then what else stands in it and what is wrong.
QString ReadText(const ProjectReading& reading) {
    QString text;
    for (const ProjectStation& station : reading.contents.stations) {
        text += station.path + u'|' + station.title + u'\n';
    }
    return text + MomentText(reading.contents.reportBeginDate) + u'|' +
           reading.contents.reportPeriodCode + u'|' + reading.contents.name + u'|' + reading.fault;
}

const QByteArray kCreek =
    "\"Rillbook\",\"202\"\r\n1\r\n\"C:\\Data\\creek.mdb\",\"creek.mdb\"\r\n"
    "#2002-01-01#,\"921\"\r\n\"Upper basin\"\r\n";

}  // namespace

class TestStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { doors_ = std::make_unique<ScriptedDoors>(); }
    void cleanup() { doors_.reset(); }

    // MainLeft, and what the settings behind it are then.
    void loadsSettingsUpToTheFirstThatIsNone() {
        const auto loaded = [this](const QString& stored) {
            doors_->settings = {{u"MainLeft"_qs, stored}};
            LoadAppSettings();
            return u"%1 %2 %3 %4"_qs.arg(InitDir).arg(MainTop).arg(MainLeft).arg(AnnualW);
        };
        CompareEach(loaded,
                    " => c:\\ 1000 1500 9200; 0 => c:\\ 1000 0 9200; "
                    "-32768 => c:\\ 1000 -32768 9200; 12.6 => c:\\ 1000 13 9200; "
                    "32768 => c:\\ 1000 0 0; abc => c:\\ 1000 0 0; nan => c:\\ 1000 0 0");
    }

    void refusesWhatIsNoStation() {
        StationFixture station;
        station.Close();
        const QString before = FolderText(station.Folder());
        const QString path = station.Folder() + u"/other.mdb"_qs;
        const auto refused = [&] {
            doors_->ExpectMessage(
                path + u" not found!"_qs +
                (QFile::exists(path) ? u"\nThe file is not a station database."_qs : QString()));
            return !OpenDB(path) && StationConnection->State() == 0 && !station.panel.visible;
        };
        QVERIFY(refused());
        WriteBytes(path, "01/01/02 00:00,1.2\r\n");
        QVERIFY(refused());
        QVERIFY(QFile::remove(path));
        QCOMPARE(FolderText(station.Folder()), before);
    }

    void opensCountsAndCloses() {
        StationFixture station;
        QVERIFY(station.panel.visible && station.panel.menusEnabled);
        const auto stats = [&station] {
            RefreshRecordStats();
            return station.panel.Text(Item::Records) + u' ' + station.panel.Text(Item::BeginDate) +
                   u' ' + station.panel.Text(Item::EndDate);
        };
        QCOMPARE(stats(), u"Empty  "_qs);
        // A record without a reading is still a record, and its date counts.
        station.WithReadings("2002-01-31 23:45", 1440, {1.0, 2.0, std::nullopt});
        QCOMPARE(stats(), u"3 1/31/2002 2/2/2002"_qs);
        station.panel.SetText(Item::Notes, u"Gauge moved"_qs);
        CloseDB();
        QCOMPARE(station.Dump("SELECT noofrec, begdate, EndDate, Name, notes FROM Information"),
                 u"3 | 1/31/2002 | 2/2/2002 | NULL | Gauge moved"_qs);
        QVERIFY(!station.panel.visible && !station.panel.menusEnabled);
    }

    // Settings of the whole station stand in the first row, those of a channel in its own.
    void carriesEverySettingThroughTheFile() {
        StationFixture station(2);
        StationInfo = {2, 3, 17, u"/logger/"_qs, 2, 0.25};
        ChannelInfo[1] = {};
        ChannelInfo[2] = {1,    2,         4,        5,  12,         2.1,       -0.3,      10101,
                          1.98, u"hm³"_qs, u"ft"_qs, {}, u"Weir"_qs, u"cfs"_qs, u"Flow"_qs};
        station.panel.SetText(Item::Name, u"Upper \"creek\""_qs);
        const QString rows =
            u"%1 | NULL | 2 | Empty | NULL | NULL | /logger/ | 3 | 17 | 2 | 1899-12-30 06:00:00 | "
            "0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0 | NULL | NULL | NULL | NULL | NULL | NULL\n"
            "NULL | NULL | 2 | Empty | NULL | NULL | NULL | 0 | 16 | 1 | 1899-12-30 01:00:00 | 1 | "
            "2 | 4 | 5 | 12 | 2.1 | -0.3 | 10101 | 1.98 | hm³ | ft | NULL | Weir | cfs | Flow"_qs;
        station.Close();
        QCOMPARE(station.Dump("Information"), rows.arg(u"Upper \"creek\""_qs));
        StationInfo = {};
        ChannelInfo.Clear();
        station.Open();
        station.panel.SetText(Item::Name, {});
        station.Close();  // writes what it has read
        QCOMPARE(station.Dump("Information"), rows.arg(u"NULL"_qs));
    }

    // What the header lacks stays as the station opened before had it.
    void opensWhatOlderReleasesAndOthersLeft() {
        StationFixture station(3);
        const auto reopen = [&station](const char* change) {
            StationConnection->Execute(QString::fromLatin1(change));
            StationConnection->Close();
            return OpenDB(station.Path());
        };
        ChannelInfo[2].DigitsOut = 7;
        ChannelInfo[2].RecSta = u"former"_qs;
        ChannelInfo[3].DigitsOut = 9;
        StationConnection->Execute(u"DELETE * FROM Information WHERE rowid = 3"_qs);
        QVERIFY(reopen("UPDATE Information SET digitsout = NULL, recsta = NULL WHERE rowid = 2"));
        QCOMPARE(u"%1 %2"_qs.arg(ChannelInfo[2].DigitsOut).arg(ChannelInfo[3].DigitsOut),
                 u"7 9"_qs);
        QCOMPARE(ChannelInfo[2].RecSta, QString());

        QVERIFY(reopen("ALTER TABLE Information DROP COLUMN RecDesc"));
        ChannelInfo[1].RecDesc = u"Stage"_qs;
        CloseDB();
        QCOMPARE(station.Dump("SELECT recdesc FROM Information LIMIT 1"), u"Stage"_qs);

        QVERIFY(OpenDB(station.Path()));
        station.panel.SetText(Item::Name, u"former"_qs);
        QVERIFY(reopen("DROP TABLE Information"));
        QCOMPARE(station.panel.Text(Item::Name), u"former"_qs);
    }

    void leavesAnotherProgramsDatabaseAsItIs() {
        StationFixture station;
        station.Close();
        const QString path = station.Folder() + u"/bookmarks.db"_qs;
        RunPlainSql(path, "PRAGMA journal_mode = WAL; CREATE TABLE Bookmarks (url TEXT)");
        const QString before = FolderText(station.Folder());
        QVERIFY(OpenDB(path));
        CloseDB();
        QCOMPARE(FolderText(station.Folder()), before);
    }

    // Only those that the user changed, and nothing of the rest of the header.
    void reportsNamesThatCannotBeStored() {
        StationFixture station;
        const auto typed = [&](const QString& name, const QString& reason) {
            station.panel.SetText(StationPanel::Item::Name, name);
            StationInfo.OutputChannel = 7;
            if (!reason.isEmpty()) {
                doors_->ExpectMessage(
                    u"The name and the notes of station.mdb could not be stored: "_qs + reason);
            }
            SaveStationInfo();
        };
        typed(u"Weir"_qs, {});
        {
            Connection other;
            other.Open(ConnectionTo(station.Path()));
            const Transaction held(other);
            typed(u"Weir"_qs, {});
            typed(u"Lower weir"_qs, u"database is locked"_qs);
        }
        StationConnection->Execute(u"ALTER TABLE Information ALTER COLUMN Name TEXT(5)"_qs);
        typed(u"Upper weir"_qs, u"The text is longer than 5 characters."_qs);
        typed(u"Weir"_qs, {});
        station.Close();
        QFile::setPermissions(station.Path(), QFile::Permissions(0x4444));
        QFile::setPermissions(station.Folder(), QFile::Permissions(0x5555));
        const OrdinaryUser user;
        station.Open();
        typed(u"Weir"_qs, {});
        typed(u"Mill"_qs, u"attempt to write a readonly database"_qs);
        doors_->ExpectMessage(
            u"The name and the notes of station.mdb could not be stored: "
            "attempt to write a readonly database"_qs);
        station.Close();
    }

    void newStationReplacesAFileAndItsCompanion() {
        StationFixture station;
        station.Close();
        Application::SetPath(station.Folder());
        QVERIFY_EXCEPTION_THROWN(CopyStationTemplate(station.Path()), FileError);
        QVERIFY(QFile::rename(station.Path(), station.Folder() + u"/template.mdb"_qs));
        const QString path = station.Folder() + u"/new.mdb"_qs;
        WriteBytes(path, "something else");
        WriteBytes(path + u"-wal"_qs, "of something else");
        CopyStationTemplate(path);
        Application::SetPath({});
        QVERIFY(!QFile::exists(path + u"-wal"_qs) && OpenDB(path));
    }

    void writesItsLinesAndReadsThemBack() {
        ProjectContents contents{.stations = {{u"C:\\Data\\creek.mdb"_qs, u"creek.mdb"_qs}},
                                 .reportBeginDate = At("2002-01-01"),
                                 .reportPeriodCode = u"921"_qs,
                                 .name = u"Upper basin"_qs};
        WriteProjectFile(path_, contents);
        QCOMPARE(ReadBytes(path_), QByteArray(kCreek).replace("202\"", "100\""));
        contents.stations.push_back({u"/a,b/Øvre Δέλτα/川.mdb"_qs, u"t"_qs});
        contents.reportBeginDate = At("2002-01-01 13:05:09");
        contents.name = u"Rhône, \u2013 Река"_qs;
        WriteProjectFile(path_, contents);
        QCOMPARE(ReadText(ReadProjectFile(path_)),
                 u"C:\\Data\\creek.mdb|creek.mdb\n/a,b/Øvre Δέλτα/川.mdb|t\n"
                 "2002-01-01 13:05:09|921|Rhône, \u2013 Река|"_qs);
    }

    // Whatever the byte at which a file ends, what precedes it is read and nothing is made up.
    void readsWhatACutFileHolds() {
        ReportBeginDate = At("1990-05-05");
        ReportPeriodCode = u"911"_qs;
        const QString station = u"C:\\Data\\creek.mdb|creek.mdb\n"_qs;
        const QString kept = u"1990-05-05 00:00:00|911|basin|"_qs;
        const QString read = u"2002-01-01 00:00:00|921|basin|"_qs;
        const qsizetype afterCount = kCreek.indexOf("\n1") + 2;
        const qsizetype afterStation = kCreek.indexOf("creek.mdb\"\r") + 10;
        const qsizetype afterPeriod = kCreek.indexOf("921\"\r") + 4;
        for (qsizetype size = 0; size < kCreek.size() - 2; ++size) {
            WriteBytes(path_, kCreek.left(size));
            const QString expected = (size < afterStation ? QString() : station) +
                                     (size < afterPeriod ? kept : read) +
                                     (size < afterCount ? u"This is not a project file."_qs
                                                        : u"Could not read past "_qs);
            const ProjectReading reading = ReadProjectFile(path_);
            QCOMPARE(ReadText(reading).left(expected.size()), expected);
            QCOMPARE(reading.isProject, size >= afterCount);
        }
        WriteBytes(path_, kCreek.chopped(2));
        QVERIFY(ReadText(ReadProjectFile(path_)).endsWith(u"|921|Upper basin|"_qs));
    }

    // A station, a logger file, pictures in two formats, another text, nothing; then no file at
    // all.
    void refusesWhatIsNoProject() {
        const auto isRefused = [this] {
            const ProjectReading reading = ReadProjectFile(path_);
            return !reading.isProject && reading.contents.stations.empty() &&
                   reading.fault == u"This is not a project file.";
        };
        CreateStationFile(path_);
        for (const QByteArray& bytes : {ReadBytes(path_), QByteArray("1.5,2.5,3\n1.5,2.5,3\n"),
                                        QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16),
                                        QByteArray("P6\n640 480\n255\n\0\1", 17),
                                        QByteArray("\"a\",\"b\"\n0\n\"c\"\n"), QByteArray()}) {
            WriteBytes(path_, bytes);
            QVERIFY2(isRefused(), bytes.left(16).toHex().constData());
        }
        QFile::remove(path_);
        QCOMPARE(ReadProjectFile(path_).fault, u"No such file or directory"_qs);
        // Reading from it would wait for a writer.
        QCOMPARE(::mkfifo(QFile::encodeName(path_).constData(), 0600), 0);
        QVERIFY(isRefused());
        QFile::remove(path_);
    }

    // Several programs keep files at once, and all of them ask for the same names. A file in memory
    // can't have a second name on a disk, so that it is copied.
    void neverReplacesAKeptFile() {
        for (int round = 0; round < 20; ++round) {
            const bool copies = round % 2 == 0;
            const QTemporaryDir folder;
            const auto keep = [&](int i) {
                const QByteArray bytes = QByteArray::number(i);
                const int handle = ::memfd_create("kept", 0);
                const QString path = copies ? u"/proc/self/fd/%1"_qs.arg(handle)
                                            : folder.filePath(u"from%1"_qs.arg(i));
                WriteBytes(path, bytes);
                const KeptFile kept = KeepUnderName(
                    path, [&](int number) { return folder.filePath(u"kept%1"_qs.arg(number)); });
                ::close(handle);
                return kept.reason.isEmpty() && kept.isNew && ReadBytes(kept.path) == bytes;
            };
            std::array<bool, 4> isKept{};
            {
                std::array<std::jthread, 4> programs;
                for (int i = 0; i < 4; ++i) {
                    programs[i] = std::jthread([&, i] { isKept[i] = keep(i); });
                }
            }
            QByteArray all;
            for (int number = 1; number <= 4; ++number) {
                all += ReadBytes(folder.filePath(u"kept%1"_qs.arg(number)));
            }
            std::sort(all.begin(), all.end());
            QCOMPARE(all, QByteArray("0123"));
            QCOMPARE(isKept, (std::array{true, true, true, true}));
            QVERIFY(!FolderText(folder.path()).contains(u"qvx"));
        }
    }

    void leavesTheOldFileIfTheNewOneCannotBeWritten() {
        const QString inNoFolder = folder_.filePath(QStringLiteral("gone/basin.prj"));
        QVERIFY_EXCEPTION_THROWN(WriteProjectFile(inNoFolder, {}), FileError);
        WriteBytes(path_, kCreek);
        const QString before = FolderText(folder_.path());
        {
            const FullDisk full(8);
            QVERIFY_EXCEPTION_THROWN(WriteProjectFile(path_, {}, OldProject::Keep), FileError);
        }
        QCOMPARE(FolderText(folder_.path()), before);
    }

    void keepsEachOldFileOnce() {
        QStringList olds;
        for (const QByteArray& bytes : {kCreek, QByteArray("second"), kCreek, QByteArray()}) {
            WriteBytes(path_, bytes);
            WriteProjectFile(path_, {}, OldProject::Keep);
            olds += QString::fromLatin1(bytes);
        }
        const auto kept = [this](const char* end) {
            return QString::fromLatin1(ReadBytes(path_ + QLatin1String(end)));
        };
        QCOMPARE((QStringList{kept(".bak"), kept(".bak2"), kept(".bak3"), kept(".bak4")}),
                 (QStringList{olds[0], olds[1], olds[3], QString()}));
        QVERIFY(QFile::exists(path_ + u".bak3"_qs) && !QFile::exists(path_ + u".bak4"_qs));
    }

    void periodEndsOn() {
        const auto end = [](const QString& beginAndCode) {
            ReportPeriodCode = u"kept"_qs;
            const DateTime begin = At(qPrintable(beginAndCode.left(10)));
            return ReportEndFromPeriod(begin, beginAndCode.mid(11)) + u' ' + ReportPeriodCode;
        };
        // February has no day 30.
        CompareEach(end,
                    "2003-03-01 941 => Feb 29, 2004 kept; 2002-01-31 931 => Mar 02, 2002 kept; "
                    "2002-11-15 933 => Feb 14, 2003 kept; 2002-01-01 7312 => Dec 31, 2002 9312; "
                    "2002-01-01  => Dec 31, 2002 9312; 2002-01-01 95 => Dec 31, 2002 9312; "
                    "2002-01-01 94999999999999999999 => Dec 30, 9999 kept");
    }

private:
    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(u"basin.prj"_qs);
    std::unique_ptr<ScriptedDoors> doors_;
};

QTEST_GUILESS_MAIN(TestStore)
#include "tst_store.moc"
