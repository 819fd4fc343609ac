#include "forms/reference/frmCalibration.h"

#include <QKeyEvent>
#include <QSet>
#include <utility>

#include "app/SharedState.h"
#include "forms/reference/GridCellEditing.h"
#include "forms/reference/JournalPrint.h"
#include "forms/reports/Print.h"
#include "platform/ado/AdoError.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Printer.h"
#include "platform/text/CellText.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "ui_frmCalibration.h"

namespace rillbook {

namespace {

enum Column : int {
    kUseCol = 1,
    kTimeCol,
    kLoggerCol,
    kActualCol,
    kOffsetCol,
    kDischargeCol,
    kNotesCol
};

constexpr QStringView kTick = u" x";
constexpr int kSpareRows = 50;

std::optional<double> NumberIfTyped(const QString& text) {
    return text.isEmpty() ? std::nullopt : std::optional(ReadTypedNumber(text));
}

}  // namespace

frmCalibration::frmCalibration(CommonDialog& printerDialog, QWidget* parent)
    : QDialog(parent),
      chan_(StationInfo.OutputChannel),
      channelText_(ChannelName(chan_)),
      cdbprinter_(printerDialog),
      ui_(std::make_unique<Ui::frmCalibration>()) {
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    ui_->setupUi(this);
    setWindowTitle(QStringLiteral("Journal and Offsets - ") + channelText_);
    UpgradeCalibration();
    std::vector<JournalRow> rows;
    try {
        rows = ReadJournal(chan_);
    } catch (const AdoError& error) {
        TellFault(QStringLiteral("The journal could not be read"), error.Description());
        // Saved, it would take the place of what is stored.
        ui_->MSFlexGrid1->setEnabled(false);
        ui_->mnuEdit->setEnabled(false);
    }
    SetUpGrid(rows);
    ConnectCommands();
    CalcOffsets();
    layout()->activate();
    ui_->MSFlexGrid1->SetRow(static_cast<int>(rows.size()) + 1);
    VisibleRows();
    ui_->MSFlexGrid1->setFocus();
}

frmCalibration::~frmCalibration() = default;

void frmCalibration::ConnectCommands() {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    editing_ =
        new GridCellEditing(grid, {.keys = GridCellEditing::Keys::ForRecords,
                                   .opens = [](int col) { return col > 1 && col != kOffsetCol; },
                                   .wrappedCol = kNotesCol,
                                   .copiesHeadings = true});
    grid.installEventFilter(this);
    const auto becomeDirty = [this] { dirty_ = true; };
    connect(editing_, &GridCellEditing::Opening, this, becomeDirty);
    connect(editing_, &GridCellEditing::RowsChanged, this, becomeDirty);
    connect(editing_, &GridCellEditing::RowsChanged, this, &frmCalibration::TidyUse);
    connect(editing_, &GridCellEditing::Changed, this, &frmCalibration::CalcOffsets);
    connect(editing_, &GridCellEditing::Restored, this,
            [this] { dirty_ = editing_->HasChanges(); });
    connect(editing_, &GridCellEditing::MovedDown, this, &frmCalibration::VisibleRows);
    connect(&grid, &MSFlexGrid::Click, this, [this, &grid] {
        if (grid.MouseCol() == kUseCol) {
            ToggleUse(grid.MouseRow());
        }
    });
    ui_->mnuEditCopy->setShortcut(QKeySequence::Copy);
    ui_->mnuEditPaste->setShortcut(QKeySequence::Paste);
    connect(ui_->mnuFilePrint, &QAction::triggered, this, &frmCalibration::Print);
    connect(ui_->mnuFileExit, &QAction::triggered, this, &QWidget::close);
    connect(ui_->mnuEditCopy, &QAction::triggered, editing_, &GridCellEditing::Copy);
    connect(ui_->mnuEditPaste, &QAction::triggered, editing_, &GridCellEditing::Paste);
    connect(ui_->mnuEditIns, &QAction::triggered, editing_, &GridCellEditing::InsertRow);
    connect(ui_->mnuEditDel, &QAction::triggered, editing_, &GridCellEditing::DeleteRow);
    ui_->mnuEdit->addSeparator();
    ui_->mnuEdit->addActions({&editing_->UndoAction(), &editing_->RedoAction()});
}

void frmCalibration::SetUpGrid(const std::vector<JournalRow>& rows) {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    tableRows_ = static_cast<int>(rows.size()) + kSpareRows;
    grid.SetCols(kNotesCol + 1);
    grid.SetRows(tableRows_ + 1);
    grid.BeginFill();
    int col = 0;
    for (const auto& [width, heading] : {std::pair{300, ""},
                                         {400, "Use"},
                                         {2000, "DateTime"},
                                         {800, "Logger"},
                                         {800, "Actual"},
                                         {800, "Offset"},
                                         {800, "Discharge"},
                                         {3200, "Notes"}}) {
        grid.SetColWidth(col, width);
        grid.SetTextMatrix(0, col++, QString::fromLatin1(heading));
    }
    int row = 0;
    for (const JournalRow& visit : rows) {
        FillRow(++row, visit);
    }
    grid.EndFill();
}

void frmCalibration::FillRow(int row, const JournalRow& visit) {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.SetTextMatrix(row, kUseCol, visit.used ? kTick.toString() : QString());
    grid.SetTextMatrix(row, kTimeCol, visit.time ? GeneralDateText(*visit.time) : QString());
    grid.SetTextMatrix(row, kLoggerCol, RegionalNumberText(visit.logger));
    grid.SetTextMatrix(row, kActualCol, RegionalNumberText(visit.actual));
    grid.SetTextMatrix(row, kDischargeCol, RegionalNumberText(visit.discharge));
    grid.SetTextMatrix(row, kNotesCol, visit.notes);
}

QString frmCalibration::Cell(int row, int col) const {
    return EmptyIfBlank(ui_->MSFlexGrid1->TextMatrix(row, col));
}

void frmCalibration::CalcOffsets() {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    grid.BeginFill();
    for (int row = 1; row <= tableRows_; ++row) {
        const std::optional<double> logger = ReadNumber(Cell(row, kLoggerCol));
        const std::optional<double> actual = ReadNumber(Cell(row, kActualCol));
        grid.SetTextMatrix(row, kOffsetCol,
                           logger && actual
                               ? FixedNumberText(*actual - *logger, ChannelInfo[chan_].DigitsOut)
                               : QString());
    }
    grid.EndFill();
}

void frmCalibration::VisibleRows() {
    MSFlexGrid& grid = *ui_->MSFlexGrid1;
    const int row = grid.Row();
    if (!grid.RowIsVisible(row)) {
        grid.SetTopRow(row < 17 ? 1 : row - 15);
    }
}

void frmCalibration::ToggleUse(int row) {
    if (row < 1) {
        return;
    }
    editing_->Change(QStringLiteral("Tick"), [&] {
        const bool isEmpty = Cell(row, kUseCol).isEmpty();
        ui_->MSFlexGrid1->SetTextMatrix(row, kUseCol, isEmpty ? kTick.toString() : QString());
    });
    dirty_ = true;
}

void frmCalibration::TidyUse() {
    for (int row = 1; row <= tableRows_; ++row) {
        const bool isTick = Cell(row, kUseCol).trimmed().compare(u'x', Qt::CaseInsensitive) == 0;
        ui_->MSFlexGrid1->SetTextMatrix(row, kUseCol, isTick ? kTick.toString() : QString());
    }
}

bool frmCalibration::Refuse(int row, int col, const QString& reason) {
    ui_->MSFlexGrid1->SelectRow(row, col);
    WarnOfInput(reason);
    ui_->MSFlexGrid1->setFocus();
    return false;
}

bool frmCalibration::eventFilter(QObject* watched, QEvent* event) {
    const MSFlexGrid& grid = *ui_->MSFlexGrid1;
    if (watched == &grid && event->type() == QEvent::KeyPress && grid.Col() == kUseCol) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key.key() == Qt::Key_Space && key.modifiers() == Qt::NoModifier) {
            ToggleUse(grid.Row());
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

bool frmCalibration::CheckTable() {
    QSet<QString> dates;
    int repeated = 0;  // the first row with the date of another one above it
    for (int row = 1; row <= tableRows_; ++row) {
        const QString date = Cell(row, kTimeCol);
        if (date.isEmpty()) {
            continue;
        }
        if (!ReadDatedTime(date)) {
            return Refuse(row, kTimeCol, QStringLiteral("Must have valid date entries."));
        }
        const bool hasLogger = !Cell(row, kLoggerCol).isEmpty();
        if (Cell(row, kUseCol) == kTick && (!hasLogger || Cell(row, kActualCol).isEmpty())) {
            return Refuse(
                row, hasLogger ? kActualCol : kLoggerCol,
                QStringLiteral("All selected rows must have values for logger and actual."));
        }
        if (repeated == 0 && dates.contains(date)) {
            repeated = row;
        }
        dates.insert(date);
    }
    return repeated == 0 || Refuse(repeated, kTimeCol, QStringLiteral("All dates must be unique."));
}

bool frmCalibration::LoadArray() {
    std::vector<JournalRow> rows;
    for (int row = 1; row <= tableRows_; ++row) {
        if (const std::optional<DateTime> time = ReadDatedTime(Cell(row, kTimeCol))) {
            rows.push_back({.used = Cell(row, kUseCol) == kTick,
                            .time = time,
                            .logger = NumberIfTyped(Cell(row, kLoggerCol)),
                            .actual = NumberIfTyped(Cell(row, kActualCol)),
                            .discharge = NumberIfTyped(Cell(row, kDischargeCol)),
                            .notes = Cell(row, kNotesCol)});
        }
    }
    try {
        WriteJournal(chan_, rows);
        return true;
    } catch (const AdoError& error) {
        ReportUnsaved(error);
        return false;
    }
}

// Notes are the only texts of a journal, and the longest are those that are too long.
void frmCalibration::ReportUnsaved(const AdoError& error) {
    QString notes;
    if (error.Number() == adErrTextTooLong) {
        int longest = 1;
        for (int row = 2; row <= tableRows_; ++row) {
            const bool isStored = ReadDatedTime(Cell(row, kTimeCol)).has_value();
            if (isStored && Cell(row, kNotesCol).size() > Cell(longest, kNotesCol).size()) {
                longest = row;
            }
        }
        ui_->MSFlexGrid1->SelectRow(longest, kNotesCol);
        const DateTime time = ReadDatedTime(Cell(longest, kTimeCol)).value_or(0);
        notes = QStringLiteral("Notes of %1: ").arg(GeneralDateText(time));
    }
    TellFault(QStringLiteral("The journal could not be saved"), notes + error.Description());
}

void frmCalibration::reject() {
    editing_->EndEdit();
    MsgBoxAnswer save = MsgBoxAnswer::No;
    if (dirty_) {
        save = MsgBox(QStringLiteral("Save changes?"), MsgBoxButtons::YesNoCancel,
                      MsgBoxIcon::Exclamation);
    }
    if (save == MsgBoxAnswer::No) {
        DialogCancelled = true;
        QDialog::reject();
    } else if (save == MsgBoxAnswer::Yes && CheckTable() && LoadArray()) {
        DialogCancelled = false;
        QDialog::reject();
    }
}

void frmCalibration::Print() {
    editing_->EndEdit();
    cdbprinter_.DialogTitle = QStringLiteral("Print");
    cdbprinter_.Orientation = cdlPortrait;
    try {
        cdbprinter_.ShowPrinter();
    } catch (const DialogCancelledError&) {
        return;
    }
    std::vector<PrintedVisit> visits;
    int row = 0;
    do {
        PrintedVisit visit;
        for (int col = kTimeCol; col <= kNotesCol; ++col) {
            visit[static_cast<std::size_t>(col - kTimeCol)] = OneLine(Cell(row, col));
        }
        visits.push_back(visit);
        ++row;
    } while (!Cell(row, kTimeCol).isEmpty());
    // Upright, however the user turned the page: the columns are made for its width.
    PrintDocument(windowTitle(), cdlPortrait, [&](Printer& printer) {
        PrintJournal(printer, channelText_, visits);
        return true;
    });
}

}  // namespace rillbook
