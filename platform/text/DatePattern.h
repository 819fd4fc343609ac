#pragma once

#include <QString>
#include <QStringView>
#include <vector>

namespace rillbook {

// A piece of a date or time pattern in Qt's notation: a run of one field letter, or the text
// between two fields with its quotes taken off. Two texts never follow each other.
struct PatternPart {
    char16_t field = 0;  // 'd' 'M' 'y', 'h' 'H' 'm' 's' 'a' (AM or PM) 't' (zone); 0 is a text
    int width = 0;       // length of the run
    QString literal;
};
using PatternParts = std::vector<PatternPart>;

PatternParts SplitDatePattern(QStringView pattern);
PatternParts SplitTimePattern(QStringView pattern);
// Date and time in one, AM and PM as "tt".
PatternParts SplitMomentPattern(QStringView pattern);

// The pattern of the parts, texts with letters in quotes.
QString JoinPattern(const PatternParts& parts);

// Appends a number that isn't negative, filled with zeros on the left to at least `width` digits.
void AppendDigits(QString& text, int number, int width);

}  // namespace rillbook
