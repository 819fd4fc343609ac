#include "platform/text/PickerText.h"

#include <QRegularExpression>
#include <algorithm>
#include <array>

#include "platform/text/DateParts.h"

namespace rillbook {

namespace {

namespace chrono = std::chrono;

constexpr int kFirstYear = 1801;
constexpr int kLastYear = 9999;
constexpr std::int64_t kFirstDay = DayNumber(chrono::year{kFirstYear} / 1 / 1);
constexpr std::int64_t kLastDay = DayNumber(chrono::year{kLastYear} / 12 / 31);
constexpr qsizetype kLongestText = 100;

bool IsInYears(std::int64_t day) {
    return day >= kFirstDay && day <= kLastDay;
}

std::int64_t DayIn(DateTime moment) {
    return static_cast<std::int64_t>(DayOf(moment));
}

int SecondOfDay(ClockTime time) {
    return time.hour * 3600 + time.minute * 60 + time.second;
}

// The day of this month, or the month's last day if it is shorter.
std::int64_t DayInMonth(int year, int month, int day) {
    const DateTime lastOfMonth = DateSerial(year, month + 1, 0);
    return DayIn(lastOfMonth) - std::max(0, DateParts(lastOfMonth).day - day);
}

// 1 to 12, or 0 if no English month name begins with this word.
int MonthBeginningWith(QStringView word) {
    const auto found =
        std::find_if(kMonthNames.begin(), kMonthNames.end(), [word](const char16_t* name) {
            return QStringView(name).startsWith(word, Qt::CaseInsensitive);
        });
    return found == kMonthNames.end() ? 0 : static_cast<int>(found - kMonthNames.begin()) + 1;
}

// One number or month name of a typed date; invalid if it has neither digits nor a month.
struct Item {
    int number = 0;  // of a name, 1 to 12
    int digits = 0;  // 0 for a name

    explicit Item(QStringView text) {
        if (!text.isEmpty() && text[0].isDigit()) {
            number = text.toInt();
            digits = static_cast<int>(text.size());
        } else if (text.size() >= 3) {
            number = MonthBeginningWith(text);
        }
    }
    bool IsName() const { return digits == 0 && number > 0; }
    bool IsShort() const { return digits == 1 || digits == 2; }
    bool IsMonth() const { return IsName() || IsShort(); }
};

struct TypedDate {
    Item year;
    Item month;
    Item day;
};

// The parts of three items in their order; nothing if the order is not one of those that are read.
std::optional<TypedDate> DateOf(const Item& first, const Item& second, const Item& third) {
    TypedDate date{third, first, second};
    if (first.digits == 4) {
        date = {first, second, third};
    } else if (second.IsName()) {
        date = {third, second, first};
    }
    if (!date.month.IsMonth() || !date.day.IsShort()) {
        return std::nullopt;
    }
    return date;
}

// Month and year alone; the day is not read.
std::optional<TypedDate> MonthOf(const Item& first, const Item& second) {
    const TypedDate date = first.digits == 4 ? TypedDate{first, second, Item(u"1")}
                                             : TypedDate{second, first, Item(u"1")};
    return date.month.IsMonth() ? std::optional(date) : std::nullopt;
}

// Date and time; the groups are three items, hour, minute, second, and "a" or "p".
const QRegularExpression& TypedForm() {
    static const QRegularExpression form = [] {
        const QString item = QStringLiteral(R"((\d{1,4}+|[a-z]++))");
        // A name can touch a number: "15Mar2004".
        const QString gap = QStringLiteral(R"((?:[-/., ]++|(?<=\d)(?=[a-z])|(?<=[a-z])(?=\d)))");
        const QString time =
            QStringLiteral(R"((?: ?, ?| |t)(\d{1,2}+)(?::(\d\d)(?::(\d\d))?)?(?: ?([ap])m?)?)");
        return QRegularExpression(QStringLiteral("^%1%2%1(?:%2%1(?:%3)?)?$").arg(item, gap, time),
                                  QRegularExpression::CaseInsensitiveOption);
    }();
    return form;
}

// Nothing if the text has an impossible time; midnight if it has none.
std::optional<ClockTime> TimeOf(const QRegularExpressionMatch& match, bool& hasSeconds) {
    const QString hour = match.captured(4);
    const QString minute = match.captured(5);
    const QString half = match.captured(7).toLower();
    hasSeconds = match.capturedLength(6) > 0 || hour.isEmpty();
    if (hour.isEmpty()) {
        return ClockTime{};
    }
    if (minute.isEmpty() && half.isEmpty()) {
        return std::nullopt;  // a time that is still being typed
    }
    const HalfDay halfDay = half.isEmpty()         ? HalfDay::None
                            : half.front() == u'a' ? HalfDay::Am
                                                   : HalfDay::Pm;
    const auto second =
        SecondOfWrittenTime(hour.toInt(), minute.toInt(), match.captured(6).toInt(), halfDay);
    return second ? std::optional(TimeParts(MomentOf(0, *second))) : std::nullopt;
}

}  // namespace

PickerFormat::PickerFormat(QStringView pattern) : parts_(SplitMomentPattern(pattern)) {}

bool PickerFormat::Shows(char16_t field) const {
    return std::any_of(parts_.begin(), parts_.end(),
                       [field](const PatternPart& part) { return part.field == field; });
}

bool PickerFormat::ShowsTwoDigitYear() const {
    return std::any_of(parts_.begin(), parts_.end(), [](const PatternPart& part) {
        return part.field == u'y' && part.width < 3;
    });
}

PickerText PickerFormat::Show(DateTime moment) const {
    const DateTime held = HeldInPickerYears(moment);
    const CalendarDate date = DateParts(held);
    const ClockTime time = TimeParts(held);
    PickerText shown;
    for (const PatternPart& part : parts_) {
        const qsizetype start = shown.text.size();
        if (part.field == u'M' && part.width > 2) {
            const QStringView name(kMonthNames[static_cast<std::size_t>(date.month) - 1]);
            shown.text.append(part.width == 3 ? name.left(3) : name);
        } else if (part.field == u'M') {
            AppendDigits(shown.text, date.month, part.width);
        } else if (part.field == u'd') {
            AppendDigits(shown.text, date.day, part.width);
        } else if (part.field == u'y') {
            const bool isShort = part.width < 3;
            AppendDigits(shown.text, isShort ? date.year % 100 : date.year, isShort ? 2 : 4);
        } else if (part.field == u'h') {
            AppendDigits(shown.text, (time.hour + 11) % 12 + 1, part.width);
        } else if (part.field == u'm' || part.field == u's') {
            AppendDigits(shown.text, part.field == u'm' ? time.minute : time.second, part.width);
        } else if (part.field == u't') {
            shown.text.append(time.hour < 12 ? u"AM" : u"PM");
        } else {
            shown.text.append(part.literal);
            continue;
        }
        shown.sections.push_back({part.field, start, shown.text.size() - start});
    }
    return shown;
}

// Seconds that the pattern does not show stay with their hour and minute.
DateTime PickerFormat::MomentOfParts(std::int64_t day, ClockTime time, DateTime brought) const {
    if (!ShowsTime()) {
        return MomentOf(day, 0);
    }
    if (!Shows(u's')) {
        const ClockTime former = TimeParts(brought);
        const bool isSame = time.hour == former.hour && time.minute == former.minute;
        time.second = isSame ? former.second : 0;
    }
    return MomentOf(day, SecondOfDay(time));
}

std::optional<DateTime> PickerFormat::Read(QStringView text, PickerValue former,
                                           Typed typed) const {
    if (text.size() > kLongestText) {
        return std::nullopt;
    }
    // Pasted texts have blanks of all widths, line ends and marks of writing direction.
    QString plain = text.toString();
    plain.removeIf([](QChar character) { return character.category() == QChar::Other_Format; });
    const QRegularExpressionMatch match = TypedForm().match(plain.simplified());
    const bool hasDay = match.capturedLength(3) > 0;
    if (!match.hasMatch() || (ShowsDay() && !hasDay)) {
        return std::nullopt;
    }
    const Item first(match.capturedView(1));
    const Item second(match.capturedView(2));
    const auto date =
        hasDay ? DateOf(first, second, Item(match.capturedView(3))) : MonthOf(first, second);
    bool hasSeconds = false;
    const auto time = TimeOf(match, hasSeconds);
    if (!date || !time) {
        return std::nullopt;
    }
    int year = date->year.number;
    int yearDigits = date->year.digits;
    const int formerYear = DateParts(former.moment).year;
    const bool isWithin = typed == Typed::Within;
    if (isWithin && ShowsTwoDigitYear() && yearDigits == 2 && year == formerYear % 100) {
        year = formerYear;
        yearDigits = 4;
    }
    auto day = DayOfWrittenDate(year, yearDigits, date->month.number, date->day.number);
    if (day && !ShowsDay()) {
        const CalendarDate read = DateParts(MomentOf(*day, 0));
        day = DayInMonth(read.year, read.month, DateParts(former.brought).day);
    }
    if (!day || !IsInYears(*day)) {
        return std::nullopt;
    }
    if (isWithin && !hasSeconds) {
        return MomentOfParts(*day, *time, former.brought);
    }
    return MomentOf(*day, ShowsTime() ? SecondOfDay(*time) : 0);
}

DateTime PickerFormat::Step(PickerValue value, char16_t field, int by) const {
    const CalendarDate date = DateParts(value.moment);
    ClockTime time = TimeParts(value.moment);
    std::int64_t day = DayIn(value.moment);
    // A hidden day comes back after a shorter month.
    const int dayOfMonth = ShowsDay() ? date.day : DateParts(value.brought).day;
    if (field == u'y' || field == u'M') {
        const int months = date.year * 12 + date.month - 1 + (field == u'y' ? 12 * by : by);
        if (months < kFirstYear * 12 || months >= (kLastYear + 1) * 12) {
            return value.moment;
        }
        day = DayInMonth(months / 12, months % 12 + 1, dayOfMonth);
    } else if (field == u'd') {
        day += by;
    } else if (field == u't') {
        time.hour = (time.hour + 12) % 24;
    } else {
        const int unit = field == u'h' ? 3600 : field == u'm' ? 60 : 1;
        const DateTime stepped = MomentOf(day, SecondOfDay(time) + std::int64_t{by} * unit);
        day = DayIn(stepped);
        time = TimeParts(stepped);
    }
    return IsInYears(day) ? MomentOfParts(day, time, value.brought) : value.moment;
}

bool FitsSection(char16_t field, QStringView text) {
    const auto isDigit = [](QChar character) { return character >= u'0' && character <= u'9'; };
    if (text.isEmpty()) {
        return false;
    }
    if (field == u't') {
        return QStringView(u"AM").startsWith(text, Qt::CaseInsensitive) ||
               QStringView(u"PM").startsWith(text, Qt::CaseInsensitive);
    }
    if (std::all_of(text.begin(), text.end(), isDigit)) {
        return true;
    }
    return field == u'M' && MonthBeginningWith(text) > 0;
}

DateTime HeldInPickerYears(DateTime moment) {
    return std::clamp(ToWholeSecond(moment), MomentOf(kFirstDay, 0), MomentOf(kLastDay, 86399));
}

}  // namespace rillbook
