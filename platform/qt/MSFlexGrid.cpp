#include "platform/qt/MSFlexGrid.h"

#include <QAbstractButton>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionHeader>
#include <QTextDocument>
#include <QToolTip>
#include <QtMath>
#include <algorithm>
#include <utility>

#include "platform/qt/FormFont.h"
#include "platform/qt/GridModel.h"
#include "platform/qt/Twips.h"
#include "platform/text/CellText.h"

namespace rillbook {

namespace {

constexpr int kDefaultColumnTwips = 960;
constexpr int kDefaultRowTwips = 240;

}  // namespace

MSFlexGrid::MSFlexGrid(QWidget* parent) : QTableView(parent), model_(new GridModel(this)) {
    setFont(FormFont());
    setModel(model_);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(ContiguousSelection);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    for (QHeaderView* header : {horizontalHeader(), verticalHeader()}) {
        header->setMinimumSectionSize(0);
        // Highlighting asks about every row of a selected column at each paint.
        header->setHighlightSections(false);
        header->setTextElideMode(Qt::ElideRight);
    }
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultAlignment(Qt::AlignCenter);
    UseDefaultSizes();
    FollowFixedCells();
    SetSelection(1, 1, 1, 1);
}

MSFlexGrid::~MSFlexGrid() = default;

// The fixed cells are widgets of their own: their clicks count as clicks on the grid.
void MSFlexGrid::FollowFixedCells() {
    for (QHeaderView* header : {horizontalHeader(), verticalHeader()}) {
        header->viewport()->installEventFilter(this);
        connect(header, &QHeaderView::sectionPressed, this, &MSFlexGrid::CurrentToTopLeft);
        connect(header, &QHeaderView::sectionEntered, this, &MSFlexGrid::CurrentToTopLeft);
        connect(header, &QHeaderView::sectionClicked, this, &MSFlexGrid::Click);
        connect(header, &QHeaderView::sectionDoubleClicked, this, &MSFlexGrid::DblClick);
    }
    corner_ = findChild<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly);
    if (corner_ != nullptr) {
        corner_->installEventFilter(this);
        connect(corner_, &QAbstractButton::clicked, this, &MSFlexGrid::Click);
    }
}

// The cell that is fixed both ways, of which the view only paints the ground.
void MSFlexGrid::PaintCorner() {
    QStyleOptionHeader option;
    option.initFrom(corner_);
    option.rect = corner_->rect();
    option.position = QStyleOptionHeader::OnlyOneSection;
    option.textAlignment = Qt::AlignCenter;
    option.text = fontMetrics().elidedText(TextMatrix(0, 0), Qt::ElideRight, option.rect.width());
    QPainter painter(corner_);
    painter.setFont(font());
    style()->drawControl(QStyle::CE_Header, &option, &painter, horizontalHeader());
}

void MSFlexGrid::UseDefaultSizes() {
    const QFontMetrics metrics(font());
    const int height = std::max(ToPixels(kDefaultRowTwips), metrics.height() + 2);
    const int date = WidthOf(QStringLiteral("00/00/0000"));
    const int width = std::max(ToPixels(kDefaultColumnTwips), date);
    verticalHeader()->setDefaultSectionSize(height);
    verticalHeader()->setFixedWidth(width);
    horizontalHeader()->setDefaultSectionSize(width);
    // Between the margins of a header a heading is cut off that is higher by a fraction of a pixel.
    const int margin = style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, this);
    const int heading = qCeil(QFontMetricsF(font()).height()) + 2 * margin;
    horizontalHeader()->setFixedHeight(std::max(height, heading));
}

// Of a column that shows this text whole, in pixels.
int MSFlexGrid::WidthOf(const QString& text) const {
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1;
    return fontMetrics().horizontalAdvance(text) + 2 * margin + 1;
}

void MSFlexGrid::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange && !sized_) {
        UseDefaultSizes();
    }
}

int MSFlexGrid::Rows() const {
    return model_->Rows();
}
int MSFlexGrid::Cols() const {
    return model_->Cols();
}

// The first cells to come take the current one.
void MSFlexGrid::EnsureCurrent() {
    if (!currentIndex().isValid()) {
        SetSelection(1, 1, 1, 1);
    }
}

void MSFlexGrid::SetRows(int rows) {
    model_->SetRows(std::max(rows, 1));
    EnsureCurrent();
}

void MSFlexGrid::SetCellSource(int rows, std::function<QString(int row, int col)> source) {
    model_->SetSource(std::max(rows, 1), std::move(source));
    EnsureCurrent();
}

void MSFlexGrid::SetCols(int cols) {
    model_->SetCols(std::max(cols, 1));
    EnsureCurrent();
}

QString MSFlexGrid::TextMatrix(int row, int col) const {
    return model_->Holds(row, col) ? model_->Text(row, col) : QString();
}

void MSFlexGrid::SetTextMatrix(int row, int col, const QString& text) {
    model_->SetText(row, col, text);
    if (row == 0 && col == 0 && corner_ != nullptr) {
        corner_->update();
    }
}

void MSFlexGrid::BeginFill() {
    model_->BeginFill();
}
void MSFlexGrid::EndFill() {
    model_->EndFill();
}
void MSFlexGrid::ClearTexts() {
    model_->ClearTexts();
}

int MSFlexGrid::Row() const {
    return currentIndex().row() + 1;
}
int MSFlexGrid::Col() const {
    return currentIndex().column() + 1;
}
void MSFlexGrid::SetRow(int row) {
    SetSelection(row, Col(), row, Col());
}
void MSFlexGrid::SetCol(int col) {
    SetSelection(Row(), col, Row(), col);
}

QRect MSFlexGrid::SelectedCells() const {
    QRect cells;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        cells |= QRect(QPoint(range.left() + 1, range.top() + 1),
                       QPoint(range.right() + 1, range.bottom() + 1));
    }
    return cells.isEmpty() ? QRect(Col(), Row(), 1, 1) : cells;
}

int MSFlexGrid::RowSel() const {
    const QRect cells = SelectedCells();
    return Row() == cells.bottom() ? cells.top() : cells.bottom();
}

int MSFlexGrid::ColSel() const {
    const QRect cells = SelectedCells();
    return Col() == cells.right() ? cells.left() : cells.right();
}

void MSFlexGrid::SetSelection(int row, int col, int rowSel, int colSel) {
    if (Rows() < 2 || Cols() < 2) {
        return;
    }
    const auto cell = [&](int someRow, int someCol) {
        return model_->index(std::clamp(someRow, 1, Rows() - 1) - 1,
                             std::clamp(someCol, 1, Cols() - 1) - 1);
    };
    const QModelIndex near = cell(row, col);
    const QModelIndex far = cell(rowSel, colSel);
    setAutoScroll(false);
    setCurrentIndex(near);
    const QItemSelection range(
        model_->index(std::min(near.row(), far.row()), std::min(near.column(), far.column())),
        model_->index(std::max(near.row(), far.row()), std::max(near.column(), far.column())));
    selectionModel()->select(range, QItemSelectionModel::ClearAndSelect);
    setAutoScroll(true);
}

void MSFlexGrid::SelectRow(int row, int col) {
    SetSelection(row, 1, row, Cols() - 1);
    MoveCurrent(model_->index(row - 1, col - 1));
    scrollTo(currentIndex());
}

void MSFlexGrid::selectAll() {
    SetSelection(1, 1, Rows() - 1, Cols() - 1);
}

QString MSFlexGrid::Text() const {
    return TextMatrix(Row(), Col());
}

void MSFlexGrid::SetText(const QString& text) {
    if (currentIndex().isValid()) {
        model_->SetText(Row(), Col(), text);
    }
}

QString MSFlexGrid::Clip() const {
    if (!currentIndex().isValid()) {
        return {};
    }
    const QRect cells = SelectedCells();
    QString clip;
    for (int row = cells.top(); row <= cells.bottom(); ++row) {
        for (int col = cells.left(); col <= cells.right(); ++col) {
            clip += OneLine(model_->Text(row, col));
            clip += col < cells.right() ? u'\t' : u'\r';
        }
    }
    clip.chop(1);
    return clip;
}

void MSFlexGrid::SetClip(const QString& text) {
    if (!currentIndex().isValid()) {
        return;
    }
    const QRect cells = SelectedCells();
    BeginFill();
    int row = cells.top();
    for (const QStringList& texts : SplitCells(text).mid(0, cells.height())) {
        int col = cells.left();
        for (const QString& cellText : texts.mid(0, cells.width())) {
            model_->SetText(row, col++, cellText);
        }
        ++row;
    }
    EndFill();
}

void MSFlexGrid::SetTypedColumns(std::function<bool(int col)> isTyped) {
    model_->SetTypedColumns(std::move(isTyped));
    FollowTypedCell();
}

bool MSFlexGrid::IsTyped(int col) const {
    return model_->flags(model_->index(0, col - 1)).testFlag(Qt::ItemIsEditable);
}

std::optional<QPoint> MSFlexGrid::TypedCellBeside(int step) const {
    const int cols = Cols() - 1;
    const int cells = (Rows() - 1) * cols;
    for (int i = (Row() - 1) * cols + Col() - 1 + step; i >= 0 && i < cells; i += step) {
        const int col = i % cols + 1;
        if (IsTyped(col) && columnWidth(col - 1) > 0) {
            return QPoint(col, i / cols + 1);
        }
    }
    return std::nullopt;
}

void MSFlexGrid::Leave(bool forward) {
    focusNextPrevChild(forward);
}

// An input method may compose only if the user can type into the current cell's column.
void MSFlexGrid::FollowTypedCell() {
    setAttribute(Qt::WA_InputMethodEnabled, IsTyped(Col()));
}

int MSFlexGrid::ColWidth(int col) const {
    return ToTwips(col == 0 ? verticalHeader()->width() : columnWidth(col - 1));
}

void MSFlexGrid::SetColWidth(int col, int twips) {
    sized_ = true;
    if (col == 0) {
        verticalHeader()->setFixedWidth(ToPixels(twips));
    } else {
        setColumnWidth(col - 1, ToPixels(twips));
    }
}

int MSFlexGrid::RowHeight(int row) const {
    return ToTwips(row == 0 ? horizontalHeader()->height() : rowHeight(row - 1));
}

void MSFlexGrid::SetRowHeight(int row, int twips) {
    sized_ = true;
    if (row == 0) {
        horizontalHeader()->setFixedHeight(ToPixels(twips));
    } else {
        setRowHeight(row - 1, ToPixels(twips));
    }
}

void MSFlexGrid::SetRowHeights(int first, int twips) {
    sized_ = true;
    std::vector<int> kept;
    for (int row = 1; row < std::min(first, Rows()); ++row) {
        kept.push_back(rowHeight(row - 1));
    }
    verticalHeader()->setDefaultSectionSize(ToPixels(twips));
    for (std::size_t row = 0; row < kept.size(); ++row) {
        setRowHeight(static_cast<int>(row), kept[row]);
    }
    if (first <= 0) {
        SetRowHeight(0, twips);
    }
}

int MSFlexGrid::ColPos(int col) const {
    return ToTwips(col == 0 ? verticalHeader()->x()
                            : viewport()->x() + columnViewportPosition(col - 1));
}

int MSFlexGrid::RowPos(int row) const {
    return ToTwips(row == 0 ? horizontalHeader()->y()
                            : viewport()->y() + rowViewportPosition(row - 1));
}

int MSFlexGrid::CellWidth() const {
    return ColWidth(Col());
}
int MSFlexGrid::CellHeight() const {
    return RowHeight(Row());
}

int MSFlexGrid::TopRow() const {
    return rowAt(0) + 1;
}

void MSFlexGrid::SetTopRow(int row) {
    Refresh();
    verticalScrollBar()->setValue(row - 1);
}

bool MSFlexGrid::RowIsVisible(int row) {
    if (row == 0) {
        return true;
    }
    Refresh();
    const int top = rowViewportPosition(row - 1);
    return row < Rows() && top >= 0 && top + rowHeight(row - 1) <= viewport()->height();
}

int MSFlexGrid::MouseRow() const {
    return mouseRow_;
}
int MSFlexGrid::MouseCol() const {
    return mouseCol_;
}

void MSFlexGrid::NoteMouse(const QPoint& screenPosition) {
    const QPoint inCells = viewport()->mapFromGlobal(screenPosition);
    const auto cellNumber = [](int position, int section) {
        if (position < 0) {
            return 0;
        }
        return section < 0 ? -1 : section + 1;
    };
    mouseRow_ = cellNumber(inCells.y(), rowAt(inCells.y()));
    mouseCol_ = cellNumber(inCells.x(), columnAt(inCells.x()));
}

void MSFlexGrid::Refresh() {
    executeDelayedItemsLayout();
    updateGeometries();
    viewport()->update();
    horizontalHeader()->viewport()->update();
    verticalHeader()->viewport()->update();
}

bool MSFlexGrid::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
            NoteMouse(static_cast<QMouseEvent*>(event)->globalPosition().toPoint());
            break;
        case QEvent::Paint:
            if (watched == corner_) {
                PaintCorner();
                return true;
            }
            break;
        default:
            break;
    }
    return QTableView::eventFilter(watched, event);
}

// A text that its cell cuts off shows whole under the resting pointer.
bool MSFlexGrid::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) {
        return QTableView::viewportEvent(event);
    }
    const auto* help = static_cast<QHelpEvent*>(event);
    const QModelIndex cell = indexAt(help->pos());
    const QString text = TextMatrix(cell.row() + 1, cell.column() + 1);
    const bool cutOff = cell.isValid() && WidthOf(text) > columnWidth(cell.column());
    QToolTip::showText(help->globalPos(), cutOff ? Qt::convertFromPlainText(text) : QString(),
                       viewport(), visualRect(cell));
    return true;
}

void MSFlexGrid::mousePressEvent(QMouseEvent* event) {
    NoteMouse(event->globalPosition().toPoint());
    doubleClicked_ = false;
    pressed_ = QPoint(mouseCol_, mouseRow_);
    if (event->button() != Qt::LeftButton || !indexAt(event->position().toPoint()).isValid()) {
        return;
    }
    const bool extends = event->modifiers().testFlag(Qt::ShiftModifier);
    anchor_ = currentIndex();
    selecting_ = extends;
    QTableView::mousePressEvent(event);
    if (!extends) {
        anchor_ = currentIndex();
    }
    selecting_ = true;
}

void MSFlexGrid::mouseReleaseEvent(QMouseEvent* event) {
    NoteMouse(event->globalPosition().toPoint());
    QTableView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (selecting_) {
        // The view has moved the current cell along with the pointer.
        MoveCurrent(anchor_);
        selecting_ = false;
        NoteCurrent();
    }
    const bool isDrag = pressed_ != QPoint(mouseCol_, mouseRow_);
    const bool overCell = mouseRow_ >= 0 && mouseCol_ >= 0;
    if (!std::exchange(doubleClicked_, false) && overCell && !isDrag) {
        Q_EMIT Click();
    }
}

void MSFlexGrid::mouseDoubleClickEvent(QMouseEvent* event) {
    NoteMouse(event->globalPosition().toPoint());
    if (event->button() == Qt::LeftButton && mouseRow_ >= 0 && mouseCol_ >= 0) {
        doubleClicked_ = true;
        Q_EMIT DblClick();
    }
}

void MSFlexGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    FollowTypedCell();
    NoteCurrent();
}

void MSFlexGrid::NoteCurrent() {
    if (!selecting_ && (enteredRow_ != Row() || enteredCol_ != Col())) {
        enteredRow_ = Row();
        enteredCol_ = Col();
        Q_EMIT EnterCell();
    }
}

// Neither selects nor scrolls.
void MSFlexGrid::MoveCurrent(const QModelIndex& cell) {
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(cell, QItemSelectionModel::NoUpdate);
    setAutoScroll(true);
}

void MSFlexGrid::CurrentToTopLeft() {
    const QRect cells = SelectedCells();
    MoveCurrent(model_->index(cells.top() - 1, cells.left() - 1));
}

void MSFlexGrid::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (!Navigate(*event)) {
        event->ignore();
    }
}

// The nearest column in a direction that has any width; `col` where there is none.
int MSFlexGrid::ColumnBeside(int col, int step) const {
    int next = col + step;
    while (next > 0 && next < Cols() && columnWidth(next - 1) == 0) {
        next += step;
    }
    return next > 0 && next < Cols() ? next : col;
}

// Where a key leads from a cell (x is the column); nothing for a key that doesn't move.
std::optional<QPoint> MSFlexGrid::Target(const QPoint& from, int key, bool toEdge) const {
    const int last = Rows() - 1;
    const int page = viewport()->height() / std::max(1, verticalHeader()->defaultSectionSize()) - 1;
    const auto down = [&](int rows) {
        return QPoint(from.x(), std::clamp(from.y() + rows, 1, last));
    };
    switch (key) {
        case Qt::Key_Up:
            return down(-1);
        case Qt::Key_Down:
            return down(1);
        case Qt::Key_PageUp:
            return down(-std::max(1, page));
        case Qt::Key_PageDown:
            return down(std::max(1, page));
        case Qt::Key_Left:
            return QPoint(ColumnBeside(from.x(), -1), from.y());
        case Qt::Key_Right:
            return QPoint(ColumnBeside(from.x(), 1), from.y());
        case Qt::Key_Home:
            return QPoint(ColumnBeside(0, 1), toEdge ? 1 : from.y());
        case Qt::Key_End:
            return QPoint(ColumnBeside(Cols(), -1), toEdge ? last : from.y());
        default:
            return std::nullopt;
    }
}

// A key that moves the current cell, or with Shift the far corner of the selection.
bool MSFlexGrid::Navigate(const QKeyEvent& event) {
    const bool extends = event.modifiers().testFlag(Qt::ShiftModifier);
    const QPoint from = extends ? QPoint(ColSel(), RowSel()) : QPoint(Col(), Row());
    if (!currentIndex().isValid()) {
        return false;
    }
    const auto to = Target(from, event.key(), event.modifiers().testFlag(Qt::ControlModifier));
    if (!to) {
        return false;
    }
    if (extends) {
        SetSelection(Row(), Col(), to->y(), to->x());
    } else {
        SetSelection(to->y(), to->x(), to->y(), to->x());
    }
    scrollTo(model_->index(to->y() - 1, to->x() - 1));
    return true;
}

}  // namespace rillbook
