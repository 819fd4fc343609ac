#pragma once

#include <QString>
#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "platform/desktop/DrawingSurface.h"
#include "platform/text/DateTime.h"

namespace rillbook {

constexpr int kMaxSeries = 4;
constexpr double kBlank = std::numeric_limits<double>::quiet_NaN();

// One point of each series. NaN is blank: no value, and a break in the series' line.
struct ChartRow {
    DateTime date = kBlank;
    std::array<double, kMaxSeries> values{kBlank, kBlank, kBlank, kBlank};
};

// The points that a caller passes, from entry 1; entry 0 is not used. A wholly blank row marks a
// gap.
using ChartTable = std::vector<ChartRow>;

// Steps of the value axis: labels and dark lines, and light lines. Both 0 for a span that isn't
// above 0, isn't finite, or is too small for a step.
struct AxisSteps {
    double major = 0;
    double minor = 0;
};
AxisSteps ValueAxisSteps(double span);

// Values from `min` to `max` by the step, counted and not summed, so that the one at `max` is there
// and zero is 0. None for a step of 0, ends that aren't finite or are upside down, and a step that
// would give a thousand or more.
std::vector<double> AxisValues(double min, double max, double step);

// The vertical lines of a span of whole days; none for a span that has no rule (below 1 day, or
// between two rules).
struct DateAxis {
    std::vector<DateTime> minorLines;
    std::vector<DateTime> majorLines;
    std::vector<DateTime> labels;
    bool labelsHaveTime = false;  // "M/d/yy hh:mm", else "M/d/yy"
};
DateAxis DateAxisLines(DateTime from, DateTime to);
QString DateLabelText(DateTime moment, bool withTime);

// Where the plot lies on its surface, and what its axes span.
struct PlotFrame {
    DateTime from = 0;
    DateTime to = 0;
    double yMin = 0;
    double yMax = 0;
    double left = 0;  // margins, in twips
    double right = 0;
    double top = 0;
    double bottom = 0;
    double width = 0;  // of the frame, in twips
    double height = 0;

    double ChartX(DateTime t) const { return left + (t - from) / (to - from) * width; }
    double ChartY(double v) const { return top + height - (v - yMin) / (yMax - yMin) * height; }

    // A point far outside the plot, held within 50 spans around it: no surface takes every number.
    DateTime HeldDate(DateTime t) const { return Held(t, from, to); }
    double HeldValue(double v) const { return Held(v, yMin, yMax); }
    bool IsNear(DateTime t) const { return t > LowLimit(from, to) && t < HighLimit(from, to); }

private:
    static double LowLimit(double low, double high) { return low - 50 * (high - low); }
    static double HighLimit(double low, double high) { return high + 50 * (high - low); }
    static double Held(double value, double low, double high) {
        return std::max(LowLimit(low, high), std::min(value, HighLimit(low, high)));
    }
};

// A line from one point of a series to the next, in axis units: both ends have values, held within
// 50 spans around the plot.
struct ChartSegment {
    DateTime t1 = 0;
    double v1 = 0;
    DateTime t2 = 0;
    double v2 = 0;
};
// The lines of series k (1 to 4) over rows 1 to pointCount.
std::vector<ChartSegment> SeriesSegments(const ChartTable& data, const PlotFrame& frame, int series,
                                         std::int32_t pointCount);

// The journal's values for the graphs, entries 1 to MeasuredCount. Entry 0 is not used.
extern std::vector<DateTime> MeasuredDates;
extern std::vector<double> MeasuredValues;
extern std::int32_t MeasuredCount;

// Fills them: the discharge where the channel is rated, else the reading of the reference; rows
// without it are left out. Raises AdoError.
void LoadMeasuredValues(int chan);

struct ChartTexts {
    QString title1;
    QString title2;
    QString xTitle;
    QString yTitle;  // set vertically, letter under letter
};

// Draws a whole graph on a picture or a printer's page, whose document stays open. REQUIRES: yMax
// above yMin, toDate later than fromDate, pointCount above 1.
void DrawChart(const ChartTable& data, DateTime fromDate, DateTime toDate, double yMin, double yMax,
               const ChartTexts& texts, int seriesCount, std::int32_t pointCount, bool toPrinter,
               DrawingSurface& surface);

// The points of a graph and their count, which takes in one blank row at the end.
struct ChartPoints {
    ChartTable table;
    std::int32_t count = 0;
};

// Of the instantaneous series (LoadSeries has run): a blank row before each step that is longer
// than `increment`.
ChartPoints InstantaneousPoints(DateTime increment);

// Of the daily series (LoadDailySeries has run): a blank row where days are missing. `shown`
// selects mean, minimum, maximum and total; a series that isn't shown stays blank.
ChartPoints DailyPoints(const std::array<bool, kMaxSeries>& shown);

// The digits of ChannelInfo.OutputSeries behind the first, any but 0 selecting.
std::array<bool, kMaxSeries> ShownSeries(int outputSeries);

void ResetChart();

}  // namespace rillbook
