#include "forms/reference/frmRating.h"

#include <QShortcut>
#include <algorithm>
#include <type_traits>

#include "app/SharedState.h"
#include "forms/reference/frmConversionEq.h"
#include "forms/reference/frmConversionT.h"
#include "platform/ado/AdoError.h"
#include "platform/desktop/MsgBox.h"
#include "store/FormStuff.h"
#include "ui_frmRating.h"

namespace rillbook {

namespace {

constexpr int kTimeCol = 1;
constexpr int kKindCol = 2;
constexpr int kFormulaCol = 3;
constexpr int kNotesCol = 4;

const QString kEquation = QStringLiteral("Equation");
const QString kTable = QStringLiteral("Table");

}  // namespace

frmRating::frmRating(QWidget* parent) : QDialog(parent), ui_(std::make_unique<Ui::frmRating>()) {
    ui_->setupUi(this);
    ConnectCommands();
    Form_Load();
}

frmRating::~frmRating() = default;

void frmRating::ConnectCommands() {
    connect(ui_->mnuEditRow, &QAction::triggered, this, &frmRating::EditRow);
    connect(ui_->mnuDeleteRow, &QAction::triggered, this, &frmRating::DeleteRow);
    connect(ui_->mnuNewEquation, &QAction::triggered, this,
            [this] { ShowEditor<frmConversionEq>(kNewRating); });
    connect(ui_->mnuNewTable, &QAction::triggered, this,
            [this] { ShowEditor<frmConversionT>(kNewRating); });
    connect(ui_->MSFlexGrid1, &MSFlexGrid::DblClick, this, &frmRating::EditRow);
    // What the double click is to the mouse.
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        connect(new QShortcut(key, ui_->MSFlexGrid1, nullptr, nullptr, Qt::WidgetShortcut),
                &QShortcut::activated, this, &frmRating::EditRow);
    }
    // Elsewhere the key must not delete a rating: in a text box it deletes a character.
    ui_->mnuDeleteRow->setShortcutContext(Qt::WidgetShortcut);
    ui_->MSFlexGrid1->addAction(ui_->mnuDeleteRow);
    connect(ui_->cmdOK, &QPushButton::clicked, this, &frmRating::Confirm);
    connect(ui_->cmdCancel, &QPushButton::clicked, this, &frmRating::reject);
}

void frmRating::Form_Load() {
    DialogCancelled = true;
    const int chan = StationInfo.OutputChannel;
    UpgradeRatings(chan);
    setWindowTitle(QStringLiteral("Rating - ") + ChannelName(chan));
    const ChannelInfoData& channel = ChannelInfo[chan];
    ui_->lblRecLabel->setText(channel.RecLabel);
    ui_->lblRecDesc->setText(channel.RecDesc);
    ui_->tbConvLabel->setText(channel.ConvLabel);
    ui_->tbConvDesc->setText(channel.ConvDesc.isEmpty() ? channel.RecDesc : channel.ConvDesc);
    FillGrid();
}

void frmRating::FillGrid() {
    ratings_.clear();
    try {
        ratings_ = ListRatings(StationInfo.OutputChannel);
    } catch (const AdoError& error) {
        TellFault(QStringLiteral("The ratings could not be read"), error.Description());
    }
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    const int count = static_cast<int>(ratings_.size());
    grid.ClearTexts();
    grid.SetRows(count + 1);
    grid.SetCols(5);
    grid.SetTextMatrix(0, kTimeCol, QStringLiteral("DateTime"));
    grid.SetTextMatrix(0, kKindCol, QStringLiteral("Rating"));
    grid.SetTextMatrix(0, kNotesCol, QStringLiteral("Notes"));
    grid.SetColWidth(0, 300);
    grid.SetColWidth(kTimeCol, 1500);
    grid.SetColWidth(kKindCol, 1200);
    grid.SetColWidth(kFormulaCol, 1800);
    grid.SetColWidth(kNotesCol, 3000);
    int row = 1;
    for (const ListedRating& rating : ratings_) {
        grid.SetTextMatrix(row, kTimeCol, rating.time ? GeneralDateText(*rating.time) : QString());
        grid.SetTextMatrix(row, kKindCol, rating.isTable ? kTable : kEquation);
        grid.SetTextMatrix(row, kFormulaCol, rating.formula);
        grid.SetTextMatrix(row, kNotesCol, rating.notes);
        ++row;
    }
    GoToRow(count);
}

void frmRating::GoToRow(int row) {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.SetSelection(row, kTimeCol, row, kTimeCol);
    grid.scrollTo(grid.currentIndex());
}

// Null on the heading row.
const ListedRating* frmRating::CurrentRating() const {
    const int row = ui_->MSFlexGrid1->Row();
    return row > 0 && row <= static_cast<int>(ratings_.size())
               ? &ratings_[static_cast<std::size_t>(row) - 1]
               : nullptr;
}

int frmRating::RowOf(RatingTime time, bool isTable) const {
    const auto found =
        std::find_if(ratings_.begin(), ratings_.end(), [&](const ListedRating& rating) {
            return rating.time == time && rating.isTable == isTable;
        });
    return found == ratings_.end() ? 0 : static_cast<int>(found - ratings_.begin()) + 1;
}

void frmRating::EditRow() {
    const ListedRating* rating = CurrentRating();
    if (rating == nullptr) {
        FillGrid();
    } else if (rating->isTable) {
        ShowEditor<frmConversionT>(rating->time);
    } else {
        ShowEditor<frmConversionEq>(rating->time);
    }
}

template <typename Editor>
void frmRating::ShowEditor(RatingTime rating) {
    const int formerRow = ui_->MSFlexGrid1->Row();
    RatingEditDate = rating;
    Editor editor(this);
    const bool isSaved = editor.exec() == QDialog::Accepted;
    FillGrid();
    constexpr bool isTable = std::is_same_v<Editor, frmConversionT>;
    GoToRow(isSaved ? RowOf(editor.Time(), isTable) : formerRow);
    ui_->MSFlexGrid1->setFocus();
}

void frmRating::DeleteRow() {
    try {
        if (const ListedRating* rating = CurrentRating()) {
            DeleteRating(StationInfo.OutputChannel, rating->time);
        }
    } catch (const AdoError& error) {
        TellFault(QStringLiteral("The rating could not be deleted"), error.Description());
        return;
    }
    FillGrid();
    DialogCancelled = false;
}

void frmRating::Confirm() {
    DialogCancelled = false;
    ChannelInfoData& channel = ChannelInfo[StationInfo.OutputChannel];
    channel.ConvLabel = ui_->tbConvLabel->text();
    channel.ConvDesc = ui_->tbConvDesc->text();
    accept();
}

}  // namespace rillbook
