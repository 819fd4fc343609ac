#include <QBuffer>
#include <QtTest>
#include <algorithm>

#include "import/LineReader.h"
#include "import/LoggerLine.h"
#include "tests/support/CompareEach.h"
#include "tests/support/DataRows.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

// Gives its bytes in pieces, and fails where it should.
class Trickle : public QIODevice {
public:
    Trickle(QByteArray bytes, qint64 piece, qint64 failAt = -1)
        : bytes_(std::move(bytes)), piece_(piece), failAt_(failAt) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 size) override {
        if (failAt_ >= 0 && at_ >= failAt_) {
            return -1;
        }
        const qint64 end = failAt_ >= 0 ? failAt_ : bytes_.size();
        const qint64 count = std::min({piece_, size, end - at_});
        std::copy_n(bytes_.constData() + at_, count, data);
        at_ += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    const QByteArray bytes_;
    const qint64 piece_;
    const qint64 failAt_;
    qint64 at_ = 0;
};

// The lines in brackets; NUL as 0.
QByteArray LinesOf(LineReader& reader) {
    QByteArray lines;
    std::string_view line;
    while (reader.ReadLine(line)) {
        lines += '[' + QByteArray(line.data(), static_cast<qsizetype>(line.size())) + ']';
    }
    return lines.replace('\0', '0') + (reader.Failed() ? "failed" : "");
}

QString Text(const LoggerReading& reading) {
    QString text = MomentText(reading.moment);
    for (const std::optional<double>& value : reading.channels) {
        text += value ? u" | "_qs + QString::number(*value, 'g', 15) : u" | -"_qs;
    }
    return text;
}

}  // namespace

class TestLoggerLine : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines_data() {
        const DataRows<QByteArray, QByteArray> row("bytes", "lines");
        row("", "");
        row("ab\ncd\n", "[ab][cd]");
        row("ab\ncd", "[ab][cd]");
        row("a\rb\nc\r\nd", "[a][b][c][d]");
        row("\n\na\r\n\r\n", "[][][a][]");
        row("a\n\rb", "[a][][b]");
        row("\xEF\xBB\xBFg\nh", "[g][h]");
        row("\xEF\xBB\xBF", "");
        row("\xEF\xBB", "[\xEF\xBB]");
        row("a\n\xEF\xBB\xBFg", "[a][\xEF\xBB\xBFg]");
        // Eight bytes of a line are kept.
        row("12345678\n9", "[12345678][9]");
        row("12345678 \t \nb", "[12345678][b]");
        row("1234567890\nb", "[12345678?][b]");
        row("12345678    0\r\nb", "[12345678?][b]");
        row(QByteArray("12345678ab\0c\nb", 14), "[123456780][b]");
        row("12345678 90", "[12345678?]");
        row("123456789\r1234567890\r\r", "[12345678?][12345678?][]");
    }
    void lines() {
        QFETCH(QByteArray, bytes);
        for (const qint64 piece : {1, 2, 3, 1000}) {
            Trickle device(bytes, piece);
            LineReader reader(device, 8);
            QTEST(LinesOf(reader), "lines");
        }
    }

    // Lines of all lengths across the borders of what is read at a time.
    void manyLines() {
        QByteArray bytes;
        QByteArray expected;
        for (int i = 0; i < 40000; ++i) {
            const QByteArray line(i % 97, static_cast<char>('a' + i % 26));
            bytes += line + (i % 3 == 0 ? "\r\n" : i % 3 == 1 ? "\n" : "\r");
            // A CR before an empty line that LF ends would be one terminator.
            bytes += i % 3 == 2 ? "x\n" : "";
            expected += '[' + line + ']' + (i % 3 == 2 ? "[x]" : "");
        }
        QBuffer device(&bytes);
        QVERIFY(device.open(QIODevice::ReadOnly));
        LineReader reader(device);
        QVERIFY(LinesOf(reader) == expected);
    }

    // The line at which the device fails could be half a number.
    void failure() {
        Trickle device("a,1.25\nb,1.50\nc,1.75\n", 4, 12);
        LineReader reader(device);
        QCOMPARE(LinesOf(reader), QByteArray("[a,1.25]failed"));
        Trickle longLine(QByteArray(100, 'x'), 30, 60);
        LineReader keepsLittle(longLine, 8);
        QCOMPARE(LinesOf(keepsLittle), QByteArray("failed"));
    }

    void delimited() {
        Type(0, 2);
        Reads(
            "10/21/02 08:15,1.25,7.9 => 2002-10-21 08:15:00 | 1.25 | 7.9; "
            " 1/2/2002  8:05:09 , 1.25 ,-.5 => 2002-01-02 08:05:09 | 1.25 | -0.5; "
            "10/21/02 08:15,,7.9 => 2002-10-21 08:15:00 | - | 7.9; "
            "10/21/02 08:15,1.25 => 2002-10-21 08:15:00 | 1.25 | -; "
            "10/21/02 08:15,1.25,7,9 => 2002-10-21 08:15:00 | 1.25 | -; "
            "10/21/02 08:15,\"1.25\",1e3 => 2002-10-21 08:15:00 | - | 1000; "
            "08:15,3,1.5x => 1899-12-30 08:15:00 | 3 | -");
        Refuses(
            "; ,3; Date Time,Stage ft; ------------------; 02/29/02 00:00,3; "
            "21/10/02 08:15,3; 10/21/02 24:00,3");
        QCOMPARE(Read(QByteArray("10/21/02 08:15,3\0", 17)), u"unreadable"_qs);
        Type(0, 0);
        Reads("10/21/02 08:15 => 2002-10-21 08:15:00; 10/21/02 08:15,3 => unreadable");
        Type(1, 2);
        Reads(
            "10/21/02, 08:15, 1.25, 7.5 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            "10/21/02,,3 => 2002-10-21 00:00:00 | 3 | -; "
            ",08:15,3 => 1899-12-30 08:15:00 | 3 | -; "
            "10/21/02 => 2002-10-21 00:00:00 | - | -; "
            "10/21/02 08:15,,3 => 2002-10-21 08:15:00 | 3 | -; "
            "10/21/02,8:15 PM,3 => 2002-10-21 20:15:00 | 3 | -");
        Refuses("10/21/02,3; ,,3");
        Type(4, 2);
        Refuses("10/21/02 08:15,3");
    }

    // Two channels, 5 and 4 wide.
    void columns() {
        Columns(2, 14);
        Reads(
            "10/21/02 08:15 1.25 7.5 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            "10/21/02 08:1512.257.55 => 2002-10-21 08:15:00 | 12.25 | 7.55; "
            "10/21/02 08:15 1.25 7.599 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            "10/21/02 08:15  abc     => 2002-10-21 08:15:00 | - | -");
        Refuses("10/21/02 08:15 1.25 7.; Date and time Stage   C");
        Columns(2, 0);
        Refuses(" 1.25 7.5");
        // Year, month and day, hour and minute in three columns of a third of the width.
        Columns(3, 15);
        Reads(
            " 2002 1021  815 1.25 7.5 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            " 2002  1 2    5 1.25 7.5 => 2002-01-02 00:05:00 | 1.25 | 7.5; "
            " 2002 1321  815 1.25 7.5 => 2003-01-21 08:15:00 | 1.25 | 7.5; "
            " 2002  0 0 2475 1.25 7.5 => 2001-12-01 01:15:00 | 1.25 | 7.5; "
            " 2002  231 2400 1.25 7.5 => 2002-03-04 00:00:00 | 1.25 | 7.5; "
            "   29  1 1    0 1.25 7.5 => 2029-01-01 00:00:00 | 1.25 | 7.5; "
            " 9e99  1 1    0 1.25 7.5 => 9999-12-31 00:00:00 | 1.25 | 7.5; "
            " 9e99  1 1 2400 1.25 7.5 => 9999-12-31 23:59:59 | 1.25 | 7.5; "
            "Year, MoDy HHMM Stage  C => 1999-11-30 00:00:00 | - | -");
        Refuses(" 2002 1021  815 1.25 7.");
        Columns(3, 16);
        Reads(" 2002 1021  815  1.25 7.5 => 2002-10-21 08:15:00 | 1.25 | 7.5");
        // A third of 11 is 3: the year would begin before the field; hour 1, minute 81.
        Columns(3, 11);
        Reads(" 10 21 815  1.25 7.5 => 2000-10-21 02:21:00 | 1.25 | 7.5");
    }

private:
    void Type(int type, std::size_t channels) {
        layout_ = {.type = type, .channelWidths = std::vector<std::size_t>(channels, 9)};
    }
    void Columns(int type, std::size_t dateWidth) {
        layout_ = {.type = type, .dateWidth = dateWidth, .channelWidths = {5, 4}};
    }
    QString Read(const QByteArray& line) const {
        LoggerLineParser parser(layout_);
        LoggerReading read;
        // What a line before has left behind must not show.
        parser.Parse("10/21/02 08:15,8.25,8.25,8.25", read);
        const std::string_view bytes(line.constData(), static_cast<std::size_t>(line.size()));
        return parser.Parse(bytes, read) ? Text(read) : u"unreadable"_qs;
    }
    void Reads(const char* table) const {
        CompareEach([this](const QString& line) { return Read(line.toLatin1()); }, table);
    }
    void Refuses(const char* lines) const {
        CompareAll([this](const QString& line) { return Read(line.toLatin1()); }, u"unreadable"_qs,
                   lines);
    }

    LoggerLayout layout_;
};

QTEST_GUILESS_MAIN(TestLoggerLine)
#include "tst_loggerline.moc"
