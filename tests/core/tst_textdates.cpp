#include <QLocale>
#include <QtTest>
#include <limits>

#include "platform/text/DateTime.h"
#include "platform/text/Regional.h"

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

const QLocale kAmerican(QLocale::English, QLocale::UnitedStates);
constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();

}  // namespace

class TestTextDates : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { RegionalSettings() = Regional{}; }
    void cleanupTestCase() { RegionalSettings() = Regional{}; }

    void knownDays_data();
    void knownDays();
    void everySecondHasOneBitPattern();
    void noiseAndCarry_data();
    void noiseAndCarry();
    void calendarArithmetic_data();
    void calendarArithmetic();
    void clockArithmeticCarries();
    void loggerText_data();
    void loggerText();
    void typedText_data();
    void typedText();
    void writtenTexts_data();
    void writtenTexts();
    void readsBackUnderEveryLocale_data();
    void readsBackUnderEveryLocale();
    void patternsOfLocales_data();
    void patternsOfLocales();
};

void TestTextDates::knownDays_data() {
    QTest::addColumn<double>("moment");
    QTest::addColumn<QString>("iso");
    QTest::newRow("day zero") << 0.0 << u"1899-12-30 00:00:00"_qs;
    QTest::newRow("first sentinel") << 2.0 << u"1900-01-01 00:00:00"_qs;
    QTest::newRow("last sentinel") << 401769.0 << u"3000-01-01 00:00:00"_qs;
    QTest::newRow("a new rating's date") << -36157.0 << u"1801-01-01 00:00:00"_qs;
    QTest::newRow("linear below zero") << -0.25 << u"1899-12-29 18:00:00"_qs;
    QTest::newRow("before the calendar") << -1e300 << u"0100-01-01 00:00:00"_qs;
    QTest::newRow("behind the calendar") << qInf() << u"9999-12-31 23:59:59"_qs;
    QTest::newRow("no number") << qQNaN() << u"1899-12-30 00:00:00"_qs;
}

void TestTextDates::knownDays() {
    QFETCH(double, moment);
    QTEST(Iso(moment), "iso");
}

void TestTextDates::everySecondHasOneBitPattern() {
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

void TestTextDates::noiseAndCarry_data() {
    QTest::addColumn<double>("moment");
    QTest::addColumn<QString>("iso");
    QTest::newRow("end date plus 0.99") << 37257.99 << u"2002-01-01 23:45:36"_qs;
    QTest::newRow("23:59:59.7") << 37256 + 86399.7 / 86400 << u"2002-01-01 00:00:00"_qs;
    QTest::newRow("0.4 s below zero") << -0.4 / 86400 << u"1899-12-30 00:00:00"_qs;
    QTest::newRow("0.6 s below zero") << -0.6 / 86400 << u"1899-12-29 23:59:59"_qs;
}

void TestTextDates::noiseAndCarry() {
    QFETCH(double, moment);
    QFETCH(QString, iso);
    QCOMPARE(Iso(moment), iso);
    QCOMPARE(Iso(ToWholeSecond(moment)), iso);
    QCOMPARE(Iso(DayOf(moment)), iso.left(10) + u" 00:00:00"_qs);
}

void TestTextDates::calendarArithmetic_data() {
    QTest::addColumn<qint64>("year");
    QTest::addColumn<qint64>("month");
    QTest::addColumn<qint64>("day");
    QTest::addColumn<QString>("date");
    const auto row = [](const char* name, qint64 year, qint64 month, qint64 day, const char* date) {
        QTest::newRow(name) << year << month << day << QString::fromLatin1(date);
    };
    row("plain", 2002, 1, 31, "2002-01-31");
    row("month 13", 2014, 13, 5, "2015-01-05");
    row("month 0", 2014, 0, 5, "2013-12-05");
    row("month -12", 2014, -12, 5, "2012-12-05");
    row("day 0", 2004, 3, 0, "2004-02-29");
    row("day past the month", 2003, 2, 30, "2003-03-02");
    row("one month from Jan 31", 2002, 1 + 1, 31 - 1, "2002-03-02");
    row("nothing at all", 0, 0, 0, "1999-11-30");
    row("year 29", 29, 12, 31, "2029-12-31");
    row("year 30", 30, 1, 1, "1930-01-01");
    row("year 99 and a month over", 99, 13, 1, "2000-01-01");
    row("year 100", 100, 1, 1, "0100-01-01");
    row("before year 100", 100, 1, 0, "0100-01-01");
    row("negative year", -1, 1, 1, "0100-01-01");
    row("year 10000", 10000, 1, 1, "9999-12-31");
    row("10^18 days", 2002, 1, 1'000'000'000'000'000'000, "9999-12-31");
    row("-10^18 months", 2002, -1'000'000'000'000'000'000, 1, "0100-01-01");
    row("all at the upper limit", kHuge, kHuge, kHuge, "9999-12-31");
    row("all at the lower limit", -kHuge - 1, -kHuge - 1, -kHuge - 1, "0100-01-01");
}

void TestTextDates::calendarArithmetic() {
    QFETCH(qint64, year);
    QFETCH(qint64, month);
    QFETCH(qint64, day);
    QFETCH(QString, date);
    QCOMPARE(Iso(DateSerial(year, month, day)), date + u" 00:00:00"_qs);
}

void TestTextDates::clockArithmeticCarries() {
    QCOMPARE(TimeSerial(22, 41, 0), MomentOf(0, 81660));
    QCOMPARE(TimeSerial(25, 61, 61), MomentOf(1, 7321));  // 25 h + 61 min + 61 s = 1 d 02:02:01
    QCOMPARE(TimeSerial(0, -1, 0), MomentOf(-1, 86340));
    QVERIFY(TimeSerial(kHuge, kHuge, kHuge) > 1e9);
}

void TestTextDates::loggerText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("iso");
    const auto row = [](const QString& text, const char* iso) {
        QTest::addRow("<%s>", qPrintable(text)) << text << QString::fromLatin1(iso);
    };
    row(u"01/31/2002 23:45"_qs, "2002-01-31 23:45:00");
    row(u" \t1/2/02 \t 3:04:05  "_qs, "2002-01-02 03:04:05");
    row(u"12/31/29"_qs, "2029-12-31 00:00:00");
    row(u"01/01/30"_qs, "1930-01-01 00:00:00");
    row(u"2/29/2004"_qs, "2004-02-29 00:00:00");
    row(u"2007-10-01 0:15"_qs, "2007-10-01 00:15:00");
    row(u"2007/1/9"_qs, "2007-01-09 00:00:00");
    row(u"8/2/2016 10:59:45 PM"_qs, "2016-08-02 22:59:45");
    row(u"8/2/2016 12:00am"_qs, "2016-08-02 00:00:00");
    row(u"8/2/2016 12:00 Pm"_qs, "2016-08-02 12:00:00");
    row(u"6:30"_qs, "1899-12-30 06:30:00");
    for (const QString& text : {u""_qs,
                                u"  "_qs,
                                u"DateTime"_qs,
                                u"-----"_qs,
                                u"18/05/24 15:01:00"_qs,
                                u"31/01/2002"_qs,
                                u"2/29/2003"_qs,
                                u"2/30/2004"_qs,
                                u"0/1/2002"_qs,
                                u"1/0/2002"_qs,
                                u"13/1/2002"_qs,
                                u"1/2/0050"_qs,
                                u"1/2/200"_qs,
                                u"1/2/20021"_qs,
                                u"001/2/2002"_qs,
                                u"1/2"_qs,
                                u"1/2:30"_qs,
                                u"1/ 2/2002"_qs,
                                u"1-2-2002"_qs,
                                u"07-10-01"_qs,
                                u"2007-10/01"_qs,
                                u"2007-10-01T00:15"_qs,
                                u"1/2/2002 24:00"_qs,
                                u"1/2/2002 3:60"_qs,
                                u"1/2/2002 3:04:60"_qs,
                                u"1/2/2002 3:4"_qs,
                                u"1/2/2002 3"_qs,
                                u"1/2/2002 3:04:"_qs,
                                u"1/2/2002 3:04:05.5"_qs,
                                u"1/2/2002 0:15 AM"_qs,
                                u"1/2/2002 13:00 PM"_qs,
                                u"1/2/2002 3:04 A"_qs,
                                u"1/2/2002 3:04 AM PM"_qs,
                                u"1/2/2002 3:04 x"_qs,
                                u"1/2/2002 23:45\0"_qs,
                                u"1/2/2002\u00A03:04"_qs,
                                u"\u0661/2/2002"_qs,
                                u"3:04 1/2/2002"_qs,
                                u"'1/2/2002"_qs}) {
        row(text, "nothing");
    }
}

void TestTextDates::loggerText() {
    QFETCH(QString, text);
    // Month first whatever the user's own order.
    RegionalSettings() = RegionalFromLocale(QLocale(QLocale::German, QLocale::Germany));
    QTEST(Iso(ReadLoggerDateTime(text)), "iso");
}

void TestTextDates::typedText_data() {
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("iso");
    const auto row = [](const char* locale, const QString& text, const char* iso) {
        QTest::addRow("%s <%s>", locale, qPrintable(text))
            << QString::fromLatin1(locale) << text << QString::fromLatin1(iso);
    };
    row("en_US", u"1/2/2002"_qs, "2002-01-02 00:00:00");
    row("en_US", u" 1.2.02   3:04 pm "_qs, "2002-01-02 15:04:00");
    row("en_US", u"31 january 2002 23:45"_qs, "2002-01-31 23:45:00");
    row("en_US", u"31-Jan-02"_qs, "2002-01-31 00:00:00");
    row("en_US", u"2002 Jan 31"_qs, "2002-01-31 00:00:00");
    row("en_US", u"2002-01-02 12:00 AM"_qs, "2002-01-02 00:00:00");
    row("en_US", u"1/2/2002 3:04:05\u202FPM"_qs, "2002-01-02 15:04:05");
    row("en_US", u"11:45 PM"_qs, "1899-12-30 23:45:00");
    row("de_DE", u"1.2.2002 15:04"_qs, "2002-02-01 15:04:00");
    row("de_DE", u"1/2/2002 3:04:05 PM"_qs, "2002-02-01 15:04:05");
    row("fi_FI", u"1.2.2002 3.04"_qs, "2002-02-01 03:04:00");
    row("fi_FI", u"3.04"_qs, "1899-12-30 03:04:00");
    row("sv_SE", u"02-01-31"_qs, "2002-01-31 00:00:00");
    row("sv_SE", u"1/31/2002"_qs, "2002-01-31 00:00:00");
    row("ko_KR", u"2002. 1. 31. \uC624\uD6C4 3:04"_qs, "2002-01-31 15:04:00");
    for (const QString& text : {u""_qs,
                                u"abc"_qs,
                                u"12"_qs,
                                u"31/1/2002"_qs,
                                u"Feb 29, 2003"_qs,
                                u"Janu 5, 2002"_qs,
                                u"Jan Feb 2002"_qs,
                                u"1 2 2002"_qs,
                                u"1,2,2002"_qs,
                                u"1//2/2002"_qs,
                                u"x1/2/2002"_qs,
                                u"1/2/2002x"_qs,
                                u"1/2/2002 3"_qs,
                                u"1/2/2002 3:04 AM PM"_qs,
                                u"PM 1/2/2002 3:04"_qs,
                                u"1/2/2002 3:04:05:06"_qs,
                                u"1/2/2002 24:00"_qs,
                                u"1/2/2002 13:00 PM"_qs,
                                u"1/2/2002 99999999999:04"_qs,
                                u"1/2/0050"_qs,
                                u"1/2/200"_qs,
                                u"1.5"_qs}) {
        row("en_US", text, "nothing");
    }
    row("de_DE", u"1/31/2002"_qs, "nothing");
}

void TestTextDates::typedText() {
    QFETCH(QString, locale);
    QFETCH(QString, text);
    RegionalSettings() = RegionalFromLocale(QLocale(locale));
    QTEST(Iso(ReadDateTime(text)), "iso");
}

void TestTextDates::writtenTexts_data() {
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("texts");
    QTest::newRow("C") << u"C"_qs << u"1/5/2002 3:04:09 PM|1/5/2002"_qs;
    QTest::newRow("en_US") << u"en_US"_qs << u"1/5/2002 3:04:09 PM|1/5/2002"_qs;
    QTest::newRow("de_DE") << u"de_DE"_qs << u"05.01.2002 15:04:09|05.01.2002"_qs;
    QTest::newRow("fi_FI") << u"fi_FI"_qs << u"5.1.2002 15.04.09|5.1.2002"_qs;
    QTest::newRow("hu_HU") << u"hu_HU"_qs << u"2002. 01. 05. 15:04:09|2002. 01. 05."_qs;
    QTest::newRow("bg_BG") << u"bg_BG"_qs
                           << u"5.01.2002 \u0433. 15:04:09 \u0447.|5.01.2002 \u0433."_qs;
}

void TestTextDates::writtenTexts() {
    QFETCH(QString, locale);
    RegionalSettings() = RegionalFromLocale(QLocale(locale));
    const DateTime moment = MomentOf(37261, 54249);
    QTEST(GeneralDateText(moment) + u'|' + GeneralDateText(37261), "texts");
    QCOMPARE(ShortDateText(moment), GeneralDateText(37261));
    QCOMPARE((QStringList{SqlDateText(moment), SqlDateText(37261), MonthDayYearText(moment),
                          ShortMonthDayYearText(moment), MonthYearText(moment)}),
             (QStringList{u"1/5/2002 3:04:09 PM"_qs, u"1/5/2002"_qs, u"Jan 05, 2002"_qs,
                          u"Jan 5, 2002"_qs, u"Jan-2002"_qs}));
}

void TestTextDates::readsBackUnderEveryLocale_data() {
    QTest::addColumn<qint64>("day");
    QTest::addColumn<int>("second");
    const auto row = [](const char* name, DateTime day, int second) {
        QTest::newRow(name) << static_cast<qint64>(day) << second;
    };
    row("midnight", DateSerial(2002, 1, 31), 0);
    row("a second past midnight", DateSerial(2002, 12, 31), 1);
    row("noon, day 2 of month 1", DateSerial(2002, 1, 2), 43200);
    row("last second, day 12 of month 11", DateSerial(2001, 11, 12), 86399);
    row("half past midnight, day 12 of month 3", DateSerial(2010, 3, 12), 1800);
    row("quarter to one, year 1930", DateSerial(1930, 2, 1), 45900);
    row("afternoon of year 2029", DateSerial(2029, 9, 8), 54249);
    row("leap day", DateSerial(2004, 2, 29), 37815);
    row("before the scale", DateSerial(1801, 5, 6), 3600);
    row("three-digit year", DateSerial(100, 4, 3), 3661);
}

void TestTextDates::readsBackUnderEveryLocale() {
    QFETCH(qint64, day);
    QFETCH(int, second);
    const DateTime moment = MomentOf(day, second);
    const DateTime midnight = MomentOf(day, 0);
    QList<QLocale> locales =
        QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory);
    QVERIFY(locales.size() > 500);
    QStringList lost;
    const auto check = [&lost](const QLocale& locale, const QString& text, DateTime written) {
        if (ReadDateTime(text) != written) {
            lost.append(locale.name() + u' ' + text + u" -> "_qs + Iso(ReadDateTime(text)));
        }
    };
    for (const QLocale& locale : locales) {
        RegionalSettings() = RegionalFromLocale(locale);
        check(locale, GeneralDateText(moment), moment);
        check(locale, ShortDateText(moment), midnight);
        check(locale, MonthDayYearText(moment), midnight);
        check(locale, ShortMonthDayYearText(moment), midnight);
    }
    RegionalSettings() = Regional{};
    check(kAmerican, SqlDateText(moment), moment);
    QCOMPARE(lost.join(u'\n'), QString());
}

void TestTextDates::patternsOfLocales_data() {
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("patterns");
    const auto row = [](const char* locale, const QString& patterns) {
        QTest::newRow(locale) << QString::fromLatin1(locale) << patterns;
    };
    row("C", u"M/d/yyyy|h:mm:ss AP|.|,"_qs);
    row("en_US", u"M/d/yyyy|h:mm:ss AP|.|,"_qs);
    row("en_GB", u"dd/MM/yyyy|HH:mm:ss|.|,"_qs);
    row("de_DE", u"dd.MM.yyyy|HH:mm:ss|,|."_qs);
    row("cs_CZ", u"dd.MM.yyyy|H:mm:ss|,|\u00A0"_qs);
    row("bg_BG", u"d.MM.yyyy' \u0433.'|H:mm:ss' \u0447.'|,|\u00A0"_qs);
    row("zh_TW", u"yyyy/M/d|APh:mm:ss|.|,"_qs);
    row("ar_EG", u"d/M/yyyy|h:mm:ss AP|\u066B|\u066C"_qs);
    row("be_BY", u"d.MM.yyyy|HH:mm:ss|,|\u00A0"_qs);
}

void TestTextDates::patternsOfLocales() {
    QFETCH(QString, locale);
    const Regional regional = RegionalFromLocale(QLocale(locale));
    QTEST(QStringList(
              {regional.shortDate, regional.longTime, regional.decimalSign, regional.groupSign})
              .join(u'|'),
          "patterns");
}

QTEST_GUILESS_MAIN(TestTextDates)
#include "tst_textdates.moc"
