// Imports that end before their time, or whose station can't take records. Each runs in a process
// of its own: this program, started anew with a mode, a station and a logger file.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QProcess>
#include <QtTest>
#include <csignal>
#include <cstdio>

#include "app/SharedState.h"
#include "import/Import.h"
#include "store/StationDatabase.h"
#include "tests/support/MessageLog.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

// Prints the messages of an import.
int RunChild(const QString& mode, const QString& station, const QString& loggerFile) {
    if (mode == u"full"_qs) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{400'000, 400'000};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (mode == u"readonly"_qs && geteuid() == 0 && setuid(65534) != 0) {
        return 2;  // the administrator could write to it all the same
    }
    MessageLog messages;
    FakePanel panel;
    ResetSharedState();
    if (!OpenDB(station)) {
        return 3;
    }
    ImportFile(loggerFile);
    CloseDB();
    ResetSharedState();
    std::fputs(qPrintable(messages.texts.join(QLatin1Char('\n'))), stdout);
    return 0;
}

void StartChild(QProcess& child, const char* mode, const QString& station,
                const QString& loggerFile) {
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(),
                {u"--child"_qs, QString::fromLatin1(mode), station, loggerFile});
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
        QTest::addColumn<int>("bytes");
        QTest::addColumn<bool>("settled");
        QTest::newRow("waiting for its second piece") << 263'000 << true;
        QTest::newRow("waiting for its fourth piece") << 790'000 << true;
        QTest::newRow("writing its first piece") << 263'000 << false;
        QTest::newRow("writing its third piece") << 790'000 << false;
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
        QProcess child;
        StartChild(child, "plain", station.Path(), pipe);
        int descriptor = -1;
        QTRY_VERIFY((descriptor = open(qPrintable(pipe), O_WRONLY | O_NONBLOCK)) >= 0);
        fcntl(descriptor, F_SETFL, 0);
        QVERIFY(WriteAll(descriptor, readings.left(bytes)));
        int unread = -1;
        QTRY_VERIFY(!settled || (ioctl(descriptor, FIONREAD, &unread) == 0 && unread == 0));
        child.kill();
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
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
        station.Close();
        const QString file = station.LoggerFile(Readings(lines));
        QProcess child;
        StartChild(child, "full", station.Path(), file);
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitCode(), 0);
        const QStringList told =
            QString::fromUtf8(child.readAllStandardOutput()).split(QLatin1Char('\n'));
        QCOMPARE(told.value(0), ImportMessage(lines, 0, 0));
        const int unstored = told.value(1).section(QLatin1Char(' '), 1, 1).toInt();
        QVERIFY2(unstored > 0, qPrintable(told.value(1)));

        station.Open();
        QCOMPARE(station.Dump("PRAGMA integrity_check"), u"ok"_qs);
        QCOMPARE(station.Dump("SELECT count(*) FROM Records").toInt(), lines - unstored);
        ImportFile(file);
        QCOMPARE(messages.texts, QStringList(ImportMessage(unstored, 0, lines - unstored)));
        QCOMPARE(StoredReadings(station), lines);
    }

    void readOnly() {
        StationFixture station;
        station.WithRecord("2002-01-01 00:01", {8.5});
        station.Close();
        const QString file = station.LoggerFile(Readings(3));
        QFile stored(station.Path());
        QVERIFY(stored.open(QIODevice::ReadOnly));
        const QByteArray before = stored.readAll();
        QCOMPARE(chmod(qPrintable(station.Path()), 0444), 0);
        QCOMPARE(chmod(qPrintable(station.Folder()), 0555), 0);
        QProcess child;
        StartChild(child, "readonly", station.Path(), file);
        const bool ended = child.waitForFinished();
        chmod(qPrintable(station.Folder()), 0755);
        QVERIFY(ended);
        QCOMPARE(child.exitCode(), 0);
        const QStringList told =
            QString::fromUtf8(child.readAllStandardOutput()).split(QLatin1Char('\n'));
        QCOMPARE(told.value(0), ImportMessage(3, 0, 0));
        QCOMPARE(told.value(1), u"! 3 of the readable records could not be stored!"_qs);
        stored.seek(0);
        QVERIFY(stored.readAll() == before);
    }
};

int main(int argc, char* argv[]) {
    if (argc == 5 && qstrcmp(argv[1], "--child") == 0) {
        return RunChild(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]),
                        QString::fromLocal8Bit(argv[4]));
    }
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    TestImportFailure test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_importfailure.moc"
