#include <sqlite3.h>

#include <QElapsedTimer>
#include <QtTest>

#include "import/Import.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "tests/support/DataRows.h"
#include "tests/support/MessageLog.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

// The second message ends in the system's own words.
void CompareMessages(const MessageLog& messages, const QString& first, const QString& second) {
    QStringList texts = messages.texts;
    if (texts.size() == 2) {
        QVERIFY(texts[1].contains(u'\n'));
        texts[1] = texts[1].section(u'\n', 0, 0);
    }
    QCOMPARE(texts, QStringList({first, second}));
}

}  // namespace

class TestImport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Two channels; the fixed layouts have a date field of 15 and channels of 6 and 5.
    void stories_data() {
        const DataRows<QString, int, QByteArray, QString, QString> row("story", "type", "lines",
                                                                       "records", "counts");
        row("empty file", 0, "", "", ImportMessage(0, 0, 0));
        row("nothing of use", 0, "Date,Stage\n\n-------\n", "", ImportMessage(0, 3, 0));
        row("backwards, no last end", 0, "1/1/02 00:30,1.5,8\n1/1/02 00:15,1.25,7",
            "2002-01-01 00:15:00 | 1.25 | 7\n2002-01-01 00:30:00 | 1.5 | 8",
            ImportMessage(2, 0, 0));
        row("the first of a time wins", 0,
            "1/1/02 00:15,1.25,7\n01/01/2002 0:15:00,3,9\n1/1/02 00:30,,\n",
            "2002-01-01 00:15:00 | 1.25 | 7\n2002-01-01 00:30:00 | NULL | NULL",
            ImportMessage(2, 0, 1));
        row("empty and odd values", 0, "1/1/02 00:15,,7\n1/1/02 00:30,abc,8\n1/1/02 00:45,1,2,3\n",
            "2002-01-01 00:15:00 | NULL | 7\n2002-01-01 00:30:00 | NULL | 8\n"
            "2002-01-01 00:45:00 | 1 | NULL",
            ImportMessage(3, 0, 0));
        row("beyond 32 bits", 0, "1/1/02 00:15,1e39,7\n1/1/02 00:30,-3e38,1e-50\n",
            "2002-01-01 00:15:00 | NULL | 7\n2002-01-01 00:30:00 | -3e+38 | 0",
            ImportMessage(2, 0, 0));
        row("Campbell", 3, " 2002 13 1  015  1.25    7\n 2002 1231 2415  1.50    8\n",
            "2003-01-01 00:15:00 | 1.25 | 7", ImportMessage(1, 0, 1));
        row("no such layout", 4, "1/1/02 00:15,1.25,7\n", "", ImportMessage(0, 0, 0));
    }
    void stories() {
        QFETCH(int, type);
        QFETCH(QByteArray, lines);
        QFETCH(QString, counts);
        ScriptedDoors doors;
        StationFixture station(2);
        StationInfo.ImportType = static_cast<std::int16_t>(type);
        StationInfo.ImportDtWidth = 15;
        ChannelInfo[1].ImportWidth = 6;
        ChannelInfo[2].ImportWidth = 5;
        doors.ExpectMessage(counts);
        ImportFile(station.LoggerFile(lines));
        QTEST(station.Dump("SELECT * FROM Records ORDER BY DateTime"), "records");
        QCOMPARE(doors.shownMessages[0].icon, MsgBoxIcon::None);
        QCOMPARE(doors.shownMessages[0].title, u"Rillbook"_qs);
    }

    void sameFileTwice() {
        ScriptedDoors doors;
        StationFixture station;
        station.WithRecord("2002-01-01 00:15", {8.5});
        const QString file =
            station.LoggerFile("Stage\n1/1/02 00:15,1.25\n1/1/02 00:30,1.5\n1/1/02 00:45,\n");
        doors.ExpectMessage(ImportMessage(2, 1, 1));
        doors.ExpectMessage(ImportMessage(0, 1, 3));
        ImportFile(file);
        ImportFile(file);
        ImportFile(QString());  // the user has cancelled
        QCOMPARE(station.Dump("Records"),
                 u"2002-01-01 00:15:00 | 8.5\n2002-01-01 00:30:00 | 1.5\n"
                 "2002-01-01 00:45:00 | NULL"_qs);
    }

    void notAbleToOpen() {
        ScriptedDoors doors;
        StationFixture station;
        for (const char* name : {"/missing.csv", "/.", "/station.mdb/logger.csv"}) {
            doors.ExpectMessage(u"Not able to open that file!"_qs);
            ImportFile(station.Folder() + QLatin1String(name));
        }
        QCOMPARE(doors.shownMessages[0].icon, MsgBoxIcon::Exclamation);
        QCOMPARE(doors.shownMessages[0].buttons, MsgBoxButtons::Ok);
        // The station is none the worse for it.
        doors.ExpectMessage(ImportMessage(1, 0, 0));
        ImportFile(station.LoggerFile("1/1/02 00:15,1.25"));
    }

    // Negative widths count as none, and so does what lies beyond the table's columns.
    void oddSettings() {
        ScriptedDoors doors;
        StationFixture station(2);
        StationInfo.Channels = 3;
        StationInfo.ImportType = 2;
        StationInfo.ImportDtWidth = 14;
        ChannelInfo[1].ImportWidth = -5;
        ChannelInfo[2].ImportWidth = 5;
        ChannelInfo[3].ImportWidth = 5;
        doors.ExpectMessage(ImportMessage(1, 0, 0));
        ImportFile(station.LoggerFile("10/21/02 08:15 1.25 7.75"));
        QCOMPARE(station.Dump("Records"), u"2002-10-21 08:15:00 | NULL | 1.25"_qs);
        StationInfo.ImportDtWidth = -32768;
        doors.ExpectMessage(ImportMessage(0, 1, 0));
        ImportFile(station.LoggerFile("10/21/02 08:15 1.25 7.75"));
        StationInfo.Channels = -1;
        StationInfo.ImportType = 0;
        doors.ExpectMessage(ImportMessage(1, 0, 0));
        ImportFile(station.LoggerFile("10/21/02 08:30"));
    }

    void unreadableFile() {
        MessageLog messages;
        StationFixture station;
        ImportFile(u"/proc/self/mem"_qs);  // opens, and its first page can't be read
        CompareMessages(messages, ImportMessage(0, 0, 0),
                        u"! The file could not be read to its end!"_qs);
    }

    // Each attempt waits for the lock: thousands of lines must not wait in turn.
    void lockedByAnotherProgram() {
        MessageLog messages;
        StationFixture station;
        QByteArray lines;
        for (int minute = 0; minute < 600; ++minute) {
            lines += "1/1/02 " + QByteArray::number(minute / 60) + ':' +
                     QByteArray::number(100 + minute % 60).mid(1) + ",1.25\n";
        }
        const QString file = station.LoggerFile(lines);
        sqlite3* other = nullptr;
        QCOMPARE(sqlite3_open(qPrintable(station.Path()), &other), SQLITE_OK);
        QCOMPARE(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
        QElapsedTimer timer;
        timer.start();
        ImportFile(file);
        QVERIFY(timer.elapsed() < 20'000);
        CompareMessages(messages, ImportMessage(600, 0, 0),
                        u"! 600 of the readable records could not be stored!"_qs);
        // A new reader comes in, though the import has asked for the file and not got it.
        QCOMPARE(station.Dump("Records"), QString());
        sqlite3_close(other);
        messages.texts.clear();
        ImportFile(file);
        QCOMPARE(messages.texts, QStringList(ImportMessage(600, 0, 0)));
    }
};

QTEST_GUILESS_MAIN(TestImport)
#include "tst_import.moc"
