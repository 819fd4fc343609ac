#include <QtTest>

#include "platform/ado/Connection.h"
#include "platform/ado/JetSql.h"
#include "platform/ado/Recordset.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/CompareEach.h"
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
                    "  \"DateTime\" DATETIME PRIMARY KEY, -- of the visit, local\n"
                    "  chan SMALLINT NOT NULL DEFAULT (1 + 0) CHECK (chan > 0 AND chan < 100),\n"
                    "  notes TEXT ( 50 ), [read 1] SINGLE UNIQUE) WITHOUT ROWID;"
                    "CREATE INDEX byNotes ON Journal (notes);"
                    "INSERT INTO Journal VALUES (3, 2, 'x', 1.5), (1, 1, NULL, 2.5)");
        connection_.Open(u"Data Source = "_qs + path_);
    }
    void cleanup() { connection_.Close(); }

    void translates() {
        const auto translate = [](const QString& statement) {
            return QString::fromUtf8(TranslateJetSql(statement).sql);
        };
        CompareEach(translate,
                    "SELECT * FROM Records WHERE DateTime >= #1/31/2002# ORDER BY DateTime  => "
                    "SELECT * FROM Records WHERE DateTime >= 37287.0 ORDER BY DateTime ; "
                    "DELETE * FROM t WHERE a >= #1/2/2002 12:00:00 PM# and a <= #1/1/1801# => "
                    "DELETE  FROM t WHERE a >= 37258.5 and a <= -36157.0; "
                    "SELECT a * b, '#1/1/2002# DELETE * FROM ''t''', [a #1], \"b #\" FROM t => "
                    "SELECT a * b, '#1/1/2002# DELETE * FROM ''t''', [a #1], \"b #\" FROM t");
    }

    void refuses() {
        const QString before = TableText();
        const auto execute = [this](const QString& statement) { return ExecuteError(statement); };
        CompareAll(execute, QString::number(adErrSyntax),
                   "DELETE * FROM Journal WHERE DateTime < #31/1/2002#; "
                   "DELETE * FROM Journal WHERE DateTime < #1/1/2002; DELETE FROM Journal '; "
                   "ALTER TABLE Journal ALTER COLUMN notes FLOWS; "
                   "ALTER TABLE Journal ALTER COLUMN chin TEXT(255); "
                   "ALTER TABLE Journal ADD COLUMN notes TEXT(255); "
                   "ALTER TABLE Journal ADD COLUMN a; ALTER TABLE Journal DROP COLUMN chan2; "
                   "ALTER TABLE Nowhere ALTER COLUMN notes TEXT(255)");
        QCOMPARE(TableText(), before);
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

    void alteringAColumnKeepsTheRest() {
        const QString before = TableText();
        const QString statement = u"ALTER TABLE Journal ALTER COLUMN NOTES TEXT(255)"_qs;
        connection_.BeginTrans();
        connection_.Execute(statement);
        connection_.RollbackTrans();
        QCOMPARE(TableText(), before);
        connection_.Execute(statement);
        QString after = QString(before)
                            .replace(u"CREATE TABLE Journal"_qs, u"CREATE TABLE \"Journal\""_qs)
                            .replace(u"TEXT ( 50 )"_qs, u"TEXT(255)"_qs);
        QCOMPARE(TableText(), after);
        connection_.Execute(u"ALTER TABLE Journal ALTER COLUMN [read 1] DOUBLE"_qs);
        QCOMPARE(TableText(), after.replace(u"[read 1] SINGLE"_qs, u"[read 1] DOUBLE"_qs));
        connection_.Execute(u"ALTER TABLE Journal ADD COLUMN chan2 SINGLE"_qs);
        QCOMPARE(DumpTable(path_, u"Journal"_qs),
                 u"1899-12-31 00:00:00 | 1 | NULL | 2.5 | NULL\n"
                 "1900-01-02 00:00:00 | 2 | x | 1.5 | NULL"_qs);
    }

    // An older station is upgraded whole or stays as it was.
    void anOpenWalkKeepsItsTable() {
        Recordset rows;
        rows.Open(u"Journal"_qs, connection_);
        const QString before = TableText();
        QCOMPARE(ExecuteError(u"ALTER TABLE Journal ALTER COLUMN notes TEXT(255)"_qs),
                 QString::number(adErrGeneral));
        QCOMPARE(TableText(), before);
        rows.MoveNext();
        QCOMPARE(rows.Fields(1).Number(), 2.0);
    }

private:
    QString ExecuteError(const QString& statement) {
        return QString::number(ErrorOf([&] { connection_.Execute(statement); }));
    }

    // The statements that make the journal, then its rows.
    QString TableText() const {
        return DumpTable(
                   path_,
                   u"SELECT sql FROM sqlite_schema WHERE tbl_name = 'Journal' AND sql > ''"_qs) +
               u'\n' + DumpTable(path_, u"Journal"_qs);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
    Connection connection_;
};

QTEST_GUILESS_MAIN(TestJetSql)
#include "tst_jetsql.moc"
