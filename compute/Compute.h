#pragma once

#include <cstdint>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// The instantaneous series of one channel, entries 1 to InstCount, in ascending time. Entry 0 is
// not used, and there is always a spare one behind the last, which holds no reading. A value that a
// journal row without readings made impossible is NaN.
extern std::vector<DateTime> InstTimes;
extern std::vector<double> InstValues;
extern std::int32_t InstCount;

// Reads the channel's readings from `from` to `to`, both inclusive, adds the journal's offset where
// the channel asks for it and passes them through the rating in force where it asks for that.
// InstCount 0 means nothing to show: the user has been told why, unless there were rows and none
// had a value. Never raises.
void LoadSeries(DateTime from, DateTime to, int chan);

// To be called when a report opens: the next LoadSeries reports the rows that it leaves out, and
// later ones do not report the same rows again.
void BeginReport();

void ResetCompute();

}  // namespace rillbook
