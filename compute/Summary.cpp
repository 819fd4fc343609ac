#include "compute/Summary.h"

#include <cmath>

#include "compute/Compute.h"
#include "store/FormStuff.h"

namespace rillbook {

std::vector<DateTime> DailyDates;
std::vector<double> DailyMean;
std::vector<double> DailyMin;
std::vector<double> DailyMax;
std::vector<double> DailyTotal;
std::int32_t DailyCount = 0;

namespace {

constexpr double kMillisecondsInDay = 86400000;
constexpr DateTime kHalfMillisecond = 0.5 / kMillisecondsInDay;

// Weights count in whole milliseconds. Spans in days are off by a fraction of a microsecond, by
// which a mean of evenly spaced readings would miss their plain average and round to another digit.
double Weight(DateTime span) {
    return std::round(span * kMillisecondsInDay);
}

// The readings of the day that is being gathered.
class DayInProgress {
public:
    void Count(double value, double weight) {
        weightedSum_ += value * weight;
        weights_ += weight;
        sum_ += value;
        if (value < lowest_) {
            lowest_ = value;
        }
        if (value > highest_) {
            highest_ = value;
        }
    }

    // Enters the day, unless its readings have no weight, and starts the next one.
    void Complete(DateTime day) {
        if (weights_ > 0) {
            DailyDates.push_back(day);
            DailyMean.push_back(weightedSum_ / weights_);
            DailyMin.push_back(lowest_);
            DailyMax.push_back(highest_);
            DailyTotal.push_back(sum_);
            ++DailyCount;
        }
        *this = DayInProgress();
    }

private:
    double weightedSum_ = 0;
    double weights_ = 0;
    double sum_ = 0;
    double lowest_ = 1E+99;
    double highest_ = -1E+99;
};

}  // namespace

void LoadDailySeries(DateTime from, DateTime to, int chan) {
    ResetSummary();
    LoadSeries(from, to, chan);
    const auto last = static_cast<std::size_t>(InstCount);
    std::size_t current = 1;
    while (current <= last && std::isnan(InstValues[current])) {
        ++current;
    }
    if (current >= last) {
        return;
    }
    const DateTime increment = StationInfo.TimeIncrement;
    DayInProgress readings;
    DateTime day = std::floor(InstTimes[current]);
    for (std::size_t next = current + 1; next <= last; ++next) {
        if (std::isnan(InstValues[next])) {
            continue;
        }
        const DateTime step = InstTimes[next] - InstTimes[current];
        readings.Count(InstValues[current], Weight(IsGap(step, increment) ? increment : step));
        const DateTime nextDay = std::floor(InstTimes[next]);
        if (nextDay > day) {
            readings.Complete(day);
        }
        current = next;
        day = nextDay;
    }
    readings.Count(InstValues[current], Weight(increment));
    readings.Complete(day);
}

bool IsGap(DateTime step, DateTime increment) {
    return step > increment + kHalfMillisecond;
}

void ResetSummary() {
    for (std::vector<double>* series :
         {&DailyDates, &DailyMean, &DailyMin, &DailyMax, &DailyTotal}) {
        series->assign(1, 0);
    }
    DailyCount = 0;
}

}  // namespace rillbook
