// Imports that end before their time, or whose station can't take records.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QtTest>
#include <csignal>

#include "app/SharedState.h"
#include "import/Import.h"
#include "store/StationDatabase.h"
#include "tests/support/DataRows.h"
#include "tests/support/Hardship.h"
#include "tests/support/MessageLog.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

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
// values.
int StoredReadings(const StationFixture& station) {
    const QString count = station.Dump("SELECT count(*) FROM Records");
    const QString good = station.Dump(
        "SELECT count(*) FROM (SELECT DateTime AS t, row_number() OVER (ORDER BY DateTime) - 1 AS "
        "i,"
        " chan1 FROM Records) WHERE abs(t - 37257 - i / 1440.0) < 1e-6"
        " AND abs(chan1 - 1 - (i % 900) / 100.0) < 1e-5");
    return good == count ? count.toInt() : -1;
}

bool WriteAll(int descriptor, const QByteArray& bytes) {
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t written =
            write(descriptor, bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
        if (written < 0) {
            return false;
        }
        at += written;
    }
    return true;
}

}  // namespace

class TestImportFailure : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The logger file is a pipe, so that the import stands still where the test wants it. What it
    // had read by then, but for the 256 KiB that it reads at a time, must be in the station.
    void killed_data() {
        // The import waits for its second and fourth piece, or writes its first and third.
        const DataRows<int, bool> row("bytes", "settled");
        row(263'000, true);
        row(790'000, true);
        row(263'000, false);
        row(790'000, false);
    }
    void killed() {
        QFETCH(int, bytes);
        QFETCH(bool, settled);
        const int lines = 60'000;
        const QByteArray readings = Readings(lines);
        MessageLog messages;
        StationFixture station;
        station.Close();
        const QString pipe = station.Folder() + u"/pipe"_qs;
        QCOMPARE(mkfifo(qPrintable(pipe), 0600), 0);
        OtherProgram child(u"--import"_qs, {station.Path(), pipe});
        int descriptor = -1;
        QTRY_VERIFY((descriptor = open(qPrintable(pipe), O_WRONLY | O_NONBLOCK)) >= 0);
        fcntl(descriptor, F_SETFL, 0);
        QVERIFY(WriteAll(descriptor, readings.left(bytes)));
        int unread = -1;
        QTRY_VERIFY(!settled || (ioctl(descriptor, FIONREAD, &unread) == 0 && unread == 0));
        child.Kill();
        close(descriptor);

        station.Open();
        QCOMPARE(station.Dump("PRAGMA integrity_check"), u"ok"_qs);
        const int stored = StoredReadings(station);
        const int least = bytes - (settled ? 1 : 2) * 256 * 1024 - (settled ? 0 : 64 * 1024);
        QVERIFY2(stored * lineSize > least - lineSize && stored <= bytes / lineSize,
                 qPrintable(QString::number(stored)));
        ImportFile(station.LoggerFile(readings));
        QCOMPARE(messages.texts, QStringList(ImportMessage(lines - stored, 0, stored)));
        QCOMPARE(StoredReadings(station), lines);
        station.Close();
        QVERIFY(!QFile::exists(station.Path() + u"-wal"_qs));
    }

    void fullDisk() {
        const int lines = 20'000;
        MessageLog messages;
        StationFixture station;
        const QString file = station.LoggerFile(Readings(lines));
        {
            const FullDisk full(400'000);
            ImportFile(file);
            station.Close();
        }
        QCOMPARE(messages.texts.value(0), ImportMessage(lines, 0, 0));
        const int unstored = messages.texts.value(1).section(QLatin1Char(' '), 1, 1).toInt();
        QVERIFY2(unstored > 0, qPrintable(messages.texts.value(1)));

        station.Open();
        QCOMPARE(station.Dump("PRAGMA integrity_check"), u"ok"_qs);
        QCOMPARE(station.Dump("SELECT count(*) FROM Records").toInt(), lines - unstored);
        ImportFile(file);
        QCOMPARE(messages.texts.last(), ImportMessage(unstored, 0, lines - unstored));
        QCOMPARE(StoredReadings(station), lines);
    }

    void readOnly() {
        MessageLog messages;
        StationFixture station;
        station.WithRecord("2002-01-01 00:01", {8.5});
        station.Close();
        const QString file = station.LoggerFile(Readings(3));
        const QString before = FolderText(station.Folder());
        QFile::setPermissions(station.Path(), QFile::Permissions(0x4444));
        QFile::setPermissions(station.Folder(), QFile::Permissions(0x5555));
        {
            const OrdinaryUser user;
            station.Open();
            ImportFile(file);
            station.Close();
        }
        QFile::setPermissions(station.Folder(), QFile::Permissions(0x7777));
        QCOMPARE(messages.texts.value(0), ImportMessage(3, 0, 0));
        QVERIFY2(messages.texts.value(1).startsWith(
                     u"! 3 of the readable records could not be stored!"_qs),
                 qPrintable(messages.texts.value(1)));
        QCOMPARE(FolderText(station.Folder()), before);
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--import") {
        MessageLog messages;
        FakePanel panel;
        ResetSharedState();
        OpenDB(arguments.value(2));
        ImportFile(arguments.value(3));
        return 0;
    }
    std::signal(SIGPIPE, SIG_IGN);
    TestImportFailure test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_importfailure.moc"
