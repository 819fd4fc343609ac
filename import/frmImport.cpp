#include "import/frmImport.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "forms/reference/GridCellEditing.h"
#include "import/LoggerLine.h"
#include "platform/ado/AdoError.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Screen.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "store/StationPanel.h"
#include "ui_frmImport.h"

namespace rillbook {

namespace {

constexpr int kDateRow = 1;
constexpr int kWidthCol = 1;
constexpr int kUnitsCol = 2;
constexpr int kLabelCol = 3;
constexpr int kDescriptionCol = 4;

constexpr int kFixedWidth = 2;  // the first of the layouts whose fields have widths
constexpr int kNewChannelWidth = 9;
constexpr int kMostChannels = 99;
constexpr int kLargestWidth = 32767;
constexpr qsizetype kLongestText = 255;

int RowOf(int chan) {
    return chan + 1;
}

bool IsInWidthRange(double width) {
    return width >= 0 && width <= kLargestWidth;
}

QString OutsideWidthRange(const QString& what) {
    return QStringLiteral("The width of %1 must be between 0 and %2.").arg(what).arg(kLargestWidth);
}

// A header that has lost its count still stands for one channel.
int ShownChannels() {
    return std::max<int>(StationInfo.Channels, 1);
}

}  // namespace

frmImport::frmImport(QWidget* parent) : QDialog(parent), ui_(std::make_unique<Ui::frmImport>()) {
    ui_->setupUi(this);
    setWindowTitle(QStringLiteral("Import Setup - ") + StationTitle);
    ui_->tbChan->setText(QString::number(ShownChannels()));
    ui_->updChan->SetBuddy(ui_->tbChan);
    ui_->updChan->SetMin(1);
    ui_->updChan->SetMax(kMostChannels);
    ui_->cmbFileType->addItems(
        {QStringLiteral("CSV (Type 1): MM/DD/YY HH:MM, Chan1, Chan2, ..."),
         QStringLiteral("CSV (Type 2): MM/DD/YY, HH:MM, Chan1, Chan2, ..."),
         QStringLiteral("Fixed Width: MM/DD/YY HH:MM  Chan1  Chan2 ..."),
         QStringLiteral("Campbell Sci: YYYY  MM DD  HHMM  Chan1  Chan2 ..    ")});
    ui_->cmbFileType->setCurrentIndex(IsKnownLayout(StationInfo.ImportType) ? StationInfo.ImportType
                                                                            : -1);
    FillGrid();
    editing_ = new GridCellEditing(*ui_->MSFlexGrid1, {});
    connect(editing_, &GridCellEditing::MovedDown, this, &frmImport::VisibleRows);
    connect(editing_, &GridCellEditing::Restored, this, &frmImport::ShowChannelCount);
    connect(ui_->cmbFileType, &QComboBox::currentIndexChanged, this, &frmImport::LayoutChanged);
    connect(ui_->cmbFileType, &QComboBox::activated, this, [this] {
        if (!stepsThroughLayouts_) {
            GoToFirstWidth();
        }
    });
    ui_->cmbFileType->view()->installEventFilter(this);
    ui_->cmbFileType->installEventFilter(this);
    connect(ui_->updChan, &UpDown::Change, this, &frmImport::ChannelCountChanged);
    connect(ui_->cmdOK, &QPushButton::clicked, this, &frmImport::Confirm);
    connect(ui_->cmdCancel, &QPushButton::clicked, this, &frmImport::reject);
    VisibleControls();
}

frmImport::~frmImport() = default;

void frmImport::FillGrid() {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.SetCols(5);
    grid.SetRows(ShownChannels() + 2);
    int col = 0;
    for (const auto& [width, heading] : {std::pair{800, "Channel"},
                                         {800, "Width"},
                                         {1000, "Units"},
                                         {1200, "Label"},
                                         {2800, "Description"}}) {
        grid.SetColWidth(col, width);
        grid.SetTextMatrix(0, col++, QString::fromLatin1(heading));
    }
    grid.SetTextMatrix(kDateRow, kLabelCol, QStringLiteral("date"));
    grid.SetTextMatrix(kDateRow, kWidthCol, QString::number(StationInfo.ImportDtWidth));
    for (int chan = 1; chan <= ShownChannels(); ++chan) {
        grid.SetTextMatrix(RowOf(chan), 0, QString::number(chan));
        FillChannel(chan);
    }
}

void frmImport::FillChannel(int chan) {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    const ChannelInfoData& channel = ChannelInfo[chan];
    grid.SetTextMatrix(RowOf(chan), kWidthCol, QString::number(channel.ImportWidth));
    grid.SetTextMatrix(RowOf(chan), kUnitsCol, channel.RecLabel);
    grid.SetTextMatrix(RowOf(chan), kLabelCol, channel.RecDesc);
    grid.SetTextMatrix(RowOf(chan), kDescriptionCol, channel.RecSta);
}

bool frmImport::HasWidths() const {
    return ui_->cmbFileType->currentIndex() >= kFixedWidth;
}

// Widths mean nothing if commas separate the fields; their cells keep them.
void frmImport::VisibleControls() {
    editing_->EndEdit();
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.SetColWidth(kWidthCol, HasWidths() ? 800 : 1);
    if (!HasWidths() && grid.Col() == kWidthCol) {
        grid.SetCol(kUnitsCol);
    }
}

void frmImport::LayoutChanged() {
    VisibleControls();
    if (HasWidths()) {
        GoTo(kDateRow, kWidthCol);
    }
}

void frmImport::GoToFirstWidth() {
    if (HasWidths()) {
        GoTo(kDateRow, kWidthCol);
        ui_->MSFlexGrid1->setFocus();
    }
}

int frmImport::ShownCol(int col) const {
    return col == kWidthCol && !HasWidths() ? kUnitsCol : col;
}

void frmImport::GoTo(int row, int col) {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    const int shownCol = ShownCol(col);
    grid.SetSelection(row, shownCol, row, shownCol);
    grid.scrollTo(grid.currentIndex());
}

// A layout that is chosen from the open list, or with Enter, leads to its widths. The arrow keys
// lead from one layout to the next, and the focus must stay for the next step.
bool frmImport::eventFilter(QObject* watched, QEvent* event) {
    if (watched == ui_->cmbFileType && event->type() == QEvent::KeyPress) {
        stepsThroughLayouts_ = true;
        const int key = static_cast<QKeyEvent*>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && HasWidths()) {
            GoToFirstWidth();
            return true;
        }
    } else if (watched != ui_->cmbFileType && event->type() == QEvent::Show) {
        stepsThroughLayouts_ = false;
    }
    return QDialog::eventFilter(watched, event);
}

void frmImport::VisibleRows() {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    const int row = grid.Row();
    if (row == grid.Rows() - 1) {
        grid.SetTopRow(row < 13 ? 1 : row - 10);
    } else if (!grid.RowIsVisible(row + 1)) {
        grid.SetTopRow(row < 13 ? 1 : row - 11);
    }
}

// The last row takes what is stored, also where the user has typed something else into it.
void frmImport::ChannelCountChanged() {
    editing_->EndEdit();
    editing_->Change(QStringLiteral("No. of Channels"), [this] {
        MSFlexGrid& grid = *ui_->MSFlexGrid1;
        const int channels = ui_->updChan->Value();
        grid.SetRows(channels + 2);
        grid.SetTextMatrix(RowOf(channels), 0, QString::number(channels));
        if (channels <= StationInfo.Channels) {
            FillChannel(channels);
        } else {
            grid.SetTextMatrix(RowOf(channels), kWidthCol, QString::number(kNewChannelWidth));
        }
    });
    VisibleControls();
}

// Undo can bring rows back, or take them away.
void frmImport::ShowChannelCount() {
    ui_->tbChan->setText(QString::number(ui_->MSFlexGrid1->Rows() - 2));
    VisibleControls();
}

StationShape frmImport::TypedShape() const {
    const MSFlexGrid& grid = *ui_->MSFlexGrid1;
    StationShape shape;
    const int chosen = ui_->cmbFileType->currentIndex();
    // An unknown layout stays until the user chooses one.
    shape.importType = chosen < 0 ? StationInfo.ImportType : static_cast<std::int16_t>(chosen);
    shape.dateWidth = ToInt16(ReadTypedNumber(grid.TextMatrix(kDateRow, kWidthCol)));
    for (int chan = 1; chan <= ui_->updChan->Value(); ++chan) {
        const auto cell = [&](int col) { return grid.TextMatrix(RowOf(chan), col); };
        shape.channels.push_back({.width = ToInt16(ReadTypedNumber(cell(kWidthCol))),
                                  .units = cell(kUnitsCol),
                                  .label = cell(kLabelCol),
                                  .description = cell(kDescriptionCol)});
    }
    return shape;
}

std::optional<frmImport::InputFault> frmImport::FaultOfInput() const {
    const MSFlexGrid& grid = *ui_->MSFlexGrid1;
    const std::optional<double> dateWidth = ReadNumber(grid.TextMatrix(kDateRow, kWidthCol));
    if (!dateWidth || *dateWidth != std::trunc(*dateWidth)) {
        return InputFault{QStringLiteral("The width of the date must be a whole number."), kDateRow,
                          kWidthCol};
    }
    if (!IsInWidthRange(*dateWidth)) {
        return InputFault{OutsideWidthRange(QStringLiteral("the date")), kDateRow, kWidthCol};
    }
    for (int row = RowOf(1); row < grid.Rows(); ++row) {
        if (!IsInWidthRange(ReadTypedNumber(grid.TextMatrix(row, kWidthCol)))) {
            return InputFault{
                OutsideWidthRange(QStringLiteral("channel ") + grid.TextMatrix(row, 0)), row,
                kWidthCol};
        }
        for (const int col : {kUnitsCol, kLabelCol, kDescriptionCol}) {
            if (grid.TextMatrix(row, col).size() > kLongestText) {
                return InputFault{
                    QStringLiteral("The texts of a channel can have %1 characters at most.")
                        .arg(kLongestText),
                    row, col};
            }
        }
    }
    return {};
}

// Counted in the table as well: what the header doesn't know of would be erased all the same.
bool frmImport::MayErase() const {
    const int channels = ui_->updChan->Value();
    return (channels >= StationInfo.Channels && channels >= CountReadingColumns()) ||
           MsgBox(QStringLiteral("You have decreased the number of channels. "
                                 "Data will be erased.  Do you want to continue?"),
                  MsgBoxButtons::YesNo, MsgBoxIcon::Exclamation, {},
                  MsgBoxAnswer::No) == MsgBoxAnswer::Yes;
}

void frmImport::Confirm() {
    editing_->EndEdit();
    if (const std::optional<InputFault> fault = FaultOfInput()) {
        ui_->MSFlexGrid1->SelectRow(fault->row, ShownCol(fault->col));
        WarnOfInput(fault->text);
        ui_->MSFlexGrid1->setFocus();
        return;
    }
    try {
        if (!MayErase()) {
            return;
        }
        const Hourglass hourglass;
        ReshapeStation(TypedShape());
    } catch (const AdoError& error) {
        TellFault(QStringLiteral("The import setup could not be stored"), error.Description());
        if (StationConnection->State() == 0) {
            ShowNoStation();
            reject();
        }
        return;
    }
    TheStationPanel->SetText(StationPanel::Item::Channels, QString::number(StationInfo.Channels));
    accept();
}

}  // namespace rillbook
