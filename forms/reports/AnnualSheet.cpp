#include "forms/reports/AnnualSheet.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "app/InitialFile.h"
#include "compute/Summary.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"

namespace rillbook {

namespace {

using Sheet = AnnualSheet;

QString& Cell(Sheet& sheet, int row, int col) {
    return sheet.cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)];
}

// Mean, extremes and sum of numbers met one by one.
class Tally {
public:
    void Add(double value) {
        min_ = count_ == 0 ? value : std::min(min_, value);
        max_ = count_ == 0 ? value : std::max(max_, value);
        sum_ += value;
        ++count_;
    }
    bool IsEmpty() const { return count_ == 0; }
    double Mean() const { return sum_ / count_; }
    double Min() const { return min_; }
    double Max() const { return max_; }
    double Sum() const { return sum_; }

private:
    int count_ = 0;
    double sum_ = 0;
    double min_ = 0;
    double max_ = 0;
};

Tally TallyOfCells(Sheet& sheet, std::pair<int, int> rows, std::pair<int, int> cols) {
    Tally tally;
    for (int row = rows.first; row <= rows.second; ++row) {
        for (int col = cols.first; col <= cols.second; ++col) {
            if (const std::optional<double> number = ReadNumber(Cell(sheet, row, col))) {
                tally.Add(*number);
            }
        }
    }
    return tally;
}

const std::vector<double>& SeriesOf(DailyStatistic statistic) {
    switch (statistic) {
        case DailyStatistic::Minimum:
            return DailyMin;
        case DailyStatistic::Maximum:
            return DailyMax;
        case DailyStatistic::Total:
            return DailyTotal;
        case DailyStatistic::Mean:
            break;
    }
    return DailyMean;
}

// Column of each month, from 1 to 12, when the period begins in `firstMonth`.
int MonthColumn(int month, int firstMonth) {
    return Sheet::kFirstMonthCol + (month - firstMonth + 12) % 12;
}

void WriteHeads(Sheet& sheet, int chan, int firstMonth) {
    for (int month = 1; month <= 12; ++month) {
        Cell(sheet, Sheet::kHeaderRow, MonthColumn(month, firstMonth)) =
            MonthNames[static_cast<std::size_t>(month)];
    }
    Cell(sheet, Sheet::kHeaderRow, Sheet::kYearCol) = QStringLiteral("Total");
    for (int day = 1; day <= 31; ++day) {
        Cell(sheet, Sheet::kHeaderRow + day, Sheet::kLabelCol) = QString::number(day);
    }
    Cell(sheet, Sheet::kMeanRow, Sheet::kLabelCol) = QStringLiteral("Avg");
    Cell(sheet, Sheet::kMinRow, Sheet::kLabelCol) = QStringLiteral("Min");
    Cell(sheet, Sheet::kMaxRow, Sheet::kLabelCol) = QStringLiteral("Max");
    Cell(sheet, Sheet::kTotalRow, Sheet::kLabelCol) =
        QStringLiteral("Total (") + ChannelInfo[chan].OutputFactorString + QStringLiteral(")");
}

void WriteDays(Sheet& sheet, DailyStatistic statistic, int chan, int firstMonth) {
    const std::vector<double>& values = SeriesOf(statistic);
    const int digits = ChannelInfo[chan].DigitsOut;
    std::size_t peak = 1;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(DailyCount); ++i) {
        const CalendarDate date = DateParts(DailyDates[i]);
        Cell(sheet, Sheet::kHeaderRow + date.day, MonthColumn(date.month, firstMonth)) =
            FixedNumberText(values[i], digits);
        if (DailyMax[i] > DailyMax[peak]) {
            peak = i;
        }
    }
    if (DailyCount > 0) {
        sheet.peak = FixedNumberText(DailyMax[peak], digits) + u' ' + ReportLabel(chan) +
                     QStringLiteral(" on ") + ShortMonthDayYearText(DailyDates[peak]);
    }
}

void WriteMonthStatistics(Sheet& sheet, int chan, int col) {
    const Tally days = TallyOfCells(sheet, {Sheet::kFirstDayRow, Sheet::kLastDayRow}, {col, col});
    if (days.IsEmpty()) {
        return;
    }
    const int digits = ChannelInfo[chan].DigitsOut;
    Cell(sheet, Sheet::kMeanRow, col) = FixedNumberText(days.Mean(), digits);
    Cell(sheet, Sheet::kMinRow, col) = RegionalNumberText(days.Min());
    Cell(sheet, Sheet::kMaxRow, col) = RegionalNumberText(days.Max());
    Cell(sheet, Sheet::kTotalRow, col) =
        FixedNumberText(ChannelInfo[chan].OutputFactor * days.Sum(), digits);
}

void WriteYearStatistics(Sheet& sheet, int chan) {
    const auto ofMonths = [&sheet](int row) {
        return TallyOfCells(sheet, {row, row}, {Sheet::kFirstMonthCol, Sheet::kLastMonthCol});
    };
    const Tally means = ofMonths(Sheet::kMeanRow);
    if (means.IsEmpty()) {
        return;
    }
    const int digits = ChannelInfo[chan].DigitsOut;
    Cell(sheet, Sheet::kMeanRow, Sheet::kYearCol) = FixedNumberText(means.Mean(), digits);
    Cell(sheet, Sheet::kMinRow, Sheet::kYearCol) =
        RegionalNumberText(ofMonths(Sheet::kMinRow).Min());
    Cell(sheet, Sheet::kMaxRow, Sheet::kYearCol) =
        RegionalNumberText(ofMonths(Sheet::kMaxRow).Max());
    Cell(sheet, Sheet::kTotalRow, Sheet::kYearCol) =
        FixedNumberText(ofMonths(Sheet::kTotalRow).Sum(), digits);
}

}  // namespace

AnnualSheet BuildAnnualSheet(DailyStatistic statistic, int chan, DateTime begin) {
    const int firstMonth = DateParts(begin).month;
    AnnualSheet sheet;
    WriteHeads(sheet, chan, firstMonth);
    WriteDays(sheet, statistic, chan, firstMonth);
    for (int col = Sheet::kFirstMonthCol; col <= Sheet::kLastMonthCol; ++col) {
        WriteMonthStatistics(sheet, chan, col);
    }
    WriteYearStatistics(sheet, chan);
    return sheet;
}

}  // namespace rillbook
