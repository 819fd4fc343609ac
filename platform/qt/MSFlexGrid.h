#pragma once

#include <QString>
#include <QTableView>
#include <functional>
#include <optional>

class QAbstractButton;

namespace rillbook {

class GridModel;

// A grid of texts with one fixed row on top (row 0) and one fixed column on the left (column 0),
// which stay in view. Rows and columns count from 0, the fixed ones included, everywhere in this
// interface; positions and sizes are in twips. Cells can't be typed into. A grid of several hundred
// thousand rows fills and scrolls at once: texts are kept in one flat table, or come from a source,
// and are asked for as they are painted.
class MSFlexGrid : public QTableView {
    Q_OBJECT
public:
    explicit MSFlexGrid(QWidget* parent = nullptr);
    ~MSFlexGrid() override;

    int Rows() const;
    int Cols() const;
    // Texts of the rows and columns that stay are kept; new ones are empty. At least 1.
    void SetRows(int rows);
    void SetCols(int cols);

    // The empty text outside the grid; setting there is a programming error.
    QString TextMatrix(int row, int col) const;
    void SetTextMatrix(int row, int col, const QString& text);
    // Many SetTextMatrix calls between these two repaint once, at the end.
    void BeginFill();
    void EndFill();
    // Sets the number of rows and leaves the texts of all but the fixed row to `source`, which is
    // asked for each cell as it is painted or copied: for tables too long to write out in advance.
    // Those cells can't be set from here on; ClearTexts lets go of the source.
    void SetCellSource(int rows, std::function<QString(int row, int col)> source);
    // Empties every cell, fixed ones included; sizes, rows and columns stay.
    void ClearTexts();

    // The current cell, never a fixed one; 0 in a grid of fixed cells alone. Setting it makes it
    // the whole selection and doesn't scroll; a number outside the grid counts as the nearest
    // within.
    int Row() const;
    int Col() const;
    void SetRow(int row);
    void SetCol(int col);
    // The corner of the selected range that lies across from the current cell; equal to Row and Col
    // for one cell.
    int RowSel() const;
    int ColSel() const;
    void SetSelection(int row, int col, int rowSel, int colSel);
    // The text of the current cell.
    QString Text() const;
    void SetText(const QString& text);

    // The selected range; x and width count columns.
    QRect SelectedCells() const;
    // Selects a row and brings it into view; the cell in this column is the current one.
    void SelectRow(int row, int col);

    // The selected range as text: cells of a row separated by tabs, rows by carriage returns, none
    // at the end; a line break or tab within a cell is a blank. Assigning fills the range from its
    // top left, row by row, with SplitCells; what does not fit is dropped.
    QString Clip() const;
    void SetClip(const QString& text);

    // Whether the user can type in the cells of a column, for which the grid then accepts input
    // methods; initially in none. The grid itself has no editor.
    void SetTypedColumns(std::function<bool(int col)> isTyped);
    bool IsTyped(int col) const;
    // The nearest cell before or after the current one (step -1 or 1) in which the user can type,
    // row by row; x is the column. Columns without width are skipped. Nothing at the end.
    std::optional<QPoint> TypedCellBeside(int step) const;
    // Moves the focus to the next or previous control of the form, as Tab does elsewhere.
    void Leave(bool forward);

    int ColWidth(int col) const;
    void SetColWidth(int col, int twips);
    int RowHeight(int row) const;
    void SetRowHeight(int row, int twips);
    // Every row from `first` on, also those that come later.
    void SetRowHeights(int first, int twips);

    // Position of a cell's left and top edge within the control, frame and fixed cells included, as
    // it is scrolled; beyond the control for a cell out of sight.
    int ColPos(int col) const;
    int RowPos(int row) const;
    // Of the current cell.
    int CellWidth() const;
    int CellHeight() const;

    int TopRow() const;
    void SetTopRow(int row);
    // Wholly in view.
    bool RowIsVisible(int row);

    // The cell under the mouse pointer at the last press, release or double click, 0 over fixed
    // cells; -1 before the first and where there is no cell.
    int MouseRow() const;
    int MouseCol() const;

    // Brings positions up to date with rows, columns and sizes, and repaints.
    void Refresh();

    void selectAll() override;

Q_SIGNALS:
    // Left button, pressed and released over the same cell; the second of two quick clicks is a
    // DblClick alone.
    void Click();
    void DblClick();
    void EnterCell();  // the current cell has changed

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void FollowFixedCells();
    void PaintCorner();
    void UseDefaultSizes();
    int WidthOf(const QString& text) const;
    void EnsureCurrent();
    void NoteMouse(const QPoint& screenPosition);
    void NoteCurrent();
    void MoveCurrent(const QModelIndex& cell);
    void CurrentToTopLeft();
    int ColumnBeside(int col, int step) const;
    std::optional<QPoint> Target(const QPoint& from, int key, bool toEdge) const;
    bool Navigate(const QKeyEvent& event);
    void FollowTypedCell();

    GridModel* model_;
    QAbstractButton* corner_ = nullptr;
    int mouseRow_ = -1;
    int mouseCol_ = -1;
    int enteredRow_ = 0;
    int enteredCol_ = 0;
    bool sized_ = false;      // by the form; until then sizes follow the font
    bool selecting_ = false;  // with the mouse, from anchor_
    bool doubleClicked_ = false;
    QPoint pressed_;  // the cell (x is the column) where the mouse button went down
    QPersistentModelIndex anchor_;
};

}  // namespace rillbook
