#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>

// What the two readers of date-times have in common; no one else needs it.
namespace rillbook {

enum class HalfDay { None, Am, Pm };

inline constexpr std::array<const char16_t*, 12> kMonthNames = {
    u"January", u"February", u"March",     u"April",   u"May",      u"June",
    u"July",    u"August",   u"September", u"October", u"November", u"December"};

constexpr int FullYear(int twoDigitYear) {
    return twoDigitYear < 30 ? 2000 + twoDigitYear : 1900 + twoDigitYear;
}

constexpr std::int64_t DayNumber(std::chrono::year_month_day date) {
    constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};
    return (std::chrono::sys_days{date} - kDayZero).count();
}

// The day of a written date, nothing if the calendar doesn't have it. `yearDigits` is the number of
// digits that the year was written with, two or four; four digits stand for themselves, from 100
// on.
constexpr std::optional<std::int64_t> DayOfWrittenDate(int year, int yearDigits, int month,
                                                       int day) {
    if (yearDigits == 2) {
        year = FullYear(year);
    } else if (yearDigits != 4 || year < 100) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{year},
                                           std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    if (!date.ok()) {
        return std::nullopt;
    }
    return DayNumber(date);
}

// The second of the day of a written time, nothing if a part is out of its range. Hours run from 0
// to 23, with AM or PM from 1 to 12.
constexpr std::optional<std::int64_t> SecondOfWrittenTime(int hour, int minute, int second,
                                                          HalfDay half) {
    if (half == HalfDay::None ? hour > 23 : hour < 1 || hour > 12) {
        return std::nullopt;
    }
    if (minute > 59 || second > 59) {
        return std::nullopt;
    }
    if (half != HalfDay::None) {
        hour = hour % 12 + (half == HalfDay::Pm ? 12 : 0);
    }
    return hour * 3600 + minute * 60 + second;
}

}  // namespace rillbook
