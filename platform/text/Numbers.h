#pragma once

#include <QString>
#include <QStringView>
#include <cstdint>
#include <optional>

namespace rillbook {

// The number at the start of a text: skips blanks, takes sign, digits, point and exponent as far as
// they go and ignores what follows; 0 if there is none. The point is the decimal sign, whatever the
// locale. In every function here, a value closer to zero than any double is 0, and one beyond the
// largest double is not a number.
double ReadLeadingNumber(QStringView text);
double ReadLeadingNumber(const char* begin, const char* end);

// The number that a user typed into a text box or a cell: every window reads its numbers here. As
// above, but the user's decimal sign counts as well as the point, and the digits before it may have
// the user's digit groups: "1,500.5 ft" is 1500.5. Groups that are not of three digits, with only
// the first shorter, end the number at the first group sign: "1,50" and "12,345,6" are 1 and 12.
double ReadTypedNumber(QStringView text);

// The number of a logger file's channel field: without the blanks at both ends, it must be a
// decimal number and nothing else (sign, digits with an optional point, exponent), with the point
// as decimal sign. More than 15 significant digits are rounded to 15. Nothing for anything else.
std::optional<double> ReadChannelField(const char* begin, const char* end);

// A text that is a number as a whole in the user's regional settings: blanks at both ends, digit
// groups of three and an exponent included. A group sign that is a blank may be typed as any other
// blank, and an apostrophe as the plain one.
std::optional<double> ReadNumber(QStringView text);
bool IsNumber(QStringView text);

// Up to 15 significant digits, no trailing zeros, no grouping; point as decimal sign. Exponent form
// from 1E+15 on and below 1E-4 ("1E-05", "1.5E+20"). Never a negative zero; empty if not finite.
QString PlainNumberText(double value);

// The same with the user's decimal sign and negative sign; empty for a missing number.
QString RegionalNumberText(double value);
QString RegionalNumberText(const std::optional<double>& value);

// Fixed decimals (0 to 99), with leading zero, sign and grouping from the regional settings. Rounds
// the decimal text of 15 significant digits, halves away from zero (1.005 to two decimals is 1.01),
// and never shows a negative zero. Empty if not finite.
QString FixedNumberText(double value, int decimals);

// The nearest 16-bit integer, of two the even one, held at the limits; NaN is 0.
std::int16_t ToInt16(double value);

}  // namespace rillbook
