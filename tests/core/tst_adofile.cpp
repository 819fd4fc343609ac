// What becomes of the station's file: opening, refusing, closing, and being cut off on the way.
#include <sqlite3.h>
#include <unistd.h>

#include <QtTest>
#include <iostream>

#include "platform/ado/Connection.h"
#include "platform/ado/JetEngine.h"
#include "platform/ado/Recordset.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/DataRows.h"
#include "tests/support/Hardship.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

QString Source(const QString& path) {
    return u"Provider = Microsoft.Jet.OLEDB.4.0; Data Source = "_qs + path;
}

AdoErrorNumber OpenError(const QString& path) {
    Connection connection;
    return ErrorOf([&] { connection.Open(Source(path)); });
}

// The files beside it included.
int FilesOf(const QString& path) {
    return static_cast<int>(QFileInfo(path).dir().entryList(QDir::Files).size());
}

std::int64_t CountRecords(Connection& connection) {
    Recordset records;
    records.Open(u"SELECT DateTime FROM Records"_qs, connection);
    return records.RecordCount();
}

void OpenToAppend(Recordset& records, Connection& connection) {
    records.Open(u"Records"_qs, connection, adOpenUnspecified, adLockOptimistic);
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

// Says after each row how many are finished, or that it holds the lock.
[[noreturn]] void RunDeed(const QString& deed, const QString& path) {
    Connection connection;
    connection.Open(Source(path));
    if (deed == u"--exclusive") {
        connection.BeginExclusiveUse();
    } else if (deed == u"--transaction") {
        connection.BeginTrans();
    } else if (deed == u"--lock") {
        connection.Close();
        sqlite3* database = nullptr;
        sqlite3_open(qPrintable(path), &database);
        sqlite3_exec(database, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
        std::cout << "locked" << std::endl;
        ::pause();
    }
    Recordset records;
    OpenToAppend(records, connection);
    for (int i = 0;; ++i) {
        Append(records, i);
        std::cout << i + 1 << std::endl;
    }
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
        for (const char* damage : {"missing", "empty", "access", "half", "last", "half of free",
                                   "noise", "noise+wal", "half+wal", "lock"}) {
            QTest::newRow(damage) << QByteArray(damage);
        }
    }
    void refusesAndChangesNothing() {
        QFETCH(QByteArray, damage);
        if (damage != "missing") {
            RunPlainSql(path_, damage.contains('+') ? kWriteAhead : kRecords);
            if (damage.endsWith("wal")) {
                RunPlainSql(path_, kLateRow, true);
            }
            Damage(damage);
        }
        std::optional<OtherProgram> other;
        if (damage == "lock") {
            QCOMPARE(other.emplace(u"--lock"_qs, QStringList(path_)).NextLine(), "locked");
        }
        const QString before = FolderText(folder_->path());
        QCOMPARE(OpenError(path_), adErrGeneral);
        QCOMPARE(CompactError(), adErrGeneral);
        QCOMPARE(FolderText(folder_->path()), before);
    }

    // At rest a station is one file in rollback mode, whatever it was when it was opened.
    void opensAndLeavesOneFile_data() {
        const DataRows<QString, QByteArray, bool> row("mode", "sql", "companion");
        row("rollback", kRecords, false);
        row("write-ahead", kWriteAhead, false);
        row("write-ahead, of a killed program", kWriteAhead, true);
    }
    void opensAndLeavesOneFile() {
        MakeFile();
        Connection first;
        first.Open(Source(path_));
        QVERIFY(!first.IsReadOnly());
        QCOMPARE(ErrorOf([&] { first.Open(Source(path_)); }), adErrObjectOpen);
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
        QCOMPARE(FilesOf(path_), 1);
        QCOMPARE(ReadBytes(path_).mid(18, 2), "\1\1");
        QCOMPARE(DumpTable(path_, u"SELECT count(*), max(chan1) FROM Records"_qs),
                 u"4980 | 4999"_qs);
    }

    void readsWhatCantBeWritten_data() { opensAndLeavesOneFile_data(); }
    void readsWhatCantBeWritten() {
        MakeFile();
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
            QCOMPARE(ErrorOf([&] { records.Update(); }), adErrGeneral);
            QCOMPARE(ErrorOf([&] { connection.Execute(u"DELETE * FROM Records"_qs); }),
                     adErrGeneral);
            connection.BeginExclusiveUse();
            connection.EndExclusiveUse();
        }
        QFile::setPermissions(folder_->path(), QFile::Permissions(0x7777));
        QCOMPARE(FolderText(folder_->path()), before);
    }

    void finishedRowsSurviveTheProcess_data() {
        const DataRows<QString> row("deed");
        row("--rows");
        row("--exclusive");
        row("--transaction");
    }
    void finishedRowsSurviveTheProcess() {
        QFETCH(QString, deed);
        RunPlainSql(path_, kRecords.left(kRecords.indexOf(';')));
        OtherProgram other(deed, {path_});
        for (int rows = 0; rows < 3000; ++rows) {
            QVERIFY(!other.NextLine().isEmpty());
        }
        if (deed == u"--exclusive") {
            QCOMPARE(OpenError(path_), adErrGeneral);
        }
        const int finished = other.Kill().toInt();
        QVERIFY(finished >= 3000);
        Connection connection;
        connection.Open(Source(path_));
        const std::int64_t stored = CountRecords(connection);
        connection.Close();
        QCOMPARE(FilesOf(path_), 1);
        // The last row may have been stored, and its telling cut off.
        const bool whole = stored == finished || stored == finished + 1;
        QVERIFY2(deed == u"--transaction" ? stored == 0 : whole,
                 qPrintable(QString::number(stored)));
        QCOMPARE(DumpTable(path_,
                           u"SELECT count(*) FROM Records WHERE chan1 = "
                           "round((\"DateTime\" - 37257) * 96) * 0.5"_qs),
                 QString::number(stored));
    }

    void writesBesideAnotherProgram() {
        RunPlainSql(path_, kRecords);
        OtherProgram other(u"--rows"_qs, {path_});
        QVERIFY(!other.NextLine().isEmpty());
        Connection connection;
        connection.Open(Source(path_));
        // The other one has the file: exclusive use can't be had, and each row still goes in.
        connection.BeginExclusiveUse();
        Recordset records;
        OpenToAppend(records, connection);
        for (int i = 0; i < 100; ++i) {
            Append(records, -1 - i);
        }
        connection.EndExclusiveUse();
        connection.Close();
        other.Kill();
        QCOMPARE(OpenError(path_), noError);
        QCOMPARE(DumpTable(path_, u"SELECT count(*) FROM Records WHERE chan1 < 0"_qs), u"100"_qs);
    }

    void fullDiskLosesNothing_data() {
        const DataRows<bool> row("exclusive");
        row(false);
        row(true);
    }
    void fullDiskLosesNothing() {
        QFETCH(bool, exclusive);
        RunPlainSql(path_, kRecords);
        Connection connection;
        connection.Open(Source(path_));
        if (exclusive) {
            connection.BeginExclusiveUse();
        }
        Recordset records;
        OpenToAppend(records, connection);
        int stored = 0;
        {
            const FullDisk full(QFileInfo(path_).size());
            const AdoErrorNumber error = ErrorOf([&] {
                for (;; ++stored) {
                    Append(records, stored);
                }
            });
            QCOMPARE(error, adErrGeneral);
            QVERIFY(stored > 0);
            QCOMPARE(ErrorOf([&] { records.AddNew(); }), adErrGeneral);  // still pending
            records.CancelUpdate();
            QCOMPARE(CountRecords(connection), 5000 + stored);
            connection.EndExclusiveUse();
            connection.Close();
        }
        connection.Open(Source(path_));
        QCOMPARE(CountRecords(connection), 5000 + stored);
        const auto remove = [&] {
            connection.Execute(u"DELETE * FROM Records WHERE chan1 = 1"_qs);
        };
        {
            Transaction transaction(connection);
            connection.Execute(u"DELETE * FROM Records"_qs);
            const FullDisk full(4096);
            QCOMPARE(ErrorOf([&] { transaction.Commit(); }), adErrGeneral);
            // What comes after a lost beginning isn't stored either.
            QCOMPARE(ErrorOf(remove), adErrGeneral);
            QCOMPARE(ErrorOf([&] { transaction.Commit(); }), adErrGeneral);
        }
        QCOMPARE(CountRecords(connection), 5000 + stored);
        remove();
        QVERIFY(CountRecords(connection) < 5000 + stored);
    }

    void compactsIntoANewFile_data() { opensAndLeavesOneFile_data(); }
    void compactsIntoANewFile() {
        MakeFile("DELETE FROM Records WHERE chan1 > 100");
        const int files = FilesOf(path_);
        const QByteArray source = ReadBytes(path_);
        const QString target = path_ + u"qvx"_qs;
        QCOMPARE(CompactError(), noError);
        QCOMPARE(ReadBytes(path_), source);
        QCOMPARE(ReadBytes(target).mid(18, 2), "\1\1");
        QVERIFY(ReadBytes(target).size() < source.size() / 4);
        QCOMPARE(FilesOf(path_), files + 1);
        const QString rows = u"SELECT count(*), max(\"DateTime\") FROM Records"_qs;
        QCOMPARE(DumpTable(target, rows), DumpTable(path_, rows));
        QCOMPARE(CompactError(), adErrGeneral);  // it exists
        QVERIFY(QFile::remove(target));          // the refusal has left it
        const FullDisk full(2000);
        QCOMPARE(CompactError(), adErrGeneral);
        QVERIFY(!QFile::exists(target));
    }

    void closingEndsItsRecordsets() {
        RunPlainSql(path_, kRecords);
        Connection connection;
        connection.Open(Source(path_));
        Recordset reader;
        Recordset writer;
        reader.Open(u"Records"_qs, connection, adOpenStatic, adLockReadOnly);
        writer.Open(u"Records"_qs, connection, adOpenDynamic, adLockOptimistic);
        writer.Fields(1).SetValue(99);
        connection.Close();
        QCOMPARE(connection.State() + reader.State() + writer.State(), 0);
        QCOMPARE(ErrorOf([&] { reader.MoveNext(); }), adErrObjectClosed);
        QCOMPARE(ErrorOf([&] { writer.Update(); }), adErrObjectClosed);
        QCOMPARE(ErrorOf([&] { connection.Execute(u"DELETE * FROM t"_qs); }), adErrObjectClosed);
        QCOMPARE(ErrorOf([&] { writer.Open(u"Records"_qs, connection); }), adErrObjectClosed);
        connection.Open(Source(path_));
        reader.Open(u"Records"_qs, connection);
        QCOMPARE(reader.Fields(1).Number(), 0.0);  // the pending change is dropped
    }

private:
    void MakeFile(const QByteArray& change = {}) const {
        QFETCH(QByteArray, sql);
        QFETCH(bool, companion);
        RunPlainSql(path_, sql + change);
        RunPlainSql(path_, kLateRow, companion);
        QCOMPARE(QFile::exists(path_ + u"-wal"_qs), companion);
    }

    AdoErrorNumber CompactError() const {
        return ErrorOf(
            [this] { JetEngine().CompactDatabase(Source(path_), Source(path_ + u"qvx"_qs)); });
    }

    void Damage(const QByteArray& damage) {
        QByteArray bytes = ReadBytes(path_);
        const qsizetype middle = bytes.size() / 8192 * 4096;
        if (damage == "empty") {
            bytes.clear();
        } else if (damage == "access") {
            bytes = QByteArray("\0\1\0\0Standard Jet DB\0", 20) + QByteArray(60000, '\0');
        } else if (damage.startsWith("half")) {
            bytes.truncate(middle);
        } else if (damage == "last") {
            bytes.chop(100);
        } else if (damage.startsWith("noise")) {
            bytes.replace(middle, 4096, QByteArray(4096, '\x5a'));
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
        RunDeed(arguments[1], arguments[2]);
    }
    TestAdoFile test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_adofile.moc"
