#include <QtTest>

#include "platform/ado/Connection.h"
#include "platform/ado/JetSql.h"
#include "platform/ado/Recordset.h"
#include "tests/support/AdoErrors.h"
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

    void translates_data() {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("sqlite");
        const auto row = [](const char* statement, const char* sqlite) {
            QTest::newRow(statement) << QString::fromUtf8(statement) << QString::fromUtf8(sqlite);
        };
        row("SELECT * FROM Records WHERE DateTime >= #1/31/2002# ORDER BY DateTime ",
            "SELECT * FROM Records WHERE DateTime >= 37287.0 ORDER BY DateTime ");
        row("DELETE * FROM t WHERE a >= #1/2/2002 12:00:00 PM# and a <= #1/1/1801#",
            "DELETE  FROM t WHERE a >= 37258.5 and a <= -36157.0");
        row("delete  *  from t", "delete    from t");
        row("SELECT '#1/1/2002# DELETE * FROM ''t''', [a #1], \"b #\" FROM t",
            "SELECT '#1/1/2002# DELETE * FROM ''t''', [a #1], \"b #\" FROM t");
        row("SELECT a * b FROM t", "SELECT a * b FROM t");
        row("ALTER TABLE Records ADD COLUMN chan2 SINGLE",
            "ALTER TABLE Records ADD COLUMN chan2 SINGLE");
        row("alter table [my t] alter column [a b] text ( 255 )", "my t; a b; text(255)");
        row("SELECT * FROM t WHERE a = #31/1/2002#", "error");
        row("SELECT * FROM t WHERE a = #1/1/2002", "error");
        row("SELECT * FROM t WHERE a = ##", "error");
        row("SELECT 'it''s FROM t", "error");
        row("ALTER TABLE t ALTER COLUMN a FLOWS", "error");
        row("ALTER TABLE t ADD COLUMN a", "error");
    }
    void translates() {
        QFETCH(QString, statement);
        QFETCH(QString, sqlite);
        QString translated = u"error"_qs;
        const int error = ErrorOf([&] {
            const JetStatement result = TranslateJetSql(statement);
            translated = result.kind == JetStatement::Kind::Plain
                             ? QString::fromUtf8(result.sql)
                             : QStringList{result.table, result.column, result.type}.join(u"; ");
        });
        QCOMPARE(translated, sqlite);
        QCOMPARE(error, sqlite == u"error" ? int(adErrSyntax) : 0);
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
        QTest::addColumn<QString>("statement");
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("outcome");
        const QString journal =
            u"CREATE TABLE \"Journal\" (\n"
            "  \"DateTime\" DATETIME, -- of the visit, local\n"
            "  chan SMALLINT NOT NULL DEFAULT (1 + 0) CHECK (chan > 0 AND chan < 100),\n"
            "  notes %1 COLLATE NOCASE, [read 1] %2 UNIQUE)\n"
            "CREATE INDEX byTime ON Journal (\"DateTime\")\n3|2|x|1.5\n1|1|NULL|2.5"_qs;
        const QString untouched = QString(journal)
                                      .replace(u"\"Journal\""_qs, u"Journal"_qs)
                                      .arg(u"TEXT ( 50 )"_qs, u"SINGLE"_qs);
        const QString records =
            u"CREATE TABLE %1 (\"DateTime\" DATETIME PRIMARY KEY, %2) WITHOUT ROWID\n%3"_qs;
        const auto row = [](const char* statement, int error, const QString& outcome) {
            QTest::newRow(statement) << QString::fromLatin1(statement) << error << outcome;
        };
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
            records.arg(u"\"Records\""_qs, u"chan1 DOUBLE"_qs, u"1|4\n2|5"_qs));
        row("ALTER TABLE Records ADD COLUMN chan2 SINGLE", 0,
            records.arg(u"Records"_qs, u"chan1 SINGLE, chan2 SINGLE"_qs, u"1|4|NULL\n2|5|NULL"_qs));
        row("ALTER TABLE Records DROP COLUMN chan1", 0,
            u"CREATE TABLE Records (\"DateTime\" DATETIME PRIMARY KEY) WITHOUT ROWID\n1\n2"_qs);
        row("ALTER TABLE Nothing ALTER COLUMN notes TEXT(255)", adErrSyntax, QString());
        row("ALTER TABLE Nothing ADD COLUMN notes TEXT(255)", adErrSyntax, QString());
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
                 int(adErrGeneral));
        QCOMPARE(TableText(u"Journal"_qs), before);
        rows.MoveNext();
        QCOMPARE(rows.Fields(1).Number(), 1.0);
    }

private:
    int ExecuteError(const QString& statement) {
        return ErrorOf([&] { connection_.Execute(statement); });
    }

    // The statements that make the table, then its rows.
    QString TableText(const QString& table) {
        QStringList lines;
        for (
            const QString& source :
            {u"SELECT sql FROM sqlite_schema WHERE tbl_name = '%1' COLLATE NOCASE AND sql IS NOT NULL"_qs
                 .arg(table),
             table}) {
            Recordset rows;
            if (ErrorOf([&] { rows.Open(source, connection_); }) != 0) {
                break;
            }
            for (; !rows.Eof(); rows.MoveNext()) {
                QStringList cells;
                for (int i = 0; i < rows.FieldCount(); ++i) {
                    const Variant value = rows.Fields(i).Value();
                    const double* number = std::get_if<double>(&value);
                    cells += number != nullptr                         ? QString::number(*number)
                             : std::get_if<QString>(&value) != nullptr ? std::get<QString>(value)
                                                                       : u"NULL"_qs;
                }
                lines += cells.join(u'|');
            }
        }
        return lines.join(u'\n');
    }

    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
    Connection connection_;
};

QTEST_GUILESS_MAIN(TestJetSql)
#include "tst_jetsql.moc"
