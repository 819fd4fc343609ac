#pragma once

#include <QStringList>
#include <QTableView>
#include <functional>
#include <vector>

namespace rillbook {

class Adodc;
class RecordModel;

// A grid bound to the rows of a data control, whose cells can be typed into: typing or F2 edits a
// cell, Enter ends that and goes a row down, Tab goes a cell on (Ctrl+Tab leaves the grid), Delete
// empties a cell of any column but the first. A row is stored when it is left. What can't be taken
// is told in a message, and the cells show what is stored. A table of several hundred thousand rows
// opens and scrolls at once. Rows and columns count from 0.
class DataGrid : public QTableView {
    Q_OBJECT
public:
    explicit DataGrid(QWidget* parent = nullptr);

    // Opens the data control and shows its rows, the first cell current; the control outlives the
    // grid. Raises AdoError and shows nothing then.
    void SetDataSource(Adodc& source);
    void SetAllowRowSizing(bool on);
    // No-op for a column that isn't there.
    void SetCaption(int col, const QString& caption);
    // Makes each column as wide as its heading and its texts in the first rows, up to a limit. A
    // column of date-times is as wide as the longest one in the user's regional form, without
    // limit: with AM or PM cut off, two times would read the same.
    void FitColumns();

    // Of the whole control, where all its columns are in view; in pixels.
    int WidthOfColumns() const;

    // The current column; 0 in a grid without rows.
    int Col() const;

    // Ends the edit of a cell and stores the row. False, with the user told, where something was
    // refused.
    bool EndEdit();
    // The recordset goes to the current row. False where there is none, or it has left the table.
    bool GoToCurrent();
    // The recordset was walked: its row becomes the current one; the last row if it is at its end.
    void FollowRecordset();
    // What is shown is read from the table again.
    void ReadAnew();
    // See RecordModel; rows count from 0.
    void DeleteRows(const std::vector<int>& rows, const std::function<void()>& deletion);

    void keyboardSearch(const QString&) override {}

Q_SIGNALS:
    // The user has been shown why something was refused.
    void Refused();

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void TellFailures();
    void GoDown();

    Adodc* source_ = nullptr;
    RecordModel* model_;
    QStringList failures_;  // not yet told
    bool telling_ = false;
};

}  // namespace rillbook
