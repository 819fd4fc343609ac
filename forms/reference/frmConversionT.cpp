#include "forms/reference/frmConversionT.h"

#include <QSet>

#include "forms/reference/GridCellEditing.h"
#include "platform/desktop/MsgBox.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/text/CellText.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "store/RatingStore.h"
#include "ui_frmConversionT.h"

namespace rillbook {

namespace {

constexpr int kDepthCol = 1;
constexpr int kFlowCol = 2;
constexpr int kSpareRows = 50;

const QString kIncomplete = QStringLiteral("All fields must be completed as date/time or numeric.");

std::unique_ptr<Ui::frmConversionT> SetUp(QDialog* form) {
    auto ui = std::make_unique<Ui::frmConversionT>();
    ui->setupUi(form);
    return ui;
}

}  // namespace

frmConversionT::frmConversionT(QWidget* parent)
    : RatingEditor(parent),
      ui_(SetUp(this)),
      editing_(*new GridCellEditing(*ui_->MSFlexGrid1,
                                    {.keys = GridCellEditing::Keys::ForTable, .opens = {}})) {
    setWindowTitle(QStringLiteral("Rating Table - ") + ChannelName(StationInfo.OutputChannel));
    LoadTable();
    ui_->cmdOK->setEnabled(TellWhetherRead());
    connect(ui_->cmdIns, &QPushButton::clicked, &editing_, &GridCellEditing::InsertRow);
    connect(ui_->cmdDel, &QPushButton::clicked, &editing_, &GridCellEditing::DeleteRow);
    connect(ui_->cmdCopy, &QPushButton::clicked, &editing_, &GridCellEditing::Copy);
    connect(ui_->cmdPaste, &QPushButton::clicked, &editing_, &GridCellEditing::Paste);
    connect(ui_->cmdOK, &QPushButton::clicked, this, [this] {
        editing_.EndEdit();  // the button can be pressed without taking the focus
        Confirm();
    });
    connect(ui_->cmdCancel, &QPushButton::clicked, this, &frmConversionT::reject);
}

frmConversionT::~frmConversionT() = default;

RatingTime frmConversionT::Time() const {
    return TypedTime(*ui_->tbRatingDate);
}

void frmConversionT::reject() {
    editing_.EndEdit();
    MsgBoxAnswer save = MsgBoxAnswer::No;
    if (editing_.HasChanges() && ui_->cmdOK->isEnabled()) {
        save = MsgBox(QStringLiteral("Save changes?"), MsgBoxButtons::YesNoCancel,
                      MsgBoxIcon::Exclamation);
    }
    if (save == MsgBoxAnswer::Yes) {
        Confirm();
    } else if (save == MsgBoxAnswer::No) {
        RatingEditor::reject();
    }
}

int frmConversionT::TableRows() const {
    return ui_->MSFlexGrid1->Rows() - 1;
}

QString frmConversionT::DepthText(int row) const {
    return EmptyIfBlank(ui_->MSFlexGrid1->TextMatrix(row, kDepthCol));
}

QString frmConversionT::FlowText(int row) const {
    return EmptyIfBlank(ui_->MSFlexGrid1->TextMatrix(row, kFlowCol));
}

void frmConversionT::LoadTable() {
    const int chan = StationInfo.OutputChannel;
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.ClearTexts();
    grid.SetCols(3);
    grid.SetTextMatrix(0, kDepthCol, ChannelInfo[chan].RecLabel);
    grid.SetTextMatrix(0, kFlowCol, ChannelInfo[chan].ConvLabel);
    grid.SetColWidth(0, 300);
    grid.SetColWidth(kDepthCol, 1200);
    grid.SetColWidth(kFlowCol, 1200);

    std::vector<TablePoint> points;
    Read([&] { points = ReadTablePoints(chan, RatingEditDate); });
    grid.SetRows(static_cast<int>(points.size()) + kSpareRows + 1);
    int row = 1;
    for (const TablePoint& point : points) {
        grid.SetTextMatrix(row, kDepthCol, RegionalNumberText(point.depth));
        grid.SetTextMatrix(row, kFlowCol, RegionalNumberText(point.flow));
        ++row;
    }

    std::optional<TableHead> head;
    Read([&] { head = ReadTableHead(chan, RatingEditDate); });
    if (head) {
        ShowTime(*ui_->tbRatingDate, head->time);
        ui_->tbNotes->setText(head->notes);
        ui_->tbNotes->setCursorPosition(0);
    }
}

bool frmConversionT::CheckTable() {
    const bool hasDate = Time().has_value();
    const Fault fault = hasDate ? FaultOfPoints() : Fault{.message = kIncomplete};
    if (fault.message.isEmpty()) {
        return true;
    }
    QWidget* place = ui_->tbRatingDate;
    if (fault.row > 0) {
        ui_->MSFlexGrid1->SelectRow(fault.row, fault.col);
        place = ui_->MSFlexGrid1;
    }
    WarnOfInput(fault.message);
    place->setFocus();
    return false;
}

frmConversionT::Fault frmConversionT::FaultOfPoints() const {
    if (DepthText(1).isEmpty()) {
        return {QStringLiteral("Cancel for no data."), 1, kDepthCol};
    }
    QSet<QString> depths;
    int repeated = 0;  // the first row with the depth of another one above it
    int gap = 0;       // the first row without a depth
    for (int row = 1; row <= TableRows(); ++row) {
        const QString depth = DepthText(row);
        if (depth.isEmpty()) {
            gap = gap == 0 ? row : gap;
            if (!FlowText(row).isEmpty()) {
                return {kIncomplete, row, kDepthCol};
            }
            continue;
        }
        if (gap > 0) {
            return {QStringLiteral("Remove gaps in the data."), gap, kDepthCol};
        }
        if (!IsNumber(depth) || !IsNumber(FlowText(row))) {
            return {kIncomplete, row, IsNumber(depth) ? kFlowCol : kDepthCol};
        }
        if (repeated == 0 && depths.contains(depth)) {
            repeated = row;
        }
        depths.insert(depth);
    }
    return repeated == 0 ? Fault()
                         : Fault{QStringLiteral("All depths must be unique."), repeated, kDepthCol};
}

void frmConversionT::SaveTable() const {
    std::vector<TablePoint> points;
    for (int row = 1; row <= TableRows() && !DepthText(row).isEmpty(); ++row) {
        points.push_back({.depth = ReadNumber(DepthText(row)), .flow = ReadNumber(FlowText(row))});
    }
    WriteTable(StationInfo.OutputChannel, RatingEditDate,
               {.time = Time(), .notes = ui_->tbNotes->text()}, points);
}

}  // namespace rillbook
