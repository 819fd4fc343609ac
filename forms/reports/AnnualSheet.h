#pragma once

#include <QString>
#include <array>

#include "platform/text/DateTime.h"

namespace rillbook {

enum class DailyStatistic { Mean, Minimum, Maximum, Total };

// The texts of the yearly sheet of one channel: days down, months across in the order of the report
// period, monthly and yearly statistics beneath. Row and column 0 are the fixed ones of the grid
// and empty.
struct AnnualSheet {
    static constexpr int kRows = 38;
    static constexpr int kCols = 15;

    static constexpr int kHeaderRow = 1;
    static constexpr int kFirstDayRow = 2;
    static constexpr int kLastDayRow = 32;
    static constexpr int kMeanRow = 34;
    static constexpr int kMinRow = 35;
    static constexpr int kMaxRow = 36;
    static constexpr int kTotalRow = 37;

    static constexpr int kLabelCol = 1;
    static constexpr int kFirstMonthCol = 2;
    static constexpr int kLastMonthCol = 13;
    static constexpr int kYearCol = 14;

    std::array<std::array<QString, kCols>, kRows> cells;  // by row, then column

    // The greatest daily maximum with its unit and day; empty if the daily series is.
    QString peak;
};

// Lays out the daily series that LoadDailySeries left. `begin` gives the month of the first column.
// The statistics are worked from the cells as they read, so that they agree with what stands above
// them: a cell that holds no number takes no part.
AnnualSheet BuildAnnualSheet(DailyStatistic statistic, int chan, DateTime begin);

}  // namespace rillbook
