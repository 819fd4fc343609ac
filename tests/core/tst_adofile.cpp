// What becomes of the station's file: opening, refusing, closing, and being cut off on the way.
#include <sqlite3.h>

#include "platform/ado/JetEngine.h"
#include "tests/support/CoreTest.h"

using namespace rillbook;

namespace {

QString Source(const QString& path) {
    return u"Provider = Microsoft.Jet.OLEDB.4.0; Data Source = "_qs + path;
}

std::int64_t CountRecords(Connection& connection) {
    Recordset records;
    records.Open(u"SELECT DateTime FROM Records"_qs, connection);
    return records.RecordCount();
}

void OpenToAppend(Recordset& records, Connection& connection) {
    records.Open(u"Records"_qs, connection, adOpenUnspecified, adLockOptimistic);
}

const QByteArray kRecords =
    "CREATE TABLE Records (\"DateTime\" DATETIME NOT NULL PRIMARY KEY, chan1 SINGLE) WITHOUT ROWID;"
    "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 4999) "
    "INSERT INTO Records SELECT 30000 + i / 96.0, i FROM n;";
const QByteArray kWriteAhead = "PRAGMA journal_mode = WAL;" + kRecords;
const QByteArray kLateRow = "INSERT INTO Records VALUES (50000, 1.5)";

}  // namespace

class TestAdoFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(u"weir #5; 50%?.mdb"_qs);
    }

    void refusesAndChangesNothing() {
        const auto refused = [this] {
            const QString before = FolderText(folder_->path());
            const AdoErrorNumber error = ErrorOf([this] { Connection().Open(Source(path_)); });
            return error == adErrGeneral && CompactError() == adErrGeneral &&
                   FolderText(folder_->path()) == before;
        };
        QVERIFY(refused());
        RunPlainSql(path_, kRecords);
        const QByteArray sound = ReadBytes(path_);
        const QByteArray noise = QByteArray(sound).replace(81920, 4096, QByteArray(4096, 'x'));
        for (const QByteArray& bytes :
             {QByteArray(), QByteArray("\0\1\0\0Standard Jet DB\0", 20) + QByteArray(60000, '\0'),
              sound.left(81920), sound.chopped(100), noise}) {
            WriteBytes(path_, bytes);
            QVERIFY2(refused(), qPrintable(QString::number(bytes.size())));
        }
        QFile::remove(path_);
        RunPlainSql(path_, kWriteAhead);
        RunPlainSql(path_, kLateRow, true);
        WriteBytes(path_, ReadBytes(path_).replace(81920, 4096, QByteArray(4096, 'x')));
        QVERIFY(refused());
        QFile::remove(path_ + u"-wal"_qs);
        WriteBytes(path_, sound);
        sqlite3* other = nullptr;
        sqlite3_open(qPrintable(path_), &other);
        sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
        QVERIFY(refused());
        sqlite3_close(other);
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

    // Changes that stayed beside the old name would be taken for those of the next file there.
    void leavesNothingBesideAFileMovedAway() {
        RunPlainSql(path_, kRecords);
        Connection connection;
        connection.Open(Source(path_));
        connection.Execute(u"DELETE * FROM Records WHERE chan1 < 10"_qs);
        const QString moved = folder_->filePath(u"moved.mdb"_qs);
        QVERIFY(QFile::rename(path_, moved));
        connection.Close();
        QCOMPARE(QDir(folder_->path()).entryList(QDir::Files), QStringList(u"moved.mdb"_qs));
        QCOMPARE(DumpTable(moved, u"SELECT count(*) FROM Records"_qs), u"4990"_qs);
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
            OpenToAppend(records, connection);
            records.Fields(1).SetValue(2);
            QCOMPARE(ErrorOf([&] { records.Update(); }), adErrGeneral);
        }
        QFile::setPermissions(folder_->path(), QFile::Permissions(0x7777));
        QCOMPARE(FolderText(folder_->path()), before);
    }

    void fullDiskLosesNothing() {
        RunPlainSql(path_, kRecords);
        Connection connection;
        connection.Open(Source(path_));
        Recordset records;
        OpenToAppend(records, connection);
        records.AddNew();
        records.Fields(0).SetValue(1);
        const auto remove = [&] { connection.Execute(u"DELETE * FROM Records"_qs); };
        {
            Transaction transaction(connection);
            remove();
            {
                const FullDisk full(4096);
                try {
                    transaction.Commit();
                    QFAIL("stored");
                } catch (const AdoError& error) {
                    QCOMPARE(error.Description(), u"The disk is full"_qs);
                }
            }
            // What comes after a lost beginning isn't stored either.
            QCOMPARE(ErrorOf(remove), adErrGeneral);
            QCOMPARE(ErrorOf([&] { records.Update(); }), adErrGeneral);
            QCOMPARE(ErrorOf([&] { transaction.Commit(); }), adErrGeneral);
            records.CancelUpdate();
        }
        QCOMPARE(CountRecords(connection), 5000);
        remove();
        QCOMPARE(CountRecords(connection), 0);
    }

    void compactsIntoANewFile_data() { opensAndLeavesOneFile_data(); }
    void compactsIntoANewFile() {
        MakeFile("DELETE FROM Records WHERE chan1 > 100");
        const qint64 size = QFileInfo(path_).size();
        const QString target = path_ + u"qvx"_qs;
        QCOMPARE(CompactError(), noError);
        QCOMPARE(ReadBytes(target).mid(18, 2), "\1\1");
        QVERIFY(ReadBytes(target).size() < size / 4);
        const QString rows = u"SELECT count(*), max(\"DateTime\") FROM Records"_qs;
        QCOMPARE(DumpTable(target, rows), DumpTable(path_, rows));
        QCOMPARE(CompactError(), adErrGeneral);  // it exists
        QVERIFY(QFile::remove(target));          // the refusal has left it
        const FullDisk full(2000);
        QCOMPARE(CompactError(), adErrGeneral);
        QVERIFY(!QFile::exists(target));
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

    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
};

QTEST_GUILESS_MAIN(TestAdoFile)
#include "tst_adofile.moc"
