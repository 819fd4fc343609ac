#include "platform/qt/GridModel.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "platform/text/CellText.h"
#include "platform/text/Numbers.h"

namespace rillbook {

namespace {

std::size_t CellCount(int rows, int cols) {
    return static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
}

}  // namespace

std::size_t GridModel::At(int row, int col) const {
    assert(Holds(row, col) && row < StoredRows(rows_));
    return CellCount(row, cols_) + static_cast<std::size_t>(col);
}

bool GridModel::Holds(int row, int col) const {
    return row >= 0 && row < rows_ && col >= 0 && col < cols_;
}

void GridModel::SetRows(int rows) {
    const auto resize = [&] {
        texts_.resize(CellCount(StoredRows(rows), cols_));
        rows_ = rows;
    };
    if (rows > rows_) {
        beginInsertRows({}, rows_ - 1, rows - 2);
        resize();
        endInsertRows();
    } else if (rows < rows_) {
        beginRemoveRows({}, rows - 1, rows_ - 2);
        resize();
        endRemoveRows();
    }
}

void GridModel::SetCols(int cols) {
    const auto rearrange = [&] {
        const int rows = StoredRows(rows_);
        std::vector<QString> texts(CellCount(rows, cols));
        const std::size_t kept = static_cast<std::size_t>(std::min(cols, cols_));
        for (int row = 0; row < rows; ++row) {
            const auto from = texts_.begin() + static_cast<std::ptrdiff_t>(CellCount(row, cols_));
            std::move(from, from + static_cast<std::ptrdiff_t>(kept),
                      texts.begin() + static_cast<std::ptrdiff_t>(CellCount(row, cols)));
        }
        texts_ = std::move(texts);
        cols_ = cols;
    };
    if (cols > cols_) {
        beginInsertColumns({}, cols_ - 1, cols - 2);
        rearrange();
        endInsertColumns();
    } else if (cols < cols_) {
        beginRemoveColumns({}, cols - 1, cols_ - 2);
        rearrange();
        endRemoveColumns();
    }
}

// Neither source is ever asked about a row that it doesn't have.
void GridModel::SetSource(int rows, CellSource source) {
    SetRows(std::min(rows, rows_));
    source_ = std::move(source);
    texts_.resize(CellCount(1, cols_));
    SetRows(rows);
    if (!filling_) {
        EndFill();
    }
}

QString GridModel::Text(int row, int col) const {
    return source_ && row > 0 ? source_(row, col) : texts_[At(row, col)];
}

void GridModel::SetText(int row, int col, const QString& text) {
    texts_[At(row, col)] = text;
    if (filling_) {
        return;
    }
    if (row > 0 && col > 0) {
        const QModelIndex cell = index(row - 1, col - 1);
        Q_EMIT dataChanged(cell, cell);
    } else if (col > 0) {
        Q_EMIT headerDataChanged(Qt::Horizontal, col - 1, col - 1);
    } else if (row > 0) {
        Q_EMIT headerDataChanged(Qt::Vertical, row - 1, row - 1);
    }
}

void GridModel::ClearTexts() {
    source_ = nullptr;
    texts_.assign(CellCount(rows_, cols_), QString());
    if (!filling_) {
        EndFill();
    }
}

void GridModel::EndFill() {
    filling_ = false;
    if (rows_ > 1 && cols_ > 1) {
        Q_EMIT dataChanged(index(0, 0), index(rows_ - 2, cols_ - 2));
    }
    if (cols_ > 1) {
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, cols_ - 2);
    }
    if (rows_ > 1) {
        Q_EMIT headerDataChanged(Qt::Vertical, 0, rows_ - 2);
    }
}

int GridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_ - 1;
}

int GridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : cols_ - 1;
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    const bool isTyped = index.isValid() && isTyped_ && isTyped_(index.column() + 1);
    return isTyped ? flags | Qt::ItemIsEditable : flags;
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || !Holds(index.row() + 1, index.column() + 1)) {
        return {};
    }
    const QString text = Text(index.row() + 1, index.column() + 1);
    if (role == Qt::DisplayRole) {
        return OneLine(text);
    }
    if (role == Qt::TextAlignmentRole) {
        const Qt::Alignment side = IsNumber(text) ? Qt::AlignRight : Qt::AlignLeft;
        return QVariant::fromValue(side | Qt::AlignVCenter);
    }
    return {};
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const bool across = orientation == Qt::Horizontal;
    const int row = across ? 0 : section + 1;
    const int col = across ? section + 1 : 0;
    if (role != Qt::DisplayRole || section < 0 || !Holds(row, col)) {
        return {};
    }
    return Text(row, col);
}

}  // namespace rillbook
