#include <QLocale>
#include <QtTest>
#include <cstring>

#include "platform/text/CodePage.h"
#include "platform/text/Numbers.h"
#include "platform/text/Regional.h"

using namespace rillbook;

namespace {

// As many digits as tell two values apart.
QString Exact(std::optional<double> value) {
    return value ? QString::number(*value, 'g', QLocale::FloatingPointShortest) : u"nothing"_qs;
}

}  // namespace

class TestTextNumbers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { RegionalSettings() = Regional{}; }
    void cleanupTestCase() { RegionalSettings() = Regional{}; }

    void loggerNumbers_data();
    void loggerNumbers();
    void typedNumbers_data();
    void typedNumbers();
    void plainText_data();
    void plainText();
    void fixedText_data();
    void fixedText();
    void fixedTextReadsBackUnderEveryLocale();
    void sixteenBits_data();
    void sixteenBits();
    void codePage_data();
    void codePage();
    void everyByteSurvives();
};

void TestTextNumbers::loggerNumbers_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("leading");
    QTest::addColumn<QString>("field");
    const auto row = [](const char* text, const char* leading, const char* field) {
        QTest::addRow("<%s>", text)
            << QByteArray(text) << QString::fromLatin1(leading) << QString::fromLatin1(field);
    };
    row("1.5", "1.5", "1.5");
    row(" \t-0.24071 \t", "-0.24071", "-0.24071");
    row("+.5", "0.5", "0.5");
    row("1.", "1", "1");
    row("1e3", "1000", "1000");
    row("1.5E-2", "0.015", "0.015");
    row("1E+3", "1000", "1000");
    row("1e", "1", "nothing");
    row("1e+", "1", "nothing");
    row("12 34", "12", "nothing");
    row("1,234", "1", "nothing");
    row("1.2.3", "1.2", "nothing");
    row("0x1F", "0", "nothing");
    row("4 in", "4", "nothing");
    for (const char* none : {"", "  ", ".", "-", "+-1", "--1", "- 1", "e5", ".e5", "abc", "inf",
                             "nan", "-inf", "$1", "NULL", "\"1\""}) {
        row(none, "0", "nothing");
    }
    row("1e400", "0", "nothing");
    row("1e99999999999999999999", "0", "nothing");
    // 15 digits stay, more are rounded to 15; zeros in front don't count.
    row("0.123456789012345", "0.123456789012345", "0.123456789012345");
    row("000.00012345678901234567", "0.00012345678901234567", "0.000123456789012346");
    row("12345678901234567", "12345678901234568", "12345678901234600");
    row("1.7976931348623157e308", "1.7976931348623157e+308", "nothing");
}

void TestTextNumbers::loggerNumbers() {
    QFETCH(QByteArray, text);
    RegionalSettings() = RegionalFromLocale(QLocale(QLocale::German, QLocale::Germany));
    const char* const end = text.constData() + text.size();
    QTEST(Exact(ReadLeadingNumber(text.constData(), end)), "leading");
    QTEST(Exact(ReadLeadingNumber(QString::fromLatin1(text))), "leading");
    QTEST(Exact(ReadChannelField(text.constData(), end)), "field");
}

void TestTextNumbers::typedNumbers_data() {
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("typed");  // read from the left
    QTest::addColumn<QString>("whole");
    const auto row = [](const char* locale, const QString& text, const char* typed,
                        const char* whole) {
        QTest::addRow("%s <%s>", locale, qPrintable(text))
            << QString::fromLatin1(locale) << text << QString::fromLatin1(typed)
            << QString::fromLatin1(whole);
    };
    row("en_US", u" 1,234,567.5 "_qs, "1", "1234567.5");
    row("en_US", u"-12"_qs, "-12", "-12");
    row("en_US", u"1.5E-05"_qs, "1.5e-05", "1.5e-05");
    row("en_US", u"12,34"_qs, "12", "nothing");
    row("en_US", u"1234,567"_qs, "1234", "nothing");
    row("en_US", u",123"_qs, "0", "nothing");
    row("en_US", u"1,23"_qs, "1", "nothing");
    row("en_US", u"1.234,567"_qs, "1.234", "nothing");
    row("en_US", u"2 ft"_qs, "2", "nothing");
    row("en_US", u""_qs, "0", "nothing");
    row("de_DE", u"1.234.567,5"_qs, "1.234", "1234567.5");
    row("de_DE", u"-1,5"_qs, "-1.5", "-1.5");
    row("de_DE", u"1.5"_qs, "1.5", "nothing");
    row("fr_FR", u"1 234,5"_qs, "1", "1234.5");
    row("fr_FR", u"1\u202F234,5"_qs, "1", "1234.5");
    row("fr_FR", u"1\u00A0234,5"_qs, "1", "1234.5");
    row("sv_SE", u"\u22121,5"_qs, "-1.5", "-1.5");
    row("sv_SE", u"-1,5"_qs, "-1.5", "-1.5");
    row("ar_EG", u"1\u066C234\u066B5"_qs, "1", "1234.5");
}

void TestTextNumbers::typedNumbers() {
    QFETCH(QString, locale);
    QFETCH(QString, text);
    RegionalSettings() = RegionalFromLocale(QLocale(locale));
    QTEST(Exact(ReadTypedNumber(text)), "typed");
    QTEST(Exact(ReadNumber(text)), "whole");
    QCOMPARE(IsNumber(text), ReadNumber(text).has_value());
}

void TestTextNumbers::plainText_data() {
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    const auto row = [](double value, const char* text) {
        QTest::newRow(text) << value << QString::fromLatin1(text);
    };
    row(0, "0");
    row(12.5, "12.5");
    row(-0.25, "-0.25");
    row(0.1 + 0.2, "0.3");
    row(1.0 / 3, "0.333333333333333");
    row(999999999999999, "999999999999999");
    row(1e15, "1E+15");
    row(1.5e20, "1.5E+20");
    row(0.0001, "0.0001");
    row(0.00001, "1E-05");
    row(1e-300, "1E-300");
    QTest::newRow("negative zero") << -0.0 << u"0"_qs;
    QTest::newRow("no number") << qQNaN() << u""_qs;
    QTest::newRow("infinite") << -qInf() << u""_qs;
}

void TestTextNumbers::plainText() {
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(PlainNumberText(value), text);
    Regional& regional = RegionalSettings();
    regional.decimalSign = u","_qs;
    regional.negativeSign = u"\u2212"_qs;
    QCOMPARE(PlainNumberText(value), text);
    QCOMPARE(RegionalNumberText(value),
             QString(text).replace(u'.', u',').replace(QRegularExpression(u"^-"_qs), u"\u2212"_qs));
}

void TestTextNumbers::fixedText_data() {
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("american");
    QTest::addColumn<QString>("sparing");  // comma, no grouping, no leading zero, its own minus
    const auto row = [](const char* name, double value, int decimals, const char* american,
                        const char* sparing) {
        QTest::newRow(name) << value << decimals << QString::fromLatin1(american)
                            << QString::fromLatin1(sparing);
    };
    row("half", 0.125, 2, "0.13", ",13");
    row("half by its text", 1.005, 2, "1.01", "1,01");
    row("half below zero", -2.5, 0, "-3", "~3");
    row("just below half", 0.12499999999999, 2, "0.12", ",12");
    row("grouped", 1234567.891, 2, "1,234,567.89", "1234567,89");
    row("three digits", -999, 0, "-999", "~999");
    row("carry into a group", 999.995, 2, "1,000.00", "1000,00");
    row("carry into the ones", 0.96, 1, "1.0", "1,0");
    row("carry out of nothing", 0.6, 0, "1", "1");
    row("nothing left", 0.4, 0, "0", "0");
    row("no negative zero", -0.004, 2, "0.00", ",00");
    row("small half", -0.005, 2, "-0.01", "~,01");
    row("far too small", 1e-300, 3, "0.000", ",000");
    row("zero", -0.0, 1, "0.0", ",0");
    row("beyond the 15 digits", 1e17 / 3, 2, "33,333,333,333,333,300.00", "33333333333333300,00");
    row("no number", qQNaN(), 2, "", "");
    row("infinite", qInf(), 2, "", "");
    row("decimals below their range", 1.5, -1, "2", "2");
}

void TestTextNumbers::fixedText() {
    QFETCH(double, value);
    QFETCH(int, decimals);
    QTEST(FixedNumberText(value, decimals), "american");
    RegionalSettings() = {.decimalSign = u","_qs,
                          .groupDigits = false,
                          .leadingZero = false,
                          .negativeSign = u"~"_qs};
    QTEST(FixedNumberText(value, decimals), "sparing");
}

void TestTextNumbers::fixedTextReadsBackUnderEveryLocale() {
    QStringList lost;
    for (const QLocale& locale : QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript,
                                                          QLocale::AnyTerritory)) {
        RegionalSettings() = RegionalFromLocale(locale);
        for (const double value : {0.5, -1234.25, 9876543.125, -1e21}) {
            for (const QString& text : {FixedNumberText(value, 3), RegionalNumberText(value)}) {
                if (ReadNumber(text) != value) {
                    lost.append(locale.name() + u' ' + text);
                }
            }
        }
    }
    QCOMPARE(lost.join(u'\n'), QString());
}

void TestTextNumbers::sixteenBits_data() {
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("nearest");
    QTest::newRow("up") << 2.6 << 3;
    QTest::newRow("down below zero") << -2.6 << -3;
    QTest::newRow("upper limit") << 32767.4 << 32767;
    QTest::newRow("beyond it") << 1e300 << 32767;
    QTest::newRow("lower limit") << -qInf() << -32768;
    QTest::newRow("no number") << qQNaN() << 0;
}

void TestTextNumbers::sixteenBits() {
    QFETCH(double, value);
    QTEST(int{ToInt16(value)}, "nearest");
}

void TestTextNumbers::codePage_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << u"creek.mdb"_qs << QByteArray("creek.mdb");
    QTest::newRow("high half") << u"Rh\u00F4ne \u2013 \u20AC"_qs
                               << QByteArray("Rh\xF4ne \x96 \x80");
    QTest::newRow("last of the controls") << u"\u0178\u0081\u009D"_qs << QByteArray("\x9F\x81\x9D");
    QTest::newRow("beyond the code page")
        << u"\u0420\u0435\u043A\u0430"_qs
        << QByteArray("\xEF\xBB\xBF\xD0\xA0\xD0\xB5\xD0\xBA\xD0\xB0");
    QTest::newRow("a control that isn't its own byte")
        << u"\u0080"_qs << QByteArray("\xEF\xBB\xBF\xC2\x80");
    QTest::newRow("looks like the mark") << u"\u00EF\u00BB\u00BFa"_qs
                                         << QByteArray(
                                                "\xEF\xBB\xBF\xC3\xAF\xC2\xBB\xC2\xBF"
                                                "a");
    QTest::newRow("begins with the mark itself") << u"\uFEFFa"_qs
                                                 << QByteArray(
                                                        "\xEF\xBB\xBF\xEF\xBB\xBF"
                                                        "a");
    QTest::newRow("beyond 16 bits")
        << u"\U0001F30A"_qs << QByteArray("\xEF\xBB\xBF\xF0\x9F\x8C\x8A");
    QTest::newRow("empty") << u""_qs << QByteArray("");
}

void TestTextNumbers::codePage() {
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(EncodeText(text).toHex(' '), bytes.toHex(' '));
    QCOMPARE(DecodeText(bytes), text);
}

void TestTextNumbers::everyByteSurvives() {
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.append(static_cast<char>(byte));
    }
    QCOMPARE(EncodeText(DecodeText(bytes)).toHex(' '), bytes.toHex(' '));
}

QTEST_GUILESS_MAIN(TestTextNumbers)
#include "tst_textnumbers.moc"
