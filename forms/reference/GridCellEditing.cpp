#include "forms/reference/GridCellEditing.h"

#include <QAction>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "forms/reference/GridHistory.h"
#include "platform/desktop/Clipboard.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/MsgBox.h"
#include "platform/qt/CellTextBox.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/qt/Twips.h"
#include "platform/text/CellText.h"

namespace rillbook {

namespace {

constexpr int kPageRows = 10;
// Beside Ctrl+Shift+Z, for which text boxes have their own binding everywhere.
constexpr QKeyCombination kOtherRedo = Qt::CTRL | Qt::Key_Y;

bool IsOtherRedo(const QKeyEvent& key) {
    return key.keyCombination() == kOtherRedo;
}

bool IsEnter(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

// The character that begins an edit, which can be two UTF-16 units; empty for other keys. Windows
// reports AltGr as Ctrl and Alt.
QString TypedCharacter(const QKeyEvent& key) {
    const Qt::KeyboardModifiers commands =
        key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const bool isCommand = commands != 0 && commands != (Qt::ControlModifier | Qt::AltModifier);
    const QList<uint> characters = key.text().toUcs4();
    const bool isPrintable = !characters.isEmpty() && QChar::isPrint(characters.first());
    return isPrintable && !isCommand ? key.text() : QString();
}

// Whether the focus only goes to a menu or to another program, and comes back.
bool IsBriefLeave(const QFocusEvent& event) {
    const Qt::FocusReason reason = event.reason();
    return reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason ||
           reason == Qt::ActiveWindowFocusReason;
}

// "50 of 60 rows were pasted. ..."; empty if all rows and columns fit.
QString PasteMessage(const QList<QStringList>& pasted, const QRect& room) {
    qsizetype cols = 0;
    for (const QStringList& row : pasted) {
        cols = std::max(cols, row.size());
    }
    QStringList counts;
    QStringList names;
    const auto compare = [&](int held, qsizetype all, const QString& name) {
        if (all > held) {
            counts += QStringLiteral("%1 of %2 %3").arg(held).arg(all).arg(name);
            names += name;
        }
    };
    compare(room.height(), pasted.size(), QStringLiteral("rows"));
    compare(room.width(), cols, QStringLiteral("columns"));
    const QString both = QStringLiteral(" and ");
    return counts.isEmpty()
               ? QString()
               : QStringLiteral("%1 were pasted. Select as many %2 as are to be filled.")
                     .arg(counts.join(both), names.join(both));
}

}  // namespace

GridCellEditing::GridCellEditing(MSFlexGrid& grid, Ways ways)
    : QObject(&grid),
      grid_(grid),
      ways_(std::move(ways)),
      box_(*new CellTextBox(grid.parentWidget())),
      history_(*new GridHistory(grid, this)),
      undo_(AddAction(history_.createUndoAction(this, QStringLiteral("&Undo")),
                      QStringLiteral("mnuEditUndo"), {QKeySequence(Qt::CTRL | Qt::Key_Z)})),
      redo_(AddAction(history_.createRedoAction(this, QStringLiteral("&Redo")),
                      QStringLiteral("mnuEditRedo"),
                      {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), kOtherRedo})) {
    box_.setObjectName(QStringLiteral("tbSel"));
    box_.setAccessibleName(QStringLiteral("Text of the cell"));
    box_.hide();
    QWidget::setTabOrder(&grid_, &box_);
    grid_.SetTypedColumns(ways_.opens ? ways_.opens : [](int) { return true; });
    connect(&undo_, &QAction::triggered, this, [this] { Restore(&GridHistory::undo); });
    connect(&redo_, &QAction::triggered, this, [this] { Restore(&GridHistory::redo); });
    grid_.installEventFilter(this);
    box_.installEventFilter(this);
    connect(&grid_, &MSFlexGrid::DblClick, this, &GridCellEditing::ShowCellEditor);
    // Scrolled, the box would be over another cell.
    for (const QScrollBar* bar : {grid_.verticalScrollBar(), grid_.horizontalScrollBar()}) {
        connect(bar, &QScrollBar::valueChanged, this, &GridCellEditing::EndEdit);
    }
    connect(grid_.horizontalHeader(), &QHeaderView::sectionResized, this,
            &GridCellEditing::EndEdit);
}

// The actions of a stack undo at once; ours end the edit first.
QAction& GridCellEditing::AddAction(QAction* action, const QString& name,
                                    const QList<QKeySequence>& keys) {
    disconnect(action, &QAction::triggered, &history_, nullptr);
    action->setObjectName(name);
    action->setShortcuts(keys);
    grid_.window()->addAction(action);
    return *action;
}

void GridCellEditing::Restore(void (GridHistory::*step)()) {
    EndEdit();
    (history_.*step)();
    grid_.setFocus();
    Q_EMIT Changed();
    Q_EMIT Restored();
}

void GridCellEditing::Change(const QString& name, const std::function<void()>& change) {
    history_.Record(name, [&] {
        change();
        Q_EMIT Changed();
    });
}

bool GridCellEditing::HasChanges() const {
    return !history_.isClean();
}

void GridCellEditing::ShowCellEditor() {
    if (Open()) {
        box_.setFocus();
    }
}

bool GridCellEditing::Open() {
    EndEdit();
    Q_EMIT Opening();
    if (grid_.Row() == 0 || !grid_.IsTyped(grid_.Col())) {
        return false;
    }
    grid_.scrollTo(grid_.currentIndex());
    row_ = grid_.Row();
    col_ = grid_.Col();
    const bool wraps = col_ == ways_.wrappedCol;
    box_.SetWraps(wraps);
    box_.SetText(grid_.Text());
    shown_ = box_.Text();
    grid_.Refresh();
    const int height = grid_.CellHeight();
    // Within the borders of the cell; a higher box within the grid.
    const QRect place(ToPixels(grid_.ColPos(col_) + 30), ToPixels(grid_.RowPos(row_) + 15),
                      ToPixels(grid_.CellWidth() - 60),
                      ToPixels(wraps ? 3 * height - 90 : height - 30));
    box_.setGeometry(place.translated(grid_.pos()));
    if (box_.geometry().bottom() > grid_.geometry().bottom()) {
        box_.move(box_.x(), grid_.geometry().bottom() - box_.height());
    }
    editing_ = true;
    box_.show();
    box_.raise();
    return true;
}

void GridCellEditing::EndEdit() {
    if (!std::exchange(editing_, false)) {
        return;
    }
    // A composition that was left before its first character replaces nothing.
    const bool isAbandoned = std::exchange(composing_, false) && box_.Text().isEmpty();
    Change(QStringLiteral("Edit"), [&] {
        if (!isAbandoned && box_.Text() != shown_) {
            grid_.SetTextMatrix(row_, col_, box_.Text());
        }
    });
    if (box_.hasFocus()) {
        grid_.setFocus();
    }
    box_.hide();
}

void GridCellEditing::DropEdit() {
    box_.SetText(shown_);
    EndEdit();
}

void GridCellEditing::GoDown() {
    if (grid_.Row() < grid_.Rows() - 1) {
        grid_.SetRow(grid_.Row() + 1);
    }
    Q_EMIT MovedDown();
}

void GridCellEditing::LeaveBy(int rows, int cols) {
    EndEdit();
    const int row = grid_.Row() + rows;
    const int col = grid_.Col() + cols;
    if (row >= 1 && row < grid_.Rows() && col >= 1 && col < grid_.Cols()) {
        grid_.SetSelection(row, col, row, col);
        grid_.scrollTo(grid_.currentIndex());
    }
}

bool GridCellEditing::eventFilter(QObject* watched, QEvent* event) {
    const bool isBox = watched == &box_;
    switch (event->type()) {
        case QEvent::ShortcutOverride:
            // The text has an undo and redo of its own.
            if (isBox && IsOtherRedo(*static_cast<QKeyEvent*>(event))) {
                event->accept();
            }
            return false;
        case QEvent::KeyPress: {
            auto& key = *static_cast<QKeyEvent*>(event);
            return TabKey(key) || (isBox ? BoxKey(key) : GridKey(key));
        }
        case QEvent::InputMethod:
            return !isBox && GridInput(*static_cast<QInputMethodEvent*>(event));
        case QEvent::FocusOut:
            // The box keeps its cell while its own menu or another program is used.
            if ((isBox || composing_) && !IsBriefLeave(*static_cast<QFocusEvent*>(event))) {
                EndEdit();
            }
            return false;
        default:
            return false;
    }
}

bool GridCellEditing::TabKey(const QKeyEvent& key) {
    if (key.key() != Qt::Key_Tab && key.key() != Qt::Key_Backtab) {
        return false;
    }
    EndEdit();
    const bool forward = !key.modifiers().testFlag(Qt::ShiftModifier);
    const auto cell = key.modifiers().testFlag(Qt::ControlModifier)
                          ? std::nullopt
                          : grid_.TypedCellBeside(forward ? 1 : -1);
    if (cell) {
        grid_.SetSelection(cell->y(), cell->x(), cell->y(), cell->x());
        grid_.scrollTo(grid_.currentIndex());
    } else {
        grid_.Leave(forward);
    }
    return true;
}

// A composition would end if the focus changed before its last event.
bool GridCellEditing::GridInput(QInputMethodEvent& input) {
    const bool isEmpty = input.commitString().isEmpty() && input.preeditString().isEmpty();
    if (!editing_) {
        if (isEmpty || !Open()) {
            return true;
        }
        box_.SetText({});
    }
    QCoreApplication::sendEvent(&box_, &input);
    composing_ = !input.preeditString().isEmpty();
    if (isEmpty && box_.Text().isEmpty()) {
        DropEdit();
    } else if (!composing_) {
        box_.setFocus();
    }
    return true;
}

bool GridCellEditing::GridKey(QKeyEvent& key) {
    if (std::exchange(composing_, false)) {
        box_.setFocus();
        QCoreApplication::sendEvent(&box_, &key);
    } else if (IsEnter(key.key())) {
        if (ways_.keys == Keys::ForRecords) {
            GoDown();
        }
    } else if (key.key() == Qt::Key_Delete) {
        Change(QStringLiteral("Delete"), [this] { grid_.SetText({}); });
    } else if (key.key() == Qt::Key_F2) {
        ShowCellEditor();
    } else if (key.matches(QKeySequence::Copy)) {
        Copy();
    } else if (key.matches(QKeySequence::Paste)) {
        Paste();
    } else if (const QString character = TypedCharacter(key); !character.isEmpty()) {
        ShowCellEditor();
        if (editing_) {
            box_.SetText(character);
        }
    } else {
        return false;
    }
    return true;
}

bool GridCellEditing::BoxKey(const QKeyEvent& key) {
    if (IsOtherRedo(key)) {
        box_.redo();
        return true;
    }
    const bool isPlain = (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (!editing_ || !isPlain) {
        return IsEnter(key.key());
    }
    return ways_.keys == Keys::ForRecords ? BoxKeyForRecords(key.key()) : BoxKeyForTable(key.key());
}

bool GridCellEditing::BoxKeyForRecords(int key) {
    if (IsEnter(key)) {
        EndEdit();
        GoDown();
        return true;
    }
    if (key == Qt::Key_Escape) {
        DropEdit();
        return true;
    }
    return false;
}

bool GridCellEditing::BoxKeyForTable(int key) {
    const int row = grid_.Row();
    switch (key) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape:
            EndEdit();
            return true;
        case Qt::Key_Right:
            if (box_.IsAtEnd()) {
                LeaveBy(0, 1);
                return true;
            }
            return false;
        case Qt::Key_Left:
            if (box_.IsAtStart()) {
                LeaveBy(0, -1);
                return true;
            }
            return false;
        case Qt::Key_Up:
            LeaveBy(-1, 0);
            return true;
        case Qt::Key_Down:
            LeaveBy(1, 0);
            return true;
        case Qt::Key_PageUp:
            LeaveBy(row >= kPageRows + 1 ? -kPageRows : 0, 0);
            return true;
        case Qt::Key_PageDown:
            LeaveBy(row < grid_.Rows() - kPageRows - 1 ? kPageRows : 0, 0);
            return true;
        default:
            return false;
    }
}

void GridCellEditing::MoveRow(int from, int to) {
    for (int col = 1; col < grid_.Cols(); ++col) {
        grid_.SetTextMatrix(to, col, grid_.TextMatrix(from, col));
    }
}

void GridCellEditing::ClearRow(int row) {
    for (int col = 1; col < grid_.Cols(); ++col) {
        grid_.SetTextMatrix(row, col, {});
    }
}

void GridCellEditing::InsertRow() {
    EndEdit();
    Change(QStringLiteral("Insert Row"), [this] {
        for (int row = grid_.Rows() - 2; row >= grid_.Row(); --row) {
            MoveRow(row, row + 1);
        }
        ClearRow(grid_.Row());
        Q_EMIT RowsChanged();
    });
    grid_.setFocus();
}

void GridCellEditing::DeleteRow() {
    EndEdit();
    Change(QStringLiteral("Delete Row"), [this] {
        const int last = grid_.Rows() - 1;
        for (int row = grid_.Row(); row < last; ++row) {
            MoveRow(row + 1, row);
        }
        ClearRow(last);
        Q_EMIT RowsChanged();
    });
    grid_.setFocus();
}

void GridCellEditing::Copy() {
    EndEdit();
    QString text;
    if (ways_.copiesHeadings) {
        const auto [first, last] = std::minmax({grid_.Col(), grid_.ColSel()});
        for (int col = first; col <= last; ++col) {
            text += OneLine(grid_.TextMatrix(0, col)) + (col < last ? u'\t' : u'\r');
        }
    }
    TheClipboard().Clear();
    TheClipboard().SetText(text + grid_.Clip());
}

void GridCellEditing::Paste() {
    EndEdit();
    const QString text = TheClipboard().GetText();
    Change(QStringLiteral("Paste"), [&] {
        grid_.SetClip(text);
        Q_EMIT RowsChanged();
    });
    const QString message = PasteMessage(SplitCells(text), grid_.SelectedCells());
    if (!message.isEmpty()) {
        WarnOfInput(message);
    }
}

}  // namespace rillbook
