#pragma once

#include <QString>
#include <QTableView>

namespace rillbook {

class GridModel;

// A grid of texts with one fixed row on top (row 0) and one fixed column on the left (column 0),
// which stay in view. Rows and columns count from 0, the fixed ones included, everywhere in this
// interface; positions and sizes are in twips. Cells can't be typed into. A grid of several hundred
// thousand rows fills and scrolls at once: texts are kept in one flat table and asked for as they
// are painted.
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
    // Empties every cell, fixed ones included; sizes, rows and columns stay.
    void ClearTexts();

    // The current cell; setting it makes it the whole selection.
    int Row() const;
    int Col() const;
    void SetRow(int row);
    void SetCol(int col);
    // The far corner of the selected range; equal to Row and Col for one cell.
    int RowSel() const;
    int ColSel() const;
    void SetSelection(int row, int col, int rowSel, int colSel);
    // The text of the current cell.
    QString Text() const;
    void SetText(const QString& text);

    // The selected range as text: cells of a row separated by tabs, rows by carriage returns, none
    // at the end. Assigning fills the range from its top left, row by row; what doesn't fit is
    // dropped.
    QString Clip() const;
    void SetClip(const QString& text);

    int ColWidth(int col) const;
    void SetColWidth(int col, int twips);
    int RowHeight(int row) const;
    void SetRowHeight(int row, int twips);
    // Every row from `first` on, also those that come later.
    void SetRowHeights(int first, int twips);

    // Position of a cell's left and top edge within the control.
    int ColPos(int col) const;
    int RowPos(int row) const;
    // Of the current cell.
    int CellWidth() const;
    int CellHeight() const;

    int TopRow() const;
    void SetTopRow(int row);
    bool RowIsVisible(int row) const;

    // The cell under the mouse pointer at the last mouse event; -1 before the first.
    int MouseRow() const;
    int MouseCol() const;

    void Refresh();

Q_SIGNALS:
    void Click();
    void DblClick();
    void EnterCell();  // the current cell has changed

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void NoteMouse(const QPoint& position);
    GridModel* model_;
    int mouseRow_ = -1;
    int mouseCol_ = -1;
};

}  // namespace rillbook
