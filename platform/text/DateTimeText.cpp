#include <QVarLengthArray>
#include <algorithm>

#include "platform/text/DateParts.h"
#include "platform/text/DatePattern.h"
#include "platform/text/DateTime.h"
#include "platform/text/Regional.h"

namespace rillbook {

namespace {

// The parts of the pattern that was asked for last: tables ask for the same one row after row.
class SplitPatterns {
public:
    using Splitter = PatternParts (*)(QStringView);
    explicit SplitPatterns(Splitter split) : split_(split) {}

    const PatternParts& Of(const QString& pattern) {
        if (pattern_ != pattern || parts_.empty()) {
            pattern_ = pattern;
            parts_ = split_(pattern);
        }
        return parts_;
    }

private:
    Splitter split_;
    QString pattern_;
    PatternParts parts_;
};

const PatternParts& ShortDateParts() {
    static SplitPatterns patterns(SplitDatePattern);
    return patterns.Of(RegionalSettings().shortDate);
}

const PatternParts& LongTimeParts() {
    static SplitPatterns patterns(SplitTimePattern);
    return patterns.Of(RegionalSettings().longTime);
}

void AppendShortDate(QString& text, CalendarDate date) {
    for (const PatternPart& part : ShortDateParts()) {
        if (part.field == u'd') {
            AppendDigits(text, date.day, std::min(part.width, 2));
        } else if (part.field == u'y') {
            AppendDigits(text, date.year, 4);
        } else if (part.field == u'M' && part.width < 3) {
            AppendDigits(text, date.month, part.width);
        } else if (part.field == u'M') {
            const QStringView name(kMonthNames[static_cast<std::size_t>(date.month) - 1]);
            text.append(part.width == 3 ? name.left(3) : name);
        } else {
            text.append(part.literal);
        }
    }
}

bool HasHalfDay(const PatternParts& parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [](const PatternPart& part) { return part.field == u'a'; });
}

void AppendLongTime(QString& text, ClockTime time) {
    const Regional& regional = RegionalSettings();
    const PatternParts& parts = LongTimeParts();
    // As in Qt, "h" counts to 12 only beside AM and PM.
    const bool twelveHours = HasHalfDay(parts);
    for (const PatternPart& part : parts) {
        const int width = std::min(part.width, 2);
        if (part.field == u'h' && twelveHours) {
            AppendDigits(text, (time.hour + 11) % 12 + 1, width);
        } else if (part.field == u'h' || part.field == u'H') {
            AppendDigits(text, time.hour, width);
        } else if (part.field == u'm') {
            AppendDigits(text, time.minute, width);
        } else if (part.field == u's') {
            AppendDigits(text, time.second, width);
        } else if (part.field == u'a') {
            text.append(time.hour < 12 ? regional.amText : regional.pmText);
        } else {
            text.append(part.literal);
        }
    }
}

// One blank for every run of blanks of any width, none at the ends, no marks of writing direction.
QString Simplified(QString text) {
    text.removeIf([](QChar character) { return character.category() == QChar::Other_Format; });
    return text.simplified();
}

bool IsDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

// 1 to 12, or 0 if the word is no English month: its first three letters, or all of them.
int MonthOfWord(QStringView word) {
    for (std::size_t i = 0; i < kMonthNames.size(); ++i) {
        const QStringView name(kMonthNames[i]);
        if (word.compare(name, Qt::CaseInsensitive) == 0 ||
            word.compare(name.left(3), Qt::CaseInsensitive) == 0) {
            return static_cast<int>(i) + 1;
        }
    }
    return 0;
}

// A number or a month name, and the text between it and the one before.
struct Token {
    QStringView gap;
    int value = 0;
    qsizetype digits = 0;  // 0 for a month name
};

struct Tokens {
    QVarLengthArray<Token, 8> list;
    QStringView tail;
};

Tokens Tokenise(QStringView text) {
    Tokens tokens;
    qsizetype gapStart = 0;
    qsizetype at = 0;
    while (at < text.size()) {
        const bool digits = IsDigit(text[at]);
        const bool letters = text[at].isLetter();
        const qsizetype start = at;
        ++at;
        while (at < text.size() &&
               ((digits && IsDigit(text[at])) || (letters && text[at].isLetter()))) {
            ++at;
        }
        const QStringView run = text.mid(start, at - start);
        Token token{text.mid(gapStart, start - gapStart), 0, 0};
        if (digits) {
            token.digits = run.size();
            token.value = run.left(5).toInt();
        } else if (letters) {
            token.value = MonthOfWord(run);
        }
        if (digits || token.value > 0) {
            tokens.list.append(token);
            gapStart = at;
        }
    }
    tokens.tail = text.mid(gapStart);
    return tokens;
}

// The texts before, between and behind the fields of a pattern, in the form that Tokenise leaves.
// AM and PM aren't counted as fields: their place is in the texts, where the reader looks for them.
QVarLengthArray<QString, 8> LiteralsOf(const PatternParts& parts) {
    QVarLengthArray<QString, 8> literals;
    literals.append(QString());
    for (const PatternPart& part : parts) {
        if (part.field == 0) {
            literals.back().append(part.literal);
        } else if (part.field != u'a') {
            literals.append(QString());
        }
    }
    for (QString& literal : literals) {
        literal = Simplified(literal);
    }
    return literals;
}

QString FieldOrder(const PatternParts& parts) {
    QString order;
    for (const PatternPart& part : parts) {
        if (part.field != 0) {
            order.append(QChar(part.field));
        }
    }
    return order;
}

// The letters d, M and y in the order in which three tokens stand; empty if they make no date.
QString OrderOf(const Token* tokens, const QString& regionalOrder) {
    if (tokens[1].digits == 0) {
        return tokens[0].digits == 4 ? QStringLiteral("yMd") : QStringLiteral("dMy");
    }
    if (tokens[0].digits == 0) {
        return QStringLiteral("Mdy");
    }
    if (tokens[2].digits == 0) {
        return {};
    }
    const bool regionalYearFirst = regionalOrder.startsWith(u'y');
    if (tokens[0].digits == 4 && !regionalYearFirst) {
        return QStringLiteral("yMd");
    }
    if (tokens[2].digits == 4 && regionalYearFirst) {
        return regionalOrder.mid(1) + u'y';
    }
    return regionalOrder;
}

// Whether a text may stand between two parts of a date. Blanks and commas do beside month names;
// between bare numbers they mean something only where the short date has them.
bool IsDateGap(QStringView gap, bool monthName, const QString& regionalGap) {
    const QStringView bare = gap.trimmed();
    if (bare == regionalGap && !gap.isEmpty()) {
        return true;
    }
    if (bare.size() == 1 && QStringView(u"/-.").contains(bare[0])) {
        return true;
    }
    return monthName && !gap.isEmpty() && (bare.isEmpty() || bare == u"," || bare == u".,");
}

// The day of the three tokens, the text behind the third left aside.
std::optional<std::int64_t> ReadDate(const Token* tokens) {
    const PatternParts& parts = ShortDateParts();
    const QString regionalOrder = FieldOrder(parts);
    const auto literals = LiteralsOf(parts);
    if (regionalOrder.size() != 3) {
        return std::nullopt;
    }
    if (!tokens[0].gap.isEmpty() && tokens[0].gap.trimmed() != literals[0]) {
        return std::nullopt;
    }
    const bool monthName =
        std::any_of(tokens, tokens + 3, [](const Token& token) { return token.digits == 0; });
    if (!IsDateGap(tokens[1].gap, monthName, literals[1]) ||
        !IsDateGap(tokens[2].gap, monthName, literals[2])) {
        return std::nullopt;
    }
    const QString order = OrderOf(tokens, regionalOrder);
    Token year;
    Token month;
    Token day;
    for (qsizetype i = 0; i < order.size(); ++i) {
        (order[i] == u'y' ? year : order[i] == u'M' ? month : day) = tokens[i];
    }
    const bool wordElsewhere = year.digits == 0 || day.digits == 0;
    if (order.isEmpty() || wordElsewhere || month.digits > 2 || day.digits > 2) {
        return std::nullopt;
    }
    return DayOfWrittenDate(year.value, static_cast<int>(year.digits), month.value, day.value);
}

// Takes the mark from the start or the end of the text.
bool TakeMark(QStringView& text, const QString& mark) {
    if (mark.isEmpty()) {
        return false;
    }
    if (text.startsWith(mark, Qt::CaseInsensitive)) {
        text = text.mid(mark.size()).trimmed();
        return true;
    }
    if (text.endsWith(mark, Qt::CaseInsensitive)) {
        text = text.chopped(mark.size()).trimmed();
        return true;
    }
    return false;
}

// Reads the text before or behind a time: AM or PM, the user's own or the English, and the text
// that the pattern has there. False if it's anything else, or marks the half of the day a second
// time.
bool ReadTimeEdge(QStringView text, const QString& literal, HalfDay& half) {
    text = text.trimmed();
    if (text.isEmpty() || text == literal) {
        return true;
    }
    const Regional& regional = RegionalSettings();
    HalfDay found = HalfDay::None;
    if (TakeMark(text, Simplified(regional.amText)) || TakeMark(text, QStringLiteral("AM"))) {
        found = HalfDay::Am;
    } else if (TakeMark(text, Simplified(regional.pmText)) ||
               TakeMark(text, QStringLiteral("PM"))) {
        found = HalfDay::Pm;
    }
    if (half != HalfDay::None || found == HalfDay::None) {
        return false;
    }
    half = found;
    return text.isEmpty() || text == literal;
}

// The second of the day of two or three tokens.
std::optional<std::int64_t> ReadTime(const Token* tokens, qsizetype count, QStringView lead,
                                     QStringView tail) {
    const auto literals = LiteralsOf(LongTimeParts());
    HalfDay half = HalfDay::None;
    if (count < 2 || count > 3 || literals.size() != 4 || !ReadTimeEdge(lead, literals[0], half) ||
        !ReadTimeEdge(tail, literals[3], half)) {
        return std::nullopt;
    }
    for (qsizetype i = 0; i < count; ++i) {
        const QStringView gap = tokens[i].gap.trimmed();
        if (tokens[i].digits < 1 || tokens[i].digits > 2 ||
            (i > 0 && gap != u":" && (gap.isEmpty() || gap != literals[i]))) {
            return std::nullopt;
        }
    }
    return SecondOfWrittenTime(tokens[0].value, tokens[1].value, count == 3 ? tokens[2].value : 0,
                               half);
}

// What follows a date, without the text that ends the user's short date. Nothing if the text runs
// on without a blank.
std::optional<QStringView> BehindDate(QStringView text) {
    const QString closing = LiteralsOf(ShortDateParts()).back();
    const QStringView bare = text.trimmed();
    if (!closing.isEmpty() && bare.startsWith(closing, Qt::CaseInsensitive)) {
        const qsizetype start = bare.data() - text.data();
        text = text.mid(start + closing.size());
    }
    if (!text.isEmpty() && text[0] != u' ') {
        return std::nullopt;
    }
    return text;
}

std::optional<DateTime> ReadMoment(QStringView text, bool timeAlone) {
    const QString simplified = Simplified(text.toString());
    const Tokens tokens = Tokenise(simplified);
    const qsizetype count = tokens.list.size();
    if (count < 2) {
        return std::nullopt;
    }
    const Token* const first = tokens.list.constData();
    if (count >= 3) {
        const std::optional<std::int64_t> day = ReadDate(first);
        const std::optional<QStringView> behind =
            BehindDate(count == 3 ? tokens.tail : first[3].gap);
        if (day && behind && count == 3 && behind->isEmpty()) {
            return MomentOf(*day, 0);
        }
        if (day && behind && count > 3) {
            const auto second = ReadTime(first + 3, count - 3, *behind, tokens.tail);
            return second ? std::optional(MomentOf(*day, *second)) : std::nullopt;
        }
    }
    if (!timeAlone) {
        return std::nullopt;
    }
    const auto second = ReadTime(first, count, first->gap, tokens.tail);
    return second ? std::optional(MomentOf(0, *second)) : std::nullopt;
}

}  // namespace

std::optional<DateTime> ReadDateTime(QStringView text) {
    return ReadMoment(text, true);
}

std::optional<DateTime> ReadDatedTime(QStringView text) {
    return ReadMoment(text, false);
}

QString ShortDateText(DateTime moment) {
    QString text;
    AppendShortDate(text, DateParts(moment));
    return text;
}

QString GeneralDateText(DateTime moment) {
    QString text = ShortDateText(moment);
    const ClockTime time = TimeParts(moment);
    if (time != ClockTime{}) {
        text.append(u' ');
        AppendLongTime(text, time);
    }
    return text;
}

}  // namespace rillbook
