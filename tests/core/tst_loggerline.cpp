#include <QBuffer>
#include <algorithm>

#include "import/LineReader.h"
#include "import/LoggerLine.h"
#include "tests/support/CoreTest.h"

using namespace rillbook;

namespace {

// Gives its bytes in pieces, and fails where it should.
class Trickle : public QBuffer {
public:
    Trickle(const QByteArray& bytes, qint64 piece, qint64 failAt = -1)
        : piece_(piece), failAt_(failAt) {
        setData(bytes);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char* data, qint64 size) override {
        const qint64 left = failAt_ < 0 ? size : failAt_ - pos();
        return left == 0 ? -1 : QBuffer::readData(data, std::min({piece_, size, left}));
    }

private:
    const qint64 piece_;
    const qint64 failAt_;
};

// The lines in brackets, of a reader that keeps eight bytes of each.
QString LinesOf(QIODevice& device) {
    LineReader reader(device, 8);
    QByteArray lines;
    std::string_view line;
    while (reader.ReadLine(line)) {
        lines += '[' + QByteArray(line.data(), static_cast<qsizetype>(line.size())) + ']';
    }
    return QString::fromLatin1(lines) + (reader.Failed() ? u"failed"_qs : QString());
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
    // In the table / is CR, | is LF, _ is a blank and 0 is NUL.
    void lines() {
        for (const qint64 piece : {1, 2, 3, 1000}) {
            const auto lines = [piece](QString text) {
                text.replace(u'/', u'\r').replace(u'|', u'\n').replace(u'_', u' ');
                Trickle device(text.toLatin1().replace('0', '\0'), piece);
                return LinesOf(device).replace(QChar(u'\0'), u'0');
            };
            CompareEach(lines,
                        " => ; ab|cd| => [ab][cd]; ab|cd => [ab][cd]; a/b|c/|d => [a][b][c][d]; "
                        "||a/|/| => [][][a][]; a|/b => [a][][b]; "
                        "\u00EF\u00BB\u00BFg|\u00EF\u00BB\u00BFh => [g][\u00EF\u00BB\u00BFh]; "
                        "\u00EF\u00BB => [\u00EF\u00BB]; 12345678|9 => [12345678][9]; "
                        "12345678___|b => [12345678][b]; 1234567899|b => [12345678?][b]; "
                        "12345678____9/|b => [12345678?][b]; 12345678ab0c|b => [123456780][b]; "
                        "12345678_9 => [12345678?]; 123456789/123456789// => "
                        "[12345678?][12345678?][]");
        }
    }

    // The line at which the device fails could be half a number.
    void failure() {
        Trickle device("a,1.25\nb,1.50\nc,1.75\n", 4, 12);
        QCOMPARE(LinesOf(device), u"[a,1.25]failed"_qs);
    }

    void delimited() {
        LayOut(0, 0);
        Reads(
            "10/21/02 08:15,1.25,7.9 => 2002-10-21 08:15:00 | 1.25 | 7.9; "
            " 1/2/2002  8:05:09 , 1.25 ,-.5 => 2002-01-02 08:05:09 | 1.25 | -0.5; "
            "10/21/02 08:15,,7.9 => 2002-10-21 08:15:00 | - | 7.9; "
            "10/21/02 08:15,1.25,7,9 => 2002-10-21 08:15:00 | 1.25 | -; "
            "10/21/02 08:15,\"1.25\",1e3 => 2002-10-21 08:15:00 | - | 1000; "
            "08:15,3,1.5x => 1899-12-30 08:15:00 | 3 | -");
        Refuses("; ,3; Date Time,Stage ft; ------------------; 02/29/02 00:00,3");
        QCOMPARE(Read(QByteArray("10/21/02 08:15,3\0", 17)), u"unreadable"_qs);
        LayOut(1, 0);
        Reads(
            "10/21/02, 08:15, 1.25, 7.5 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            "10/21/02,,3 => 2002-10-21 00:00:00 | 3 | -; "
            "10/21/02,8:15 PM,3 => 2002-10-21 20:15:00 | 3 | -");
        Refuses("10/21/02,3; ,,3");
    }

    // Two channels, 5 and 4 wide.
    void columns() {
        LayOut(2, 14);
        Reads(
            "10/21/02 08:15 1.25 7.5 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            "10/21/02 08:1512.257.55 => 2002-10-21 08:15:00 | 12.25 | 7.55; "
            "10/21/02 08:15 1.25 7.599 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            "10/21/02 08:15  abc     => 2002-10-21 08:15:00 | - | -");
        Refuses("10/21/02 08:15 1.25 7.; Date and time Stage   C");
        LayOut(2, 0);
        Refuses(" 1.25 7.5");
        // Year, month and day, hour and minute in three columns of a third of the width.
        LayOut(3, 15);
        Reads(
            " 2002 1021  815 1.25 7.5 => 2002-10-21 08:15:00 | 1.25 | 7.5; "
            " 2002  0 0 2475 1.25 7.5 => 2001-12-01 01:15:00 | 1.25 | 7.5; "
            " 2002  231 2400 1.25 7.5 => 2002-03-04 00:00:00 | 1.25 | 7.5; "
            " 9e99  1 1 2400 1.25 7.5 => 9999-12-31 23:59:59 | 1.25 | 7.5; "
            "Year, MoDy HHMM Stage  C => 1999-11-30 00:00:00 | - | -");
        Refuses(" 2002 1021  815 1.25 7.");
        // A third of 11 is 3: the year would begin before the field; hour 1, minute 81.
        LayOut(3, 11);
        Reads(" 10 21 815  1.25 7.5 => 2000-10-21 02:21:00 | 1.25 | 7.5");
    }

private:
    void LayOut(int type, std::size_t dateWidth) {
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
