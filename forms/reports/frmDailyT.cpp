#include "forms/reports/frmDailyT.h"

#include <algorithm>

#include "compute/Summary.h"
#include "platform/desktop/Screen.h"
#include "platform/qt/Twips.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "ui_frmDailyT.h"

namespace rillbook {

namespace {

// Walks the calendar and the daily series at once: a day that has no entry keeps its date alone.
void WriteDays(MSFlexGrid& grid, int days, int digits) {
    std::size_t j = 1;
    for (int i = 1; i <= days; ++i) {
        const DateTime day = ReportBeginDate + i - 1;
        grid.SetTextMatrix(i, 1, ShortDateText(day));
        if (j > static_cast<std::size_t>(DailyCount) || DailyDates[j] != day) {
            continue;
        }
        int col = 2;
        for (const auto* statistic : {&DailyMean, &DailyMin, &DailyMax, &DailyTotal}) {
            grid.SetTextMatrix(i, col++, FixedNumberText((*statistic)[j], digits));
        }
        ++j;
    }
}

}  // namespace

frmDailyT::frmDailyT(const QString& projectName, CommonDialog& printerDialog, QWidget* parent)
    : ReportForm(ReportMode::DailyTable, printerDialog, parent),
      ui_(std::make_unique<Ui::frmDailyT>()) {
    ui_->setupUi(this);
    setWindowTitle(QStringLiteral("Daily Summary Table - ") + projectName);
    ConnectCommonCommands();
    ConnectCopy(*ui_->MSFlexGrid1);
    RefreshTable();
}

frmDailyT::~frmDailyT() = default;

void frmDailyT::RefreshTable() {
    const Hourglass hourglass;
    const int chan = StationInfo.OutputChannel;
    const DateTime end = ReportEndDate + 1;
    LoadDailySeries(ReportBeginDate, end, chan);
    const int days = std::max(0, static_cast<int>(end - ReportBeginDate));
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.BeginFill();
    grid.ClearTexts();
    grid.SetRows(days + 1);
    ui_->Label1->setText(ChannelInfo[chan].RecSta + QStringLiteral(" - ") +
                         ReportDescription(chan) + QStringLiteral(" (") + ReportLabel(chan) + u')');
    grid.setFixedWidth(ToPixels(5500));
    grid.SetCols(6);
    int col = 1;
    for (const char* heading : {"Date", "Mean", "Min", "Max", "Total"}) {
        grid.SetTextMatrix(0, col++, QString::fromLatin1(heading));
    }
    grid.SetColWidth(0, 300);
    WriteDays(grid, days, ChannelInfo[chan].DigitsOut);
    grid.EndFill();
}

}  // namespace rillbook
