#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <functional>

class QAction;
class QInputMethodEvent;
class QKeyEvent;

namespace rillbook {

class CellTextBox;
class GridHistory;
class MSFlexGrid;

// Makes a grid editable. A text box, tbSel, opens over the current cell by a double click, F2, a
// typed character or an input method, and its text goes into that cell when the focus leaves the
// box in any way. Tab and Shift+Tab go to the next and previous cell that can be edited, and leave
// the grid at its ends and with Ctrl. Delete empties the current cell, Ctrl+C and Ctrl+V copy and
// paste the selected ones. All of these changes can be undone while the form is open.
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

    // The box becomes a sibling of the grid, after it in the tab order. All live as long as the
    // form.
    GridCellEditing(MSFlexGrid& grid, Ways ways);

    // Opens the box on the current cell, if its column can be edited.
    void ShowCellEditor();
    // Puts the box's text into its cell and hides it. No-op while no cell is edited.
    void EndEdit();

    // Runs a change of the grid's texts or rows that undo takes back under this name.
    void Change(const QString& name, const std::function<void()>& change);
    // Whether anything has changed that was not undone.
    bool HasChanges() const;
    // "Undo" and "Redo", with their keys, which work in the whole form.
    QAction& UndoAction() { return undo_; }
    QAction& RedoAction() { return redo_; }

    // An open edit ends before each of these.
    //
    // Moves the current row and those below down by one; the text of the last row is lost.
    void InsertRow();
    // Moves the rows below the current one up by one.
    void DeleteRow();
    void Copy();
    // Fills the selected cells; if anything does not fit, a message gives the counts.
    void Paste();

Q_SIGNALS:
    void Opening();      // before it is known whether the cell can be edited
    void RowsChanged();  // by InsertRow, DeleteRow or Paste; before Changed
    void Changed();      // texts may have changed, in any way; what a slot sets is undone as well
    void Restored();     // by undo or redo; after Changed
    void MovedDown();    // by Enter; also from the last row, where it stays

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool GridKey(QKeyEvent& key);
    bool GridInput(QInputMethodEvent& input);
    bool TabKey(const QKeyEvent& key);
    bool BoxKey(const QKeyEvent& key);
    bool BoxKeyForRecords(int key);
    bool BoxKeyForTable(int key);
    QAction& AddAction(QAction* action, const QString& name, const QList<QKeySequence>& keys);
    void Restore(void (GridHistory::*step)());
    // False if the user can't type in the current cell.
    bool Open();
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
    GridHistory& history_;
    QAction& undo_;
    QAction& redo_;
    bool editing_ = false;
    bool composing_ = false;  // an input method, for the box, with the focus still on the grid
    QString shown_;  // the cell's text as the box shows it; a line feed for each line break
    int row_ = 0;    // of the cell that is edited
    int col_ = 0;
};

}  // namespace rillbook
