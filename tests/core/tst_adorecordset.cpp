// Walking through rows and changing them.
#include <QtTest>
#include <cmath>

#include "platform/ado/Connection.h"
#include "platform/ado/Database.h"
#include "platform/ado/Recordset.h"
#include "platform/text/Regional.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

QString FieldText(const Field& field) {
    return field.IsNull() ? u"NULL"_qs : field.Text();
}

// From the current row on: "1 | 10; 2 | NULL".
QString Rest(Recordset& rows) {
    QStringList lines;
    for (; !rows.Eof(); rows.MoveNext()) {
        QStringList cells;
        for (int i = 0; i < rows.FieldCount(); ++i) {
            cells += FieldText(rows.Fields(i));
        }
        lines += cells.join(u" | ");
    }
    return lines.join(u"; ");
}

const QByteArray kTables =
    "CREATE TABLE Records (\"DateTime\" DATETIME NOT NULL PRIMARY KEY, chan1 SINGLE, chan2 SINGLE) "
    "WITHOUT ROWID;"
    "INSERT INTO Records VALUES (37258, 2, 20), (37257, 1, 10), (37260, 4, NULL), (37259, 3, 30);"
    "CREATE TABLE Information (Name TEXT(5), chan SMALLINT);"
    "INSERT INTO Information VALUES ('b', 1), ('a', 2), (NULL, 3);";

}  // namespace

class TestAdoRecordset : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(u"station.mdb"_qs);
        RunPlainSql(path_, kTables);
        connection_ = std::make_unique<Connection>();
        connection_->Open(u"Data Source = "_qs + path_);
    }
    void cleanup() { connection_.reset(); }

    void sources_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("rows");
        QTest::newRow("rows as they were entered")
            << u"Information"_qs << u"b | 1; a | 2; NULL | 3"_qs;
        QTest::newRow("rows by their key, name in another case")
            << u"records"_qs
            << u"1/1/2002 | 1 | 10; 1/2/2002 | 2 | 20; 1/3/2002 | 3 | 30; 1/4/2002 | 4 | NULL"_qs;
        QTest::newRow("columns and order")
            << u"SELECT chan2, datetime FROM Records ORDER BY CHAN1 DESC"_qs
            << u"NULL | 1/4/2002; 30 | 1/3/2002; 20 | 1/2/2002; 10 | 1/1/2002"_qs;
        QTest::newRow("both bounds in")
            << u"SELECT * FROM Records WHERE DateTime >= #1/2/2002# AND DateTime <= #1/3/2002# ORDER BY DateTime "_qs
            << u"1/2/2002 | 2 | 20; 1/3/2002 | 3 | 30"_qs;
        QTest::newRow("nothing") << u"SELECT * FROM [Records] WHERE chan1 = 9"_qs << QString();
    }
    // Each source read-only and updatable: the two walk alike.
    void sources() {
        QFETCH(QString, source);
        QFETCH(QString, rows);
        const int count = rows.isEmpty() ? 0 : int(rows.count(u';')) + 1;
        for (const LockTypeEnum lock : {adLockUnspecified, adLockReadOnly, adLockOptimistic}) {
            Recordset set;
            set.LockType = lock;
            set.Open(source, *connection_);
            QCOMPARE(set.Eof(), count == 0);
            QCOMPARE(set.RecordCount(), count);
            QCOMPARE(Rest(set), rows);
            QCOMPARE(ErrorOf([&] { set.MoveNext(); }), int(adErrNoCurrentRecord));
            QCOMPARE(ErrorOf([&] { set.Fields(0).Value(); }), int(adErrNoCurrentRecord));
            QCOMPARE(ErrorOf([&] { set.MoveFirst(); }), count == 0 ? int(adErrNoCurrentRecord) : 0);
            QCOMPARE(Rest(set), rows);
            QCOMPARE(ErrorOf([&] { set.MoveLast(); }), count == 0 ? int(adErrNoCurrentRecord) : 0);
            QCOMPARE(set.AbsolutePosition(), count);
            QCOMPARE(Rest(set), rows.section(u"; "_qs, -1));
            QCOMPARE(set.RecordCount(), count);
        }
    }

    // Each is counted as it is walked, though not by the rows of one table.
    void countsOtherForms_data() {
        QTest::addColumn<QString>("select");
        QTest::addColumn<int>("count");
        QTest::newRow("total") << u"SELECT max(chan1) FROM Records"_qs << 1;
        QTest::newRow("different ones")
            << u"SELECT DISTINCT chan1 > 2 AS high FROM Records ORDER BY high"_qs << 2;
        QTest::newRow("groups") << u"SELECT chan1 FROM Records GROUP BY chan1 > 1"_qs << 2;
        QTest::newRow("some") << u"SELECT * FROM Records LIMIT 3"_qs << 3;
        QTest::newRow("two tables") << u"SELECT * FROM Records, Information"_qs << 12;
        QTest::newRow("no table") << u"SELECT 1"_qs << 1;
    }
    void countsOtherForms() {
        QFETCH(QString, select);
        QFETCH(int, count);
        Recordset rows;
        QCOMPARE(ErrorOf([&] { rows.Open(select, *connection_, adOpenStatic, adLockOptimistic); }),
                 int(adErrNotUpdatable));
        rows.Open(select, *connection_, adOpenStatic, adLockReadOnly);
        QCOMPARE(rows.RecordCount(), count);
        QCOMPARE(Rest(rows).count(u';'), count - 1);
    }

    void refusals() {
        Recordset rows;
        const auto open = [&](const char* source) {
            return ErrorOf([&] { rows.Open(QString::fromLatin1(source), *connection_); });
        };
        QCOMPARE(ErrorOf([&] { rows.Eof(); }), int(adErrObjectClosed));
        QCOMPARE(open("Nothing"), int(adErrSyntax));
        QCOMPARE(open("SELECT nothing FROM Records"), int(adErrSyntax));
        QCOMPARE(open("SELECT * FROM Records WHERE DateTime >= #13/32/2002#"), int(adErrSyntax));
        QCOMPARE(open("Records"), 0);
        QCOMPARE(open("Records"), int(adErrObjectOpen));
        QCOMPARE(ErrorOf([&] { rows.Fields(3); }), int(adErrItemNotFound));
        QCOMPARE(ErrorOf([&] { rows.Fields(-1); }), int(adErrItemNotFound));
        QCOMPARE(ErrorOf([&] { rows.Fields(u"chan3"); }), int(adErrItemNotFound));
        QCOMPARE(rows.Fields(u"DATETIME").Name(), u"DateTime"_qs);
        QCOMPARE(ErrorOf([&] { rows.AddNew(); }), int(adErrNotUpdatable));
        QCOMPARE(ErrorOf([&] { rows.Fields(1).SetValue(1); }), int(adErrNotUpdatable));
        rows.Close();
        QCOMPARE(ErrorOf([&] { rows.Close(); }), int(adErrObjectClosed));
    }

    void aWalkSeesTheDataAsTheyWere() {
        Recordset rows;
        rows.Open(u"SELECT chan1 FROM Records ORDER BY DateTime"_qs, *connection_, adOpenStatic,
                  adLockReadOnly);
        RunPlainSql(path_, "DELETE FROM Records WHERE chan1 > 1");
        QCOMPARE(rows.RecordCount(), 4);
        rows.MoveNext();
        rows.MoveFirst();
        QCOMPARE(Rest(rows), u"1; 2; 3; 4"_qs);
        rows.MoveFirst();
        QCOMPARE(Rest(rows), u"1"_qs);
    }

    void conversions_data() {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<Variant>("value");
        QTest::addColumn<QString>("stored");  // as SQLite has it, and as the field shows it
        const auto mismatch = u"-2147352571"_qs;
        const auto tooLong = u"-2147217833"_qs;
        const auto row = [](const char* type, const Variant& value, const QString& stored) {
            QTest::addRow("%s %s", type, qPrintable(stored)) << QByteArray(type) << value << stored;
        };
        row("SINGLE", 1.2, u"1.2000000476837158 as 1.2"_qs);
        row("SINGLE", 16777217.0, u"16777216 as 16777216"_qs);
        row("SINGLE", u"-.24071"_qs, u"-0.24071000516414642 as -0.24071"_qs);
        row("SINGLE", 3.5e38, mismatch);
        row("SINGLE", u""_qs, mismatch);
        row("SINGLE", u"2.5 ft"_qs, mismatch);
        row("SINGLE", u"2,5"_qs, mismatch);
        row("SINGLE", u"nan"_qs, mismatch);
        row("SINGLE", Null{}, u"NULL"_qs);
        row("DOUBLE", 0.1, u"0.10000000000000001 as 0.1"_qs);
        row("DOUBLE", u"1e3"_qs, u"1000 as 1000"_qs);
        row("DOUBLE", std::nan(""), mismatch);
        row("DOUBLE", std::numeric_limits<double>::infinity(), mismatch);
        row("DOUBLE", u"1e999"_qs, mismatch);
        row("SMALLINT", 2.5, u"2 as 2"_qs);
        row("SMALLINT", 3.5, u"4 as 4"_qs);
        row("SMALLINT", u"-32768.4"_qs, u"-32768 as -32768"_qs);
        row("SMALLINT", 32767.5, mismatch);
        row("DATETIME", u"1/2/2002 12:00:00 PM"_qs, u"37258.5 as 1/2/2002 12:00:00 PM"_qs);
        row("DATETIME", -36157.0, u"-36157 as 1/1/1801"_qs);
        row("DATETIME", u"2/30/2002"_qs, mismatch);
        row("DATETIME", u""_qs, mismatch);
        row("DATETIME", 2958466.0, mismatch);
        row("text ( 5 )", u"caf\u00e9s"_qs, u"caf\u00e9s as caf\u00e9s"_qs);
        row("TEXT(5)", u"caf\u00e9s!"_qs, tooLong);
        row("TEXT(5)", 1234.5, tooLong);
        row("TEXT(5)", u""_qs, u" as "_qs);
        row("TEXT", 1.5e20, u"1.5E+20 as 1.5E+20"_qs);
        row("LONGTEXT", 7.25, u"7.25 as 7.25"_qs);
    }
    // A refused value leaves the field as it was: then the row is stored with the 1 it had before.
    void conversions() {
        QFETCH(QByteArray, type);
        QFETCH(Variant, value);
        QFETCH(QString, stored);
        connection_->Execute(u"CREATE TABLE t (v %1)"_qs.arg(QString::fromUtf8(type)));
        RunPlainSql(path_, "INSERT INTO t VALUES (1)");
        Recordset rows;
        rows.Open(u"t"_qs, *connection_, adOpenKeyset, adLockOptimistic);
        const int error = ErrorOf([&] { rows.Fields(0).SetValue(value); });
        const QString inMemory = FieldText(rows.Fields(0));
        rows.Update();
        rows.Close();
        rows.Open(u"t"_qs, *connection_, adOpenStatic, adLockReadOnly);
        const Variant after = rows.Fields(0).Value();
        QString text = FieldText(rows.Fields(0));
        QCOMPARE(inMemory, text);
        if (const double* number = std::get_if<double>(&after)) {
            text = QString::number(*number, 'g', 17) + u" as "_qs + text;
        } else if (const QString* words = std::get_if<QString>(&after)) {
            text = *words + u" as "_qs + text;
        }
        QCOMPARE(error == 0 ? text : QString::number(error), stored);
        if (error != 0) {
            QVERIFY(rows.Fields(0).IsNumeric());
            QCOMPARE(rows.Fields(0).Number(), 1.0);
        }
    }

    void numbersInTexts() {
        RunPlainSql(path_,
                    "UPDATE Information SET Name = CASE chan WHEN 1 THEN ' 2.5 ' WHEN 2 THEN "
                    "'2.5 ft' END");
        for (const LockTypeEnum lock : {adLockReadOnly, adLockOptimistic}) {
            Recordset rows;
            rows.Open(u"SELECT Name FROM Information"_qs, *connection_, adOpenStatic, lock);
            QString numbers;
            for (; !rows.Eof(); rows.MoveNext()) {
                const Field name = rows.Fields(0);
                const int error =
                    ErrorOf([&] { numbers += QString::number(name.Number()) + u';'; });
                QCOMPARE(name.IsNumeric(), error == 0);
                numbers += error == 0 ? QString() : QString::number(error) + u';';
            }
            QCOMPARE(numbers, u"2.5;-2147352571;-2147352571;"_qs);
        }
    }

    void datesFollowTheUsersSettings() {
        Regional former;
        std::swap(former, RegionalSettings());
        RegionalSettings().shortDate = u"dd.MM.yyyy"_qs;
        RegionalSettings().longTime = u"HH:mm:ss"_qs;
        Recordset rows;
        rows.Open(u"Records"_qs, *connection_, adOpenDynamic, adLockOptimistic);
        rows.Fields(0).SetValue(u"04.03.2002 05:06:07"_qs);
        QCOMPARE(rows.Fields(0).Text(), u"04.03.2002 05:06:07"_qs);
        rows.Update();
        std::swap(former, RegionalSettings());
        QCOMPARE(rows.Fields(0).Number(), At("2002-03-04 05:06:07"));
    }

    void changesAreWrittenOnLeavingTheRow() {
        Recordset rows;
        rows.Open(u"SELECT DateTime, chan1, chan2 FROM Records ORDER BY DateTime"_qs, *connection_,
                  adOpenStatic, adLockOptimistic);
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
            QCOMPARE(ErrorOf([&] { rows.MoveFirst(); }), int(adErrDuplicate));
            QCOMPARE(ErrorOf([&] { rows.AddNew(); }), int(adErrDuplicate));
            QCOMPARE(rows.Fields(0).Text() + u' ' + rows.Fields(1).Text(), u"1/1/2002 4"_qs);
        }
        rows.Fields(0).SetValue(u"1/5/2002"_qs);
        rows.Update();
        rows.Fields(2).SetValue(44);  // the row has its new key
        rows.MoveLast();
        QCOMPARE(rows.Fields(0).Text() + u' ' + rows.Fields(2).Text(), u"1/5/2002 44"_qs);
        rows.MoveFirst();
        rows.MoveNext();
        rows.MoveNext();
        rows.Fields(2).SetValue(u"33"_qs);
        rows.Close();  // drops it
        QCOMPARE(DumpTable(path_, u"Records"_qs),
                 u"2002-01-01 00:00:00 | 1.5 | 11\n"
                 "2002-01-02 00:00:00 | 2.5 | NULL\n"
                 "2002-01-03 00:00:00 | 3 | 30\n"
                 "2002-01-05 00:00:00 | 4 | 44"_qs);
    }

    void appends() {
        Recordset rows;
        rows.Open(u"Records"_qs, *connection_, adOpenUnspecified, adLockOptimistic);
        rows.AddNew();
        rows.Fields(0).SetValue(37256);
        rows.Fields(2).SetValue(5);
        QCOMPARE(FieldText(rows.Fields(1)) + FieldText(rows.Fields(2)), u"NULL5"_qs);
        rows.AddNew();  // writes the first
        QCOMPARE(FieldText(rows.Fields(2)), u"NULL"_qs);
        rows.Fields(0).SetValue(37258);
        QCOMPARE(ErrorOf([&] { rows.Update(); }), int(adErrDuplicate));
        QCOMPARE(ErrorOf([&] { rows.AddNew(); }), int(adErrDuplicate));  // still pending
        rows.CancelUpdate();
        QCOMPARE(rows.Fields(0).Text(), u"12/31/2001"_qs);  // the row before
        rows.AddNew();
        QCOMPARE(ErrorOf([&] { rows.Update(); }), int(adErrGeneral));  // no time
        rows.CancelUpdate();
        rows.Fields(1).SetValue(6);
        rows.Update();
        QCOMPARE(Rest(rows), u"12/31/2001 | 6 | 5"_qs);  // new rows are the last ones
        QCOMPARE(rows.RecordCount(), 5);
        rows.AddNew();
        rows.Fields(0).SetValue(37250.25);
        rows.MoveLast();
        QCOMPARE(rows.AbsolutePosition(), 6);
        QCOMPARE(rows.Fields(0).Text(), u"12/25/2001 6:00:00 AM"_qs);
        QCOMPARE(DumpTable(path_, u"SELECT * FROM Records LIMIT 2"_qs),
                 u"2001-12-25 06:00:00 | NULL | NULL\n2001-12-31 00:00:00 | 6 | 5"_qs);
    }

    void appendingReadsNoTable() {
        RunPlainSql(path_,
                    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
                    "i < 50000) INSERT INTO Records SELECT 37260 + i, i, i FROM n");
        connection_->Close();
        connection_->Open(u"Data Source = "_qs + path_);
        Recordset rows;
        rows.Open(u"Records"_qs, *connection_, adOpenUnspecified, adLockOptimistic);
        QCOMPARE(rows.FieldCount(), 3);
        rows.AddNew();
        rows.Fields(0).SetValue(37255);
        rows.Update();
        int pagesRead = 0;
        int unused = 0;
        sqlite3_db_status(connection_->database()->handle(), SQLITE_DBSTATUS_CACHE_MISS, &pagesRead,
                          &unused, 0);
        QVERIFY2(pagesRead < 20, qPrintable(QString::number(pagesRead)));
    }

    void deletes() {
        Recordset rows;
        rows.Open(u"Information"_qs, *connection_, adOpenKeyset, adLockOptimistic);
        rows.MoveNext();
        rows.Fields(0).SetValue(u"x"_qs);
        rows.Delete();  // with its change; the next row is current
        QCOMPARE(rows.Fields(1).Text(), u"3"_qs);
        rows.AddNew();
        rows.Fields(1).SetValue(9);
        rows.Delete();
        rows.Fields(0).SetValue(u"c"_qs);
        rows.Update();
        rows.Delete();
        QVERIFY(rows.Eof());
        QCOMPARE(ErrorOf([&] { rows.Delete(); }), int(adErrNoCurrentRecord));
        QCOMPARE(ErrorOf([&] { rows.Fields(0).SetValue(1); }), int(adErrNoCurrentRecord));
        rows.AddNew();
        rows.Fields(1).SetValue(4);
        rows.Update();
        QCOMPARE(rows.RecordCount(), 2);
        QCOMPARE(DumpTable(path_, u"Information"_qs), u"b | 1\nNULL | 4"_qs);
    }

    void rowsThatLeftTheTableArePassedOver() {
        Recordset rows;
        rows.Open(u"SELECT DateTime, chan1 FROM Records ORDER BY DateTime"_qs, *connection_,
                  adOpenStatic, adLockOptimistic);
        QCOMPARE(rows.RecordCount(), 4);
        rows.MoveNext();
        rows.Fields(1).SetValue(7);
        connection_->Execute(
            u"DELETE * FROM Records WHERE datetime >= #1/2/2002# and datetime <= "
            "#1/3/2002#"_qs);
        QCOMPARE(ErrorOf([&] { rows.MoveNext(); }), int(adErrGeneral));
        rows.CancelUpdate();
        QCOMPARE(rows.Fields(1).Number(), 4.0);
        rows.MoveFirst();
        QCOMPARE(Rest(rows), u"1/1/2002 | 1; 1/4/2002 | 4"_qs);
        rows.SetAbsolutePosition(3);
        QCOMPARE(rows.AbsolutePosition(), 4);
        QCOMPARE(ErrorOf([&] { rows.SetAbsolutePosition(5); }), int(adErrNoCurrentRecord));
        connection_->Execute(u"DELETE * FROM Records"_qs);
        QCOMPARE(ErrorOf([&] { rows.MoveLast(); }), int(adErrNoCurrentRecord));
        QVERIFY(rows.Eof());
    }

    void finds_data() {
        QTest::addColumn<QString>("criterion");
        QTest::addColumn<QString>("found");  // the column chan1 of the row, or the error
        const auto row = [](const char* criterion, const char* found) {
            QTest::newRow(criterion)
                << QString::fromLatin1(criterion) << QString::fromLatin1(found);
        };
        row("DateTime >= #1/2/2002#", "2");
        row("datetime>#1/2/2002 12:00:00 AM#", "3");
        row("DateTime >= #1/2/2002 00:00:01#", "3");
        row("DateTime <= #1/2/2002#", "1");
        row("[DateTime] = #1/4/2002#", "4");
        row("chan2 = 30", "3");
        row("chan2 <> 10", "2");
        row("chan1 < 1", "end");
        row("chan2 > -1e9 ", "1");
        row("DateTime >= #1/5/2002#", "end");
        row("chan2 =", "-2147217900");
        row("chan2 == 30", "-2147217900");
        row("DateTime >= #noon#", "-2147217900");
        row("chan3 = 30", "3265");
    }
    void finds() {
        QFETCH(QString, criterion);
        QFETCH(QString, found);
        for (const LockTypeEnum lock : {adLockReadOnly, adLockOptimistic}) {
            Recordset rows;
            rows.Open(u"SELECT DateTime, chan1, chan2 FROM Records ORDER BY DateTime"_qs,
                      *connection_, adOpenStatic, lock);
            const int error = ErrorOf([&] { rows.Find(criterion); });
            QCOMPARE(error != 0   ? QString::number(error)
                     : rows.Eof() ? u"end"_qs
                                  : rows.Fields(1).Text(),
                     found);
        }
    }

    // What the deletion of one channel's values does.
    void emptiesAChannelFromATimeOn() {
        Recordset rows;
        rows.Open(u"SELECT DateTime, chan1, chan2 FROM Records ORDER BY DateTime"_qs, *connection_,
                  adOpenStatic, adLockOptimistic);
        rows.MoveFirst();
        rows.Find(u"DateTime >= #1/2/2002#"_qs);
        while (!rows.Eof() && rows.Fields(0).Number() <= 37259) {
            rows.Fields(2).SetValue(Null{});
            rows.MoveNext();
        }
        QCOMPARE(DumpTable(path_, u"SELECT chan2 FROM Records"_qs), u"10\nNULL\nNULL\nNULL"_qs);
        QCOMPARE(rows.Fields(1).Number(), 4.0);
    }

private:
    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
    std::unique_ptr<Connection> connection_;
};

QTEST_GUILESS_MAIN(TestAdoRecordset)
#include "tst_adorecordset.moc"
