#include "forms/reports/frmAnnualT.h"

#include <QFontDatabase>
#include <QResizeEvent>
#include <algorithm>
#include <cstddef>

#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "compute/Summary.h"
#include "forms/reports/Print.h"
#include "forms/reports/frmAnnualTPrint.h"
#include "platform/desktop/Printer.h"
#include "platform/desktop/Screen.h"
#include "platform/qt/RememberedWindow.h"
#include "platform/qt/Twips.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "ui_frmAnnualT.h"

namespace rillbook {

namespace {

const RememberedWindow kPlace{AnnualH, AnnualW, AnnualT, AnnualL, AnnualM};

// To 23:45:36 of the last day: a reading at the midnight after it belongs to the next period.
constexpr DateTime kMostOfADay = 0.99;

// A family that the desktop hasn't would give way to a wider one than the form has room for.
QFont FontOfForm(const QString& family) {
    QFont font(QFontDatabase::hasFamily(family) ? family : QStringLiteral("Arial"));
    font.setPointSizeF(8.25);
    return font;
}

QString StatisticWord(DailyStatistic statistic) {
    switch (statistic) {
        case DailyStatistic::Minimum:
            return QStringLiteral("Minimum");
        case DailyStatistic::Maximum:
            return QStringLiteral("Maximum");
        case DailyStatistic::Total:
            return QStringLiteral("Total");
        case DailyStatistic::Mean:
            break;
    }
    return QStringLiteral("Mean");
}

}  // namespace

frmAnnualT::frmAnnualT(const QString& projectName, CommonDialog& printerDialog, QWidget* parent)
    : ReportForm(ReportMode::AnnualTable, printerDialog, parent),
      ui_(std::make_unique<Ui::frmAnnualT>()) {
    ui_->setupUi(this);
    QFont titleFont = FontOfForm(QStringLiteral("MS Sans Serif"));
    titleFont.setBold(true);
    ui_->lblTitle1->setFont(titleFont);
    ui_->lblTitle2->setFont(titleFont);
    ui_->MSFlexGrid1->setFont(FontOfForm(QStringLiteral("Arial")));

    kPlace.Restore(*this);
    setWindowTitle(QStringLiteral("Summary Table - ") + projectName);
    SetUpGrid();
    ui_->MSFlexGrid1->setFocus();
    ConnectCommands();
    FillGrid();
}

frmAnnualT::~frmAnnualT() = default;

void frmAnnualT::done(int result) {
    kPlace.Remember(*this);
    ReportForm::done(result);
}

void frmAnnualT::resizeEvent(QResizeEvent* event) {
    ReportForm::resizeEvent(event);
    QSize grid = ui_->MSFlexGrid1->size();
    if (width() > ToPixels(2000)) {
        grid.setWidth(width() - ToPixels(400));
    }
    if (height() > ToPixels(1750)) {
        grid.setHeight(height() - ToPixels(1600));
    }
    ui_->MSFlexGrid1->resize(grid);
}

void frmAnnualT::SetUpGrid() {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.SetRows(AnnualSheet::kRows);
    grid.SetCols(AnnualSheet::kCols);
    grid.SetColWidth(0, 200);
    for (int col = 1; col < AnnualSheet::kCols; ++col) {
        grid.SetColWidth(col, 900);
    }
    grid.SetRowHeights(1, 190);
}

void frmAnnualT::ConnectCommands() {
    ConnectCommonCommands();
    ConnectCopy(*ui_->MSFlexGrid1);
    connect(ui_->mnuFilePrint, &QAction::triggered, this, &frmAnnualT::PrintSheet);
    connect(ui_->grpStatistic, &QActionGroup::triggered, this, &frmAnnualT::FillGrid);
}

DailyStatistic frmAnnualT::CheckedStatistic() const {
    if (ui_->mnuMax->isChecked()) {
        return DailyStatistic::Maximum;
    }
    if (ui_->mnuMin->isChecked()) {
        return DailyStatistic::Minimum;
    }
    return ui_->mnuTotal->isChecked() ? DailyStatistic::Total : DailyStatistic::Mean;
}

void frmAnnualT::FillGrid() {
    const Hourglass hourglass;
    const int chan = StationInfo.OutputChannel;
    LoadDailySeries(ReportBeginDate, ReportEndDate + kMostOfADay, chan);
    FillCaption();
    sheet_ = BuildAnnualSheet(CheckedStatistic(), chan, ReportBeginDate);
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.BeginFill();
    for (int row = 0; row < AnnualSheet::kRows; ++row) {
        for (int col = 0; col < AnnualSheet::kCols; ++col) {
            grid.SetTextMatrix(
                row, col,
                sheet_.cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)]);
        }
    }
    grid.EndFill();
    if (!sheet_.peak.isEmpty()) {
        ui_->tbPMax->setText(sheet_.peak);
        ui_->tbPMax->setCursorPosition(0);
    }
}

void frmAnnualT::FillCaption() {
    const int chan = StationInfo.OutputChannel;
    ui_->lblTitle1->setText(ChannelInfo[chan].RecSta + QStringLiteral(" - Daily ") +
                            StatisticWord(CheckedStatistic()) + u' ' + ReportDescription(chan) +
                            QStringLiteral(" (") + ReportLabel(chan) + u')');
    ui_->lblTitle2->setText(MonthYearText(ReportBeginDate) + QStringLiteral(" to ") +
                            MonthYearText(ReportEndDate));
    MakeRoomForTitle();
}

// A title that reaches the caption of the peak sends it down, beside the box.
void frmAnnualT::MakeRoomForTitle() {
    const int titleWidth = std::max(ToPixels(3495), ui_->lblTitle1->sizeHint().width());
    ui_->lblTitle1->resize(titleWidth, ui_->lblTitle1->height());
    const QPoint usual(ToPixels(4560), ToPixels(240));
    const QPoint besideBox(usual.x() - ui_->Label7->width(), ToPixels(495));
    const bool meets = ui_->lblTitle1->geometry().right() >= usual.x();
    ui_->Label7->move(meets ? besideBox : usual);
}

void frmAnnualT::PrintSheet() {
    frmAnnualTPrint choice(this);
    choice.exec();
    if (DialogCancelled) {
        return;
    }
    // Without any day in the sheet, the text box still shows the peak of the sheet before.
    const bool printPeak = choice.PrintPeak && !sheet_.peak.isEmpty();
    const AnnualHeading heading{ui_->lblTitle1->text(), ui_->lblTitle2->text(), ui_->tbPMax->text(),
                                printPeak, choice.PrintTotals};
    PrintDocument(windowTitle(), cdlLandscape, [&](Printer& printer) {
        PrintAnnualSheet(printer, heading, sheet_);
        PrintFooter(printer);
        return true;
    });
}

}  // namespace rillbook
