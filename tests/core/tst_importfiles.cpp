// Whole files: the samples, loggers' own files from the field, and files that are none.
#include <sys/resource.h>

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QtTest>
#include <numeric>

#include "import/Import.h"
#include "store/FormStuff.h"
#include "tests/support/DataRows.h"
#include "tests/support/MessageLog.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

const QString samplesFolder = QStringLiteral(RILLBOOK_SOURCE_DIR "/samples/");
const QString fieldFolder = QStringLiteral(RILLBOOK_SOURCE_DIR "/../shared/data/");

QList<int> Numbers(const QString& text) {
    QList<int> numbers;
    for (const QString& item : text.split(u", "_qs)) {
        numbers += item.toInt();
    }
    return numbers;
}

// `widths` is the date field's width and a channel's width each, as the table of the samples has
// it.
void SetLayout(int type, const QString& widths) {
    const QList<int> numbers = Numbers(widths);
    StationInfo.ImportType = static_cast<std::int16_t>(type);
    StationInfo.ImportDtWidth = static_cast<std::int16_t>(numbers[0]);
    for (int chan = 1; chan < numbers.size(); ++chan) {
        ChannelInfo[chan].ImportWidth = static_cast<std::int16_t>(numbers[chan]);
    }
}

// Imports into an empty station and gives "readable, unreadable, repeated; empty values of each
// channel" as the message and the stored records have them. Readable records that weren't all
// stored show as such.
QString ImportInto(StationFixture& station, const QString& file) {
    MessageLog messages;
    ImportFile(file);
    const QString message = messages.texts.join(QLatin1Char('\n'));
    static const QRegularExpression counts(
        u"^ (\\d+) Readable Records,  (\\d+) Unreadable Records\\(s\\), "
        "and  (\\d+) Dupulicate\\(s\\)\\.$"_qs);
    const QRegularExpressionMatch match = counts.match(message);
    if (!match.hasMatch()) {
        return message;
    }
    QStringList empty;
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        empty +=
            station.Dump(qPrintable(u"SELECT count(*) - count(chan%1) FROM Records"_qs.arg(chan)));
    }
    const QString stored = station.Dump("SELECT count(*) FROM Records");
    return u"%1, %2, %3; %4"_qs.arg(match.captured(1), match.captured(2), match.captured(3),
                                    empty.join(u", "_qs)) +
           (stored == match.captured(1) ? QString() : u"; stored "_qs + stored);
}

long PeakMemoryKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace

class TestImportFiles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // By the table in samples/README.md.
    void samples_data() {
        const DataRows<QString, int, QString, QString> row("name", "type", "widths", "result");
        const QString table = QString::fromUtf8(ReadBytes(samplesFolder + u"README.md"_qs));
        for (const QString& line : table.split(QLatin1Char('\n'))) {
            const QStringList cells = line.split(u" | "_qs);
            if (cells.size() == 7 && cells[0].startsWith(u"| `"_qs)) {
                row(cells[0].section(QLatin1Char('`'), 1, 1), cells[1].left(1).toInt(), cells[2],
                    cells.mid(3, 3).join(u", "_qs) + u"; "_qs + QString(cells[6]).chopped(2));
            }
        }
    }
    void samples() { CheckIn(samplesFolder); }

    void fieldFiles_data() {
        if (!QDir(fieldFolder).exists()) {
            QSKIP("Files from the field aren't at hand");
        }
        const DataRows<QString, int, QString, QString> row("name", "type", "widths", "result");
        row("type1_five_channels_bom.csv", 0, "0, 0, 0, 0, 0, 0",
            "7770, 2, 0; 3885, 3885, 3885, 3886, 3885");
        row("type1_hourly_oxygen.csv", 0, "0, 0, 0, 0, 0, 0", "5017, 2, 0; 0, 0, 0, 0, 0");
        row("type1_year_first_refused.csv", 0, "0, 0", "0, 2808, 0; 0");
        row("type1_stage_raw.csv", 0, "0, 0", "8841, 0, 0; 0");
        row("type2_level_logger.csv", 1, "0, 0, 0", "2184, 2, 0; 0, 0");
        row("type2_discharge_15min.csv", 1, "0, 0", "216115, 0, 24; 0");
        row("fixed_discharge_15min.txt", 2, "14, 12", "40000, 0, 0; 0");
        row("campbell_pressure.dat", 3, "15, 11, 11, 11", "52142, 0, 139; 0, 0, 0");
    }
    void fieldFiles() { CheckIn(fieldFolder); }

    void otherEncodings() {
        StationFixture station;
        const QByteArray text = "1/1/02 00:15,1.25\r\n1/1/02 00:30,1.5\r\n";
        QByteArray little("\xFF\xFE");
        QByteArray big("\xFE\xFF");
        for (const char byte : text) {
            little += QByteArray(1, byte) + '\0';
            big += '\0' + QByteArray(1, byte);
        }
        // The NUL of each CR, LF makes lines of its own.
        QCOMPARE(ImportInto(station, station.LoggerFile(little)), u"0, 5, 0; 0"_qs);
        QCOMPARE(ImportInto(station, station.LoggerFile(big)), u"0, 4, 0; 0"_qs);
        const QByteArray macintosh = "\xEF\xBB\xBF" + QByteArray(text).replace("\r\n", "\r");
        QCOMPARE(ImportInto(station, station.LoggerFile(macintosh)), u"2, 0, 0; 0"_qs);
    }

    // Whatever the bytes: each line is counted once, and what counts as readable is stored.
    void noise_data() {
        const DataRows<int, QByteArray> row("type", "alphabet");
        QByteArray all(256, '\0');
        std::iota(all.begin(), all.end(), '\0');
        for (int type = 0; type <= 3; ++type) {
            row(type, "00112345:/,,.  \n\n\r\t-+eEAPM");
            row(type, all);
        }
    }
    void noise() {
        QFETCH(int, type);
        QFETCH(QByteArray, alphabet);
        QRandomGenerator random(20020101);
        QByteArray bytes;
        for (int i = 0; i < 300'000; ++i) {
            bytes += alphabet[static_cast<qsizetype>(
                random.bounded(static_cast<quint32>(alphabet.size())))];
        }
        StationFixture station(3);
        SetLayout(type, u"6, 2, 0, 1"_qs);
        const QString result = ImportInto(station, station.LoggerFile(bytes));
        QVERIFY2(!result.contains(u"stored"_qs), qPrintable(result));
        const QList<int> counts = Numbers(result.section(QLatin1Char(';'), 0, 0));
        bytes.replace("\r\n", "\n").replace('\r', '\n');
        const auto lines = bytes.count('\n') + (bytes.endsWith('\n') ? 0 : 1);
        QCOMPARE(counts.value(0) + counts.value(1) + counts.value(2), static_cast<int>(lines));
        QVERIFY(type == 3 || counts.value(1) > 0);
        QCOMPARE(station.Dump("PRAGMA integrity_check"), u"ok"_qs);
    }

    void endlessLine() {
        StationFixture station;
        QFile file(station.LoggerFile("1/1/02 00:15,1.25"));
        QVERIFY(file.open(QIODevice::Append));
        for (const char filling : {'0', ' '}) {
            for (int i = 0; i < 50; ++i) {
                QCOMPARE(file.write(QByteArray(1'000'000, filling)), 1'000'000);
            }
            QVERIFY(file.write(filling == '0' ? "\n1/1/02 00:30,1.5" : "\n") > 0);
        }
        file.close();
        const long before = PeakMemoryKiB();
        QCOMPARE(ImportInto(station, file.fileName()).left(7), u"2, 0, 0"_qs);
        QVERIFY2(PeakMemoryKiB() - before < 12 * 1024, "Memory grows with the line");
        QCOMPARE(station.Dump("Records"),
                 u"2002-01-01 00:15:00 | NULL\n2002-01-01 00:30:00 | 1.5"_qs);
    }

private:
    static void CheckIn(const QString& folder) {
        QFETCH(QString, name);
        QFETCH(int, type);
        QFETCH(QString, widths);
        StationFixture station(static_cast<int>(widths.count(QLatin1Char(','))));
        SetLayout(type, widths);
        QTEST(ImportInto(station, folder + name), "result");
    }
};

QTEST_GUILESS_MAIN(TestImportFiles)
#include "tst_importfiles.moc"
