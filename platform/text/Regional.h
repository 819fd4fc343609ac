#pragma once

#include <QString>

class QLocale;

namespace rillbook {

// The user's settings for numbers and dates. Patterns are those of Qt ("M/d/yyyy", "h:mm:ss AP").
struct Regional {
    QString decimalSign = QStringLiteral(".");
    QString groupSign = QStringLiteral(",");
    bool groupDigits = true;  // in threes
    bool leadingZero = true;  // 0.5, not .5
    QString negativeSign = QStringLiteral("-");
    QString shortDate = QStringLiteral("M/d/yyyy");   // always a four-digit year
    QString longTime = QStringLiteral("h:mm:ss AP");  // seconds, no zone, plain blanks
    QString amText = QStringLiteral("AM");
    QString pmText = QStringLiteral("PM");
};

// The settings in force. Main sets them from the system once; tests set them by hand.
Regional& RegionalSettings();

// What a locale asks for, brought to the form that the program needs: four-digit years, seconds,
// no zone, plain blanks. The C locale counts as en-US.
Regional RegionalFromLocale(const QLocale& locale);

}  // namespace rillbook
