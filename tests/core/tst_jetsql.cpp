#include <QtTest>

#include "platform/ado/Connection.h"
#include "platform/ado/JetSql.h"
#include "platform/ado/Recordset.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/CompareEach.h"
#include "tests/support/DataRows.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

class TestJetSql : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(u"station.mdb"_qs);
        RunPlainSql(path_,
                    "CREATE TABLE Journal (\n"
                    "  \"DateTime\" DATETIME, -- of the visit, local\n"
                    "  chan SMALLINT NOT NULL DEFAULT (1 + 0) CHECK (chan > 0 AND chan < 100),\n"
                    "  notes TEXT ( 50 ) COLLATE NOCASE, [read 1] SINGLE UNIQUE);"
                    "CREATE INDEX byTime ON Journal (\"DateTime\");"
                    "INSERT INTO Journal VALUES (3, 2, 'x', 1.5), (1, 1, NULL, 2.5);"
                    "CREATE TABLE Records (\"DateTime\" DATETIME PRIMARY KEY, chan1 SINGLE) "
                    "WITHOUT ROWID;"
                    "INSERT INTO Records VALUES (2, 5), (1, 4)");
        connection_.Open(u"Data Source = "_qs + path_);
    }
    void cleanup() { connection_.Close(); }

    void translates() {
        const auto translate = [](const QString& statement) {
            QString translated;
            const AdoErrorNumber error = ErrorOf([&] {
                const JetStatement result = TranslateJetSql(statement);
                translated = result.kind == JetStatement::Kind::Plain
                                 ? QString::fromUtf8(result.sql)
                                 : QStringList{result.table, result.column, result.type}.join(u'|');
            });
            return error == noError ? translated : QString::number(error);
        };
        CompareEach(translate,
                    "SELECT * FROM Records WHERE DateTime >= #1/31/2002# ORDER BY DateTime  => "
                    "SELECT * FROM Records WHERE DateTime >= 37287.0 ORDER BY DateTime ; "
                    "DELETE * FROM t WHERE a >= #1/2/2002 12:00:00 PM# and a <= #1/1/1801# => "
                    "DELETE  FROM t WHERE a >= 37258.5 and a <= -36157.0; "
                    "delete  *  from t => delete    from t; "
                    "SELECT a * b, '#1/1/2002# DELETE * FROM ''t''', [a #1], \"b #\" FROM t => "
                    "SELECT a * b, '#1/1/2002# DELETE * FROM ''t''', [a #1], \"b #\" FROM t; "
                    "ALTER TABLE Records ADD COLUMN chan2 SINGLE => "
                    "ALTER TABLE Records ADD COLUMN chan2 SINGLE; "
                    "alter table [my t] alter column [a b] text ( 255 ) => my t|a b|text(255)");
        CompareAll(translate, QString::number(adErrSyntax),
                   "SELECT * FROM t WHERE a = #31/1/2002#; SELECT * FROM t WHERE a = #1/1/2002; "
                   "SELECT * FROM t WHERE a = ##; SELECT 'it''s FROM t; "
                   "ALTER TABLE t ALTER COLUMN a FLOWS; ALTER TABLE t ADD COLUMN a");
    }

    // A bound that lost its last bit on the way through the text would lose the reading on it.
    void literalsKeepEveryBit() {
        for (const int day : {-36157, 0, 2, 37257, 73050, 401769}) {
            for (int second = 0; second < 86400; second += 37) {
                const DateTime moment = MomentOf(day, second);
                Recordset answer;
                answer.Open(u"SELECT #%1#"_qs.arg(SqlDateText(moment)), connection_);
                QVERIFY2(answer.Fields(0).Number() == moment, qPrintable(SqlDateText(moment)));
            }
        }
    }

    void altersTables_data() {
        const DataRows<QString, int, QString> row("statement", "error", "outcome");
        const QString journal =
            u"CREATE TABLE \"Journal\" (\n"
            "  \"DateTime\" DATETIME, -- of the visit, local\n"
            "  chan SMALLINT NOT NULL DEFAULT (1 + 0) CHECK (chan > 0 AND chan < 100),\n"
            "  notes %1 COLLATE NOCASE, [read 1] %2 UNIQUE)\n"
            "CREATE INDEX byTime ON Journal (\"DateTime\")\n1900-01-02 00:00:00 | 2 | x | 1.5\n"
            "1899-12-31 00:00:00 | 1 | NULL | 2.5"_qs;
        const QString untouched = QString(journal)
                                      .replace(u"\"Journal\""_qs, u"Journal"_qs)
                                      .arg(u"TEXT ( 50 )"_qs, u"SINGLE"_qs);
        const QString records =
            u"CREATE TABLE %1 (\"DateTime\" DATETIME PRIMARY KEY, %2) WITHOUT ROWID\n%3"_qs;
        row("ALTER TABLE Journal ALTER COLUMN NOTES TEXT(255)", 0,
            journal.arg(u"TEXT(255)"_qs, u"SINGLE"_qs));
        row("ALTER TABLE journal ALTER COLUMN [read 1] DOUBLE", 0,
            QString(journal)
                .replace(u"\"Journal\""_qs, u"\"journal\""_qs)
                .arg(u"TEXT ( 50 )"_qs, u"DOUBLE"_qs));
        row("ALTER TABLE Journal ALTER COLUMN notes text(50)", 0, untouched);
        row("ALTER TABLE Journal ALTER COLUMN chin TEXT(255)", adErrSyntax, untouched);
        row("ALTER TABLE Journal ADD COLUMN notes TEXT(255)", adErrSyntax, untouched);
        row("ALTER TABLE Journal DROP COLUMN chan2", adErrSyntax, untouched);
        row("ALTER TABLE Records ALTER COLUMN chan1 DOUBLE", 0,
            records.arg(u"\"Records\""_qs, u"chan1 DOUBLE"_qs,
                        u"1899-12-31 00:00:00 | 4\n1900-01-01 00:00:00 | 5"_qs));
        row("ALTER TABLE Records ADD COLUMN chan2 SINGLE", 0,
            records.arg(u"Records"_qs, u"chan1 SINGLE, chan2 SINGLE"_qs,
                        u"1899-12-31 00:00:00 | 4 | NULL\n1900-01-01 00:00:00 | 5 | NULL"_qs));
        row("ALTER TABLE Records DROP COLUMN chan1", 0,
            u"CREATE TABLE Records (\"DateTime\" DATETIME PRIMARY KEY) WITHOUT ROWID\n"
            "1899-12-31 00:00:00\n1900-01-01 00:00:00"_qs);
        row("ALTER TABLE Nowhere ALTER COLUMN notes TEXT(255)", adErrSyntax,
            "\nFailed: no such table: Nowhere");
        row("ALTER TABLE Nowhere ADD COLUMN notes TEXT(255)", adErrSyntax,
            "\nFailed: no such table: Nowhere");
    }
    void altersTables() {
        QFETCH(QString, statement);
        QFETCH(int, error);
        QFETCH(QString, outcome);
        const QString table = statement.section(u' ', 2, 2);
        const QString before = TableText(table);
        connection_.BeginTrans();
        QCOMPARE(ExecuteError(statement), error);
        connection_.RollbackTrans();
        QCOMPARE(TableText(table), before);
        QCOMPARE(ExecuteError(statement), error);
        QCOMPARE(TableText(table), outcome);
    }

    // An older station is upgraded whole or stays as it was.
    void anOpenWalkKeepsItsTable() {
        Recordset rows;
        rows.Open(u"Journal"_qs, connection_);
        const QString before = TableText(u"Journal"_qs);
        QCOMPARE(ExecuteError(u"ALTER TABLE Journal ALTER COLUMN notes TEXT(255)"_qs),
                 adErrGeneral);
        QCOMPARE(TableText(u"Journal"_qs), before);
        rows.MoveNext();
        QCOMPARE(rows.Fields(1).Number(), 1.0);
    }

private:
    int ExecuteError(const QString& statement) {
        return ErrorOf([&] { connection_.Execute(statement); });
    }

    // The statements that make the table, then its rows.
    QString TableText(const QString& table) const {
        return DumpTable(path_,
                         u"SELECT sql FROM sqlite_schema WHERE tbl_name = '%1' COLLATE NOCASE "
                         "AND sql IS NOT NULL"_qs.arg(table)) +
               u'\n' + DumpTable(path_, u"SELECT * FROM "_qs + table);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
    Connection connection_;
};

QTEST_GUILESS_MAIN(TestJetSql)
#include "tst_jetsql.moc"
