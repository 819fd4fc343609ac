// Access files: what is read of them, what becomes of damaged ones, and of a helper that
// misbehaves.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtEndian>
#include <QtTest>
#include <random>

#include "platform/access/AccessFile.h"
#include "platform/access/AccessProtocol.h"
#include "platform/access/HelperProcess.h"
#include "platform/access/JetRow.h"
#include "tests/support/DataRows.h"
#include "tests/support/PlainFiles.h"

using namespace rillbook;
using namespace rillbook::access;
using namespace std::chrono_literals;

namespace {

const QStringList kTables = {u"information"_qs, u"RECORDS"_qs, u"Calibration"_qs,
                             u"ConversionEq"_qs, u"ConversionT"_qs};
constexpr const char* kCauses[] = {"missing", "foreign", "later",    "protected", "encrypted",
                                   "in use",  "damaged", "too much", "no helper"};

QString TextOf(const Value& value) {
    switch (value.kind) {
        case Value::Kind::Null:
            return u"NULL"_qs;
        case Value::Kind::Number:
            return QString::number(value.number, 'g', QLocale::FloatingPointShortest);
        case Value::Kind::Text:
            return u'"' + value.text + u'"';
    }
    return {};
}

// One line for the tables' names, then for each table, each row and each end.
class Lines : public TableSink, public QStringList {
public:
    void TakeTableNames(const QStringList& names) override { append(names.join(u' ')); }
    void BeginTable(const QString& name, const std::vector<Column>& columns) override {
        QString line = name + u':';
        for (const Column& column : columns) {
            line += u' ' + column.name + u"#@$?"_qs[static_cast<int>(column.type)];
        }
        append(line);
    }
    void TakeRow(const std::vector<Value>& row) override {
        QStringList values;
        std::transform(row.begin(), row.end(), std::back_inserter(values), TextOf);
        append(values.join(u' '));
    }
    void EndTable() override { append(u"end"_qs); }
};

template <typename Action>
QString CauseOf(Action action) {
    try {
        action();
    } catch (const ReadError& error) {
        return QString::fromLatin1(kCauses[static_cast<int>(error.Why())]);
    }
    return {};
}

// All lines, or the one word why not.
QStringList Reading(const QString& path, const QStringList& tables = kTables) {
    Lines lines;
    const QString cause = CauseOf([&] { ReadTables(path, tables, lines); });
    return cause.isEmpty() ? QStringList(lines) : QStringList(cause);
}

QStringList ReadingOf(const QByteArray& bytes, const QStringList& tables = kTables) {
    QTemporaryDir folder;
    const QString path = folder.filePath(u"station.mdb"_qs);
    WriteBytes(path, bytes);
    const QStringList lines = Reading(path, tables);
    // Neither the file nor its folder changes, whatever it is.
    return ReadBytes(path) == bytes && QDir(folder.path()).entryList(QDir::Files).size() == 1
               ? lines
               : QStringList(u"changed"_qs);
}

const QByteArray& Station() {
    static const QByteArray bytes =
        ReadBytes(QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/station_2000.mdb"));
    return bytes;
}

QByteArray Patched(QByteArray bytes, qsizetype at, const QByteArray& patch) {
    return bytes.replace(at, patch.size(), patch);
}

template <typename Number>
QByteArray Little(Number number) {
    QByteArray bytes(sizeof number, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

// A page of rows, the first at its end, each with the flags of its entry.
QByteArray Page(const QByteArray& owner, const std::vector<std::pair<QByteArray, int>>& rows) {
    QByteArray page = Patched(QByteArray(4096, '\0'), 0, QByteArray("\1\1\0\0", 4) + owner);
    page = Patched(page, 12, Little(static_cast<quint16>(rows.size())));
    qsizetype begin = page.size();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        begin -= rows[i].first.size();
        page = Patched(page, begin, rows[i].first);
        const auto entry = static_cast<quint16>(begin | rows[i].second);
        page = Patched(page, 14 + 2 * static_cast<qsizetype>(i), Little(entry));
    }
    return page;
}

bool HasChild() {
    return waitpid(-1, nullptr, WNOHANG) != -1;
}

QByteArray Framed(char kind, const QByteArray& payload = {}) {
    return kind + Little(static_cast<quint32>(payload.size())) + payload;
}

QByteArray Counted(const QByteArray& text) {
    return Little(static_cast<quint32>(text.size())) + text;
}

}  // namespace

class TestAccess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsWhatIsStored() {
        const QStringList lines = ReadingOf(Station());
        QCOMPARE(lines.size(), 1 + 5 * 2 + 2 + 500 + 4 + 2 + 4);
        QCOMPARE(lines[0], u"Information Records Calibration ConversionEq ConversionT"_qs);
        QCOMPARE(lines[2],
                 u"\"Blacksmith Fork \u00e0 la route 101\" \"Access file \u2013 staff gauge "
                 "on left bank\r\nsecond line\" 2 \"500\" \"8/21/2019\" \"8/26/2019\" "
                 "\"C:\\Data\\\" 0 16 1 0.010416666666666666 1 1 1 2 9 100 0.5 11010 1.98 "
                 "\"ac-ft\" \"cm\" \"Stage\" \"Blacksmith Fork\" \"cfs\" \"Discharge\""_qs);
        QCOMPARE(lines[5], u"Records: DateTime@ chan1# chan2#"_qs);
        QCOMPARE(lines[6], u"43698.489583333336 28.979999542236328 8"_qs);
        QCOMPARE(lines[9], u"43698.520833333336 28.610000610351562 NULL"_qs);
        QCOMPARE(lines.mid(6, 500).filter(QRegularExpression(u" NULL$"_qs)).size(), 71);
        QCOMPARE(lines.mid(507).filter(u"first visit"_qs).join(u'|'),
                 u"43698.489583333336 1 28.98 37.98 1 NULL \"first visit\""_qs);
        QCOMPARE(lines.mid(514, 2).join(u'|'),
                 u"43678 1 30 1.6 0.02 \"equation of summer\" 0|"
                 "43739 1 NULL NULL NULL \"table after the flood\" 1"_qs);
        QCOMPARE(ReadingOf(Station(), {u"conversiont"_qs, u"Nothing"_qs}).mid(1).join(u'|'),
                 u"ConversionT: chan# DateTime@ depth# flow#|1 43739 60 40.5|1 43739 40 5.25|"
                 "1 43739 50 18.75|1 43739 35 0|end"_qs);
    }

    // Of the older kind, laid out by hand: pages of 2 KiB, texts in the code page, a yes/no.
    void readsTheKindOf97() {
        const QByteArray file =
            ReadBytes(QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/access_97.mdb"));
        const QStringList lines = ReadingOf(file);
        QCOMPARE(lines.size(), 1 + 2 * 2 + 4 + 200);
        QCOMPARE(lines[2],
                 u"\"H\u00f6hle \u20ac\" \"%1\" 2 \"\u00b0C\""_qs.arg(QString(250, u'n')));
        QCOMPARE(lines[3], u"NULL \"x\" NULL \"%1\""_qs.arg(QString(255, u'y')));
        QCOMPARE(lines[8], u"37257 1.5 0 NULL"_qs);
        QCOMPARE(lines[9], u"37257.010416666664 2.5 1 -1"_qs);
        QCOMPARE(ReadingOf(Patched(file, 0x42, "x")).join(u'|'), u"protected"_qs);
    }

    void readsEachRecordAsItWasLogged() {
        const QString folder = QStringLiteral(RILLBOOK_SOURCE_DIR "/../shared/data/");
        const QString path = folder + u"access/station_2000_8841_records.mdb"_qs;
        if (!QFile::exists(path)) {
            QSKIP("The large station isn't here.");
        }
        QStringList logged;
        for (const QByteArray& line : ReadBytes(folder + u"type1_stage_raw.csv"_qs).split('\n')) {
            const QDateTime time =
                QDateTime::fromString(QString::fromLatin1(line.left(16)), u"MM/dd/yyyy HH:mm"_qs);
            if (time.isValid()) {
                const auto minutes = QDateTime(QDate(1899, 12, 30), {}).secsTo(time) / 60;
                logged.append(TextOf({Value::Kind::Number, double(minutes) / 1440, {}}) + u' ' +
                              TextOf({Value::Kind::Number, line.mid(17).trimmed().toFloat(), {}}));
            }
        }
        const QStringList lines = Reading(path, {u"Records"_qs});
        QCOMPARE(lines.size(), 8841 + 3);
        for (int i = 0; i < 8841; ++i) {
            QCOMPARE(lines[i + 2].section(u' ', 0, 1), logged[i]);
        }
    }

    void readsNotesAndRowsThatLieElsewhere() {
        // The journal with notes as memos: its rows anew, and two pages more at the end of the
        // file.
        constexpr qsizetype kNotes = 118997;  // the column's definition
        constexpr qsizetype kRows = 43 * 4096;
        constexpr quint32 kElsewhere = 49 << 8U;
        constexpr quint32 kLongValues = 50 << 8U;
        const auto row = [](const QByteArray& note, char mask) {
            return QByteArray("\7\0", 2) + QByteArray(42, '\0') + note +
                   Little(static_cast<quint16>(44 + note.size())) + Little(quint16{44}) +
                   Little(quint16{1}) + mask;
        };
        const auto memo = [](quint32 length, quint32 place, const QByteArray& text = {}) {
            return Little(length) + Little(place) + QByteArray(4, '\0') + text;
        };
        const auto reading = [&](quint32 inRow, quint32 next, quint32 behind, int moved) {
            const QByteArray text = QByteArray(1500, 'x') + QByteArray(500, 'y');
            QByteArray file = Patched(Station(), kNotes, "\xC");
            file = Patched(file, kNotes + 23, QByteArray(2, '\0'));
            file = Patched(
                file, kRows,
                Page(Little(quint32{29}),
                     {{row(memo(0x80000000 | inRow, 0, QByteArray("c\0d\0", 4)), '\x40'), 0},
                      {Little(kElsewhere), 0x4000},
                      {row({}, '\0'), 0},
                      {row(memo(2002, kLongValues), '\x40'), 0}}));
            file += Page(Little(quint32{29}),
                         {{row(memo(0x40000004, kLongValues | 2U), '\x40'), moved}});
            file += Page("LVAL", {{Little(next) + "\xFF\xFE" + text.left(999), 0},
                                  {Little(behind) + text.mid(999), 0},
                                  {QByteArray("a\0b\0", 4), 0}});
            QStringList notes = ReadingOf(file, {u"Calibration"_qs}).mid(2);
            notes.replaceInStrings(u"NULL NULL NULL NULL NULL NULL "_qs, QString());
            notes.replaceInStrings(QRegularExpression(u"x{1500}y{500}"_qs), u"long"_qs);
            return notes.join(u'|');
        };
        QCOMPARE(reading(4, kLongValues | 1U, 0, 0x8000), u"\"cd\"|\"ab\"|NULL|\"long\"|end"_qs);
        const QString damaged;  // the one word, where lines behind the second are looked at
        QCOMPARE(reading(2, kLongValues | 1U, 0, 0x8000), damaged);            // too short
        QCOMPARE(reading(4, kLongValues, 0, 0x8000), damaged);                 // in a circle
        QCOMPARE(reading(4, kLongValues | 1U, kLongValues, 0x8000), damaged);  // goes on
        QCOMPARE(reading(4, kLongValues | 7U, 0, 0x8000), damaged);            // no such row
        QCOMPARE(reading(4, kElsewhere, 0, 0x8000), damaged);                  // another page
        QCOMPARE(reading(4, kLongValues | 1U, 0, 0), damaged);                 // met twice
    }

    void decodes_data() {
        const DataRows<QString, int, QByteArray, QString> row("name", "type", "bytes", "value");
        row("byte", 2, "\xFF", "255");
        row("integer", 3, Little(qint16{-2}), "-2");
        row("long", 4, Little(qint32{-70000}), "-70000");
        row("currency", 5, Little(qint64{-9007199254740993}), "-900719925474.0992");
        row("single", 6, Little(0.1F), "0.10000000149011612");
        row("double", 7, Little(0.1), "0.1");
        row("date-time", 8, Little(-657434.0), "-657434");
        row("day beyond 9999", 8, Little(2958466.0), "damaged");
        row("no day", 8, Little(std::numeric_limits<double>::quiet_NaN()), "damaged");
        row("text", 10, QByteArray("a\0\x13\x20", 4), "\"a\u2013\"");
        row("packed text", 10, QByteArray("\xFF\xFE\xE9\0\x13\x20\0b", 8), "\"\u00e9\u2013b\"");
        row("empty text", 10, "", "\"\"");
        row("half a character", 10, QByteArray("a\0b", 3), "damaged");
        row("half a pair", 10, QByteArray("\x00\xD8", 2), "damaged");
        row("too long", 10, QByteArray("a\0b\0c\0d\0e\0", 10), "damaged");
        row("identifier", 15, QByteArray(16, 'x'), "NULL");
        const QByteArray words = Little(quint32{0}) + Little(quint32{0}) + Little(quint32{1}) +
                                 Little(quint32{705032705});  // 5000000001
        row("numeric", 16, '\0' + words, "5000000.001");
        row("negative numeric", 16, '\x80' + words, "-5000000.001");
        row("numeric of no sign", 16, '\x40' + words, "damaged");
    }

    void decodes() {
        QFETCH(int, type);
        QFETCH(QByteArray, bytes);
        const StoredColumn column{.name = u"x"_qs, .type = type, .size = 8, .scale = 3};
        Value value;
        const QString cause = CauseOf([&] { value = DecodeValue({}, column, bytes); });
        QTEST(cause.isEmpty() ? TextOf(value) : cause, "value");
    }

    void takesRowsApart() {
        const auto column = [](const char* name, StoredType type, int number, int place) {
            const bool isText = type == StoredType::Text;
            return StoredColumn{.name = QString::fromLatin1(name),
                                .type = static_cast<int>(type),
                                .size = isText                      ? 255
                                        : type == StoredType::YesNo ? 0
                                                                    : 2,
                                .number = number,
                                .isFixed = !isText,
                                .fixedOffset = place,
                                .variableIndex = place};
        };
        // The third column was dropped, the last two came late.
        TableLayout table{
            .isJet3 = true, .everColumns = 7, .everVariableColumns = 3, .columns = {}};
        table.columns = {
            column("n", StoredType::Integer, 0, 0), column("a", StoredType::Text, 1, 0),
            column("b", StoredType::Text, 3, 1),    column("yes", StoredType::YesNo, 4, 2),
            column("m", StoredType::Integer, 5, 2), column("c", StoredType::Text, 6, 2)};
        RequireConsistent(table);
        const auto taken = [&table](const QByteArray& row) {
            QStringList values;
            const QString cause = CauseOf([&] {
                const Fields fields = TakeApart(table, row);
                for (std::size_t i = 0; i < fields.size(); ++i) {
                    values += TextOf(DecodeValue(table, table.columns[i], fields[i]));
                }
            });
            return cause.isEmpty() ? values.join(u' ') : cause;
        };
        const QByteArray early = QByteArray("\5\7\0x\x80z\6\4\3\2\x1B", 11);
        QCOMPARE(taken(early), u"7 \"x\" \"\u20acz\" 1 NULL NULL"_qs);
        QCOMPARE(taken(QByteArray("\5\7\0\x80z\5\3\3\2\x09", 10)),
                 u"7 NULL \"\u20acz\" 0 NULL NULL"_qs);
        QCOMPARE(taken(Patched(early, 10, "\x19")), u"damaged"_qs);  // a NULL with a text
        // What a longer text left behind.
        QCOMPARE(taken(QByteArray(early).insert(6, 'q')), taken(early));
        // 300 bytes of text: a jump to the next 256 before the second column and the end.
        const QByteArray wide = QByteArray("\5\7\0", 3) + QByteArray(200, 'a') +
                                QByteArray(100, 'b') + QByteArray("\x2F\xCB\3\2\2\x1B", 6);
        QCOMPARE(taken(wide),
                 u"7 \"%1\" \"%2\" 1 NULL NULL"_qs.arg(QString(200, u'a'), QString(100, u'b')));
        for (const char* fault : {"\0", "\x8", "\xFF"}) {
            QCOMPARE(taken(Patched(early, 0, QByteArray(fault, 1))), u"damaged"_qs);
            QCOMPARE(taken(Patched(early, 8, QByteArray(fault, 1))), u"damaged"_qs);
            QCOMPARE(taken(Patched(early, 9, QByteArray(fault, 1))), u"damaged"_qs);
        }
        for (qsizetype size = 0; size < early.size(); ++size) {
            QCOMPARE(taken(early.left(size)), u"damaged"_qs);
        }
        table.columns[4].fixedOffset = 1;
        QCOMPARE(CauseOf([&] { RequireConsistent(table); }), u"damaged"_qs);
        // A yes/no with a byte of its own.
        table = {.isJet3 = true, .everColumns = 3, .everVariableColumns = 0, .columns = {}};
        table.columns = {column("n", StoredType::Integer, 0, 0),
                         column("yes", StoredType::YesNo, 1, 2),
                         column("m", StoredType::Integer, 2, 3)};
        RequireConsistent(table);
        QCOMPARE(taken(QByteArray("\3\7\0\1\x9\0\7", 7)), u"7 1 9"_qs);
    }

    void refuses_data() {
        const DataRows<QString, QByteArray, int, QString> row("what", "bytes", "kind", "cause");
        const auto change = [](qsizetype at) {
            return Patched(Station(), at, QByteArray(1, static_cast<char>(Station()[at] ^ 1)));
        };
        row("empty", "", 0, "foreign");
        row("text", "01/02/2002 00:15,1.5", 0, "foreign");
        row("only the mark", Station().left(20), 1, "damaged");
        row("later kind", Patched(Station(), 4, "Standard ACE DB"), 2, "later");
        row("unknown version", Patched(Station(), 20, "\x9"), 1, "damaged");
        row("password", change(0x42), 1, "protected");
        row("password's last character", change(0x68), 1, "protected");
        row("encrypted", change(0x3E), 1, "encrypted");
        row("fewer rows than counted", change(26 * 4096 + 16), 1, "damaged");
        row("a text column as an object", Patched(Station(), 98367, "\xB"), 1, "damaged");
        row("no such type of column", Patched(Station(), 98692, "\x83"), 1, "damaged");
        row("a table among the system's", Patched(Station(), 59530, "\x2"), 1, "damaged");
        row("another table's page", change(35 * 4096 + 4), 1, "damaged");
    }

    void refuses() {
        QFETCH(QByteArray, bytes);
        QFETCH(int, kind);
        QTEST(ReadingOf(bytes).join(u'|'), "cause");
        QTemporaryDir folder;
        WriteBytes(folder.filePath(u"x"_qs), bytes);
        QCOMPARE(static_cast<int>(KindOf(folder.filePath(u"x"_qs))), kind);
    }

    void refusesWhatIsNoFileAndWhatIsInUse() {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"a \u00e9.mdb"_qs);
        QCOMPARE(Reading(path).join(u'|'), u"missing"_qs);
        QCOMPARE(Reading(folder.path()).join(u'|'), u"missing"_qs);
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        QCOMPARE(KindOf(path), FileKind::Other);
        QCOMPARE(Reading(path).join(u'|'), u"missing"_qs);
        QVERIFY(QFile::remove(path));
        WriteBytes(path, Station());
        const QString users = folder.filePath(u"a \u00e9.LDB"_qs);
        WriteBytes(users, "left over");
        QVERIFY(Reading(path).size() > 500);
        for (const QString& name : {path, users}) {
            // A lock of an open file's own counts as another program's.
            QFile file(name);
            QVERIFY(file.open(QIODevice::ReadWrite));
            struct flock lock {};
            lock.l_type = F_WRLCK;
            lock.l_start = 0x10000001;
            lock.l_len = 1;
            QCOMPARE(fcntl(file.handle(), F_OFD_SETLK, &lock), 0);
            QCOMPARE(Reading(path).join(u'|'), u"in use"_qs);
        }
    }

    void tellsEveryCut() {
        const QStringList whole = ReadingOf(Station());
        for (qsizetype size = 0; size < Station().size(); size += 512) {
            const QStringList lines = ReadingOf(Station().left(size));
            QVERIFY2(
                lines == whole || lines.join(u'|') == (size == 0 ? u"foreign"_qs : u"damaged"_qs),
                qPrintable(QString::number(size)));
        }
    }

    // A changed byte is told, or lies where nothing is read, or within one row's values or one
    // table's names.
    void tellsChangedBytes() {
        const QStringList whole = ReadingOf(Station());
        std::mt19937 random(20020101);
        for (int i = 0; i < 300; ++i) {
            const auto at = static_cast<qsizetype>(random() % Station().size());
            const auto byte = static_cast<char>(Station()[at] ^ (1U << (random() % 8)));
            const QStringList lines = ReadingOf(Patched(Station(), at, QByteArray(1, byte)));
            int changed = 0;
            for (qsizetype k = 0; k < std::min(lines.size(), whole.size()); ++k) {
                changed += lines[k] == whole[k] ? 0 : 1;
            }
            QVERIFY2(lines.size() == 1 || (lines.size() == whole.size() && changed <= 1),
                     qPrintable(u"%1 at %2"_qs.arg(static_cast<uchar>(byte)).arg(at)));
        }
    }

    void distrustsTheHelper_data() {
        const DataRows<QString, QByteArray, QString> row("what", "stream", "cause");
        const QByteArray names = Framed('N', Counted("Records"));
        const QByteArray begin = Framed('T', Counted("records") + '\0' + Counted("chan1"));
        const QByteArray number = Framed('R', '\1' + Little(1.5));
        const QByteArray end = Framed('E', Little(quint32{1})) + Framed('Z');
        row("as it should be", names + begin + number + end, "");
        row("nothing", "", "damaged");
        row("no end", names + begin + number, "damaged");
        row("more behind the end", names + begin + number + end + end, "damaged");
        row("names twice", names + names + Framed('Z'), "damaged");
        row("a row of no table", names + number + Framed('Z'), "damaged");
        row("a table twice", names + begin + number + end.left(9) + begin + number + end,
            "damaged");
        row("another table", names + Framed('T', Counted("x")), "damaged");
        row("another count", names + begin + number + number + end, "damaged");
        row("no such frame", names + Framed('?'), "damaged");
        row("endless frame", names + 'R' + Little(quint32{0xFFFFFFFF}), "damaged");
        row("a value too few", names + begin + Framed('R') + end, "damaged");
        row("a value too many", names + begin + Framed('R', QByteArray(2, '\0')) + end, "damaged");
        row("text for a number", names + begin + Framed('R', '\2' + Counted("x")) + end, "damaged");
        row("half a number", names + begin + Framed('R', "\1xxxx") + end, "damaged");
        row("endless text", Framed('N', Little(quint32{0xFFFFFFFF})), "damaged");
        row("no UTF-8", Framed('N', Counted("\xFF")), "damaged");
        row("its fault", names + Framed('F', "\3"), "protected");
        row("no such fault", names + Framed('F', "\x63"), "damaged");
    }

    void distrustsTheHelper() {
        QFETCH(QByteArray, stream);
        QTemporaryFile file;
        QVERIFY(file.open());
        WriteBytes(file.fileName(), stream);
        Lines lines;
        QTEST(CauseOf([&] {
                  HelperProcess helper(u"/bin/cat"_qs, {}, file.handle(), {10s, 10s, 1 << 20});
                  TakeAll(helper, {u"Records"_qs}, lines);
              }),
              "cause");
        QVERIFY(!HasChild());
    }

    void outlivesTheHelper_data() {
        const DataRows<QString, QStringList, QString> row("program", "arguments", "cause");
        row("/nowhere/rillbook-access", {}, "no helper");
        row("/etc/passwd", {}, "no helper");
        row("/bin/sleep", {u"60"_qs}, "too much");
        row("/bin/sh", {u"-c"_qs, u"exec >&-; sleep 60"_qs}, "too much");
        row("/bin/sh", {u"-c"_qs, u"exit 127"_qs}, "no helper");
        row("/bin/sh", {u"-c"_qs, u"kill -SEGV $$"_qs}, "damaged");
        row("/bin/sh", {u"-c"_qs, u"kill -XCPU $$"_qs}, "too much");
        row("/bin/sh", {u"-c"_qs, u"printf 'N\\0\\0\\0\\0Z\\0\\0\\0\\0'; exit 1"_qs}, "damaged");
        // An endless table, written as fast as possible, or slowly.
        const QString table =
            u"printf 'N\\0\\0\\0\\0T\\13\\0\\0\\0\\1\\0\\0\\0x\\0\\1\\0\\0\\0y'; while %1; "
            "do printf 'R\\1\\0\\0\\0\\0'; done"_qs;
        for (const char* pace : {":", "sleep 0.02"}) {
            row("/bin/sh", {u"-c"_qs, table.arg(QLatin1String(pace))}, "too much");
        }
        row("/bin/sh", {u"-c"_qs, u"test -e /proc/$$/fd/7 -o -n \"$HOME\" && exit 127"_qs},
            "damaged");
    }

    void outlivesTheHelper() {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        QElapsedTimer timer;
        timer.start();
        const int inherited = fcntl(STDIN_FILENO, F_DUPFD, 7);
        for (const HelperProcess::Limits& limits :
             {HelperProcess::Limits{500ms, 10s, 1 << 20}, {10s, 500ms, 1 << 20}}) {
            Lines lines;
            QTEST(CauseOf([&] {
                      HelperProcess helper(program, arguments, STDIN_FILENO, limits);
                      TakeAll(helper, {u"x"_qs}, lines);
                  }),
                  "cause");
        }
        ::close(inherited);
        QVERIFY(timer.elapsed() < 5000);
        QVERIFY(!HasChild());
    }

    void leavesNoHelperWhereTheSinkThrows() {
        class Refusing : public Lines {
            void TakeRow(const std::vector<Value>&) override { throw std::runtime_error("full"); }
        } sink;
        const QString path = QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/station_2000.mdb");
        QVERIFY_EXCEPTION_THROWN(ReadTables(path, kTables, sink), std::runtime_error);
        QVERIFY(!HasChild());
    }
};

QTEST_GUILESS_MAIN(TestAccess)
#include "tst_access.moc"
