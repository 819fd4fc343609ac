// The statements of the program's own dialect; walking through rows and changing them.
#include "tests/support/CoreTest.h"

using namespace rillbook;

namespace {

QString ErrorText(AdoErrorNumber error) {
    return QString::number(error);
}

const QByteArray kTables =
    "CREATE TABLE Records (\"DateTime\" DATETIME NOT NULL PRIMARY KEY, chan1 SINGLE, chan2 SINGLE) "
    "WITHOUT ROWID;"
    "INSERT INTO Records VALUES (37258, 2, 20), (37257, 1, 10), (37260, 4, NULL), (37259, 3, 30);"
    "CREATE TABLE Information (Name TEXT(5), chan SMALLINT);"
    "INSERT INTO Information VALUES ('b', 1), ('a', 2), (NULL, 3);"
    "CREATE TABLE Journal (\n  \"DateTime\" DATETIME PRIMARY KEY, -- of the visit, local\n"
    "  chan SMALLINT NOT NULL DEFAULT (1 + 0) CHECK (chan > 0 AND chan < 100),\n"
    "  notes TEXT ( 50 ), [read 1] SINGLE UNIQUE) WITHOUT ROWID;"
    "CREATE INDEX byNotes ON Journal (notes);"
    "INSERT INTO Journal VALUES (3, 2, 'x', 1.5), (1, 1, NULL, 2.5)";

}  // namespace

class TestAdo : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(u"station.mdb"_qs);
        RunPlainSql(path_, kTables);
        connection_ = std::make_unique<Connection>();
        connection_->Open(u"Data Source = "_qs + path_);
    }
    void cleanup() {
        connection_.reset();
        RegionalSettings() = Regional();
    }

    void refuses() {
        const auto execute = [this](const QString& statement) { return ExecuteError(statement); };
        CompareAll(execute, ErrorText(adErrSyntax),
                   "DELETE * FROM Journal WHERE DateTime < #31/1/2002#; "
                   "DELETE * FROM Journal WHERE DateTime < #1/1/2002; DELETE FROM Journal '; "
                   "ALTER TABLE Journal ALTER COLUMN notes FLOWS; "
                   "ALTER TABLE Journal ALTER COLUMN chin TEXT(255); "
                   "ALTER TABLE Journal ADD COLUMN notes TEXT(255); "
                   "ALTER TABLE Journal ADD COLUMN a; ALTER TABLE Journal DROP COLUMN chan2; "
                   "ALTER TABLE Nowhere ALTER COLUMN notes TEXT(255)");
    }

    // A bound that lost its last bit on the way through the text would lose the reading on it.
    void literalsKeepEveryBit() {
        for (const int day : {-36157, 0, 2, 37257, 73050, 401769}) {
            for (int second = 0; second < 86400; second += 37) {
                const DateTime moment = MomentOf(day, second);
                Recordset answer;
                answer.Open(u"SELECT #%1#"_qs.arg(SqlDateText(moment)), *connection_);
                QVERIFY2(answer.Fields(0).Number() == moment, qPrintable(SqlDateText(moment)));
            }
        }
    }

    void alteringAColumnKeepsTheRest() {
        const QString before = TableText();
        const QString statement = u"ALTER TABLE Journal ALTER COLUMN NOTES TEXT(255)"_qs;
        connection_->BeginTrans();
        connection_->Execute(statement);
        connection_->RollbackTrans();
        QCOMPARE(TableText(), before);
        connection_->Execute(statement);
        QString after = QString(before)
                            .replace(u"CREATE TABLE Journal"_qs, u"CREATE TABLE \"Journal\""_qs)
                            .replace(u"TEXT ( 50 )"_qs, u"TEXT(255)"_qs);
        QCOMPARE(TableText(), after);
        connection_->Execute(u"ALTER TABLE Journal ALTER COLUMN [read 1] DOUBLE"_qs);
        QCOMPARE(TableText(), after.replace(u"[read 1] SINGLE"_qs, u"[read 1] DOUBLE"_qs));
        connection_->Execute(u"ALTER TABLE Journal ADD COLUMN chan2 SINGLE"_qs);
        QCOMPARE(DumpTable(path_, u"Journal"_qs),
                 u"1899-12-31 00:00:00 | 1 | NULL | 2.5 | NULL\n"
                 "1900-01-02 00:00:00 | 2 | x | 1.5 | NULL"_qs);
    }

    // What a column of a type makes of a value: as SQLite has it, and as the field shows it.
    void conversions() {
        // A user whose dates have the day first.
        RegionalSettings().shortDate = u"dd.MM.yyyy"_qs;
        RegionalSettings().longTime = u"HH:mm:ss"_qs;
        const auto convert = [this](const QString& typeAndValue) {
            const QString type = typeAndValue.section(u" = "_qs, 0, 0);
            const QString value = typeAndValue.section(u" = "_qs, 1);
            connection_->Execute(u"DROP TABLE IF EXISTS t"_qs);
            connection_->Execute(u"CREATE TABLE t (v %1)"_qs.arg(type));
            connection_->Execute(u"INSERT INTO t VALUES (1)"_qs);
            Recordset rows;
            rows.Open(u"t"_qs, *connection_, adOpenKeyset, adLockOptimistic);
            const AdoErrorNumber error = ErrorOf([&] {
                rows.Fields(0).SetValue(value == u"NULL"          ? Variant(Null{})
                                        : value.startsWith(u'\'') ? Variant(value.mid(1).chopped(1))
                                                                  : Variant(value.toDouble()));
            });
            const QString shown = rows.Fields(0).IsNull() ? u"NULL"_qs : rows.Fields(0).Text();
            rows.Update();
            const QString stored = DumpTable(path_, u"SELECT printf('%!.17g', v), v FROM t"_qs);
            // A refused value leaves the field as it was.
            return error != noError ? stored.section(u" | "_qs, 0, 0) + u' ' + ErrorText(error)
                                    : stored + u" | "_qs + shown;
        };
        CompareEach(convert,
                    "SINGLE = 1.2 => 1.2000000476837158 | 1.2 | 1.2; "
                    "SINGLE = '-.24071' => -0.24071000516414642 | -0.24071 | -0.24071; "
                    "SINGLE = NULL => 0.0 | NULL | NULL; "
                    "DOUBLE = 0.1 => 0.10000000000000001 | 0.1 | 0.1; "
                    "SMALLINT = 2.5 => 2.0 | 2 | 2; SMALLINT = 3.5 => 4.0 | 4 | 4; "
                    "SMALLINT = '-32768.4' => -32768.0 | -32768 | -32768; "
                    "DATETIME = '02.01.2002 12:00' => "
                    "37258.5 | 2002-01-02 12:00:00 | 02.01.2002 12:00:00; "
                    "DATETIME = -36157 => -36157.0 | 1801-01-01 00:00:00 | 01.01.1801; "
                    "text ( 5 ) = 'caf\u00e9s' => 0.0 | caf\u00e9s | caf\u00e9s; "
                    "TEXT(5) = '' => 0.0 |  | ; TEXT = 1.5e20 => 1.5e+20 | 1.5E+20 | 1.5E+20");
        CompareAll(convert, u"1.0 "_qs + ErrorText(adErrTypeMismatch),
                   "SINGLE = 3.5e38; SINGLE = ''; SINGLE = '2.5 ft'; SINGLE = '2,5'; "
                   "SINGLE = 'nan'; DOUBLE = nan; DOUBLE = inf; DOUBLE = '1e999'; "
                   "SMALLINT = 32767.5; DATETIME = '30.2.2002'; DATETIME = ''; DATETIME = 2958466");
        CompareAll(convert, u"1.0 "_qs + ErrorText(adErrTextTooLong),
                   "TEXT(5) = 'caf\u00e9s!'; TEXT(5) = 1234.5");
    }

    void changesAreWrittenOnLeavingTheRow() {
        Recordset rows;
        OpenReadings(rows);
        rows.Fields(1).SetValue(1.5);
        RunPlainSql(path_, "UPDATE Records SET chan2 = 11 WHERE chan1 = 1");
        rows.MoveNext();  // writes chan1 alone
        rows.Fields(1).SetValue(2.5);
        rows.Fields(2).SetValue(Null{});
        rows.MoveLast();
        rows.Fields(1).SetValue(4.5);
        rows.CancelUpdate();
        QCOMPARE(rows.Fields(1).Number(), 4.0);
        rows.Fields(0).SetValue(37257);  // taken
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(ErrorOf([&] { rows.MoveFirst(); }), adErrDuplicate);
            QCOMPARE(ErrorOf([&] { rows.AddNew(); }), adErrDuplicate);
            QCOMPARE(rows.Fields(0).Text() + u' ' + rows.Fields(1).Text(), u"1/1/2002 4"_qs);
        }
        rows.Fields(0).SetValue(u"1/5/2002"_qs);
        rows.Update();
        rows.Fields(2).SetValue(44);  // the row has its new key
        rows.MoveLast();
        QCOMPARE(rows.Fields(0).Text() + u' ' + rows.Fields(2).Text(), u"1/5/2002 44"_qs);
        rows.SetAbsolutePosition(3);
        rows.Fields(2).SetValue(u"33"_qs);
        rows.Close();  // drops it
        QCOMPARE(DumpTable(path_, u"Records"_qs),
                 u"2002-01-01 00:00:00 | 1.5 | 11\n"
                 "2002-01-02 00:00:00 | 2.5 | NULL\n"
                 "2002-01-03 00:00:00 | 3 | 30\n"
                 "2002-01-05 00:00:00 | 4 | 44"_qs);
    }

    // Other rows are looked at while one is being changed.
    void peeksWithoutMoving() {
        Recordset rows;
        OpenReadings(rows);
        rows.Fields(1).SetValue(9);
        QCOMPARE(rows.RecordCount(), 4);
        RunPlainSql(path_, "DELETE FROM Records WHERE chan1 = 3");
        const auto peek = [&rows](const QString& position) {
            QStringList texts;
            const AdoErrorNumber error = ErrorOf([&] { rows.PeekTexts(position.toInt(), texts); });
            return error == noError ? texts.join(u" | "_qs) : ErrorText(error);
        };
        CompareEach(peek,
                    "1 => 1/1/2002 | 9 | 10; 2 => 1/2/2002 | 2 | 20; 3 => ; "
                    "4 => 1/4/2002 | 4 | ; 0 => 3021; 5 => 3021");
        QCOMPARE(rows.AbsolutePosition(), 1);
    }

    void appends() {
        Recordset rows;
        rows.Open(u"Records"_qs, *connection_, adOpenUnspecified, adLockOptimistic);
        rows.AddNew();
        rows.Fields(0).SetValue(37256);
        rows.Fields(2).SetValue(5);
        rows.AddNew();  // writes the first
        rows.Fields(0).SetValue(37258);
        QCOMPARE(ErrorOf([&] { rows.Update(); }), adErrDuplicate);
        rows.CancelUpdate();
        QCOMPARE(rows.Fields(0).Text(), u"12/31/2001"_qs);  // the row before
        rows.Fields(1).SetValue(6);
        rows.Update();
        rows.MoveNext();
        QVERIFY(rows.Eof());  // new rows are the last ones
        QCOMPARE(DumpTable(path_, u"SELECT * FROM Records LIMIT 1"_qs),
                 u"2001-12-31 00:00:00 | 6 | 5"_qs);
    }

private:
    QString ExecuteError(const QString& statement) {
        return ErrorText(ErrorOf([&] { connection_->Execute(statement); }));
    }

    // The statements that make the journal, then its rows.
    QString TableText() const {
        return DumpTable(
                   path_,
                   u"SELECT sql FROM sqlite_schema WHERE tbl_name = 'Journal' AND sql > ''"_qs) +
               u'\n' + DumpTable(path_, u"Journal"_qs);
    }

    void OpenReadings(Recordset& rows) {
        rows.Open(u"SELECT DateTime, chan1, chan2 FROM Records ORDER BY DateTime"_qs, *connection_,
                  adOpenStatic, adLockOptimistic);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
    std::unique_ptr<Connection> connection_;
};

QTEST_GUILESS_MAIN(TestAdo)
#include "tst_ado.moc"
