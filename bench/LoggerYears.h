#pragma once

#include <QFile>
#include <QString>
#include <cmath>
#include <cstdio>

#include "platform/text/DateTime.h"

namespace rillbook {

constexpr int kReadingsPerDay = 96;  // one each 15 minutes
constexpr int kRowsOfYear = 35040;
constexpr int kRowsOfTenYears = 350592;  // of 2002 to 2011, with two leap days

// A Type 1 file of three channels (stage, temperature, battery), a line every 15 minutes from
// 2002-01-01 on.
inline void WriteLoggerYears(const QString& path, int rows) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("Can't write %s", qPrintable(path));
    }
    const DateTime begin = DateSerial(2002, 1, 1);
    QByteArray lines;
    for (int i = 0; i < rows; ++i) {
        const DateTime moment = begin + static_cast<double>(i / kReadingsPerDay);
        const CalendarDate date = DateParts(moment);
        const int minutes = i % kReadingsPerDay * 15;
        const double year = i * 6.2831853 / kRowsOfYear;
        char line[96];
        std::snprintf(line, sizeof line, "%02d/%02d/%02d %02d:%02d,%.3f,%.2f,%.2f\r\n", date.month,
                      date.day, date.year % 100, minutes / 60, minutes % 60,
                      2.0 + std::sin(year) + 0.3 * std::sin(i * 0.37), 9.0 - 8.0 * std::cos(year),
                      12.4 + 0.2 * std::sin(i * 0.065));
        lines += line;
    }
    if (file.write(lines) != lines.size()) {
        qFatal("Can't write %s", qPrintable(path));
    }
}

}  // namespace rillbook
