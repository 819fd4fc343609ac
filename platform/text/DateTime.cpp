#include "platform/text/DateTime.h"

#include <QDateTime>
#include <QVarLengthArray>
#include <algorithm>
#include <cmath>

#include "platform/text/DateParts.h"
#include "platform/text/DatePattern.h"

namespace rillbook {

namespace {

namespace chrono = std::chrono;

constexpr std::int64_t kSecondsOfDay = 86400;
constexpr std::int64_t kFirstDay = DayNumber(chrono::year{100} / 1 / 1);
constexpr std::int64_t kLastDay = DayNumber(chrono::year{9999} / 12 / 31);
static_assert(kFirstDay == -657434 && kLastDay == 2958465);

constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

struct Instant {
    std::int64_t day;
    std::int64_t second;
};

Instant InstantOf(DateTime moment) {
    if (std::isnan(moment)) {
        return {0, 0};
    }
    const double held =
        std::clamp(moment, static_cast<double>(kFirstDay), static_cast<double>(kLastDay + 1));
    Instant instant{};
    instant.day = static_cast<std::int64_t>(std::floor(held));
    instant.second = std::llround((held - static_cast<double>(instant.day)) * kSecondsOfDay);
    if (instant.second == kSecondsOfDay) {
        instant = {instant.day + 1, 0};
    }
    return instant.day > kLastDay ? Instant{kLastDay, kSecondsOfDay - 1} : instant;
}

// Walks the bytes of a logger's date and time.
class LoggerScanner {
public:
    LoggerScanner(const char* begin, const char* end) : at_(begin), end_(end) {}

    bool AtEnd() const { return at_ == end_; }

    bool SkipBlanks() {
        const char* start = at_;
        while (at_ != end_ && (*at_ == ' ' || *at_ == '\t')) {
            ++at_;
        }
        return at_ != start;
    }

    bool Sees(char wanted) const { return at_ != end_ && *at_ == wanted; }

    bool Take(char wanted) {
        const bool seen = Sees(wanted);
        at_ += seen ? 1 : 0;
        return seen;
    }

    struct Number {
        int value = 0;
        int digits = 0;
    };

    // Up to four digits; none is no error here.
    Number TakeNumber() {
        Number number;
        while (at_ != end_ && *at_ >= '0' && *at_ <= '9' && number.digits < 4) {
            number.value = number.value * 10 + (*at_ - '0');
            ++number.digits;
            ++at_;
        }
        return number;
    }

    HalfDay TakeHalfDay() {
        if (end_ - at_ < 2 || (at_[1] | 0x20) != 'm') {
            return HalfDay::None;
        }
        const int letter = at_[0] | 0x20;
        if (letter != 'a' && letter != 'p') {
            return HalfDay::None;
        }
        at_ += 2;
        return letter == 'a' ? HalfDay::Am : HalfDay::Pm;
    }

private:
    const char* at_;
    const char* end_;
};

using LoggerNumber = LoggerScanner::Number;

bool IsOneOrTwoDigits(LoggerNumber number) {
    return number.digits == 1 || number.digits == 2;
}

std::optional<std::int64_t> ReadLoggerDate(LoggerScanner& scanner, LoggerNumber first) {
    const bool yearFirst = first.digits == 4;
    char separator = '/';
    if (!scanner.Take('/')) {
        separator = '-';
        if (!yearFirst || !scanner.Take('-')) {
            return std::nullopt;
        }
    }
    const LoggerNumber second = scanner.TakeNumber();
    if (!scanner.Take(separator)) {
        return std::nullopt;
    }
    const LoggerNumber third = scanner.TakeNumber();
    const LoggerNumber year = yearFirst ? first : third;
    const LoggerNumber month = yearFirst ? second : first;
    const LoggerNumber day = yearFirst ? third : second;
    if (!IsOneOrTwoDigits(month) || !IsOneOrTwoDigits(day)) {
        return std::nullopt;
    }
    return DayOfWrittenDate(year.value, year.digits, month.value, day.value);
}

// Reads on behind the hour, to the end of the text.
std::optional<std::int64_t> ReadLoggerTime(LoggerScanner& scanner, LoggerNumber hour) {
    if (!IsOneOrTwoDigits(hour) || !scanner.Take(':')) {
        return std::nullopt;
    }
    const LoggerNumber minute = scanner.TakeNumber();
    LoggerNumber second{0, 2};
    if (scanner.Take(':')) {
        second = scanner.TakeNumber();
    }
    if (minute.digits != 2 || second.digits != 2) {
        return std::nullopt;
    }
    scanner.SkipBlanks();
    const HalfDay half = scanner.TakeHalfDay();
    scanner.SkipBlanks();
    if (!scanner.AtEnd()) {
        return std::nullopt;
    }
    return SecondOfWrittenTime(hour.value, minute.value, second.value, half);
}

QString MonthText(DateTime moment) {
    const auto month = static_cast<std::size_t>(DateParts(moment).month);
    return QStringView(kMonthNames[month - 1]).left(3).toString();
}

}  // namespace

DateTime MomentOf(std::int64_t day, std::int64_t second) {
    const std::int64_t carried = FloorDivide(second, kSecondsOfDay);
    const auto rest = static_cast<double>(second - carried * kSecondsOfDay);
    return static_cast<double>(day) + static_cast<double>(carried) + rest / 86400.0;
}

DateTime ToWholeSecond(DateTime moment) {
    const Instant instant = InstantOf(moment);
    return MomentOf(instant.day, instant.second);
}

DateTime DateSerial(std::int64_t year, std::int64_t month, std::int64_t day) {
    if (year >= 0 && year < 100) {
        year = FullYear(static_cast<int>(year));
    }
    // Far outside the calendar on either side, and far inside the integers.
    constexpr std::int64_t kFar = 1'000'000'000'000'000;
    const std::int64_t months =
        std::clamp(year, -kFar, kFar) * 12 + std::clamp(month, -kFar, kFar) - 1;
    const std::int64_t wholeYear = FloorDivide(months, 12);
    const auto monthOfYear = static_cast<unsigned>(months - wholeYear * 12 + 1);
    const chrono::year calendarYear{static_cast<int>(std::clamp<std::int64_t>(
        wholeYear, static_cast<int>(chrono::year::min()), static_cast<int>(chrono::year::max())))};
    const std::int64_t dayNumber =
        DayNumber(calendarYear / chrono::month{monthOfYear} / 1) + std::clamp(day, -kFar, kFar) - 1;
    return MomentOf(std::clamp(dayNumber, kFirstDay, kLastDay), 0);
}

DateTime TimeSerial(std::int64_t hour, std::int64_t minute, std::int64_t second) {
    constexpr std::int64_t kFar = 1'000'000'000'000'000;
    return MomentOf(0, std::clamp(hour, -kFar, kFar) * 3600 + std::clamp(minute, -kFar, kFar) * 60 +
                           std::clamp(second, -kFar, kFar));
}

CalendarDate DateParts(DateTime moment) {
    constexpr chrono::sys_days kDayZero{chrono::year{1899} / 12 / 30};
    const chrono::year_month_day date{kDayZero + chrono::days{InstantOf(moment).day}};
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

ClockTime TimeParts(DateTime moment) {
    const auto second = static_cast<int>(InstantOf(moment).second);
    return {second / 3600, second / 60 % 60, second % 60};
}

DateTime DayOf(DateTime moment) {
    return MomentOf(InstantOf(moment).day, 0);
}

DateTime Now() {
    const QDateTime now = QDateTime::currentDateTime();
    return MomentOf(QDate(1899, 12, 30).daysTo(now.date()),
                    now.time().msecsSinceStartOfDay() / 1000);
}

std::optional<DateTime> ReadLoggerDateTime(const char* begin, const char* end) {
    LoggerScanner scanner(begin, end);
    scanner.SkipBlanks();
    LoggerNumber number = scanner.TakeNumber();
    std::int64_t day = 0;
    if (!scanner.Sees(':')) {
        const std::optional<std::int64_t> date = ReadLoggerDate(scanner, number);
        const bool blanks = scanner.SkipBlanks();
        if (!date || scanner.AtEnd()) {
            return date ? std::optional(MomentOf(*date, 0)) : std::nullopt;
        }
        if (!blanks) {
            return std::nullopt;
        }
        day = *date;
        number = scanner.TakeNumber();
    }
    const std::optional<std::int64_t> second = ReadLoggerTime(scanner, number);
    return second ? std::optional(MomentOf(day, *second)) : std::nullopt;
}

std::optional<DateTime> ReadLoggerDateTime(QStringView text) {
    QVarLengthArray<char, 64> bytes;
    for (const QChar character : text) {
        if (character.unicode() > 0x7F) {
            return std::nullopt;
        }
        bytes.append(static_cast<char>(character.unicode()));
    }
    return ReadLoggerDateTime(bytes.constData(), bytes.constData() + bytes.size());
}

QString SqlDateText(DateTime moment) {
    const CalendarDate date = DateParts(moment);
    const ClockTime time = TimeParts(moment);
    QString text;
    AppendDigits(text, date.month, 1);
    text.append(u'/');
    AppendDigits(text, date.day, 1);
    text.append(u'/');
    AppendDigits(text, date.year, 4);
    if (time == ClockTime{}) {
        return text;
    }
    text.append(u' ');
    AppendDigits(text, (time.hour + 11) % 12 + 1, 1);
    text.append(u':');
    AppendDigits(text, time.minute, 2);
    text.append(u':');
    AppendDigits(text, time.second, 2);
    return text.append(time.hour < 12 ? u" AM" : u" PM");
}

QString MonthDayYearText(DateTime moment) {
    const CalendarDate date = DateParts(moment);
    return QStringLiteral("%1 %2, %3")
        .arg(MonthText(moment))
        .arg(date.day, 2, 10, QLatin1Char('0'))
        .arg(date.year, 4, 10, QLatin1Char('0'));
}

QString ShortMonthDayYearText(DateTime moment) {
    const CalendarDate date = DateParts(moment);
    return QStringLiteral("%1 %2, %3")
        .arg(MonthText(moment))
        .arg(date.day)
        .arg(date.year, 4, 10, QLatin1Char('0'));
}

QString MonthYearText(DateTime moment) {
    return QStringLiteral("%1-%2")
        .arg(MonthText(moment))
        .arg(DateParts(moment).year, 4, 10, QLatin1Char('0'));
}

}  // namespace rillbook
