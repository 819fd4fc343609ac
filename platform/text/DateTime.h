#pragma once

#include <QString>
#include <QStringView>
#include <cstdint>
#include <optional>

namespace rillbook {

// Days since 1899-12-30 00:00, local wall clock, the fraction being the time of day. The scale is
// linear on both sides of zero. The resolution is one second: every path that makes a date-time
// ends in MomentOf, so that one instant has one bit pattern and an inclusive bound keeps its row.
using DateTime = double;

struct CalendarDate {
    int year = 1899;
    int month = 12;  // 1 to 12
    int day = 30;    // 1 to 31
    friend bool operator==(const CalendarDate&, const CalendarDate&) = default;
};

struct ClockTime {
    int hour = 0;    // 0 to 23
    int minute = 0;  // 0 to 59
    int second = 0;  // 0 to 59
    friend bool operator==(const ClockTime&, const ClockTime&) = default;
};

// The one constructor of date-times. `second` may lie outside 0 to 86399; it carries into the day.
DateTime MomentOf(std::int64_t day, std::int64_t second);

// The nearest whole second of a value that arithmetic has made, such as an end date plus 0.99. This
// and the operations that take a moment apart hold it within the years 100 to 9999; NaN is day 0.
DateTime ToWholeSecond(DateTime moment);

// Calendar arithmetic: months beyond 1 to 12 carry into the year, days beyond the month run on
// (day 0 is the last day of the month before). A year from 0 to 29 is 2000 to 2029, one from 30 to
// 99 is 1930 to 1999. The result is held within the years 100 to 9999.
DateTime DateSerial(std::int64_t year, std::int64_t month, std::int64_t day);

// Hours, minutes and seconds carry over in the same way; 25 hours are one day and one hour.
DateTime TimeSerial(std::int64_t hour, std::int64_t minute, std::int64_t second);

CalendarDate DateParts(DateTime moment);
ClockTime TimeParts(DateTime moment);

// The calendar day, at 00:00:00.
DateTime DayOf(DateTime moment);

// The date and time of the computer's clock, local, in whole seconds.
DateTime Now();

// Reads a date, a time, or both in the form of logger files, whatever the locale: month first with
// "/" (or year first with "-" or "/" where the year has four digits), hours and minutes with
// optional seconds and optional AM or PM; blanks of any number between date and time and around
// them. Two-digit years as in DateSerial. A date alone is midnight, a time alone is on day 0.
// Nothing if the text is no calendar date, if its four-digit year is below 100, or if it holds
// anything else, fractions of a second included.
std::optional<DateTime> ReadLoggerDateTime(QStringView text);

// The same for the bytes of a logger file, without a copy: the import calls it once a line.
std::optional<DateTime> ReadLoggerDateTime(const char* begin, const char* end);

// Reads a date-time that a user typed or that the program wrote, by the user's regional settings:
// short date and long time, the order of day and month as the short date has it; also year first
// with a four-digit year, English month names ("Jan 31, 2002", "January 31, 2002", "31 Jan 2002"),
// and times of 12 or 24 hours with or without seconds.
std::optional<DateTime> ReadDateTime(QStringView text);

// The same for a field that needs a date: nothing for a time alone.
std::optional<DateTime> ReadDatedTime(QStringView text);

// Short date and long time by the user's regional settings; a midnight shows the date alone.
QString GeneralDateText(DateTime moment);

// Short date by the user's regional settings, always with a four-digit year.
QString ShortDateText(DateTime moment);

// Month before day whatever the regional settings, for SQL: "1/31/2002 11:45:00 PM", a midnight
// "1/31/2002".
QString SqlDateText(DateTime moment);

// English whatever the locale.
QString MonthDayYearText(DateTime moment);       // "Jan 05, 2002"
QString ShortMonthDayYearText(DateTime moment);  // "Jan 5, 2002"
QString MonthYearText(DateTime moment);          // "Jan-2002"

}  // namespace rillbook
