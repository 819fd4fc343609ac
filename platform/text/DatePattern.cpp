#include "platform/text/DatePattern.h"

#include <algorithm>

namespace rillbook {

namespace {

void AppendLiteral(PatternParts& parts, QChar character) {
    if (parts.empty() || parts.back().field != 0) {
        parts.emplace_back();
    }
    parts.back().literal.append(character);
}

PatternParts Split(QStringView pattern, QStringView fields) {
    PatternParts parts;
    bool quoted = false;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar character = pattern[i];
        if (character == u'\'') {
            if (i + 1 < pattern.size() && pattern[i + 1] == u'\'') {
                AppendLiteral(parts, character);
                ++i;
            } else {
                quoted = !quoted;
            }
            continue;
        }
        if (quoted || !fields.contains(character)) {
            AppendLiteral(parts, character);
            continue;
        }
        PatternPart part{character.unicode(), 1, {}};
        if (character == u'a' || character == u'A' || character == u'B') {
            part.field = u'a';
            if (i + 1 < pattern.size() && pattern[i + 1].toLower() == u'p') {
                ++i;
            }
        } else {
            for (; i + 1 < pattern.size() && pattern[i + 1] == character; ++i) {
                ++part.width;
            }
        }
        parts.push_back(part);
    }
    return parts;
}

}  // namespace

PatternParts SplitDatePattern(QStringView pattern) {
    return Split(pattern, u"dMy");
}

// 'B' is the part of the day in some locales' patterns, where Qt knows AM and PM only.
PatternParts SplitTimePattern(QStringView pattern) {
    return Split(pattern, u"hHmstaAB");
}

PatternParts SplitMomentPattern(QStringView pattern) {
    return Split(pattern, u"dMyhmst");
}

QString JoinPattern(const PatternParts& parts) {
    QString pattern;
    for (const PatternPart& part : parts) {
        if (part.field == u'a') {
            pattern.append(u"AP");
        } else if (part.field != 0) {
            pattern.append(QString(part.width, QChar(part.field)));
        } else {
            QString literal = part.literal;
            const bool letters = std::any_of(literal.cbegin(), literal.cend(),
                                             [](QChar character) { return character.isLetter(); });
            literal.replace(u'\'', QStringLiteral("''"));
            pattern.append(letters ? u'\'' + literal + u'\'' : literal);
        }
    }
    return pattern;
}

void AppendDigits(QString& text, int number, int width) {
    char16_t digits[12];
    char16_t* const end = digits + 12;
    char16_t* at = end;
    for (; number > 0 || (width > 0 && at != digits); number /= 10, --width) {
        *--at = static_cast<char16_t>(u'0' + number % 10);
    }
    text.append(QStringView(at, end));
}

}  // namespace rillbook
