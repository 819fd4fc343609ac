#include "forms/reports/frmInstT.h"

#include "compute/Compute.h"
#include "platform/desktop/Screen.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "ui_frmInstT.h"

namespace rillbook {

namespace {

constexpr int kTimeCol = 1;
constexpr int kValueCol = 2;

}  // namespace

frmInstT::frmInstT(const QString& projectName, CommonDialog& printerDialog, QWidget* parent)
    : ReportForm(ReportMode::InstantaneousTable, printerDialog, parent),
      ui_(std::make_unique<Ui::frmInstT>()) {
    ui_->setupUi(this);
    setWindowTitle(QStringLiteral("Instantaneous Table - ") + projectName);
    ConnectCommonCommands();
    ConnectCopy(*ui_->MSFlexGrid1);
    RefreshTable();
}

frmInstT::~frmInstT() = default;

void frmInstT::RefreshTable() {
    const Hourglass hourglass;
    const int chan = StationInfo.OutputChannel;
    LoadSeries(ReportBeginDate, ReportEndDate + 1, chan);
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    // Ten years of readings would take long to write out, and few of them are ever looked at.
    grid.SetCellSource(InstCount + 1, [times = InstTimes, values = InstValues,
                                       digits = ChannelInfo[chan].DigitsOut](int row, int col) {
        const auto i = static_cast<std::size_t>(row);
        switch (col) {
            case kTimeCol:
                return GeneralDateText(times[i]);
            case kValueCol:
                return FixedNumberText(values[i], digits);
            default:
                return QString();
        }
    });
    grid.SetCols(3);
    grid.SetTextMatrix(0, kTimeCol, QStringLiteral("DateTime"));
    grid.SetTextMatrix(0, kValueCol, ReportLabel(chan));
    ui_->Label1->setText(ChannelInfo[chan].RecSta + QStringLiteral(" - ") +
                         ReportDescription(chan));
    grid.SetColWidth(0, 300);
    grid.SetColWidth(kTimeCol, 2000);
    grid.SetColWidth(kValueCol, 1300);
}

}  // namespace rillbook
