#include "forms/reference/GridHistory.h"

#include <QUndoCommand>
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/qt/MSFlexGrid.h"

namespace rillbook {

namespace {

// Only the cells that differ: a journal of many years is not copied for each edit.
struct ChangedCell {
    int row = 0;
    int col = 0;
    QString before;  // empty as well if the row did not exist
    QString after;
};

class GridChange : public QUndoCommand {
public:
    GridChange(const QString& name, MSFlexGrid& grid, std::pair<int, int> rows,
               std::vector<ChangedCell> cells)
        : QUndoCommand(name), grid_(grid), rows_(std::move(rows)), cells_(std::move(cells)) {}

    void undo() override { Set(rows_.first, &ChangedCell::before); }
    void redo() override {
        // The stack calls it for a new command too, whose change is in the grid already.
        if (std::exchange(isDone_, false)) {
            return;
        }
        Set(rows_.second, &ChangedCell::after);
    }

private:
    void Set(int rows, QString ChangedCell::*text) {
        grid_.SetRows(rows);
        grid_.BeginFill();
        for (const ChangedCell& cell : cells_) {
            if (cell.row < rows) {
                grid_.SetTextMatrix(cell.row, cell.col, cell.*text);
            }
        }
        grid_.EndFill();
        if (!cells_.empty()) {
            const ChangedCell& first = cells_.front();
            grid_.SetSelection(first.row, first.col, first.row, first.col);
        }
        grid_.scrollTo(grid_.currentIndex());
    }

    MSFlexGrid& grid_;
    const std::pair<int, int> rows_;  // before and after
    const std::vector<ChangedCell> cells_;
    bool isDone_ = true;
};

}  // namespace

GridHistory::GridHistory(MSFlexGrid& grid, QObject* parent) : QUndoStack(parent), grid_(grid) {}

QStringList GridHistory::Texts() const {
    QStringList texts;
    for (int row = 1; row < grid_.Rows(); ++row) {
        for (int col = 0; col < grid_.Cols(); ++col) {
            texts.append(grid_.TextMatrix(row, col));
        }
    }
    return texts;
}

void GridHistory::Record(const QString& name, const std::function<void()>& change) {
    const int rows = grid_.Rows();
    const int cols = grid_.Cols();
    const QStringList before = Texts();
    change();
    const QStringList after = Texts();
    std::vector<ChangedCell> cells;
    for (qsizetype i = 0; i < std::max(before.size(), after.size()); ++i) {
        const QString old = before.value(i);
        if (old != after.value(i)) {
            cells.push_back({.row = static_cast<int>(i) / cols + 1,
                             .col = static_cast<int>(i) % cols,
                             .before = old,
                             .after = after.value(i)});
        }
    }
    if (!cells.empty() || grid_.Rows() != rows) {
        push(new GridChange(name, grid_, {rows, grid_.Rows()}, std::move(cells)));
    }
}

}  // namespace rillbook
