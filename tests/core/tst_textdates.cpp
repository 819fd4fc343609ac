#include <QLocale>
#include <QtTest>
#include <limits>

#include "platform/text/DateTime.h"
#include "platform/text/Regional.h"
#include "tests/support/CompareEach.h"
#include "tests/support/StationFixture.h"

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

// Of days since the scale's begin; rounded to a second beforehand they must give the same.
QString Moment(const QString& days) {
    const DateTime moment = days.toDouble();
    const QString iso = Iso(moment);
    const bool alike =
        Iso(ToWholeSecond(moment)) == iso && Iso(DayOf(moment)) == iso.left(10) + u" 00:00:00"_qs;
    return alike ? iso : u"in different ways"_qs;
}

QString ReadFromLogger(const QString& text) {
    return Iso(ReadLoggerDateTime(text));
}

// Of "en_US 1/2/2002" the second under the first.
QString ReadTyped(const QString& localeAndText) {
    RegionalSettings() = RegionalFromLocale(QLocale(localeAndText.left(5)));
    return Iso(ReadDateTime(localeAndText.mid(6)));
}

QString Serial(const QString& yearMonthDay) {
    const QStringList parts = yearMonthDay.split(u' ');
    return Iso(DateSerial(parts[0].toLongLong(), parts[1].toLongLong(), parts[2].toLongLong()));
}

constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();

}  // namespace

class TestTextDates : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { RegionalSettings() = Regional{}; }

    void moments() {
        CompareEach(Moment,
                    "0 => 1899-12-30 00:00:00; 401769 => 3000-01-01 00:00:00; "
                    "-36157 => 1801-01-01 00:00:00; -0.25 => 1899-12-29 18:00:00; "
                    "37257.99 => 2002-01-01 23:45:36; 37256.9999965 => 2002-01-01 00:00:00; "
                    "-5e-6 => 1899-12-30 00:00:00; -7e-6 => 1899-12-29 23:59:59; "
                    "-1e300 => 0100-01-01 00:00:00; inf => 9999-12-31 23:59:59; "
                    "nan => 1899-12-30 00:00:00");
    }

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
        CompareEach(Serial,
                    "2014 13 5 => 2015-01-05 00:00:00; 2014 0 5 => 2013-12-05 00:00:00; "
                    "2004 3 0 => 2004-02-29 00:00:00; 2003 2 30 => 2003-03-02 00:00:00; "
                    "29 12 31 => 2029-12-31 00:00:00; 30 1 1 => 1930-01-01 00:00:00; "
                    "99 13 1 => 2000-01-01 00:00:00; 100 1 0 => 0100-01-01 00:00:00; "
                    "0 0 0 => 1999-11-30 00:00:00");
        QCOMPARE(Iso(DateSerial(kHuge, kHuge, kHuge)), u"9999-12-31 00:00:00"_qs);
        QCOMPARE(Iso(DateSerial(-kHuge, -kHuge, -kHuge)), u"0100-01-01 00:00:00"_qs);
        QCOMPARE(TimeSerial(25, 61, 61), MomentOf(1, 7321));  // 1 d 02:02:01
        QCOMPARE(TimeSerial(0, -1, 0), MomentOf(-1, 86340));
        QVERIFY(TimeSerial(kHuge, kHuge, kHuge) > 1e9);
    }

    void loggerText() {
        // Month first whatever the user's own order.
        RegionalSettings() = RegionalFromLocale(QLocale(u"de_DE"_qs));
        CompareEach(
            ReadFromLogger,
            "01/31/2002 23:45 => 2002-01-31 23:45:00; "
            " \t1/2/02 \t 3:04:05   => 2002-01-02 03:04:05; 01/01/30 => 1930-01-01 00:00:00; "
            "2/29/2004 => 2004-02-29 00:00:00; 2007-10-01 0:15 => 2007-10-01 00:15:00; "
            "2007/1/9 => 2007-01-09 00:00:00; 8/2/2016 10:59:45 PM => 2016-08-02 22:59:45; "
            "8/2/2016 12:00am => 2016-08-02 00:00:00; 8/2/2016 12:00 Pm => 2016-08-02 12:00:00; "
            "6:30 => 1899-12-30 06:30:00");
        CompareAll(
            ReadFromLogger, u"nothing"_qs,
            "; DateTime; -----; 18/05/24 15:01:00; 31/01/2002; 2/29/2003; 0/1/2002; 1/0/2002; "
            "1/2/0050; 1/2/200; 1/2/20021; 001/2/2002; 1/2; 1/ 2/2002; 1-2-2002; 07-10-01; "
            "2007-10/01; 2007-10-01T00:15; 1/2/2002 24:00; 1/2/2002 3:60; 1/2/2002 3:04:60; "
            "1/2/2002 3:4; 1/2/2002 3; 1/2/2002 3:04:; 1/2/2002 3:04:05.5; 1/2/2002 0:15 AM; "
            "1/2/2002 13:00 PM; 1/2/2002 3:04 A; 1/2/2002 3:04 x; 1/2/2002\u00A03:04; "
            "\u0661/2/2002; 3:04 1/2/2002");
    }

    void typedText() {
        CompareEach(
            ReadTyped,
            "en_US 1/2/2002 => 2002-01-02 00:00:00; "
            "en_US  1.2.02   3:04 pm  => 2002-01-02 15:04:00; "
            "en_US 31 january 2002 23:45 => 2002-01-31 23:45:00; "
            "en_US 31-Jan-02 => 2002-01-31 00:00:00; "
            "en_US 2002-01-02 12:00 AM => 2002-01-02 00:00:00; "
            "en_US 1/2/2002 3:04:05\u202FPM => 2002-01-02 15:04:05; "
            "en_US 11:45 PM => 1899-12-30 23:45:00; de_DE 1.2.2002 15:04 => 2002-02-01 15:04:00; "
            "de_DE 1/2/2002 3:04:05 PM => 2002-02-01 15:04:05; de_DE 1/31/2002 => nothing; "
            "fi_FI 1.2.2002 3.04 => 2002-02-01 03:04:00; fi_FI 3.04 => 1899-12-30 03:04:00; "
            "sv_SE 02-01-31 => 2002-01-31 00:00:00; sv_SE 1/31/2002 => 2002-01-31 00:00:00; "
            "ko_KR 2002. 1. 31. \uC624\uD6C4 3:04 => 2002-01-31 15:04:00");
        const auto american = [](const QString& text) { return ReadTyped(u"en_US "_qs + text); };
        CompareAll(american, u"nothing"_qs,
                   "; abc; 12; 1.5; 31/1/2002; Feb 29, 2003; Janu 5, 2002; Jan Feb 2002; 1 2 2002; "
                   "1,2,2002; 1//2/2002; x1/2/2002; 1/2/2002x; 1/2/2002 3; 1/2/2002 3:04 AM PM; "
                   "PM 1/2/2002 3:04; 1/2/2002 3:04:05:06; 1/2/2002 24:00; 1/2/2002 13:00 PM; "
                   "1/2/2002 99999999999:04; 1/2/0050; 1/2/200");
    }

    void writtenTexts() {
        const auto write = [](const QString& locale) {
            RegionalSettings() = RegionalFromLocale(QLocale(locale));
            const DateTime moment = MomentOf(37261, 54249);
            return QStringList{GeneralDateText(moment), GeneralDateText(37261),
                               ShortDateText(moment)}
                .join(u'|');
        };
        CompareEach(write,
                    "C => 1/5/2002 3:04:09 PM|1/5/2002|1/5/2002; "
                    "en_GB => 05/01/2002 15:04:09|05/01/2002|05/01/2002; "
                    "de_DE => 05.01.2002 15:04:09|05.01.2002|05.01.2002; "
                    "fi_FI => 5.1.2002 15.04.09|5.1.2002|5.1.2002; "
                    "hu_HU => 2002. 01. 05. 15:04:09|2002. 01. 05.|2002. 01. 05.; "
                    "bg_BG => 5.01.2002 г. 15:04:09 ч.|5.01.2002 г.|5.01.2002 г.; "
                    "zh_TW => 2002/1/5 下午3:04:09|2002/1/5|2002/1/5");
        const DateTime moment = MomentOf(37261, 54249);
        const QStringList english{SqlDateText(moment), SqlDateText(37261), MonthDayYearText(moment),
                                  ShortMonthDayYearText(moment), MonthYearText(moment)};
        QCOMPARE(english.join(u'|'),
                 u"1/5/2002 3:04:09 PM|1/5/2002|Jan 05, 2002|Jan 5, 2002|Jan-2002"_qs);
    }

    void readsBackUnderEveryLocale() {
        const QList<QLocale> locales = QLocale::matchingLocales(
            QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory);
        QVERIFY(locales.size() > 500);
        QStringList lost;
        const auto check = [&lost](const QLocale& locale, const QString& text, DateTime written) {
            if (ReadDateTime(text) != written) {
                lost += locale.name() + u' ' + text + u" -> "_qs + Iso(ReadDateTime(text));
            }
        };
        for (const char* text :
             {"2002-01-31", "2002-12-31 00:00:01", "2002-01-02 12:00", "2001-11-12 23:59:59",
              "2010-03-12 00:30", "1930-02-01 12:45", "2029-09-08 15:04:09", "2004-02-29 10:30:15",
              "1801-05-06 01:00", "0100-04-03 01:01:01"}) {
            const DateTime moment = At(text);
            for (const QLocale& locale : locales) {
                RegionalSettings() = RegionalFromLocale(locale);
                check(locale, GeneralDateText(moment), moment);
                check(locale, ShortDateText(moment), DayOf(moment));
                check(locale, MonthDayYearText(moment), DayOf(moment));
                check(locale, ShortMonthDayYearText(moment), DayOf(moment));
            }
            RegionalSettings() = Regional{};
            check(QLocale::c(), SqlDateText(moment), moment);
        }
        QCOMPARE(lost.join(u'\n'), QString());
    }
};

QTEST_GUILESS_MAIN(TestTextDates)
#include "tst_textdates.moc"
