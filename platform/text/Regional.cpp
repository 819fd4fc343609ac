#include "platform/text/Regional.h"

#include <QLocale>
#include <algorithm>

#include "platform/text/DatePattern.h"

namespace rillbook {

namespace {

// Narrow and no-break blanks become plain ones; marks of writing direction, which no one types, go.
QString Plain(const QString& text) {
    QString plain;
    for (const QChar character : text) {
        if (character.category() == QChar::Separator_Space) {
            plain.append(u' ');
        } else if (character.category() != QChar::Other_Format) {
            plain.append(character);
        }
    }
    return plain;
}

bool Has(const PatternParts& parts, QStringView fields) {
    return std::count_if(parts.begin(), parts.end(), [fields](const PatternPart& part) {
               return part.field != 0 && fields.contains(QChar(part.field));
           }) == 1;
}

// Takes the zone away, and with it the brackets, commas and blanks that set it off.
void RemoveZone(PatternParts& parts) {
    const auto found = std::find_if(parts.begin(), parts.end(),
                                    [](const PatternPart& part) { return part.field == u't'; });
    if (found == parts.end()) {
        return;
    }
    if (found != parts.begin() && found[-1].field == 0) {
        QString& before = found[-1].literal;
        while (!before.isEmpty() && QStringView(u" ,([").contains(before.back())) {
            before.chop(1);
        }
    }
    if (found + 1 != parts.end() && found[1].field == 0) {
        QString& after = found[1].literal;
        while (!after.isEmpty() && QStringView(u" ,)]").contains(after.front())) {
            after.remove(0, 1);
        }
    }
    parts.erase(found);
}

QString ShortDateOf(const QLocale& locale) {
    PatternParts parts = SplitDatePattern(Plain(locale.dateFormat(QLocale::ShortFormat)));
    if (!Has(parts, u"d") || !Has(parts, u"M") || !Has(parts, u"y")) {
        return QStringLiteral("yyyy-MM-dd");
    }
    for (PatternPart& part : parts) {
        part.width = part.field == u'y' ? 4 : part.width;
    }
    return JoinPattern(parts).trimmed();
}

QString LongTimeOf(const QLocale& locale) {
    PatternParts parts = SplitTimePattern(Plain(locale.timeFormat(QLocale::LongFormat)));
    RemoveZone(parts);
    if (!Has(parts, u"hH") || !Has(parts, u"m")) {
        return QStringLiteral("HH:mm:ss");
    }
    if (!Has(parts, u"s")) {
        const auto minute = std::find_if(
            parts.begin(), parts.end(), [](const PatternPart& part) { return part.field == u'm'; });
        parts.insert(minute + 1, {{0, 0, QStringLiteral(":")}, {u's', 2, {}}});
    }
    return JoinPattern(parts).trimmed();
}

}  // namespace

Regional& RegionalSettings() {
    static Regional settings;
    return settings;
}

Regional RegionalFromLocale(const QLocale& locale) {
    if (locale.language() == QLocale::C) {
        return {};
    }
    Regional regional;
    regional.decimalSign = locale.decimalPoint();
    regional.groupSign = locale.groupSeparator();
    regional.groupDigits = !regional.groupSign.isEmpty() &&
                           !locale.numberOptions().testFlag(QLocale::OmitGroupSeparator);
    regional.negativeSign = Plain(locale.negativeSign());
    regional.shortDate = ShortDateOf(locale);
    regional.longTime = LongTimeOf(locale);
    const QString am = Plain(locale.amText()).trimmed();
    const QString pm = Plain(locale.pmText()).trimmed();
    if (!am.isEmpty() && !pm.isEmpty() && am.compare(pm, Qt::CaseInsensitive) != 0) {
        regional.amText = am;
        regional.pmText = pm;
    }
    return regional;
}

}  // namespace rillbook
