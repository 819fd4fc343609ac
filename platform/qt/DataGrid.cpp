#include "platform/qt/DataGrid.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <algorithm>
#include <functional>

#include "platform/desktop/MsgBox.h"
#include "platform/qt/Adodc.h"
#include "platform/qt/RecordModel.h"
#include "platform/text/DateTime.h"

namespace rillbook {

namespace {

constexpr int kSelectorWidth = 18;
constexpr int kWidestColumn = 260;
constexpr int kSlack = 8;  // pixels beside the longest text
// By which a column takes its width: before the grid is shown, all of them count as in view.
constexpr int kMeasuredRows = 50;

bool IsEnter(const QKeyEvent& key) {
    return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
}

// The widest general date text of all days and times, in pixels. Digits may differ in width, and so
// may the names of months, AM and PM.
int WidestDateTime(const QFontMetrics& metrics) {
    QString widestDigit;
    for (const QChar digit : QStringLiteral("0123456789")) {
        if (metrics.horizontalAdvance(digit) > metrics.horizontalAdvance(widestDigit)) {
            widestDigit = digit;
        }
    }
    static const QRegularExpression anyDigit(QStringLiteral("[0-9]"));
    int widest = 0;
    for (int month = 1; month <= 12; ++month) {
        for (const int hour : {10, 22}) {
            const QString text =
                GeneralDateText(DateSerial(2000, month, 28) + TimeSerial(hour, 58, 58));
            widest = std::max(
                widest, metrics.horizontalAdvance(QString(text).replace(anyDigit, widestDigit)));
        }
    }
    return widest;
}

// Leaves Enter to the grid: by itself it would get to the form's default button as well.
class CellDelegate : public QStyledItemDelegate {
public:
    CellDelegate(QObject* parent, std::function<void()> afterEnter)
        : QStyledItemDelegate(parent), afterEnter_(std::move(afterEnter)) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* editor = qobject_cast<QWidget*>(watched);
        if (editor == nullptr || event->type() != QEvent::KeyPress ||
            !IsEnter(*static_cast<QKeyEvent*>(event))) {
            return QStyledItemDelegate::eventFilter(watched, event);
        }
        Q_EMIT commitData(editor);
        Q_EMIT closeEditor(editor, NoHint);
        afterEnter_();
        return true;
    }

private:
    std::function<void()> afterEnter_;
};

}  // namespace

DataGrid::DataGrid(QWidget* parent) : QTableView(parent), model_(new RecordModel(this)) {
    setModel(model_);
    setItemDelegate(new CellDelegate(this, [this] {
        if (failures_.isEmpty()) {
            GoDown();
        }
    }));
    setEditTriggers(AnyKeyPressed | EditKeyPressed | DoubleClicked);
    setSelectionMode(SingleSelection);
    setWordWrap(false);
    verticalHeader()->setFixedWidth(kSelectorWidth);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    verticalHeader()->setMinimumSectionSize(fontMetrics().height() + 2);
    verticalHeader()->setSectionsClickable(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setResizeContentsPrecision(kMeasuredRows);
    // Not at once: the cell's editor, or the move to another cell, isn't done with.
    connect(model_, &RecordModel::Failed, this, [this](const QString& why) {
        failures_ += why;
        QMetaObject::invokeMethod(this, &DataGrid::TellFailures, Qt::QueuedConnection);
    });
}

void DataGrid::SetDataSource(Adodc& source) {
    source.Refresh();
    model_->Bind(source.Recordset);
    source_ = &source;
    setCurrentIndex(model_->index(0, 0));
}

void DataGrid::SetAllowRowSizing(bool on) {
    verticalHeader()->setSectionResizeMode(on ? QHeaderView::Interactive : QHeaderView::Fixed);
}

void DataGrid::SetCaption(int col, const QString& caption) {
    model_->SetHeading(col, caption);
}

void DataGrid::FitColumns() {
    resizeColumnsToContents();
    const int margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
    for (int col = 0; col < model_->columnCount(); ++col) {
        const int fitting = std::min(columnWidth(col) + kSlack, kWidestColumn);
        const int least =
            model_->Type(col) == adDate ? WidestDateTime(fontMetrics()) + margins + kSlack : 0;
        setColumnWidth(col, std::max(fitting, least));
    }
}

int DataGrid::WidthOfColumns() const {
    return horizontalHeader()->length() + kSelectorWidth + 2 * frameWidth() +
           verticalScrollBar()->sizeHint().width();
}

int DataGrid::Col() const {
    return std::max(0, currentIndex().column());
}

void DataGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    if (current.row() != previous.row()) {
        model_->StoreRow();
    }
}

void DataGrid::keyPressEvent(QKeyEvent* event) {
    const bool isTab = event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab;
    const QModelIndex cell = currentIndex();
    if (IsEnter(*event)) {
        GoDown();
    } else if (isTab && event->modifiers().testFlag(Qt::ControlModifier)) {
        // To the next control, past the view's own way to the next cell.
        // NOLINTNEXTLINE(bugprone-parent-virtual-call)
        QWidget::focusNextPrevChild(event->key() == Qt::Key_Tab);
    } else if (event->key() == Qt::Key_Delete) {
        if (cell.column() > 0) {
            model_->setData(cell, QString(), Qt::EditRole);
        }
    } else {
        QTableView::keyPressEvent(event);
    }
}

void DataGrid::GoDown() {
    const QModelIndex below = currentIndex().siblingAtRow(currentIndex().row() + 1);
    if (below.isValid()) {
        setCurrentIndex(below);
    }
}

void DataGrid::TellFailures() {
    if (telling_) {
        return;
    }
    const QScopedValueRollback<bool> during(telling_, true);
    while (!failures_.isEmpty()) {
        MsgBox(failures_.takeFirst(), MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }
    Q_EMIT Refused();
}

bool DataGrid::EndEdit() {
    if (QWidget* editor = state() == EditingState ? indexWidget(currentIndex()) : nullptr) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
    model_->StoreRow();
    if (failures_.isEmpty()) {
        return true;
    }
    TellFailures();
    return false;
}

bool DataGrid::GoToCurrent() {
    return currentIndex().isValid() && model_->GoTo(currentIndex().row());
}

void DataGrid::FollowRecordset() {
    if (model_->rowCount() > 0) {
        const int position = static_cast<int>(source_->Recordset.AbsolutePosition());
        const int row = position > 0 ? position - 1 : model_->rowCount() - 1;
        setCurrentIndex(model_->index(row, Col()));
    }
}

void DataGrid::ReadAnew() {
    model_->ReadAnew();
}

void DataGrid::DeleteRows(const std::vector<int>& rows, const std::function<void()>& deletion) {
    model_->DeleteRows(rows, deletion);
}

}  // namespace rillbook
