// Dates, numbers and texts as users, loggers and files write them.
#include <QLocale>

#include "platform/text/DateTime.h"
#include "platform/text/Numbers.h"
#include "tests/support/CoreTest.h"

using namespace rillbook;

namespace {

// "2002-01-31 23:45:00", whatever the settings.
QString Iso(std::optional<DateTime> moment) {
    if (!moment) {
        return u"nothing"_qs;
    }
    const CalendarDate date = DateParts(*moment);
    const ClockTime time = TimeParts(*moment);
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d", date.year, date.month, date.day,
                             time.hour, time.minute, time.second);
}

// As many digits as tell two values apart.
QString Exact(std::optional<double> value) {
    return value ? QString::number(*value, 'g', QLocale::FloatingPointShortest) : u"nothing"_qs;
}

// Of "en_US 1/2/2002" the second under the first.
QString TypedDate(const QString& localeAndText) {
    RegionalSettings() = RegionalFromLocale(QLocale(localeAndText.left(5)));
    return Iso(ReadDateTime(localeAndText.mid(6)));
}

// The number at the start of the text, and the number that the whole of it is.
QString TypedNumbers(const QString& localeAndText) {
    RegionalSettings() = RegionalFromLocale(QLocale(localeAndText.left(5)));
    const QString text = localeAndText.mid(6);
    return Exact(ReadTypedNumber(text)) + u", "_qs + Exact(ReadNumber(text));
}

QString LoggerNumbers(const QString& text) {
    const QByteArray bytes = text.toLatin1();
    return Exact(ReadLeadingNumber(text)) + u", "_qs +
           Exact(ReadChannelField(bytes.constData(), bytes.constData() + bytes.size()));
}

// Of "1.005 2" the value with so many decimals.
QString Fixed(const QString& valueAndDecimals) {
    return FixedNumberText(valueAndDecimals.section(u' ', 0, 0).toDouble(),
                           valueAndDecimals.section(u' ', 1).toInt());
}

}  // namespace

class TestText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { RegionalSettings() = Regional{}; }

    void everySecondHasOneBitPattern() {
        for (std::int64_t second = 0; second < 86400; ++second) {
            const DateTime moment = MomentOf(37257, second);
            const bool same =
                ToWholeSecond(37256 + static_cast<double>(second + 86400) / 86400.0) == moment &&
                ToWholeSecond(moment + 0.0005 / 86400) == moment &&
                ToWholeSecond(moment - 0.0005 / 86400) == moment &&
                MomentOf(37258, second - 86400) == moment &&
                ReadDateTime(GeneralDateText(moment)) == moment;
            QVERIFY2(same, qPrintable(Iso(moment)));
        }
    }

    void calendarArithmetic() {
        const auto serial = [](const QString& yearMonthDay) {
            const QStringList parts = yearMonthDay.split(u' ');
            return Iso(
                DateSerial(parts[0].toLongLong(), parts[1].toLongLong(), parts[2].toLongLong()));
        };
        CompareEach(serial,
                    "2014 13 5 => 2015-01-05 00:00:00; 2014 0 5 => 2013-12-05 00:00:00; "
                    "2004 3 0 => 2004-02-29 00:00:00; 2003 2 30 => 2003-03-02 00:00:00; "
                    "29 12 31 => 2029-12-31 00:00:00; 30 1 1 => 1930-01-01 00:00:00; "
                    "0 0 0 => 1999-11-30 00:00:00");
    }

    void loggerDates() {
        // Month first whatever the user's own order.
        RegionalSettings() = RegionalFromLocale(QLocale(u"de_DE"_qs));
        const auto read = [](const QString& text) { return Iso(ReadLoggerDateTime(text)); };
        CompareEach(
            read,
            "01/31/2002 23:45 => 2002-01-31 23:45:00; "
            " \t1/2/02 \t 3:04:05   => 2002-01-02 03:04:05; 01/01/30 => 1930-01-01 00:00:00; "
            "2/29/2004 => 2004-02-29 00:00:00; 2007-10-01 0:15 => 2007-10-01 00:15:00; "
            "2007/1/9 => 2007-01-09 00:00:00; 8/2/2016 10:59:45 PM => 2016-08-02 22:59:45; "
            "8/2/2016 12:00am => 2016-08-02 00:00:00; 8/2/2016 12:00 Pm => 2016-08-02 12:00:00; "
            "6:30 => 1899-12-30 06:30:00");
        CompareAll(read, u"nothing"_qs,
                   "; DateTime; -----; 18/05/24 15:01:00; 31/01/2002; 2/29/2003; 0/1/2002; "
                   "1/0/2002; 1/2/0050; 1/2/20021; 1/2; 1-2-2002; 07-10-01; 2007-10-01T00:15; "
                   "1/2/2002 24:00; 1/2/2002 3:60; 1/2/2002 3:4; 1/2/2002 3; "
                   "1/2/2002 3:04:05.5; 1/2/2002 13:00 PM; 1/2/2002 3:04 x");
    }

    void typedDates() {
        CompareEach(
            TypedDate,
            "en_US 1/2/2002 => 2002-01-02 00:00:00; "
            "en_US  1.2.02   3:04 pm  => 2002-01-02 15:04:00; "
            "en_US 31 january 2002 23:45 => 2002-01-31 23:45:00; "
            "en_US 2002-01-02 12:00 AM => 2002-01-02 00:00:00; "
            "en_US 11:45 PM => 1899-12-30 23:45:00; de_DE 1.2.2002 15:04 => 2002-02-01 15:04:00; "
            "de_DE 1/2/2002 3:04:05 PM => 2002-02-01 15:04:05; de_DE 1/31/2002 => nothing; "
            "fi_FI 1.2.2002 3.04 => 2002-02-01 03:04:00; fi_FI 3.04 => 1899-12-30 03:04:00; "
            "sv_SE 02-01-31 => 2002-01-31 00:00:00; sv_SE 1/31/2002 => 2002-01-31 00:00:00; "
            "ko_KR 2002. 1. 31. \uC624\uD6C4 3:04 => 2002-01-31 15:04:00");
        const auto american = [](const QString& text) { return TypedDate(u"en_US "_qs + text); };
        CompareAll(american, u"nothing"_qs,
                   "; abc; 12; 1.5; 31/1/2002; Feb 29, 2003; Janu 5, 2002; 1 2 2002; 1//2/2002; "
                   "x1/2/2002; 1/2/2002x; 1/2/2002 3; 1/2/2002 3:04 AM PM; 1/2/2002 24:00; "
                   "1/2/2002 99999999999:04; 1/2/0050; 1/2/200");
    }

    void englishDates() {
        const DateTime moment = MomentOf(37261, 54249);
        RegionalSettings() = RegionalFromLocale(QLocale(u"de_DE"_qs));
        const QStringList english{SqlDateText(moment), SqlDateText(37261), MonthDayYearText(moment),
                                  ShortMonthDayYearText(moment), MonthYearText(moment)};
        QCOMPARE(english.join(u'|'),
                 u"1/5/2002 3:04:09 PM|1/5/2002|Jan 05, 2002|Jan 5, 2002|Jan-2002"_qs);
    }

    void loggerNumbers() {
        RegionalSettings() = RegionalFromLocale(QLocale(u"de_DE"_qs));
        // 15 digits stay, more are rounded to 15 in a field; zeros in front don't count.
        CompareEach(
            LoggerNumbers,
            "1.5 => 1.5, 1.5;  \t-0.24071 \t => -0.24071, -0.24071; +.5 => 0.5, 0.5; 1. => 1, 1; "
            "1.5E-2 => 0.015, 0.015; 1e+ => 1, nothing; 12 34 => 12, nothing; "
            "1,234 => 1, nothing; 1.2.3 => 1.2, nothing; 0x1F => 0, nothing; 4 in => 4, nothing; "
            "0.123456789012345 => 0.123456789012345, 0.123456789012345; "
            "12345678901234567 => 12345678901234568, 12345678901234600; "
            "1e-400 => 0, 0; -0.00001E-99999999999999999999 => 0, 0; "
            "000.00012345678901234567 => 0.00012345678901234567, 0.000123456789012346");
        CompareAll(
            LoggerNumbers, u"0, nothing"_qs,
            ";   ; .; -; +-1; - 1; .e5; abc; inf; nan; \"1\"; 1e400; 1e99999999999999999999");
    }

    void typedNumbers() {
        CompareEach(TypedNumbers,
                    "en_US  1,234,567.5  => 1234567.5, 1234567.5; en_US 1.5E-05 => 1.5e-05, "
                    "1.5e-05; en_US -1,500 cfs => -1500, nothing; en_US 1,500, ice => 1500, "
                    "nothing; en_US 12,34 => 12, nothing; en_US 1,50,0 => 1, nothing; "
                    "en_US 12,345,6 => 12, nothing; en_US 1234,567 => 1234, nothing; "
                    "en_US ,123 => 0, nothing; en_US 1.234,567 => 1.234, nothing; "
                    "en_US 2 ft => 2, nothing; en_US  => 0, nothing; "
                    "en_US 1e-400 => 0, 0; en_US 1e400 => 0, nothing; "
                    "de_DE 1.234.567,5 => 1234567.5, 1234567.5; de_DE 1.500 m => 1500, nothing; "
                    "de_DE -1,5 => -1.5, -1.5; de_DE 1.5 => 1.5, nothing; "
                    "de_DE .5 => 0.5, nothing; fr_FR 12 50 => 12, nothing; "
                    "fr_FR 1 234,5 => 1234.5, 1234.5; fr_FR 1\u202F234,5 => 1234.5, 1234.5; "
                    "de_CH 1'234.5 => 1234.5, 1234.5; "
                    "sv_SE \u22121,5 => -1.5, -1.5; sv_SE -1,5 => -1.5, -1.5; "
                    "ar_EG 1\u066C234\u066B5 => 1234.5, 1234.5");
    }

    void writtenNumbers() {
        RegionalSettings() = {.decimalSign = u","_qs,
                              .groupDigits = false,
                              .leadingZero = false,
                              .negativeSign = u"~"_qs};
        const auto texts = [](const QString& value) {
            return PlainNumberText(value.toDouble()) + u' ' + RegionalNumberText(value.toDouble());
        };
        CompareEach(texts,
                    "12.5 => 12.5 12,5; -0.25 => -0.25 ~0,25; 0.30000000000000004 => 0.3 0,3; "
                    "1.5e20 => 1.5E+20 1,5E+20; -0.00001 => -1E-05 ~1E-05; -0 => 0 0; nan =>  ");
        CompareEach(Fixed,
                    "0.125 2 => ,13; -2.5 0 => ~3; 1234567.891 2 => 1234567,89; 0.96 1 => 1,0; "
                    "0.4 0 => 0; -0.004 2 => ,00; -0.005 2 => ~,01; nan 2 => ");
        RegionalSettings() = {};
        CompareEach(Fixed,
                    "0.125 2 => 0.13; 1.005 2 => 1.01; 0.12499999999999 2 => 0.12; "
                    "1234567.891 2 => 1,234,567.89; -999 0 => -999; 999.995 2 => 1,000.00; "
                    "0.6 0 => 1; -0.004 2 => 0.00; 1.5 -1 => 2; "
                    "3.3333333333333333e16 2 => 33,333,333,333,333,300.00");
        QCOMPARE(u"%1 %2 %3"_qs.arg(ToInt16(2.5)).arg(ToInt16(1e300)).arg(ToInt16(qQNaN())),
                 u"2 32767 0"_qs);
    }

    void readsBackUnderEveryLocale() {
        QStringList lost;
        const auto check = [&lost](const QString& text, bool readBack) {
            lost += readBack ? QStringList() : QStringList(text);
        };
        for (const QLocale& locale : QLocale::matchingLocales(
                 QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory)) {
            RegionalSettings() = RegionalFromLocale(locale);
            for (const char* moment : {"2002-12-31", "2001-11-12 23:59:59", "2002-01-02 12:00",
                                       "2010-03-12 00:30", "0100-04-03 01:01:01"}) {
                const DateTime t = At(moment);
                check(GeneralDateText(t), ReadDateTime(GeneralDateText(t)) == t);
                for (const QString& text :
                     {ShortDateText(t), MonthDayYearText(t), ShortMonthDayYearText(t)}) {
                    check(text, ReadDateTime(text) == DayOf(t));
                }
            }
            for (const double value : {0.5, -1234.25, 9876543.125, -1e21}) {
                for (const QString& text : {FixedNumberText(value, 3), RegionalNumberText(value)}) {
                    check(text, ReadNumber(text) == value);
                }
            }
        }
        QCOMPARE(lost.join(u'\n'), QString());
    }
};

QTEST_GUILESS_MAIN(TestText)
#include "tst_text.moc"
