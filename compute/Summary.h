#pragma once

#include <cstdint>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// The daily series of one channel, entries 1 to DailyCount, ascending; days without readings have
// no entry. Entry 0 is not used.
extern std::vector<DateTime> DailyDates;
extern std::vector<double> DailyMean;  // weighted by the time to the next reading
extern std::vector<double> DailyMin;
extern std::vector<double> DailyMax;
extern std::vector<double> DailyTotal;  // plain sum of the readings
extern std::int32_t DailyCount;

// LoadSeries, reduced to calendar days. A reading weighs the time to the next one, at most
// StationInfo.TimeIncrement; the last of the series weighs TimeIncrement. A single reading gives no
// day.
void LoadDailySeries(DateTime from, DateTime to, int chan);

// Whether a step between two readings is longer than the time increment, to half a millisecond:
// fifteen minutes are never exact in days.
bool IsGap(DateTime step, DateTime increment);

void ResetSummary();

}  // namespace rillbook
