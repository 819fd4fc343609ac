// Stations in Access files: what becomes of their values, and of the file, whatever happens.
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QRandomGenerator>
#include <QtTest>

#include "app/SharedState.h"
#include "platform/access/AccessFile.h"
#include "store/AccessStation.h"
#include "store/RatingStore.h"
#include "store/StationDatabase.h"
#include "tests/support/DataRows.h"
#include "tests/support/Hardship.h"
#include "tests/support/MessageLog.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StatementFault.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;
using access::Column;
using access::Value;

namespace {

struct MadeTable {
    QString name;
    std::vector<Column> columns;
    std::vector<std::vector<Value>> rows;
};

Value MadeValue(const QString& text) {
    if (text == u"-") {
        return {};
    }
    if (text.startsWith(u'\'')) {
        return {.kind = Value::Kind::Text, .number = 0, .text = text.mid(1).chopped(1)};
    }
    return {.kind = Value::Kind::Number, .number = text.toDouble(), .text = {}};
}

// "Name: column column; value value; value value": a column of date-times has an at sign before its
// name, one of texts a quote, one that holds something else an exclamation mark; "-" is NULL, a
// text stands between quotes.
MadeTable MakeTable(const QString& text) {
    static const QString signs = u"@'!"_qs;
    static const std::array types{Column::Type::DateTime, Column::Type::Text, Column::Type::Other,
                                  Column::Type::Number};
    MadeTable table;
    table.name = text.section(u':', 0, 0);
    const QStringList lines = text.section(u':', 1).split(u';', Qt::SkipEmptyParts);
    for (const QString& column : lines.value(0).split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype sign = signs.indexOf(column[0]);
        table.columns.push_back({.name = sign < 0 ? column : column.mid(1),
                                 .type = types[static_cast<std::size_t>(sign < 0 ? 3 : sign)]});
    }
    for (const QString& line : lines.mid(1)) {
        table.rows.emplace_back();
        for (const QString& value : line.split(u' ', Qt::SkipEmptyParts)) {
            table.rows.back().push_back(MadeValue(value));
        }
    }
    return table;
}

// The five tables of a station without rows, those in the place of which the story has others, and
// more that it has.
TableReader Made(const QStringList& story) {
    QMap<QString, MadeTable> tables;
    for (const QString& text :
         QStringList{u"Information: channels"_qs, u"Records: @DateTime chan1"_qs,
                     u"Calibration: @DateTime chan"_qs, u"ConversionEq: @DateTime chan"_qs,
                     u"ConversionT: chan @DateTime"_qs} +
             story) {
        const MadeTable table = MakeTable(text);
        tables.insert(table.name.toLower(), table);
        if (table.columns.empty()) {
            tables.remove(table.name.toLower());
        }
    }
    return [tables](access::TableSink& sink) {
        QStringList names;
        for (const MadeTable& table : tables) {
            names += table.name;
        }
        sink.TakeTableNames(names);
        for (const MadeTable& table : tables) {
            if (!StationTables().contains(table.name, Qt::CaseInsensitive)) {
                continue;
            }
            sink.BeginTable(table.name, table.columns);
            for (const std::vector<Value>& row : table.rows) {
                sink.TakeRow(row);
            }
            sink.EndTable();
        }
    };
}

// "name name; value value; ...": of all columns or of those named, every bit told.
QString TableText(const QString& path, const QString& table, QStringList columns = {}) {
    if (columns.isEmpty()) {
        columns =
            DumpTable(path, u"SELECT name FROM pragma_table_info('%1')"_qs.arg(table)).split(u'\n');
    }
    QStringList quoted;
    for (const QString& column : columns) {
        quoted += u"quote(\"%1\")"_qs.arg(column);
    }
    const QString rows = DumpTable(path, u"SELECT %1 FROM %2"_qs.arg(quoted.join(u", "), table));
    QString text = columns.join(u' ');
    for (const QString& row : rows.split(u'\n', Qt::SkipEmptyParts)) {
        text += u"; "_qs + QString(row).replace(u" | "_qs, u" "_qs);
    }
    return text;
}

// A program that has just started, with one of the sample files in a folder of its own.
class Folder {
public:
    explicit Folder(const QString& sample = u"station_2000.mdb"_qs)
        : original(ReadBytes(QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/") + sample)) {
        ResetSharedState();
        WriteBytes(Path(), original);
    }
    ~Folder() { ResetSharedState(); }

    QString File(const QString& name) const { return folder_.filePath(name); }
    QString Path() const { return File(u"creek.mdb"_qs); }
    QString Names() const {
        return QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden).join(u' ');
    }
    QString Text() const { return FolderText(folder_.path()); }
    QString Short(QString text) const { return text.remove(folder_.path() + u'/'); }
    bool IsConverted(const QString& kept = u"creek.access.mdb"_qs) const {
        return ReadBytes(Path()).startsWith("SQLite format 3") && ReadBytes(File(kept)) == original;
    }
    bool IsAsBefore() const { return ReadBytes(Path()) == original; }

    const QByteArray original;
    ScriptedDoors doors;
    FakePanel panel;

private:
    QTemporaryDir folder_;
};

const QString kQuestion =
    u" is an Access file. To open it, Rillbook makes a station file of it "
    "and keeps the Access file beside it under another name. Convert it?"_qs;

// What the user is told after the question.
QString OpenWithYes(const Folder& folder) {
    MessageLog log(MsgBoxAnswer::Yes);
    const bool isOpen = OpenDB(folder.Path());
    if (isOpen != (StationConnection->State() != 0)) {
        return u"half open"_qs;
    }
    CloseOpenStation();
    log.texts.removeIf([](const QString& text) { return text.endsWith(kQuestion); });
    return folder.Short(log.texts.join(u'|'));
}

const QString kConverted = u"creek.mdb was converted; the Access file is now creek.access.mdb."_qs;

}  // namespace

class TestAccessStation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void takesOver_data() {
        const DataRows<QString, QString, QString> row("story", "table", "expected");
        row("Records: @DateTime chan1 chan2; 37257.249999997 1.2000000476837158 -; 37257.3 - 0",
            "Records",
            "DateTime chan1 chan2; 37257.25 1.20000004768371582031e+00 NULL; 37257.3 NULL 0");
        row("Records: @DateTime chan1; 37257.250001 2; 37257.25 3; 37258.99999999999 1", "Records",
            "DateTime chan1; 37257.25 3; 37257.250001 2; 37259 1");
        row("Records: chan2 ID @datetime CHAN1 !chan3; 1 7 37257 2 -", "Records",
            "DateTime chan2 chan1 chan3; 37257 1 2 NULL");
        row("Information: @begdate channels secondary 'notes; 37257 40000 0.5 ''; - -2 '7' 'x'",
            "Information begdate channels secondary notes EndDate",
            "begdate channels secondary notes EndDate; '1/1/2002' 40000 0.5 '' NULL; NULL -2 7 'x' "
            "NULL");
        row("Calibration: @DateTime chan 'read1 actual1 read2 Q 'notes; 1 1 '2.5' -0.5 1 9.75 -; "
            "0 2 'dry' 1e300 0 - -",
            "Calibration",
            "DateTime chan read1 actual1 read2 discharge notes; 1 1 2.5 -0.5 1.0 9.75 NULL; 0 2 "
            "'dry' 1.0e+300 0.0 NULL NULL");
        row("ConversionEq: @DateTime chan A r c notes; 37257 1 0.1 1.6 2 5", "ConversionEq",
            "DateTime chan A r c notes RatingTable; 37257 1 0.1 1.6 2.0 '5' 0");
        row("ConversionEq: @DateTime chan ratingtable; 37257 1 -; 37257 1 1",
            "ConversionEq DateTime chan RatingTable",
            "DateTime chan RatingTable; 37257 1 NULL; 37257 1 1");
    }
    void takesOver() {
        QFETCH(QString, story);
        QFETCH(QString, table);
        QFETCH(QString, expected);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"s"_qs);
        CopyStationTemplate(path);
        FillStation(path, Made({story}));
        RequireSameStation(path, Made({story}));
        QStringList columns = table.split(u' ');
        const QString name = columns.takeFirst();
        QCOMPARE(TableText(path, name, columns), expected);
    }

    void refusesTables_data() {
        const DataRows<QString, QString> row("story", "expected");
        row("Records: @DateTime chan1; 37257.25 1; 37257.250000001 2",
            "Two records have the time 1/1/2002 6:00:00 AM, and a station can have only one of a "
            "time.");
        row("Records: @DateTime chan1; 1 1; - 2",
            "Row 2 of the table Records has no date and time.");
        row("Records: Time chan1; 1 1", "The table Records has no column DateTime.");
        row("ConversionT: chan depth; 1 nan",
            "Row 1 of the table ConversionT has in depth what is no number and can't be kept.");
        row("Calibration:", "The file is no station: it has no table Calibration.");
    }
    void refusesTables() {
        QFETCH(QString, story);
        const QTemporaryDir folder;
        CopyStationTemplate(folder.filePath(u"s"_qs));
        QString told;
        try {
            FillStation(folder.filePath(u"s"_qs), Made({story}));
        } catch (const ConversionError& error) {
            told = QString::fromUtf8(error.what());
        }
        QTEST(told, "expected");
    }

    void namesWhatItLeaves() {
        const QTemporaryDir folder;
        CopyStationTemplate(folder.filePath(u"s"_qs));
        const Leftovers left =
            FillStation(folder.filePath(u"s"_qs),
                        Made({u"Photos: x"_qs, u"records: @DateTime chan1 !Map ID"_qs,
                              u"Calibration: @DateTime chan read1 actual1 read2 who"_qs}));
        QCOMPARE(left.tables, QStringList{u"Photos"_qs});
        QCOMPARE(left.columns.join(u' '), u"Records.Map Records.ID"_qs);
    }

    void seesEveryDifference_data() {
        const DataRows<QString> row("later");
        for (const char* later :
             {"Records: @DateTime chan1; 37257 1.5", "Records: @DateTime chan1; 37257 1; 37258 2",
              "Records: @DateTime chan1; 37258 1", "Records: @DateTime chan1; 37257 -",
              "Records: @DateTime 'chan1; 37257 'x'", "Records: @DateTime chan1;",
              "Information: channels; 2", "Records: @DateTime chan1; 37257 1.0000000000000002"}) {
            row(later);
        }
    }
    void seesEveryDifference() {
        QFETCH(QString, later);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"s"_qs);
        const QString first = u"Records: @DateTime chan1; 37257 1"_qs;
        CopyStationTemplate(path);
        FillStation(path, Made({first}));
        RequireSameStation(path, Made({first}));
        QVERIFY_THROWS_EXCEPTION(ConversionError, RequireSameStation(path, Made({later})));
    }

    void convertsSamples_data() {
        const DataRows<QString, QString> row("name", "ratings");
        row("station_2000.mdb",
            "43678 1 30.0 1.6 0.02 'equation of summer' 0; 43739 1 NULL NULL NULL 'table after the "
            "flood' 1");
        row("station_2003_older_schema.mdb",
            "43678 1 30.0 1.6 0.02 'equation of summer' 0; 43739 1 28.5 1.58 0.021 NULL 0");
    }
    void convertsSamples() {
        const Folder folder(QString::fromLatin1(QTest::currentDataTag()).section(u' ', 0, 0));
        QFile::setPermissions(folder.Path(), QFileDevice::ReadOwner);
        QCOMPARE(OpenWithYes(folder), kConverted);
        QVERIFY(folder.IsConverted());
        QVERIFY(QFile::permissions(folder.Path()).testFlag(QFileDevice::WriteOwner));
        QCOMPARE(folder.Names(), u"creek.access.mdb creek.mdb"_qs);
        const auto rows = [&folder](const char* query) {
            return DumpTable(folder.Path(), QString::fromLatin1(query)).replace(u'\n', u"; "_qs);
        };
        QCOMPARE(rows("SELECT count(*), count(chan2) FROM Records"), u"500 | 429"_qs);
        QCOMPARE(
            TableText(folder.Path(), u"Records LIMIT 4"_qs,
                      {u"DateTime"_qs, u"chan1"_qs, u"chan2"_qs}),
            u"DateTime chan1 chan2; 4.36984895833333357581e+04 2.8979999542236328125e+01 8; "
            "43698.5 2.8729999542236328125e+01 8.0416660308837890625e+00; "
            "4.36985104166666642406e+04 2.84699993133544921875e+01 8.08332729339599609375e+00; "
            "4.3698520833333335759e+04 2.86100006103515625e+01 NULL"_qs);
        QCOMPARE(
            rows("SELECT Name, 1 / timeincrement, reclabel, digitsout FROM Information"),
            u"Blacksmith Fork \u00e0 la route 101 | 96 | cm | 2; NULL | NULL | \u00b0C | 3"_qs);
        QCOMPARE(rows("SELECT DateTime, read1, actual1, read2, discharge FROM Calibration"),
                 u"2019-08-21 11:45:00 | 28.98 | 37.98 | 1 | NULL; "
                 "2019-09-20 10:45:00 | NULL | NULL | 0 | 12.4; "
                 "2019-09-20 10:46:00 | 34 | 43.75 | 1 | 11.9; "
                 "2019-10-24 11:00:30 | 44 | 53.3 | 1 | 20.25"_qs);
        QCOMPARE(rows("SELECT depth, flow FROM ConversionT"),
                 u"60 | 40.5; 40 | 5.25; 50 | 18.75; 35 | 0"_qs);
        QTEST(TableText(folder.Path(), u"ConversionEq"_qs).section(u"; "_qs, 1), "ratings");
    }

    // The rating list of an older file gets its table where it is opened, as it always did.
    void upgradesOlderRatings() {
        const Folder folder(u"station_2003_older_schema.mdb"_qs);
        const MessageLog log(MsgBoxAnswer::Yes);
        QVERIFY(OpenDB(folder.Path()));
        const auto ratings = [] {
            QStringList texts;
            for (const ListedRating& rating : ListRatings(1)) {
                texts += MomentText(rating.time.value_or(0)).left(10) + u' ' +
                         (rating.isTable ? u"table"_qs : rating.formula);
            }
            return texts.join(u"; "_qs);
        };
        const QString equations =
            u"2019-08-01 Q = 0.02*(ght - 30)^1.6; 2019-10-01 Q = 0.021*(ght - 28.5)^1.58"_qs;
        QCOMPARE(ratings(), equations);
        UpgradeRatings(1);
        QCOMPARE(ratings(), equations + u"; 2019-10-01 table"_qs);
        QCOMPARE(ReadTablePoints(1, At("2019-10-01")).size(), 4U);
        CloseDB();
    }

    void showsTheHourglassBehindTheQuestion() {
        Folder folder;
        folder.doors.ExpectMessage(folder.Path() + kQuestion, MsgBoxAnswer::No);
        QVERIFY(!OpenDB(folder.Path()) && folder.IsAsBefore() && !folder.panel.visible);
        QVERIFY(folder.doors.pointers.empty());
        folder.doors.ExpectMessage(folder.Path() + kQuestion, MsgBoxAnswer::Yes);
        folder.doors.ExpectMessage(folder.File(kConverted));
        QVERIFY(OpenDB(folder.Path()) && folder.panel.visible);
        QVERIFY((folder.doors.pointers == std::vector<int>{vbHourglass, vbDefault}));
    }

    void leavesTheFileAlone_data() {
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* why) {
            QTest::newRow(name) << u"! creek.mdb could not be converted: "_qs + QLatin1String(why);
        };
        row("cut", "The file is damaged.");
        row("later kind",
            "The file is of a later kind of Access (\".accdb\"), which can't be read.");
        row("companion", "creek.mdb-wal lies beside the file and belongs to another station.");
        row("conversion elsewhere", "Another program is writing the file.");
        row("full disk", "The disk is full");
        row("disk that fills up", "The disk is full");
        row("read-only folder", "The folder can't be written to: Permission denied");
    }
    void leavesTheFileAlone() {
        const Folder folder;
        const QString hardship = QString::fromLatin1(QTest::currentDataTag());
        if (hardship == u"cut") {
            WriteBytes(folder.Path(), folder.original.first(100'000));
        } else if (hardship == u"later kind") {
            WriteBytes(folder.Path(),
                       QByteArray(folder.original).replace(4, 15, "Standard ACE DB"));
        } else if (hardship == u"companion") {
            WriteBytes(folder.Path() + u"-wal"_qs, "readings");
        }
        QFile draft(folder.Path() + u"qvx"_qs);
        if (hardship == u"conversion elsewhere") {
            QVERIFY(draft.open(QIODevice::WriteOnly) && flock(draft.handle(), LOCK_EX) == 0);
        }
        const QString before = folder.Text();
        const QFileInfo file(folder.Path());
        std::optional<FullDisk> disk;
        std::optional<OrdinaryUser> user;
        if (hardship.contains(u"disk")) {
            disk.emplace(hardship == u"full disk" ? 20'000 : 40'000);
        } else if (hardship == u"read-only folder") {
            QFile::setPermissions(file.path(), QFile::Permissions(0x5555));
            user.emplace();
        }
        const QString told = OpenWithYes(folder);
        disk.reset();
        user.reset();
        QFile::setPermissions(file.path(), QFile::Permissions(0x7777));
        QTEST(told, "expected");
        QCOMPARE(folder.Text(), before);
    }

    // Cut short or with other bytes in it: either nothing has changed, or there is a station that
    // opens.
    void takesDamageWell() {
        QRandomGenerator random(2000);
        int refusals = 0;
        const qsizetype size = Folder().original.size();
        for (int round = 0; round < 150; ++round) {
            const Folder folder;
            QByteArray bytes = folder.original;
            if (round < 50) {
                bytes.truncate(round * (size / 50) / 512 * 512);
            } else {
                for (int change = 0; change < round / 10; ++change) {
                    bytes[random.bounded(qsizetype{20}, size)] =
                        static_cast<char>(random.bounded(256));
                }
            }
            WriteBytes(folder.Path(), bytes);
            const QString before = folder.Text();
            const QString told = OpenWithYes(folder);
            const QString why = u"%1: %2"_qs.arg(round).arg(told);
            if (folder.Text() == before) {
                QVERIFY2(told.startsWith(u'!') || round == 0, qPrintable(why));
                ++refusals;
            } else {
                QVERIFY2(told.startsWith(u"creek.mdb was converted"), qPrintable(why));
                QCOMPARE(folder.Names(), u"creek.access.mdb creek.mdb"_qs);
                QVERIFY(ReadBytes(folder.File(u"creek.access.mdb"_qs)) == bytes);
            }
        }
        QVERIFY(refusals > 20);
    }

    void keepsUnderAFreeName_data() {
        const DataRows<QString, QString> row("there", "names");
        row("another file", "creek.access.2.mdb creek.access.mdb creek.mdb");
        row("a link to the file", "creek.access.2.mdb creek.access.mdb creek.mdb");
        row("its second name", "creek.access.mdb creek.mdb");
        row("a copy", "creek.access.mdb creek.mdb");
        row("another user's file", "creek.access.mdb creek.mdb");
        row("a killed conversion's draft", "creek.access.mdb creek.mdb");
    }
    void keepsUnderAFreeName() {
        QFETCH(QString, there);
        const Folder folder;
        const QString kept = folder.File(u"creek.access.mdb"_qs);
        std::optional<OrdinaryUser> user;
        if (there == u"another file") {
            WriteBytes(kept, folder.original + "x");
        } else if (there == u"a link to the file") {
            QVERIFY(QFile::link(folder.Path(), kept));
        } else if (there == u"its second name") {
            QVERIFY(::link(qPrintable(folder.Path()), qPrintable(kept)) == 0);
        } else if (there == u"a copy") {
            WriteBytes(kept, folder.original);
        } else if (there == u"another user's file") {
            // It can be copied, but the system may refuse a second name.
            QVERIFY(::geteuid() != 0 || ::chown(qPrintable(folder.Path()), 65534, 65534) == 0);
            user.emplace();
        } else {
            WriteBytes(folder.Path() + u"qvx"_qs, "half a station");
            WriteBytes(folder.Path() + u"qvx-journal"_qs, "and its journal");
        }
        const QString now = there == u"another file" || there == u"a link to the file"
                                ? u"creek.access.2.mdb"_qs
                                : u"creek.access.mdb"_qs;
        QCOMPARE(OpenWithYes(folder),
                 u"creek.mdb was converted; the Access file is now %1."_qs.arg(now));
        QVERIFY(folder.IsConverted(now));
        QTEST(folder.Names(), "names");
    }

    void tellsWhereALinkLed() {
        const Folder folder;
        const QTemporaryDir elsewhere;
        const QString link = elsewhere.filePath(u"stream.mdb"_qs);
        QVERIFY(QFile::link(folder.Path(), link));
        const MessageLog log(MsgBoxAnswer::Yes);
        QVERIFY(OpenDB(link));
        CloseOpenStation();
        QCOMPARE(log.texts.value(1), u"%1 was converted; the Access file is now %2."_qs.arg(
                                         link, folder.File(u"creek.access.mdb"_qs)));
        QVERIFY(folder.IsConverted() && QFileInfo(link).isSymLink());
    }

    // At a step of the database's work: the file is as it was, and nothing lies beside it.
    void failsCleanly() {
        int failures = 0;
        for (int statement = 1;; statement += statement < 25 ? 1 : 83) {
            const Folder folder;
            const QString before = folder.Text();
            QString told;
            bool hasStruck = false;
            {
                const StatementFault fault(statement, StatementFault::Kind::Fails);
                told = OpenWithYes(folder);
                hasStruck = fault.HasStruck();
            }
            if (folder.IsConverted()) {
                QVERIFY2(!hasStruck || told == kConverted, qPrintable(told));
            } else {
                QVERIFY2(told.startsWith(u"! creek.mdb could not be converted: "),
                         qPrintable(told));
                QCOMPARE(folder.Text(), before);
                ++failures;
            }
            if (!hasStruck) {
                break;
            }
        }
        QVERIFY(failures > 25);
    }

    // At any moment: one of the two names leads to the whole Access file, and the next opening ends
    // what was begun.
    void survivesItsDeath() {
        int asBefore = 0;
        qint64 duration = 0;
        for (int round = 0; round < 60; ++round) {
            const Folder folder;
            QElapsedTimer timer;
            timer.start();
            const pid_t child = fork();
            if (child == 0) {
                OpenWithYes(folder);
                _exit(0);
            }
            if (round > 0) {
                const double moment = QRandomGenerator::global()->bounded(1.1);
                QThread::usleep(static_cast<unsigned long>(moment * double(duration) / 1000));
                kill(child, SIGKILL);
            }
            waitpid(child, nullptr, 0);
            if (round == 0) {
                duration = timer.nsecsElapsed();
                QVERIFY(folder.IsConverted());
                continue;
            }
            QVERIFY2(folder.IsAsBefore() || folder.IsConverted(), qPrintable(folder.Names()));
            asBefore += folder.IsAsBefore() ? 1 : 0;
            OpenWithYes(folder);
            QVERIFY(folder.IsConverted());
            QCOMPARE(folder.Names(), u"creek.access.mdb creek.mdb"_qs);
        }
        QVERIFY(asBefore > 5);
    }
};

QTEST_GUILESS_MAIN(TestAccessStation)
#include "tst_accessstation.moc"
