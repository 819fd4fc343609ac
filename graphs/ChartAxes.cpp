#include <QString>
#include <algorithm>
#include <cmath>

#include "graphs/Chart.h"

namespace rillbook {

namespace {

// Far above what any span of the tables gives: a step that asks for more is none of theirs.
constexpr double kMostLines = 1000;

// A double carries 15 decimal digits. What arithmetic between the ends of an axis leaves behind
// those of the larger one isn't in the numbers that the user sees.
double AsSeen(double value, double largest) {
    if (largest <= 0) {
        return value;
    }
    const int decimals = 14 - static_cast<int>(std::floor(std::log10(largest)));
    return decimals > 0 ? QString::number(value, 'f', decimals).toDouble() + 0.0 : value;
}

// The double next to a decimal factor times a power of ten; 0 or infinite beyond their range.
double Scaled(double factor, int power) {
    return (QString::number(factor) + QStringLiteral("e%1").arg(power)).toDouble();
}

struct StepRule {
    int upTo;  // first two digits of the span
    double major;
    double minor;
};
constexpr StepRule kStepRules[] = {{13, 1, 0.2}, {24, 2, 0.5}, {49, 5, 1}, {99, 10, 2}};

struct DateRule {
    double from;  // days of the span, both ends included
    double to;
    double major;
    double minor;
    bool labelsHaveTime;
};
constexpr DateRule kDateRules[] = {
    {1, 3, 0.5, 1.0 / 24, true},
    {4, 10, 1, 0.25, false},
    {11, 24, 2, 0.5, false},
    {25, 89, 7, 1, false},
};
constexpr double kMonthsFrom = 90;
constexpr double kEachMonthLabelledTo = 366;

std::vector<DateTime> FirstsOfMonths(DateTime from, DateTime to) {
    const CalendarDate start = DateParts(from);
    std::int64_t month = start.month;
    DateTime first = DateSerial(start.year, month, 1);
    if (first < from) {
        first = DateSerial(start.year, ++month, 1);
    }
    std::vector<DateTime> firsts;
    // Beyond the calendar's end every date is its last day, which is no first.
    while (first >= from && first <= to && DateParts(first).day == 1) {
        firsts.push_back(first);
        first = DateSerial(start.year, ++month, 1);
    }
    return firsts;
}

}  // namespace

AxisSteps ValueAxisSteps(double span) {
    if (!std::isfinite(span) || span <= 0) {
        return {};
    }
    // Twelve digits: from 1000.2 to 1000.3 is 0.1 for the user, and in doubles a little less.
    const QString text = QString::number(span, 'e', 11);
    const int digits = text.left(1).toInt() * 10 + text.mid(2, 1).toInt();
    const int power = text.mid(text.indexOf(QLatin1Char('e')) + 1).toInt() - 1;
    const auto* const rule =
        std::find_if(std::begin(kStepRules), std::end(kStepRules),
                     [&](const StepRule& each) { return digits <= each.upTo; });
    const AxisSteps steps{Scaled(rule->major, power), Scaled(rule->minor, power)};
    return std::isfinite(steps.major) && steps.minor > 0 ? steps : AxisSteps{};
}

std::vector<double> AxisValues(double min, double max, double step) {
    if (!std::isfinite(min) || !std::isfinite(max) || !(step > 0)) {
        return {};
    }
    const double largest = std::max(std::abs(min), std::abs(max));
    const double span = AsSeen(max - min, largest);
    if (span < 0 || !(span / step < kMostLines)) {
        return {};
    }
    const auto last = static_cast<int>(std::floor(span / step + 1e-9));
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(last) + 1);
    for (int i = 0; i <= last; ++i) {
        values.push_back(AsSeen(min + i * step, largest));
    }
    return values;
}

DateAxis DateAxisLines(DateTime from, DateTime to) {
    const double span = to - from;
    DateAxis axis;
    if (span >= kMonthsFrom) {
        axis.majorLines = FirstsOfMonths(from, to);
        const std::size_t every = span > kEachMonthLabelledTo ? 3 : 1;
        for (std::size_t i = 0; i < axis.majorLines.size(); i += every) {
            axis.labels.push_back(axis.majorLines[i]);
        }
        return axis;
    }
    for (const DateRule& rule : kDateRules) {
        if (span >= rule.from && span <= rule.to) {
            axis.minorLines = AxisValues(from, to, rule.minor);
            axis.majorLines = AxisValues(from, to, rule.major);
            axis.labels = axis.majorLines;
            axis.labelsHaveTime = rule.labelsHaveTime;
        }
    }
    return axis;
}

QString DateLabelText(DateTime moment, bool withTime) {
    const CalendarDate date = DateParts(moment);
    const QLatin1Char zero('0');
    const QString day =
        QStringLiteral("%1/%2/%3").arg(date.month).arg(date.day).arg(date.year % 100, 2, 10, zero);
    if (!withTime) {
        return day;
    }
    const ClockTime time = TimeParts(moment);
    return QStringLiteral("%1 %2:%3")
        .arg(day)
        .arg(time.hour, 2, 10, zero)
        .arg(time.minute, 2, 10, zero);
}

}  // namespace rillbook
