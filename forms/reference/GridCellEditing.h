#pragma once

#include <QObject>
#include <functional>

class QKeyEvent;

namespace rillbook {

class CellTextBox;
class MSFlexGrid;

// Makes a grid editable: a text box, tbSel, is laid over the current cell by a double click, F2 or
// a typed character, and its text goes into that cell when the box is left in whatever way. Delete
// empties the current cell, Ctrl+C and Ctrl+V copy and paste the selected ones. Nothing else
// changes a cell: rows and columns stay as many as they are.
class GridCellEditing : public QObject {
    Q_OBJECT
public:
    enum class Keys {
        // Enter ends the edit and goes down a row, in the grid as well; Esc drops the edit; the
        // arrow keys belong to the text.
        ForRecords,
        // Enter ends the edit and stays; Esc does too, and keeps the text; arrow keys that lead out
        // of the text, Page Up and Page Down end it and move the current cell.
        ForTable
    };
    struct Ways {
        Keys keys = Keys::ForRecords;
        // Whether the cells of a column can be edited; empty: all.
        std::function<bool(int col)> opens;
        int wrappedCol = 0;  // whose text box is three rows high
        bool copiesHeadings = false;
    };

    // The box becomes a sibling of the grid, behind it in the tab order. All live as long as the
    // form.
    GridCellEditing(MSFlexGrid& grid, Ways ways);

    // Opens the box on the current cell, if its column can be edited.
    void ShowCellEditor();
    // Puts the box's text into its cell and hides it. No-op while no cell is edited.
    void EndEdit();

    // An edit under way ends before each of these.
    //
    // Moves the current row and those below down by one; the text of the last row is lost.
    void InsertRow();
    // Moves the rows below the current one up by one.
    void DeleteRow();
    void Copy();
    // Fills the selected cells; what doesn't fit is dropped.
    void Paste();

Q_SIGNALS:
    void Opening();      // before it is known whether the cell can be edited
    void Ended();        // the cell has its text
    void MovedDown();    // by Enter; also from the last row, where it stays
    void RowsChanged();  // by InsertRow, DeleteRow or Paste

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool GridKey(const QKeyEvent& key);
    bool BoxKey(const QKeyEvent& key);
    bool BoxKeyForRecords(int key);
    bool BoxKeyForTable(int key);
    void Open();
    void DropEdit();
    void GoDown();
    // Ends the edit and goes from its cell by so many rows and columns, unless that leads out of
    // the grid.
    void LeaveBy(int rows, int cols);
    void MoveRow(int from, int to);
    void ClearRow(int row);

    MSFlexGrid& grid_;
    const Ways ways_;
    CellTextBox& box_;
    bool editing_ = false;
    int row_ = 0;  // of the cell that is edited
    int col_ = 0;
};

}  // namespace rillbook
