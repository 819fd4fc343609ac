#include "platform/text/Numbers.h"

#include <QVarLengthArray>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/text/Regional.h"

namespace rillbook {

namespace {

constexpr int kSignificantDigits = 15;

// Long enough for every number that people and loggers write.
using NumberBytes = QVarLengthArray<char, 64>;

bool IsBlank(char character) {
    return character == ' ' || character == '\t';
}
bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

const char* SkipBlanks(const char* begin, const char* end) {
    return std::find_if_not(begin, end, IsBlank);
}

const char* SkipDigits(const char* begin, const char* end) {
    return std::find_if_not(begin, end, IsDigit);
}

struct ScannedNumber {
    std::optional<double> value;  // also nothing for a value beyond the largest double
    const char* end = nullptr;    // after the number
    std::ptrdiff_t digits = 0;    // of the mantissa, without leading zeros
};

// True for a number closer to zero than any double, false for one beyond the largest. from_chars
// reports both alike. REQUIRES: a decimal number that is one of the two.
bool IsBelowRange(const char* begin, const char* end) {
    const char* const exponent = std::find_if(
        begin, end, [](char character) { return character == 'e' || character == 'E'; });
    const char* const point = std::find(begin, exponent, '.');
    const char* const first = std::find_if(
        begin, exponent, [](char character) { return character >= '1' && character <= '9'; });
    std::ptrdiff_t power = point - first;  // of ten; negative for a number below one
    if (exponent != end) {
        const char* const digits = exponent[1] == '+' ? exponent + 2 : exponent + 1;
        std::ptrdiff_t written = 0;
        if (std::from_chars(digits, end, written).ec != std::errc()) {
            return *digits == '-';
        }
        power += written;
    }
    return power < 0;
}

// The decimal number at `begin`, as far as it goes. from_chars alone would also take "inf" and
// "nan", and no plus sign.
ScannedNumber ScanNumber(const char* begin, const char* end) {
    const char* at = begin;
    if (at != end && (*at == '+' || *at == '-')) {
        ++at;
    }
    const char* const whole = at;
    at = SkipDigits(at, end);
    std::ptrdiff_t digits = at - whole;
    const char* firstDigit = whole;
    if (at != end && *at == '.') {
        const char* const fraction = at + 1;
        at = SkipDigits(fraction, end);
        digits += at - fraction;
    }
    if (digits == 0) {
        return {};
    }
    for (; firstDigit != at && (*firstDigit == '0' || *firstDigit == '.'); ++firstDigit) {
        digits -= *firstDigit == '0' ? 1 : 0;
    }
    if (at != end && (*at == 'e' || *at == 'E')) {
        const char* exponent = at + 1;
        if (exponent != end && (*exponent == '+' || *exponent == '-')) {
            ++exponent;
        }
        const char* const exponentEnd = SkipDigits(exponent, end);
        at = exponentEnd == exponent ? at : exponentEnd;
    }
    double value = 0;
    const char* const first = *begin == '+' ? begin + 1 : begin;
    if (std::from_chars(first, at, value).ec == std::errc()) {
        return {value, at, digits};
    }
    if (IsBelowRange(first, at)) {
        return {0.0, at, digits};
    }
    return {std::nullopt, at, digits};
}

// A text that is a number from its first to its last byte.
std::optional<double> WholeNumber(const char* begin, const char* end) {
    const ScannedNumber number = ScanNumber(begin, end);
    return number.end == end ? number.value : std::nullopt;
}

double LeadingNumber(const NumberBytes& bytes) {
    return ReadLeadingNumber(bytes.constData(), bytes.constData() + bytes.size());
}

bool StartsWith(QStringView text, const QString& sign) {
    return !sign.isEmpty() && text.startsWith(sign);
}

// Takes a minus, the user's or the plain one, or a plus off the text and leaves it in the bytes.
void TakeSign(QStringView& text, NumberBytes& bytes) {
    const QString& negative = RegionalSettings().negativeSign;
    if (StartsWith(text, negative)) {
        text = text.mid(negative.size());
        bytes.append('-');
    } else if (text.startsWith(u'-') || text.startsWith(QChar(0x2212))) {
        text = text.mid(1);
        bytes.append('-');
    } else if (text.startsWith(u'+')) {
        text = text.mid(1);
        bytes.append('+');
    }
}

// How many digits the text starts with.
qsizetype DigitCount(QStringView text) {
    const auto end = std::find_if(text.begin(), text.end(), [](QChar character) {
        return character < u'0' || character > u'9';
    });
    return end - text.begin();
}

void AppendDigits(QStringView digits, NumberBytes& bytes) {
    for (const QChar digit : digits) {
        bytes.append(static_cast<char>(digit.unicode()));
    }
}

// True for two signs that a keyboard does not keep apart: blanks of any width, and the two
// apostrophes. Nobody types the narrow blank or the curved apostrophe of some locales.
bool IsTypedAs(QChar sign, QChar typed) {
    const auto isApostrophe = [](QChar character) {
        return character == u'\'' || character == QChar(0x2019);
    };
    return (sign.isSpace() && typed.isSpace()) || (isApostrophe(sign) && isApostrophe(typed));
}

// The length of the group sign at the start of the text; 0 if there is none, or no digit after it.
qsizetype GroupSignLength(QStringView text) {
    const Regional& regional = RegionalSettings();
    if (regional.groupSign.isEmpty() || regional.groupSign == regional.decimalSign) {
        return 0;
    }
    const bool isSign = StartsWith(text, regional.groupSign) ||
                        (regional.groupSign.size() == 1 && !text.isEmpty() &&
                         IsTypedAs(regional.groupSign[0], text[0]));
    const qsizetype length = isSign ? regional.groupSign.size() : 0;
    return DigitCount(text.mid(length)) > 0 ? length : 0;
}

// Takes the digits before the decimal sign. Groups are of three digits; only the first may be
// shorter. If they are not, takes the digits before the first group sign and returns false.
bool TakeGroupedDigits(QStringView& text, NumberBytes& bytes) {
    const qsizetype first = DigitCount(text);
    NumberBytes digits;
    AppendDigits(text.first(first), digits);
    QStringView rest = text.mid(first);
    bool isProper = true;
    while (const qsizetype sign = GroupSignLength(rest)) {
        const QStringView group = rest.mid(sign, DigitCount(rest.mid(sign)));
        isProper = isProper && first >= 1 && first <= 3 && group.size() == 3;
        AppendDigits(group, digits);
        rest = rest.mid(sign + group.size());
    }
    if (!isProper) {
        digits.resize(first);
        rest = text.mid(first);
    }
    bytes.append(digits.constData(), digits.size());
    text = rest;
    return isProper;
}

// A value as the 15 digits that count: 0.d1 d2 d3 ... times ten to `point`.
struct DecimalDigits {
    std::array<char, kSignificantDigits + 1> digits{};  // one to spare for a carry
    int count = kSignificantDigits;
    int point = 0;
};

DecimalDigits DigitsOf(double magnitude) {
    std::array<char, 32> text;
    const auto written = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                       std::chars_format::scientific, kSignificantDigits - 1);
    DecimalDigits decimal;
    decimal.digits[0] = text[0];
    std::copy_n(text.data() + 2, kSignificantDigits - 1, decimal.digits.data() + 1);
    const char* exponent = text.data() + kSignificantDigits + 2;
    if (*exponent == '+') {
        ++exponent;
    }
    std::from_chars(exponent, written.ptr, decimal.point);
    ++decimal.point;
    return decimal;
}

// Keeps the given number of decimals, halves going up. Nothing is left of a value that is too
// small.
void RoundTo(DecimalDigits& decimal, int decimals) {
    const int keep = decimal.point + decimals;
    if (keep >= decimal.count) {
        return;
    }
    if (keep < 0) {
        decimal.count = 0;
        return;
    }
    const bool up = decimal.digits[static_cast<std::size_t>(keep)] >= '5';
    decimal.count = keep;
    if (!up) {
        return;
    }
    int at = keep - 1;
    while (at >= 0 && decimal.digits[static_cast<std::size_t>(at)] == '9') {
        decimal.digits[static_cast<std::size_t>(at)] = '0';
        --at;
    }
    if (at >= 0) {
        ++decimal.digits[static_cast<std::size_t>(at)];
        return;
    }
    std::copy_backward(decimal.digits.begin(), decimal.digits.begin() + keep,
                       decimal.digits.begin() + keep + 1);
    decimal.digits[0] = '1';
    decimal.count = keep + 1;
    ++decimal.point;
}

// The digit at a place counted from the decimal point: 0 is the first decimal, -1 the ones.
QChar DigitAt(const DecimalDigits& decimal, int place) {
    const int index = decimal.point + place;
    return index >= 0 && index < decimal.count
               ? QLatin1Char(decimal.digits[static_cast<std::size_t>(index)])
               : QLatin1Char('0');
}

}  // namespace

double ReadLeadingNumber(const char* begin, const char* end) {
    return ScanNumber(SkipBlanks(begin, end), end).value.value_or(0);
}

double ReadLeadingNumber(QStringView text) {
    NumberBytes bytes;
    for (const QChar character : text.trimmed()) {
        if (character.unicode() > 0x7F) {
            break;
        }
        bytes.append(static_cast<char>(character.unicode()));
    }
    return LeadingNumber(bytes);
}

double ReadTypedNumber(QStringView text) {
    const QString& decimalSign = RegionalSettings().decimalSign;
    NumberBytes bytes;
    text = text.trimmed();
    TakeSign(text, bytes);
    TakeGroupedDigits(text, bytes);
    while (!text.isEmpty()) {
        if (StartsWith(text, decimalSign)) {
            bytes.append('.');
            text = text.mid(decimalSign.size());
            continue;
        }
        if (text[0].unicode() > 0x7F) {
            break;
        }
        bytes.append(static_cast<char>(text[0].unicode()));
        text = text.mid(1);
    }
    return LeadingNumber(bytes);
}

std::optional<double> ReadChannelField(const char* begin, const char* end) {
    begin = SkipBlanks(begin, end);
    while (begin != end && IsBlank(end[-1])) {
        --end;
    }
    const ScannedNumber number = ScanNumber(begin, end);
    if (number.end != end || !number.value || number.digits <= kSignificantDigits) {
        return number.end == end ? number.value : std::nullopt;
    }
    std::array<char, 32> text;
    const auto written = std::to_chars(text.data(), text.data() + text.size(), *number.value,
                                       std::chars_format::scientific, kSignificantDigits - 1);
    return WholeNumber(text.data(), written.ptr);
}

std::optional<double> ReadNumber(QStringView text) {
    const QString& decimalSign = RegionalSettings().decimalSign;
    NumberBytes bytes;
    text = text.trimmed();
    TakeSign(text, bytes);
    if (!TakeGroupedDigits(text, bytes)) {
        return std::nullopt;
    }
    if (StartsWith(text, decimalSign)) {
        bytes.append('.');
        text = text.mid(decimalSign.size());
    } else if (text.startsWith(u'.')) {
        return std::nullopt;
    }
    for (const QChar character : text) {
        if (character.unicode() > 0x7F) {
            return std::nullopt;
        }
        bytes.append(static_cast<char>(character.unicode()));
    }
    return WholeNumber(bytes.constData(), bytes.constData() + bytes.size());
}

bool IsNumber(QStringView text) {
    return ReadNumber(text).has_value();
}

QString PlainNumberText(double value) {
    if (!std::isfinite(value)) {
        return {};
    }
    std::array<char, 32> text;
    // Zero is added to take the sign off a negative zero.
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value + 0.0,
                                       std::chars_format::general, kSignificantDigits);
    std::replace(text.data(), written.ptr, 'e', 'E');
    return QString::fromLatin1(text.data(), written.ptr - text.data());
}

QString RegionalNumberText(double value) {
    const Regional& regional = RegionalSettings();
    QString text = PlainNumberText(value);
    text.replace(u'.', regional.decimalSign);
    if (text.startsWith(u'-')) {
        text.replace(0, 1, regional.negativeSign);
    }
    return text;
}

QString RegionalNumberText(const std::optional<double>& value) {
    return value ? RegionalNumberText(*value) : QString();
}

QString FixedNumberText(double value, int decimals) {
    if (!std::isfinite(value)) {
        return {};
    }
    const Regional& regional = RegionalSettings();
    decimals = std::clamp(decimals, 0, 99);
    DecimalDigits decimal = DigitsOf(std::abs(value));
    RoundTo(decimal, decimals);
    const bool zero = std::all_of(decimal.digits.begin(), decimal.digits.begin() + decimal.count,
                                  [](char digit) { return digit == '0'; });
    const int whole = zero ? 0 : std::max(decimal.point, 0);

    QString text;
    text.reserve(whole + whole / 3 + decimals + 4);
    if (value < 0 && !zero) {
        text.append(regional.negativeSign);
    }
    if (whole == 0 && (regional.leadingZero || decimals == 0)) {
        text.append(u'0');
    }
    for (int place = -whole; place < 0; ++place) {
        text.append(DigitAt(decimal, place));
        if (regional.groupDigits && place < -1 && (-place - 1) % 3 == 0) {
            text.append(regional.groupSign);
        }
    }
    if (decimals > 0) {
        text.append(regional.decimalSign);
    }
    for (int place = 0; place < decimals; ++place) {
        text.append(DigitAt(decimal, place));
    }
    return text;
}

std::int16_t ToInt16(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    using Limits = std::numeric_limits<std::int16_t>;
    return static_cast<std::int16_t>(std::nearbyint(
        std::clamp(value, static_cast<double>(Limits::min()), static_cast<double>(Limits::max()))));
}

}  // namespace rillbook
