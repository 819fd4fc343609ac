#pragma once

#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// One journal row that is in use.
struct OffsetRow {
    DateTime time = 0;
    double offset = 0;  // what the reference read less what the logger read; NaN where one didn't
};

// The used journal rows of a channel in time order, between two sentinels: entry 1 is dated
// 1900-01-01 and the last 3000-01-01, each with its neighbour's offset. Entry 0 is not used.
// Empty if the channel has no used row.
extern std::vector<OffsetRow> OffsetRows;

// The row at or before the current reading, from 1.
extern std::size_t OffsetCursor;

// Returns how many rows it left out for lack of a date-time. Raises AdoError.
[[nodiscard]] int LoadOffsetRows(int chan);

// The value plus the offset interpolated in time between the rows around `t`; constant before the
// first and after the last. NaN where one of the two rows lacks a reading.
// REQUIRES: OffsetRows not empty; t not decreasing from call to call since OffsetCursor was set
// to 1.
double ApplyOffset(DateTime t, double value);

}  // namespace rillbook
