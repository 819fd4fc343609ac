#include <QLocale>
#include <QtTest>
#include <numeric>

#include "platform/text/CodePage.h"
#include "platform/text/Numbers.h"
#include "platform/text/Regional.h"
#include "tests/support/CompareEach.h"

using namespace rillbook;

namespace {

// As many digits as tell two values apart.
QString Exact(std::optional<double> value) {
    return value ? QString::number(*value, 'g', QLocale::FloatingPointShortest) : u"nothing"_qs;
}

// The number at the start of a logger's text, and the number that the whole of it is.
QString LoggerNumbers(const QString& text) {
    const QByteArray bytes = text.toLatin1();
    const char* const end = bytes.constData() + bytes.size();
    const QString leading = Exact(ReadLeadingNumber(text));
    if (leading != Exact(ReadLeadingNumber(bytes.constData(), end))) {
        return u"text and bytes differ"_qs;
    }
    return leading + u", "_qs + Exact(ReadChannelField(bytes.constData(), end));
}

// The same of "en_US 1,234" as the user types it under that locale.
QString TypedNumbers(const QString& localeAndText) {
    RegionalSettings() = RegionalFromLocale(QLocale(localeAndText.left(5)));
    const QString text = localeAndText.mid(6);
    const std::optional<double> whole = ReadNumber(text);
    return Exact(ReadTypedNumber(text)) + u", "_qs + Exact(whole) +
           (IsNumber(text) == whole.has_value() ? QString() : u" wrongly told"_qs);
}

// Of "1.005 2" the value with so many decimals.
QString Fixed(const QString& valueAndDecimals) {
    return FixedNumberText(valueAndDecimals.section(u' ', 0, 0).toDouble(),
                           valueAndDecimals.section(u' ', 1).toInt());
}

}  // namespace

class TestTextNumbers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { RegionalSettings() = Regional{}; }

    void loggerNumbers() {
        RegionalSettings() = RegionalFromLocale(QLocale(u"de_DE"_qs));
        // 15 digits stay, more are rounded to 15 in a field; zeros in front don't count.
        CompareEach(
            LoggerNumbers,
            "1.5 => 1.5, 1.5;  \t-0.24071 \t => -0.24071, -0.24071; +.5 => 0.5, 0.5; 1. => 1, 1; "
            "1.5E-2 => 0.015, 0.015; 1e+3 => 1000, 1000; 1e+ => 1, nothing; "
            "12 34 => 12, nothing; 1,234 => 1, nothing; 1.2.3 => 1.2, nothing; "
            "0x1F => 0, nothing; 4 in => 4, nothing; "
            "0.123456789012345 => 0.123456789012345, 0.123456789012345; "
            "12345678901234567 => 12345678901234568, 12345678901234600; "
            "000.00012345678901234567 => 0.00012345678901234567, 0.000123456789012346");
        CompareAll(
            LoggerNumbers, u"0, nothing"_qs,
            ";   ; .; -; +-1; - 1; .e5; abc; inf; nan; $1; \"1\"; 1e400; 1e99999999999999999999");
    }

    void typedNumbers() {
        CompareEach(TypedNumbers,
                    "en_US  1,234,567.5  => 1, 1234567.5; en_US 1.5E-05 => 1.5e-05, 1.5e-05; "
                    "en_US 12,34 => 12, nothing; en_US 1234,567 => 1234, nothing; "
                    "en_US ,123 => 0, nothing; en_US 1.234,567 => 1.234, nothing; "
                    "en_US 2 ft => 2, nothing; en_US  => 0, nothing; "
                    "de_DE 1.234.567,5 => 1.234, 1234567.5; de_DE -1,5 => -1.5, -1.5; "
                    "de_DE 1.5 => 1.5, nothing; fr_FR 1 234,5 => 1, 1234.5; "
                    "fr_FR 1\u202F234,5 => 1, 1234.5; fr_FR 1\u00A0234,5 => 1, 1234.5; "
                    "sv_SE \u22121,5 => -1.5, -1.5; sv_SE -1,5 => -1.5, -1.5; "
                    "ar_EG 1\u066C234\u066B5 => 1, 1234.5");
    }

    void plainText() {
        RegionalSettings().decimalSign = u","_qs;
        RegionalSettings().negativeSign = u"~"_qs;
        const auto texts = [](const QString& value) {
            return PlainNumberText(value.toDouble()) + u' ' + RegionalNumberText(value.toDouble());
        };
        CompareEach(
            texts,
            "12.5 => 12.5 12,5; -0.25 => -0.25 ~0,25; 0.30000000000000004 => 0.3 0,3; "
            "0.33333333333333333 => 0.333333333333333 0,333333333333333; "
            "999999999999999 => 999999999999999 999999999999999; 1e15 => 1E+15 1E+15; "
            "1.5e20 => 1.5E+20 1,5E+20; 0.0001 => 0.0001 0,0001; -0.00001 => -1E-05 ~1E-05; "
            "1e-300 => 1E-300 1E-300; -0 => 0 0; nan =>  ; -inf =>  ");
    }

    void fixedText() {
        CompareEach(Fixed,
                    "0.125 2 => 0.13; 1.005 2 => 1.01; -2.5 0 => -3; 0.12499999999999 2 => 0.12; "
                    "1234567.891 2 => 1,234,567.89; -999 0 => -999; 999.995 2 => 1,000.00; "
                    "0.96 1 => 1.0; 0.6 0 => 1; 0.4 0 => 0; -0.004 2 => 0.00; -0.005 2 => -0.01; "
                    "3.3333333333333333e16 2 => 33,333,333,333,333,300.00; nan 2 => ; 1.5 -1 => 2");
        RegionalSettings() = {.decimalSign = u","_qs,
                              .groupDigits = false,
                              .leadingZero = false,
                              .negativeSign = u"~"_qs};
        CompareEach(Fixed,
                    "0.125 2 => ,13; -2.5 0 => ~3; 1234567.891 2 => 1234567,89; 0.96 1 => 1,0; "
                    "0.4 0 => 0; -0.004 2 => ,00; -0.005 2 => ~,01; nan 2 => ");
    }

    void readsBackUnderEveryLocale() {
        QStringList lost;
        for (const QLocale& locale : QLocale::matchingLocales(
                 QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory)) {
            RegionalSettings() = RegionalFromLocale(locale);
            for (const double value : {0.5, -1234.25, 9876543.125, -1e21}) {
                for (const QString& text : {FixedNumberText(value, 3), RegionalNumberText(value)}) {
                    if (ReadNumber(text) != value) {
                        lost += locale.name() + u' ' + text;
                    }
                }
            }
        }
        QCOMPARE(lost.join(u'\n'), QString());
    }

    void sixteenBits() {
        QList<int> nearest;
        for (const double value : {2.5, 2.6, -2.6, 32767.4, 1e300, -qInf(), qQNaN()}) {
            nearest += ToInt16(value);
        }
        QCOMPARE(nearest, (QList<int>{2, 3, -3, 32767, 32767, -32768, 0}));
    }

    void codePage() {
        const auto encode = [](const QString& text) {
            const QByteArray bytes = EncodeText(text);
            return QString::fromLatin1(bytes.toHex()) +
                   (DecodeText(bytes) == text ? QString() : u" doesn't read back"_qs);
        };
        // Beyond the code page: UTF-8 behind its mark. The last one only looks as if it had a mark.
        CompareEach(
            encode,
            "creek.mdb => 637265656b2e6d6462; Rh\u00F4ne \u2013 \u20AC => 5268f46e6520962080; "
            "\u0178\xC2\x81\xC2\x9D => 9f819d; "
            "\u0420\u0435\u043A\u0430 => efbbbfd0a0d0b5d0bad0b0; \xC2\x80 => efbbbfc280; "
            "\U0001F30A => efbbbff09f8c8a; \u00EF\u00BB\u00BFa => efbbbfc3afc2bbc2bf61;  => ");
        QByteArray bytes(256, '\0');
        std::iota(bytes.begin(), bytes.end(), '\0');
        QCOMPARE(EncodeText(DecodeText(bytes)).toHex(' '), bytes.toHex(' '));
    }
};

QTEST_GUILESS_MAIN(TestTextNumbers)
#include "tst_textnumbers.moc"
