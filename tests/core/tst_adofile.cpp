// What becomes of the station's file: opening, refusing, closing, and being cut off on the way.
#include <signal.h>
#include <sqlite3.h>
#include <unistd.h>

#include <QProcess>
#include <QtTest>
#include <iostream>

#include "platform/ado/Connection.h"
#include "platform/ado/JetEngine.h"
#include "platform/ado/Recordset.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/FullDisk.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

QString Source(const QString& path) {
    return u"Provider = Microsoft.Jet.OLEDB.4.0; Data Source = "_qs + path;
}

int OpenError(const QString& path) {
    Connection connection;
    return ErrorOf([&] { connection.Open(Source(path)); });
}

std::int64_t CountRecords(Connection& connection) {
    Recordset records;
    records.Open(u"SELECT DateTime FROM Records"_qs, connection);
    return records.RecordCount();
}

void Append(Recordset& records, int number) {
    records.AddNew();
    records.Fields(0).SetValue(37257 + number / 96.0);
    records.Fields(1).SetValue(number * 0.5);
    records.Update();
}

const QByteArray kRecords =
    "CREATE TABLE Records (\"DateTime\" DATETIME NOT NULL PRIMARY KEY, chan1 SINGLE) WITHOUT ROWID;"
    "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 4999) "
    "INSERT INTO Records SELECT 30000 + i / 96.0, i FROM n;";
const QByteArray kWriteAhead = "PRAGMA journal_mode = WAL;" + kRecords;
const QByteArray kLateRow = "INSERT INTO Records VALUES (50000, 1.5)";

// An ordinary user for its lifetime, whom read-only files bind even where the tests run as root.
class OrdinaryUser {
public:
    OrdinaryUser() {
        if (isRoot_ && ::setresuid(65534, 65534, 0) != 0) {
            qFatal("Can't become an ordinary user");
        }
    }
    ~OrdinaryUser() {
        if (isRoot_ && ::setresuid(0, 0, 0) != 0) {
            qFatal("Can't be root again");
        }
    }

private:
    const bool isRoot_ = ::geteuid() == 0;
};

// Another program: this one, started again to do one thing until it is killed.
class OtherProgram {
public:
    OtherProgram(const QString& deed, const QString& path) {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QCoreApplication::applicationFilePath(), {deed, path});
    }
    ~OtherProgram() { Kill(); }
    // Empty when it has ended.
    QByteArray NextLine() {
        while (!process_.canReadLine() && process_.waitForReadyRead(20000)) {
        }
        return latest_ = process_.readLine().trimmed();
    }
    // Returns the last whole line.
    QByteArray Kill() {
        process_.kill();
        process_.waitForFinished();
        while (process_.canReadLine()) {
            NextLine();
        }
        return latest_;
    }

private:
    QProcess process_;
    QByteArray latest_;
};

// Says after each row how many are finished.
void AppendForever(const QString& deed, const QString& path) {
    Connection connection;
    connection.Open(Source(path));
    Recordset records;
    records.Open(u"Records"_qs, connection, adOpenUnspecified, adLockOptimistic);
    if (deed == u"--exclusive") {
        connection.BeginExclusiveUse();
    } else if (deed == u"--transaction") {
        connection.BeginTrans();
    }
    for (int i = 0;; ++i) {
        Append(records, i);
        std::cout << i + 1 << std::endl;
    }
}

int RunDeed(const QString& deed, const QString& path) {
    if (deed == u"--lock") {
        sqlite3* database = nullptr;
        sqlite3_open(qPrintable(path), &database);
        sqlite3_exec(database, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
        std::cout << "locked" << std::endl;
        ::pause();
    }
    AppendForever(deed, path);
    return 0;
}

}  // namespace

class TestAdoFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(u"weir #5; 50%?.mdb"_qs);
    }

    void refusesAndChangesNothing_data() {
        QTest::addColumn<QByteArray>("damage");
        QTest::newRow("missing") << QByteArray("missing");
        QTest::newRow("empty") << QByteArray("empty");
        QTest::newRow("Access file") << QByteArray("access");
        QTest::newRow("header alone") << QByteArray("header");
        QTest::newRow("cut by pages") << QByteArray("half");
        QTest::newRow("cut within the last page") << QByteArray("last");
        QTest::newRow("page of noise") << QByteArray("noise");
        QTest::newRow("page of zeros") << QByteArray("zeros");
        QTest::newRow("page of noise beside a companion") << QByteArray("noise+wal");
        QTest::newRow("cut beside a companion") << QByteArray("half+wal");
        QTest::newRow("write-ahead, page of noise") << QByteArray("noise+mode");
        QTest::newRow("another program holds it") << QByteArray("lock");
    }
    void refusesAndChangesNothing() {
        QFETCH(QByteArray, damage);
        std::unique_ptr<OtherProgram> other;
        if (damage != "missing") {
            RunPlainSql(path_, damage.contains('+') ? kWriteAhead : kRecords);
            if (damage.endsWith("wal")) {
                RunPlainSql(path_, kLateRow, true);
            }
            Damage(damage);
        }
        if (damage == "lock") {
            other = std::make_unique<OtherProgram>(u"--lock"_qs, path_);
            QCOMPARE(other->NextLine(), "locked");
        }
        const QString before = FolderText(folder_->path());
        QCOMPARE(OpenError(path_), int(adErrGeneral));
        QCOMPARE(ErrorOf([this] {
                     JetEngine().CompactDatabase(Source(path_), Source(path_ + u"qvx"_qs));
                 }),
                 int(adErrGeneral));
        QCOMPARE(FolderText(folder_->path()), before);
    }

    // At rest a station is one file in rollback mode, whatever it was when it was opened.
    void opensAndLeavesOneFile_data() {
        QTest::addColumn<QByteArray>("sql");
        QTest::addColumn<bool>("companion");
        QTest::newRow("rollback mode") << kRecords << false;
        QTest::newRow("write-ahead mode") << kWriteAhead << false;
        QTest::newRow("companion of a killed program") << kWriteAhead << true;
    }
    void opensAndLeavesOneFile() {
        QFETCH(QByteArray, sql);
        QFETCH(bool, companion);
        RunPlainSql(path_, sql);
        RunPlainSql(path_, kLateRow, companion);
        QCOMPARE(QFile::exists(path_ + u"-wal"_qs), companion);
        Connection first;
        first.Open(Source(path_));
        QVERIFY(!first.IsReadOnly());
        QCOMPARE(ErrorOf([&] { first.Open(Source(path_)); }), int(adErrObjectOpen));
        first.BeginExclusiveUse();
        first.Execute(u"DELETE * FROM Records WHERE chan1 < 1"_qs);
        first.EndExclusiveUse();
        QCOMPARE(QFileInfo(path_ + u"-wal"_qs).size(), 0);
        Connection second;
        second.Open(first.ConnectionString());
        second.Execute(u"DELETE * FROM Records WHERE chan1 < 10"_qs);
        QCOMPARE(CountRecords(first), 4990);
        first.Close();
        QVERIFY(QFile::exists(path_ + u"-wal"_qs));
        second.Execute(u"DELETE * FROM Records WHERE chan1 < 20"_qs);
        second.Close();
        QCOMPARE(QDir(folder_->path()).entryList(QDir::Files).size(), 1);
        QCOMPARE(ReadBytes(path_).mid(18, 2), "\1\1");
        QCOMPARE(DumpTable(path_, u"SELECT count(*), max(chan1) FROM Records"_qs),
                 u"4980 | 4999"_qs);
    }

    void readsWhatCantBeWritten_data() { opensAndLeavesOneFile_data(); }
    void readsWhatCantBeWritten() {
        QFETCH(QByteArray, sql);
        QFETCH(bool, companion);
        RunPlainSql(path_, sql);
        RunPlainSql(path_, kLateRow, companion);
        const QString before = FolderText(folder_->path());
        QFile::setPermissions(path_, QFile::Permissions(0x4444));
        QFile::setPermissions(folder_->path(), QFile::Permissions(0x5555));
        {
            const OrdinaryUser user;
            Connection connection;
            connection.Open(Source(path_));
            QVERIFY(connection.IsReadOnly());
            QCOMPARE(CountRecords(connection), 5001);
            Recordset records;
            records.Open(u"Records"_qs, connection, adOpenKeyset, adLockOptimistic);
            records.MoveLast();
            QCOMPARE(records.Fields(1).Text(), u"1.5"_qs);
            records.Fields(1).SetValue(2);
            QCOMPARE(ErrorOf([&] { records.Update(); }), int(adErrGeneral));
            QCOMPARE(ErrorOf([&] { connection.Execute(u"DELETE * FROM Records"_qs); }),
                     int(adErrGeneral));
            connection.BeginExclusiveUse();
            connection.EndExclusiveUse();
        }
        QFile::setPermissions(folder_->path(), QFile::Permissions(0x7777));
        QCOMPARE(FolderText(folder_->path()), before);
    }

    void finishedRowsSurviveTheProcess_data() {
        QTest::addColumn<QString>("deed");
        QTest::newRow("row by row") << u"--rows"_qs;
        QTest::newRow("in exclusive use") << u"--exclusive"_qs;
        QTest::newRow("in a transaction") << u"--transaction"_qs;
    }
    void finishedRowsSurviveTheProcess() {
        QFETCH(QString, deed);
        RunPlainSql(path_,
                    "CREATE TABLE Records (\"DateTime\" DATETIME NOT NULL PRIMARY KEY, "
                    "chan1 SINGLE) WITHOUT ROWID");
        OtherProgram other(deed, path_);
        for (int rows = 0; rows < 3000; ++rows) {
            QVERIFY(!other.NextLine().isEmpty());
        }
        if (deed == u"--exclusive") {
            QCOMPARE(OpenError(path_), int(adErrGeneral));
        }
        const int finished = other.Kill().toInt();
        QVERIFY(finished >= 3000);
        Connection connection;
        connection.Open(Source(path_));
        const std::int64_t stored = CountRecords(connection);
        connection.Close();
        QCOMPARE(QDir(folder_->path()).entryList(QDir::Files).size(), 1);
        if (deed == u"--transaction") {
            QCOMPARE(stored, 0);
            return;
        }
        // The last row may have been stored, and its telling cut off.
        QVERIFY2(stored == finished || stored == finished + 1, qPrintable(QString::number(stored)));
        QCOMPARE(DumpTable(path_,
                           u"SELECT count(*) FROM Records WHERE chan1 = "
                           "round((\"DateTime\" - 37257) * 96) * 0.5"_qs),
                 QString::number(stored));
    }

    void writesBesideAnotherProgram() {
        RunPlainSql(path_, kRecords);
        OtherProgram other(u"--rows"_qs, path_);
        QVERIFY(!other.NextLine().isEmpty());
        Connection connection;
        connection.Open(Source(path_));
        // The other one has the file: exclusive use can't be had, and each row still goes in.
        connection.BeginExclusiveUse();
        Recordset records;
        records.Open(u"Records"_qs, connection, adOpenUnspecified, adLockOptimistic);
        for (int i = 0; i < 100; ++i) {
            Append(records, -1 - i);
        }
        connection.EndExclusiveUse();
        connection.Close();
        other.Kill();
        QCOMPARE(OpenError(path_), 0);
        QCOMPARE(DumpTable(path_, u"SELECT count(*) FROM Records WHERE chan1 < 0"_qs), u"100"_qs);
    }

    void fullDiskLosesNothing_data() {
        QTest::addColumn<bool>("exclusive");
        QTest::newRow("row by row") << false;
        QTest::newRow("in exclusive use") << true;
    }
    void fullDiskLosesNothing() {
        QFETCH(bool, exclusive);
        RunPlainSql(path_, kRecords);
        int stored = 0;
        {
            Connection connection;
            connection.Open(Source(path_));
            if (exclusive) {
                connection.BeginExclusiveUse();
            }
            Recordset records;
            records.Open(u"Records"_qs, connection, adOpenUnspecified, adLockOptimistic);
            const FullDisk full(QFileInfo(path_).size());
            const int error = ErrorOf([&] {
                for (;; ++stored) {
                    Append(records, stored);
                }
            });
            QCOMPARE(error, int(adErrGeneral));
            QVERIFY(stored > 0);
            QCOMPARE(ErrorOf([&] { records.AddNew(); }), int(adErrGeneral));  // still pending
            records.CancelUpdate();
            QCOMPARE(CountRecords(connection), 5000 + stored);
            connection.EndExclusiveUse();
        }
        QCOMPARE(OpenError(path_), 0);
        QCOMPARE(DumpTable(path_, u"SELECT count(*) FROM Records"_qs),
                 QString::number(5000 + stored));
    }

    void fullDiskUndoesATransactionWhole() {
        RunPlainSql(path_, kRecords);
        Connection connection;
        connection.Open(Source(path_));
        {
            Transaction transaction(connection);
            connection.Execute(u"DELETE * FROM Records"_qs);
            const FullDisk full(4096);
            QCOMPARE(ErrorOf([&] { transaction.Commit(); }), int(adErrGeneral));
            // What comes after a lost beginning isn't stored either.
            QCOMPARE(
                ErrorOf([&] { connection.Execute(u"DELETE * FROM Records WHERE chan1 = 1"_qs); }),
                int(adErrGeneral));
            QCOMPARE(ErrorOf([&] { transaction.Commit(); }), int(adErrGeneral));
        }
        QCOMPARE(CountRecords(connection), 5000);
        connection.Execute(u"DELETE * FROM Records WHERE chan1 = 1"_qs);
        QCOMPARE(CountRecords(connection), 4999);
    }

    void compactsIntoANewFile_data() { opensAndLeavesOneFile_data(); }
    void compactsIntoANewFile() {
        QFETCH(QByteArray, sql);
        QFETCH(bool, companion);
        RunPlainSql(path_, sql + "DELETE FROM Records WHERE chan1 > 100");
        RunPlainSql(path_, kLateRow, companion);
        const QByteArray source = ReadBytes(path_);
        const QString target = path_ + u"qvx"_qs;
        JetEngine().CompactDatabase(Source(path_), Source(path_) + u"qvx"_qs);
        QCOMPARE(ReadBytes(path_), source);
        QCOMPARE(ReadBytes(target).mid(18, 2), "\1\1");
        QVERIFY(ReadBytes(target).size() < source.size() / 4);
        QCOMPARE(QDir(folder_->path()).entryList(QDir::Files).size(), companion ? 3 : 2);
        QCOMPARE(DumpTable(target, u"SELECT count(*), max(\"DateTime\") FROM Records"_qs),
                 DumpTable(path_, u"SELECT count(*), max(\"DateTime\") FROM Records"_qs));

        const auto compact = [&] { JetEngine().CompactDatabase(Source(path_), Source(target)); };
        QCOMPARE(ErrorOf(compact), int(adErrGeneral));  // it exists
        QFile::remove(target);
        const FullDisk full(2000);
        QCOMPARE(ErrorOf(compact), int(adErrGeneral));
        QVERIFY(!QFile::exists(target));
    }

    void closingEndsItsRecordsets() {
        RunPlainSql(path_, kRecords);
        Recordset reader;
        Recordset writer;
        {
            Connection connection;
            connection.Open(Source(path_));
            reader.Open(u"Records"_qs, connection, adOpenStatic, adLockReadOnly);
            writer.Open(u"Records"_qs, connection, adOpenDynamic, adLockOptimistic);
            writer.Fields(1).SetValue(99);
            connection.Close();
            QCOMPARE(connection.State() + reader.State() + writer.State(), 0);
            QCOMPARE(ErrorOf([&] { reader.MoveNext(); }), int(adErrObjectClosed));
            QCOMPARE(ErrorOf([&] { writer.Update(); }), int(adErrObjectClosed));
            QCOMPARE(ErrorOf([&] { connection.Execute(u"DELETE * FROM Records"_qs); }),
                     int(adErrObjectClosed));
            QCOMPARE(ErrorOf([&] { writer.Open(u"Records"_qs, connection); }),
                     int(adErrObjectClosed));
            connection.Open(Source(path_));
            reader.Open(u"Records"_qs, connection);
            QCOMPARE(reader.Fields(1).Number(), 0.0);  // the pending change is dropped
        }
        QCOMPARE(reader.State(), 0);
    }

private:
    void Damage(const QByteArray& damage) {
        QByteArray bytes = ReadBytes(path_);
        const qsizetype middle = bytes.size() / 8192 * 4096;
        if (damage == "empty") {
            bytes.clear();
        } else if (damage == "access") {
            bytes = QByteArray("\0\1\0\0Standard Jet DB\0", 20) + QByteArray(60000, '\0');
        } else if (damage == "header") {
            bytes.truncate(100);
        } else if (damage.startsWith("half")) {
            bytes.truncate(middle);
        } else if (damage == "last") {
            bytes.chop(100);
        } else if (damage.startsWith("noise")) {
            bytes.replace(middle, 4096, QByteArray(4096, '\x5a'));
        } else if (damage == "zeros") {
            bytes.replace(middle, 4096, QByteArray(4096, '\0'));
        }
        WriteBytes(path_, bytes);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
};

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments[1].startsWith(u"--")) {
        return RunDeed(arguments[1], arguments[2]);
    }
    TestAdoFile test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_adofile.moc"
