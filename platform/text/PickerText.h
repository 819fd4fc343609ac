#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <vector>

#include "platform/text/DatePattern.h"
#include "platform/text/DateTime.h"

namespace rillbook {

// One field of a shown date: its letter in the pattern and its place in the text.
struct PickerSection {
    char16_t field = 0;
    qsizetype start = 0;
    qsizetype length = 0;
};

struct PickerText {
    QString text;
    std::vector<PickerSection> sections;
};

// The value of a picker. A part that the pattern does not show (the day or the seconds) comes from
// `brought`, the value that the program set or that was typed last as a whole.
struct PickerValue {
    DateTime moment = 0;
    DateTime brought = 0;
};

// Whether a text was typed as a whole, or parts of the shown text were replaced.
enum class Typed { Whole, Within };

// How a date picker shows a date and reads a typed one. Months are English whatever the locale, and
// the years are 1801 to 9999.
class PickerFormat {
public:
    // Fields: M, MMM, d, dd, yy, yyyy, h (1 to 12), mm, ss, tt (AM or PM). Two fields at least.
    explicit PickerFormat(QStringView pattern);

    bool ShowsDay() const { return Shows(u'd'); }
    bool ShowsTime() const { return Shows(u'h'); }

    // A moment outside the years is shown as the nearest inside.
    PickerText Show(DateTime moment) const;

    // The date of a typed text; nothing if the text is not a date or outside the years, so that a
    // text has one meaning or none.
    //
    // Month, day and year, separated by any mix of / - . , and blanks. A month is a number or an
    // English name of three letters or more. The month comes first, unless the year does, with four
    // digits, or the day does, before the name of a month. A year of two digits is 1930 to 2029.
    // Then the time: hours and minutes, or hours with AM or PM; minutes and seconds with two
    // digits; AM, PM, A or P in any case; 24 hours without them.
    //
    // A date alone is midnight. A pattern without a time ignores the time in the text; a pattern
    // without a day also reads month and year alone, and keeps the day of `former.brought`, or the
    // month's last one if the month is shorter. Within the shown text, the two digits of the former
    // year keep their century, and the former hour and minute keep their seconds.
    std::optional<DateTime> Read(QStringView text, PickerValue former, Typed typed) const;

    // The moment with one field changed by a number of its units, carried over by the calendar. A
    // day beyond the end of the new month becomes its last day; AM and PM change places. The moment
    // itself if the result is outside the years.
    DateTime Step(PickerValue value, char16_t field, int by) const;

private:
    bool Shows(char16_t field) const;
    bool ShowsTwoDigitYear() const;
    DateTime MomentOfParts(std::int64_t day, ClockTime time, DateTime brought) const;

    PatternParts parts_;
};

// True if a text could be the whole content of this field, finished or not: "1" and "Ma" for a
// month. Two fields of a date never fit into one.
bool FitsSection(char16_t field, QStringView text);

// The moment held within the years of a picker.
DateTime HeldInPickerYears(DateTime moment);

}  // namespace rillbook
