#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "compute/Compute.h"
#include "compute/Summary.h"
#include "graphs/Chart.h"
#include "platform/ado/Recordset.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"

namespace rillbook {

std::vector<DateTime> MeasuredDates;
std::vector<double> MeasuredValues;
std::int32_t MeasuredCount = 0;

namespace {

// A step between daily values that leaves out a day.
constexpr DateTime kDayIncrement = 1.1;

// Gathers points from entry 1 on, and closes them with one blank row.
class PointTable {
public:
    explicit PointTable(std::int32_t readings) {
        table_.reserve(static_cast<std::size_t>(readings) + 2);
        table_.emplace_back();
    }
    void AddGap() { table_.emplace_back(); }
    ChartRow& AddPoint(DateTime date) {
        table_.emplace_back().date = date;
        return table_.back();
    }
    ChartPoints Close() {
        table_.emplace_back();
        const auto count = static_cast<std::int32_t>(table_.size()) - 1;
        return {std::move(table_), count};
    }

private:
    ChartTable table_;
};

bool IsPoint(const ChartRow& row, std::size_t column) {
    return !std::isnan(row.date) && !std::isnan(row.values[column]);
}

}  // namespace

std::vector<ChartSegment> SeriesSegments(const ChartTable& data, const PlotFrame& frame, int series,
                                         std::int32_t pointCount) {
    std::vector<ChartSegment> segments;
    const auto last = std::min(static_cast<std::size_t>(std::max(pointCount, 0)) + 1, data.size());
    if (series < 1 || series > kMaxSeries || last < 3) {
        return segments;
    }
    segments.reserve(last - 2);
    const auto column = static_cast<std::size_t>(series - 1);
    for (std::size_t i = 2; i < last; ++i) {
        const ChartRow& from = data[i - 1];
        const ChartRow& to = data[i];
        if (IsPoint(from, column) && IsPoint(to, column)) {
            segments.push_back({frame.HeldDate(from.date), frame.HeldValue(from.values[column]),
                                frame.HeldDate(to.date), frame.HeldValue(to.values[column])});
        }
    }
    return segments;
}

ChartPoints InstantaneousPoints(DateTime increment) {
    PointTable points(InstCount);
    for (std::size_t i = 1; i <= static_cast<std::size_t>(InstCount); ++i) {
        if (i > 1 && IsGap(InstTimes[i] - InstTimes[i - 1], increment)) {
            points.AddGap();
        }
        points.AddPoint(InstTimes[i]).values[0] = InstValues[i];
    }
    return points.Close();
}

ChartPoints DailyPoints(const std::array<bool, kMaxSeries>& shown) {
    const std::array<const std::vector<double>*, kMaxSeries> series{&DailyMean, &DailyMin,
                                                                    &DailyMax, &DailyTotal};
    PointTable points(DailyCount);
    for (std::size_t i = 1; i <= static_cast<std::size_t>(DailyCount); ++i) {
        if (i > 1 && DailyDates[i] - DailyDates[i - 1] > kDayIncrement) {
            points.AddGap();
        }
        ChartRow& row = points.AddPoint(DailyDates[i]);
        for (std::size_t k = 0; k < series.size(); ++k) {
            if (shown[k]) {
                row.values[k] = (*series[k])[i];
            }
        }
    }
    return points.Close();
}

std::array<bool, kMaxSeries> ShownSeries(int outputSeries) {
    const QString digits = QString::number(std::abs(static_cast<std::int64_t>(outputSeries)));
    std::array<bool, kMaxSeries> shown{};
    for (std::size_t k = 0; k < shown.size(); ++k) {
        const auto place = static_cast<qsizetype>(k) + 1;
        shown[k] = place < digits.size() && digits[place] != u'0';
    }
    return shown;
}

void LoadMeasuredValues(int chan) {
    ResetChart();
    Recordset journal;
    journal.Open(QStringLiteral("SELECT * FROM Calibration WHERE Chan = ") + QString::number(chan) +
                     QStringLiteral(" ORDER BY DateTime"),
                 *StationConnection, adOpenStatic, adLockReadOnly);
    const Field time = journal.Fields(u"DateTime");
    const Field value =
        ChannelInfo[chan].Conversion == 0 ? journal.Fields(u"actual1") : journal.Fields(5);
    for (; !journal.Eof(); journal.MoveNext()) {
        if (value.IsNumeric() && time.IsNumeric()) {
            MeasuredDates.push_back(time.Number());
            MeasuredValues.push_back(value.Number());
            ++MeasuredCount;
        }
    }
}

void ResetChart() {
    MeasuredDates.assign(1, 0);
    MeasuredValues.assign(1, 0);
    MeasuredCount = 0;
}

}  // namespace rillbook
