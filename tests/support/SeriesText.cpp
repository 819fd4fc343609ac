#include "tests/support/SeriesText.h"

#include <QRegularExpression>
#include <QStringList>

#include "compute/Compute.h"
#include "compute/Summary.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

void Tell(StationFixture& station, const QString& story) {
    static const QRegularExpression form(
        u"^([a-z]+)(\\d?) ([-0-9]{10}[ :0-9]*?)(?: every (\\d+))?:((?: [-.0-9]+)*)$"_qs);
    for (const QString& sentence : story.split(u"; "_qs)) {
        const QRegularExpressionMatch parts = form.match(sentence);
        if (!parts.hasMatch()) {
            qFatal("No sentence: %s", qPrintable(sentence));
        }
        const QString kind = parts.captured(1);
        const int chan = parts.captured(2).isEmpty() ? 1 : parts.captured(2).toInt();
        const QByteArray timeText = parts.captured(3).toLatin1();
        const char* const time = timeText.constData();
        std::vector<StationFixture::Reading> values;
        for (const QString& value : parts.captured(5).split(u' ', Qt::SkipEmptyParts)) {
            values.push_back(value == u"-"_qs ? std::nullopt
                                              : StationFixture::Reading(value.toDouble()));
        }
        if (kind == u"readings"_qs) {
            station.WithReadings(time, parts.captured(4).toDouble(), values, chan);
        } else if (kind == u"equation"_qs) {
            station.WithEquation(time, chan, *values.at(0), *values.at(1), *values.at(2));
        } else if (kind == u"table"_qs) {
            std::vector<StationFixture::RatingPoint> points;
            for (std::size_t i = 0; i + 1 < values.size(); i += 2) {
                points.push_back({*values[i], *values[i + 1]});
            }
            station.WithTable(time, chan, points);
        } else {
            station.WithJournalRow(time, chan, values.at(0), values.at(1), kind == u"visit"_qs);
        }
    }
}

namespace {

QString ValueText(double value) {
    return QString::number(value, 'g', 9);
}

}  // namespace

QString SeriesText() {
    QStringList lines;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(InstCount); ++i) {
        lines += MomentText(InstTimes[i]) + u' ' + ValueText(InstValues[i]);
    }
    return lines.join(u'\n');
}

QString ValuesText() {
    QStringList values;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(InstCount); ++i) {
        values += ValueText(InstValues[i]);
    }
    return values.join(u' ');
}

QString DaysText() {
    QStringList lines;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(DailyCount); ++i) {
        lines += u"%1 %2 %3 %4 %5"_qs.arg(MomentText(DailyDates[i]).remove(u" 00:00:00"_qs),
                                          ValueText(DailyMean[i]), ValueText(DailyMin[i]),
                                          ValueText(DailyMax[i]), ValueText(DailyTotal[i]));
    }
    return lines.join(u'\n');
}

}  // namespace rillbook
