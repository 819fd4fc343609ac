#pragma once

#include <cstddef>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// One rating: an equation Q = c (ght - A)^r, or the head of a table.
struct RatingRow {
    DateTime from = 0;  // applies from just after it
    bool isEquation = false;
    double A = 0;  // gauge height of zero flow; NULL reads as 0
    double r = 0;
    double c = 0;
};

struct RatingPoint {
    double depth = 0;
    double flow = 0;
};

struct RatingTable {
    DateTime from = 0;
    std::vector<RatingPoint> points;  // ascending depth, from 0
};

// A channel's ratings in time order, between two sentinels dated 1900-01-01 (entry 1) and
// 3000-01-01 (the last), copies of their neighbours. Entry 0 is not used. Empty if the channel has
// no rating.
extern std::vector<RatingRow> RatingRows;

// The table ratings likewise. A channel without points has the identity table: depth is flow.
extern std::vector<RatingTable> RatingTables;

// The row and the table in force at the current reading, from 1.
extern std::size_t RatingCursor;
extern std::size_t TableCursor;

// Return how many rows they left out for lack of a date-time. Raise AdoError.
[[nodiscard]] int LoadRatingRows(int chan);
[[nodiscard]] int LoadRatingTables(int chan);

// The flow at a depth, by the rating in force at `t`. A reading exactly at a rating's time still
// belongs to the rating before it. Beyond the ends of a table its first or last two points' line
// goes on. REQUIRES: LoadRatingRows found a rating; t not decreasing since the cursors were set
// to 1.
double ApplyRating(DateTime t, double value);

}  // namespace rillbook
