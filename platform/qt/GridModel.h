#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <functional>
#include <utility>
#include <vector>

namespace rillbook {

// The texts of a grid, fixed cells included, in one flat table row by row; or those of the fixed
// row alone, where the others come from a source. This interface counts the fixed row and column as
// 0; to the views, they are the headers and the rest begins at 0.
class GridModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;
    using CellSource = std::function<QString(int row, int col)>;

    int Rows() const { return rows_; }
    int Cols() const { return cols_; }
    bool Holds(int row, int col) const;
    // REQUIRES: at least 1.
    void SetRows(int rows);
    void SetCols(int cols);

    // From here on, the texts of the rows behind the fixed one are asked of the source. `rows` as
    // in SetRows.
    void SetSource(int rows, CellSource source);

    // Columns in which the user can type, for input methods and accessibility tools; initially
    // none.
    void SetTypedColumns(std::function<bool(int col)> isTyped) { isTyped_ = std::move(isTyped); }

    // REQUIRES: Holds(row, col).
    QString Text(int row, int col) const;
    // REQUIRES: the same, and no source for this row.
    void SetText(int row, int col, const QString& text);
    // Lets go of the source.
    void ClearTexts();

    // Between these two, views hear of changed texts once, at the end.
    void BeginFill() { filling_ = true; }
    void EndFill();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::size_t At(int row, int col) const;
    int StoredRows(int rows) const { return source_ ? 1 : rows; }

    int rows_ = 2;
    int cols_ = 2;
    CellSource source_;
    std::function<bool(int col)> isTyped_;
    std::vector<QString> texts_ = std::vector<QString>(4);
    bool filling_ = false;
};

}  // namespace rillbook
