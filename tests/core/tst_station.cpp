#include <QFile>
#include <QtTest>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "store/FileError.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;
using Item = StationPanel::Item;

class TestStation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void opensAndCloses() {
        ScriptedDoors doors;
        StationFixture station;
        QVERIFY(station.panel.visible && station.panel.menusEnabled);
        QCOMPARE(station.panel.Text(Item::Channels), u"1"_qs);
        QCOMPARE(station.panel.Text(Item::Records), u"Empty"_qs);
        station.panel.caption = u"something"_qs;
        CloseDB();
        QVERIFY(!station.panel.visible && !station.panel.menusEnabled);
        QCOMPARE(station.panel.caption, u"Rillbook"_qs);
        QCOMPARE(StationPath, station.Path());
        QVERIFY(!QFile::exists(station.Path() + u"-wal"_qs));
    }

    void refusesWhatIsNoStation_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("text") << QByteArray("01/01/02 00:00,1.2\r\n").repeated(500);
        QTest::newRow("truncated") << QByteArray("truncated");
    }
    void refusesWhatIsNoStation() {
        QFETCH(QByteArray, bytes);
        ScriptedDoors doors;
        StationFixture station;
        station.Close();
        const QString path = station.Folder() + u"/other.mdb"_qs;
        if (bytes == "truncated") {
            bytes = ReadBytes(station.Path()).chopped(5000);
        }
        if (!bytes.isNull()) {
            WriteBytes(path, bytes);
        }
        doors.ExpectMessage(path + u" not found!"_qs);
        QVERIFY(!OpenDB(path));
        QCOMPARE(doors.shownMessages.at(0).icon, MsgBoxIcon::Information);
        QCOMPARE(StationConnection->State(), 0);
        QVERIFY(!station.panel.visible);
        QCOMPARE(QFile::exists(path), !bytes.isNull());
        QCOMPARE(ReadBytes(path), bytes);
        QVERIFY(!QFile::exists(path + u"-wal"_qs));
    }

    void countsRecords() {
        ScriptedDoors doors;
        StationFixture station;
        RefreshRecordStats();
        QCOMPARE(station.panel.Text(Item::Records), u"Empty"_qs);
        QCOMPARE(station.panel.Text(Item::BeginDate), QString());
        // A record without a reading is still a record, and its date counts.
        station.WithReadings("2002-01-31 23:45", 1440, {1.0, 2.0, std::nullopt});
        RefreshRecordStats();
        QCOMPARE(station.panel.Text(Item::Records), u"3"_qs);
        QCOMPARE(station.panel.Text(Item::BeginDate), u"1/31/2002"_qs);
        QCOMPARE(station.panel.Text(Item::EndDate), u"2/2/2002"_qs);
        const char* header = "SELECT noofrec, begdate, EndDate, Name, notes FROM Information";
        QCOMPARE(station.Dump(header), u"Empty | NULL | NULL | NULL | NULL"_qs);
        station.panel.SetText(Item::Notes, u"Gauge moved"_qs);
        WriteStationInfo();
        QCOMPARE(station.Dump(header), u"3 | 1/31/2002 | 2/2/2002 | NULL | Gauge moved"_qs);
    }

    void carriesEverySettingThroughTheFile() {
        ScriptedDoors doors;
        StationFixture station(2);
        StationInfo = {.Channels = 2,
                       .ImportType = 3,
                       .ImportDtWidth = 17,
                       .ImportDir = u"/logger/"_qs,
                       .OutputChannel = 2,
                       .TimeIncrement = 0.25};
        const auto channel = [](std::int16_t n) {
            const QString text = QString::number(n);
            return ChannelInfoData{.Conversion = 1,
                                   .Calibration = 0,
                                   .Secondary = n,
                                   .DigitsOut = n,
                                   .ImportWidth = 12,
                                   .GraphMax = n + 0.1,
                                   .GraphMin = -0.3,
                                   .OutputSeries = 10101,
                                   .OutputFactor = 1.98,
                                   .OutputFactorString = u"hm³"_qs,
                                   .RecLabel = u"ft"_qs + text,
                                   .RecDesc = {},
                                   .RecSta = u"Weir"_qs + text,
                                   .ConvLabel = u"cfs"_qs,
                                   .ConvDesc = u"Flow"_qs};
        };
        ChannelInfo[1] = channel(1);
        ChannelInfo[2] = channel(2);
        station.panel.SetText(Item::Name, u"Upper \"creek\""_qs);
        const QString row =
            u"%1 | %2 | %3 | /logger/ | 3 | 17 | 2 | 0.25 | 1 | 0 | 1 | 1 | 12 | 1.1 | -0.3 | "
            u"10101 | 1.98 | hm³ | ft1 | NULL | Weir1 | cfs | Flow"_qs;
        const char* columns =
            "SELECT Name, channels, noofrec, importdir, importtype, importdtwidth, outputchannel, "
            "CAST(timeincrement AS TEXT), Conversion, calibration, secondary, digitsout, "
            "importwidth, graphmax, "
            "graphmin, outputseries, outputfactor, outputfactorstring, reclabel, recdesc, recsta, "
            "convlabel, convdesc FROM Information WHERE rowid = 1";
        station.Close();
        QCOMPARE(station.Dump(columns), row.arg(u"Upper \"creek\""_qs, u"2"_qs, u"Empty"_qs));

        StationInfo = {};
        ChannelInfo.Clear();
        station.Open();
        QCOMPARE(ChannelInfo[2].RecSta, u"Weir2"_qs);
        QCOMPARE(ChannelInfo[2].Secondary, 2);
        QCOMPARE(StationInfo.ImportDir, u"/logger/"_qs);
        station.panel.SetText(Item::Name, {});
        station.Close();
        QCOMPARE(station.Dump(columns), row.arg(u"NULL"_qs, u"2"_qs, u"Empty"_qs));
    }

    // NULL in a number, or a missing row, leaves what the station opened before had there.
    void keepsFormerValuesWhereTheHeaderHasNone() {
        ScriptedDoors doors;
        StationFixture station(3);
        StationConnection->Execute(u"DELETE * FROM Information WHERE rowid = 3"_qs);
        StationConnection->Execute(
            u"UPDATE Information SET digitsout = NULL, recsta = NULL "
            u"WHERE rowid = 2"_qs);
        StationConnection->Close();
        ChannelInfo[2].DigitsOut = 7;
        ChannelInfo[2].RecSta = u"former"_qs;
        ChannelInfo[3].DigitsOut = 9;
        QVERIFY(OpenDB(station.Path()));
        QCOMPARE(ChannelInfo[2].DigitsOut, 7);
        QCOMPARE(ChannelInfo[2].RecSta, QString());
        QCOMPARE(ChannelInfo[3].DigitsOut, 9);
        QCOMPARE(StationInfo.Channels, 3);
    }

    void upgradesAnOlderFile() {
        ScriptedDoors doors;
        StationFixture station;
        for (const char* column : {"RecDesc", "ConvDesc", "RecSta"}) {
            StationConnection->Execute(u"ALTER TABLE Information DROP COLUMN "_qs +
                                       QString::fromLatin1(column));
        }
        StationConnection->Close();
        QVERIFY(OpenDB(station.Path()));
        QCOMPARE(ChannelInfo[1].RecDesc, QString());
        ChannelInfo[1].RecDesc = u"Stage"_qs;
        CloseDB();
        QCOMPARE(station.Dump("SELECT recdesc, recsta FROM Information"), u"Stage | NULL"_qs);
    }

    void opensADatabaseWithoutAHeader() {
        ScriptedDoors doors;
        StationFixture station;
        station.panel.SetText(Item::Name, u"former"_qs);
        StationConnection->Execute(u"DROP TABLE Information"_qs);
        StationConnection->Close();
        QVERIFY(OpenDB(station.Path()));
        QCOMPARE(station.panel.Text(Item::Name), u"former"_qs);
        CloseDB();
    }

    void leavesAnotherProgramsDatabaseAsItIs() {
        ScriptedDoors doors;
        StationFixture station;
        station.Close();
        const QString path = station.Folder() + u"/bookmarks.db"_qs;
        RunPlainSql(path, "PRAGMA journal_mode = WAL; CREATE TABLE Bookmarks (url TEXT)");
        const QString before = FolderText(station.Folder());
        QVERIFY(OpenDB(path));
        CloseDB();
        QCOMPARE(FolderText(station.Folder()), before);
    }

    void newStationReplacesAFileAndItsCompanion() {
        ScriptedDoors doors;
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
        QVERIFY(!QFile::exists(path + u"-wal"_qs));
        QVERIFY(OpenDB(path));
        CloseDB();
    }

    void settings_data() {
        QTest::addColumn<QMap<QString, QString>>("stored");
        QTest::addColumn<QString>("loaded");
        using Map = QMap<QString, QString>;
        QTest::newRow("first run") << Map() << u"c:\\ 1000 1500 6500 100 0 9200 0"_qs;
        QTest::newRow("a stored 0 stays 0")
            << Map{{u"MainTop"_qs, u"0"_qs}, {u"AnnualM"_qs, u"2"_qs}, {u"InitDir"_qs, u"/a/"_qs}}
            << u"/a/ 0 1500 6500 100 0 9200 2"_qs;
        QTest::newRow("no number") << Map{{u"InitDir"_qs, u"/a/"_qs}, {u"MainTop"_qs, u"abc"_qs}}
                                   << u"/a/ 0 0 0 0 0 0 0"_qs;
        QTest::newRow("beyond 16 bits")
            << Map{{u"GraphH"_qs, u"32768"_qs}} << u"c:\\ 1000 1500 0 0 0 0 0"_qs;
    }
    void settings() {
        using Map = QMap<QString, QString>;
        QFETCH(Map, stored);
        QFETCH(QString, loaded);
        ScriptedDoors doors;
        doors.settings = stored;
        LoadAppSettings();
        QCOMPARE(QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8")
                     .arg(InitDir)
                     .arg(MainTop)
                     .arg(MainLeft)
                     .arg(GraphH)
                     .arg(GraphL)
                     .arg(GraphM)
                     .arg(AnnualW)
                     .arg(AnnualM),
                 loaded);
        doors.settings.clear();
        SaveAppSettings();
        QCOMPARE(doors.settings.size(), 13);
        QCOMPARE(doors.settings.value(u"AnnualW"_qs), QString::number(AnnualW));
    }
};

QTEST_GUILESS_MAIN(TestStation)
#include "tst_station.moc"
