#include "tests/support/SeriesText.h"

#include <QStringList>

#include "compute/Compute.h"
#include "compute/Summary.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

QString ValueText(double value) {
    return QString::number(value, 'g', 9);
}

QString SeriesText() {
    QStringList lines;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(InstCount); ++i) {
        lines += MomentText(InstTimes[i]) + QLatin1Char(' ') + ValueText(InstValues[i]);
    }
    return lines.join(QLatin1Char('\n'));
}

QString DaysText() {
    QStringList lines;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(DailyCount); ++i) {
        lines += QStringLiteral("%1 %2 %3 %4 %5")
                     .arg(MomentText(DailyDates[i]).remove(QStringLiteral(" 00:00:00")),
                          ValueText(DailyMean[i]), ValueText(DailyMin[i]), ValueText(DailyMax[i]),
                          ValueText(DailyTotal[i]));
    }
    return lines.join(QLatin1Char('\n'));
}

QString AtEach(const QString& times, const std::function<QString(double)>& correct) {
    QStringList results;
    for (const QString& time : times.split(QLatin1Char(','))) {
        results += correct(At(time.toLatin1().constData()));
    }
    return results.join(QLatin1Char(' '));
}

}  // namespace rillbook
