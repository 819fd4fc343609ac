// Imports: small files of each kind, the samples, loggers' own files from the field, files that are
// none, and imports that end before their time or whose station can't take records.
#include <sqlite3.h>
#include <sys/stat.h>

#include <QElapsedTimer>
#include <QRegularExpression>

#include "import/Import.h"
#include "tests/support/CoreTest.h"
#include "tests/support/StatementFault.h"

using namespace rillbook;

namespace {

const QString samplesFolder = QStringLiteral(RILLBOOK_SOURCE_DIR "/samples/");
const QString fieldFolder = QStringLiteral(RILLBOOK_SOURCE_DIR "/../shared/data/");

// "readable, unreadable, repeated" of the last message, then what else was shown, without the
// system's own words.
QString Import(const QString& file) {
    MessageLog messages;
    ImportFile(file);
    static const QRegularExpression counts(
        u"^ (\\d+) Readable Records,  (\\d+) Unreadable Records\\(s\\), "
        "and  (\\d+) Dupulicate\\(s\\)\\.$"_qs);
    QStringList told;
    for (const QString& text : messages.texts) {
        const QString reason = text.section(u'\n', 1);
        told += text.section(u'\n', 0, 0).replace(counts, u"\\1, \\2, \\3"_qs) +
                (reason == u"The disk is full" ? u' ' + reason : QString());
    }
    return told.join(u'\n');
}

// `widths` is the date field's width and a channel's width each.
void SetLayout(int type, const QString& widths) {
    StationInfo.ImportType = static_cast<std::int16_t>(type);
    const QStringList numbers = widths.split(u", "_qs);
    StationInfo.ImportDtWidth = numbers[0].toShort();
    for (int chan = 1; chan < numbers.size(); ++chan) {
        ChannelInfo[chan].ImportWidth = numbers[chan].toShort();
    }
}

// A reading a minute from 2002 on, 20 bytes a line.
constexpr int lineSize = 20;
QByteArray Readings(int count) {
    QByteArray lines;
    const QDateTime start(QDate(2002, 1, 1), QTime(0, 0), Qt::UTC);
    for (int i = 0; i < count; ++i) {
        lines += start.addSecs(60LL * i).toString(u"MM/dd/yy hh:mm"_qs).toLatin1() + ',' +
                 QByteArray::number(1 + (i % 900) / 100.0, 'f', 2) + '\n';
    }
    return lines;
}

// How many of these readings the station holds, provided they are the first ones, with their
// values, and the file is sound.
int StoredReadings(const StationFixture& station) {
    const QString count = station.Dump("SELECT count(*) FROM Records");
    const QString good = station.Dump(
        "SELECT count(*) FROM (SELECT DateTime AS t, row_number() OVER (ORDER BY DateTime) - 1 AS "
        "i, chan1 FROM Records) WHERE abs(t - 37257 - i / 1440.0) < 1e-6"
        " AND abs(chan1 - 1 - (i % 900) / 100.0) < 1e-5");
    const bool sound = station.Dump("PRAGMA integrity_check") == u"ok";
    return sound && good == count ? count.toInt() : -1;
}

}  // namespace

class TestImport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Two channels; the fixed layouts have a date field of 15 and channels of 6 and 5.
    void stories_data() {
        const DataRows<QString, int, QByteArray, QString, QString> row("story", "type", "lines",
                                                                       "records", "counts");
        row("nothing of use", 0, "Date,Stage\n\n-------\n", "", "0, 3, 0");
        row("backwards, no last end", 0, "1/1/02 00:30,1.5,8\n1/1/02 00:15,1.25,7",
            "2002-01-01 00:15:00 | 1.25 | 7\n2002-01-01 00:30:00 | 1.5 | 8", "2, 0, 0");
        row("the first of a time wins", 0,
            "1/1/02 00:15,1.25,7\n01/01/2002 0:15:00,3,9\n1/1/02 00:30,,\n",
            "2002-01-01 00:15:00 | 1.25 | 7\n2002-01-01 00:30:00 | NULL | NULL", "2, 0, 1");
        row("odd values, and beyond 32 bits", 0,
            "1/1/02 00:15,abc,7\n1/1/02 00:30,1,2,3\n1/1/02 00:45,1e39,7\n1/1/02 01:00,-3e38,1e-50",
            "2002-01-01 00:15:00 | NULL | 7\n2002-01-01 00:30:00 | 1 | NULL\n"
            "2002-01-01 00:45:00 | NULL | 7\n2002-01-01 01:00:00 | -3e+38 | 0",
            "4, 0, 0");
        row("Campbell", 3, " 2002 13 1  015  1.25    7\n 2002 1231 2415  1.50    8\n",
            "2003-01-01 00:15:00 | 1.25 | 7", "1, 0, 1");
        for (const int unknown : {4, -1}) {
            row("no such layout", unknown, "1/1/02 00:15,1.25,7\n", "",
                "0, 0, 0\n! The layout of the station's logger files is unknown!");
        }
    }
    void stories() {
        QFETCH(int, type);
        QFETCH(QByteArray, lines);
        StationFixture station(2);
        SetLayout(type, u"15, 6, 5"_qs);
        const QString file = station.LoggerFile(lines);
        QTEST(Import(file), "counts");
        QTEST(station.Dump("Records"), "records");
        Import(file);  // once more: nothing changes
        QTEST(station.Dump("Records"), "records");
    }

    void notAbleToRead() {
        StationFixture station;
        QCOMPARE(mkfifo(qPrintable(station.Folder() + u"/pipe"_qs), 0600), 0);
        const QStringList names{u"missing.csv"_qs, u"."_qs, u"station.mdb/logger.csv"_qs,
                                u"pipe"_qs};
        for (const QString& path : names + QStringList(u"/dev/zero"_qs)) {
            QCOMPARE(Import(QDir(station.Folder()).filePath(path)),
                     u"! Not able to open that file!"_qs);
        }
        // It opens, and its first page can't be read.
        QCOMPARE(Import(u"/proc/self/mem"_qs),
                 u"0, 0, 0\n! The file could not be read to its end!"_qs);
        QCOMPARE(Import(station.LoggerFile("1/1/02 00:15,1.25")), u"1, 0, 0"_qs);
    }

    // By the table in samples/README.md: the counts, and how many values each channel lacks.
    void samples_data() {
        const DataRows<QString, int, QString, QString> row("name", "type", "widths", "result");
        const QString table = QString::fromUtf8(ReadBytes(samplesFolder + u"README.md"_qs));
        for (const QString& line : table.split(QLatin1Char('\n'))) {
            const QStringList cells = line.split(u" | "_qs);
            if (cells.size() == 7 && cells[0].startsWith(u"| `"_qs)) {
                row(cells[0].section(QLatin1Char('`'), 1, 1), cells[1].left(1).toInt(), cells[2],
                    cells.mid(3, 3).join(u", "_qs) + u"; "_qs + QString(cells[6]).chopped(2));
            }
        }
    }
    void samples() { CheckIn(samplesFolder); }

    // Loggers' own files from the field.
    void fieldFiles_data() {
        if (!QDir(fieldFolder).exists()) {
            QSKIP("Files from the field aren't at hand");
        }
        const DataRows<QString, int, QString, QString> row("name", "type", "widths", "result");
        row("type1_five_channels_bom.csv", 0, "0, 0, 0, 0, 0, 0",
            "7770, 2, 0; 3885, 3885, 3885, 3886, 3885");
        row("type1_hourly_oxygen.csv", 0, "0, 0, 0, 0, 0, 0", "5017, 2, 0; 0, 0, 0, 0, 0");
        row("type1_year_first_refused.csv", 0, "0, 0", "0, 2808, 0; 0");
        row("type2_level_logger.csv", 1, "0, 0, 0", "2184, 2, 0; 0, 0");
        row("fixed_discharge_15min.txt", 2, "14, 12", "40000, 0, 0; 0");
        row("campbell_pressure.dat", 3, "15, 11, 11, 11", "52142, 0, 139; 0, 0, 0");
    }
    void fieldFiles() { CheckIn(fieldFolder); }

    // Each attempt waits for the lock: thousands of lines must not wait in turn.
    void lockedByAnotherProgram() {
        StationFixture station;
        const QString file = station.LoggerFile(Readings(600));
        sqlite3* other = nullptr;
        QCOMPARE(sqlite3_open(qPrintable(station.Path()), &other), SQLITE_OK);
        QCOMPARE(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(Import(file), u"600, 0, 0\n! 600 of the readable records could not be stored!"_qs);
        QVERIFY(timer.elapsed() < 20'000);
        // A new reader comes in, though the import has asked for the file and not got it.
        QCOMPARE(station.Dump("Records"), QString());
        sqlite3_close(other);
        QCOMPARE(Import(file), u"600, 0, 0"_qs);
    }

    // Each record is final when it is written. The statements before the first one take the lock.
    void killed() {
        const int lines = 60'000;
        const int statements = 40'000;
        const QByteArray readings = Readings(lines);
        StationFixture station;
        station.Close();
        const QString file = station.LoggerFile(readings);
        OtherProgram child(u"--import"_qs, {station.Path(), file, QString::number(statements)});
        QCOMPARE(child.NextLine(), QByteArray());
        QCOMPARE(station.panel.texts.value(StationPanel::Item::Records), u"Empty"_qs);

        station.Open();
        const int stored = StoredReadings(station);
        QVERIFY2(stored < statements && stored > statements - 10,
                 qPrintable(QString::number(stored)));
        QCOMPARE(station.panel.texts.value(StationPanel::Item::Records), QString::number(stored));
        QCOMPARE(Import(file), u"%1, 0, %2"_qs.arg(lines - stored).arg(stored));
        QCOMPARE(StoredReadings(station), lines);
        station.Close();
        QVERIFY(!QFile::exists(station.Path() + u"-wal"_qs));
    }

    void fullDisk() {
        const int lines = 20'000;
        StationFixture station;
        const QString file = station.LoggerFile(Readings(lines));
        QString told;
        {
            const FullDisk full(400'000);
            told = Import(file);
            RefreshRecordStats();
            station.Close();
        }
        station.Open();
        const int stored = station.Dump("SELECT count(*) FROM Records").toInt();
        QVERIFY(stored < lines);
        QCOMPARE(told,
                 u"%1, 0, 0\n! %2 of the readable records could not be stored! The disk is full"_qs
                     .arg(lines)
                     .arg(lines - stored));
        QCOMPARE(station.panel.texts.value(StationPanel::Item::Records), QString::number(stored));
        QCOMPARE(Import(file), u"%1, 0, %2"_qs.arg(lines - stored).arg(stored));
        QCOMPARE(StoredReadings(station), lines);
    }

private:
    static void CheckIn(const QString& folder) {
        QFETCH(QString, name);
        QFETCH(int, type);
        QFETCH(QString, widths);
        StationFixture station(static_cast<int>(widths.count(u',')));
        SetLayout(type, widths);
        const QString counts = Import(folder + name);
        QStringList lacking;
        for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
            lacking += u"count(*) - count(chan%1)"_qs.arg(chan);
        }
        const QString query = u"SELECT %1 FROM Records"_qs.arg(lacking.join(u", "_qs));
        QTEST(counts + u"; "_qs + station.Dump(qPrintable(query)).replace(u" | "_qs, u", "_qs),
              "result");
        QCOMPARE(station.Dump("SELECT count(*) FROM Records"), counts.section(u',', 0, 0));
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--import") {
        const FakePanel panel;
        ResetSharedState();
        OpenDB(arguments.value(2));
        const StatementFault fault(arguments.value(4).toInt(), StatementFault::Kind::Kills);
        Import(arguments.value(3));
        return 0;
    }
    TestImport test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_import.moc"
