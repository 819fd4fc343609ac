#include "forms/reference/GridCellEditing.h"

#include <QFocusEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "platform/desktop/Clipboard.h"
#include "platform/desktop/Desktop.h"
#include "platform/qt/CellTextBox.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/qt/Twips.h"

namespace rillbook {

namespace {

constexpr int kPageRows = 10;

bool IsEnter(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

// The character that begins an edit; none for other keys.
QString TypedCharacter(const QKeyEvent& key) {
    const bool isCommand = (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0;
    const QString text = key.text();
    const bool isPrintable = text.size() == 1 && text[0] > QChar(31) && text[0] < QChar(127);
    return isPrintable && !isCommand ? text : QString();
}

}  // namespace

GridCellEditing::GridCellEditing(MSFlexGrid& grid, Ways ways)
    : QObject(&grid),
      grid_(grid),
      ways_(std::move(ways)),
      box_(*new CellTextBox(grid.parentWidget())) {
    box_.setObjectName(QStringLiteral("tbSel"));
    box_.setAccessibleName(QStringLiteral("Text of the cell"));
    box_.hide();
    QWidget::setTabOrder(&grid_, &box_);
    grid_.installEventFilter(this);
    box_.installEventFilter(this);
    connect(&grid_, &MSFlexGrid::DblClick, this, &GridCellEditing::ShowCellEditor);
    // The box stays over its cell.
    for (const QScrollBar* bar : {grid_.verticalScrollBar(), grid_.horizontalScrollBar()}) {
        connect(bar, &QScrollBar::valueChanged, this, &GridCellEditing::EndEdit);
    }
    connect(grid_.horizontalHeader(), &QHeaderView::sectionResized, this,
            &GridCellEditing::EndEdit);
}

void GridCellEditing::ShowCellEditor() {
    EndEdit();
    Q_EMIT Opening();
    if (!ways_.opens || ways_.opens(grid_.Col())) {
        Open();
    }
}

void GridCellEditing::Open() {
    if (grid_.Row() == 0 || grid_.Col() == 0) {
        return;
    }
    grid_.scrollTo(grid_.currentIndex());
    row_ = grid_.Row();
    col_ = grid_.Col();
    const bool wraps = col_ == ways_.wrappedCol;
    box_.SetWraps(wraps);
    box_.SetText(grid_.Text());
    grid_.Refresh();
    const int height = grid_.CellHeight();
    // Within the borders of the cell, and where the box is higher within the grid.
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
    box_.setFocus();
}

void GridCellEditing::EndEdit() {
    if (!std::exchange(editing_, false)) {
        return;
    }
    grid_.SetTextMatrix(row_, col_, box_.Text());
    if (box_.hasFocus()) {
        grid_.setFocus();
    }
    box_.hide();
    Q_EMIT Ended();
}

void GridCellEditing::DropEdit() {
    box_.SetText(grid_.TextMatrix(row_, col_));
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
    if (event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        return watched == &box_ ? BoxKey(key) : GridKey(key);
    }
    if (watched == &box_ && event->type() == QEvent::FocusOut) {
        // The box keeps its cell while its own menu or another program is used.
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::PopupFocusReason && reason != Qt::MenuBarFocusReason &&
            reason != Qt::ActiveWindowFocusReason) {
            EndEdit();
        }
    }
    return false;
}

bool GridCellEditing::GridKey(const QKeyEvent& key) {
    if (IsEnter(key.key())) {
        if (ways_.keys == Keys::ForRecords) {
            GoDown();
        }
    } else if (key.key() == Qt::Key_Delete) {
        grid_.SetText({});
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
    for (int row = grid_.Rows() - 2; row >= grid_.Row(); --row) {
        MoveRow(row, row + 1);
    }
    ClearRow(grid_.Row());
    grid_.setFocus();
    Q_EMIT RowsChanged();
}

void GridCellEditing::DeleteRow() {
    EndEdit();
    const int last = grid_.Rows() - 1;
    for (int row = grid_.Row(); row < last; ++row) {
        MoveRow(row + 1, row);
    }
    ClearRow(last);
    grid_.setFocus();
    Q_EMIT RowsChanged();
}

void GridCellEditing::Copy() {
    EndEdit();
    QString text;
    if (ways_.copiesHeadings) {
        const auto [first, last] = std::minmax({grid_.Col(), grid_.ColSel()});
        for (int col = first; col <= last; ++col) {
            text += grid_.TextMatrix(0, col) + (col < last ? u'\t' : u'\r');
        }
    }
    TheClipboard().Clear();
    TheClipboard().SetText(text + grid_.Clip());
}

void GridCellEditing::Paste() {
    EndEdit();
    QString text = TheClipboard().GetText().remove(u'\n');
    // Spreadsheets end the last row as well, and no empty one follows it.
    if (text.endsWith(u'\r')) {
        text.chop(1);
    }
    grid_.SetClip(text);
    Q_EMIT RowsChanged();
}

}  // namespace rillbook
