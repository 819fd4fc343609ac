#pragma once

#include <QDialog>
#include <functional>
#include <memory>

#include "platform/qt/Adodc.h"

namespace rillbook {

class DataGrid;

namespace Ui {
class frmEditRecords;
}

// "Edit Records": the stored readings of the open station in a grid, as the logger gave them. A
// changed row is stored when it is left; there is no undo. Where the records can't be read, the
// user is told and there is nothing to edit.
class frmEditRecords : public QDialog {
    Q_OBJECT
public:
    explicit frmEditRecords(QWidget* parent = nullptr);
    ~frmEditRecords() override;

    // The rows of the grid, on a connection of their own.
    rillbook::Adodc Adodc1;
    DataGrid& Grid() const;
    // Before a change: raises AdoError if the station's file is not in its place. If the user saves
    // the station under another name then, the grid shows the rows of that file.
    void RequireStation();
    // Within the form, in pixels.
    QPoint DeleteButtonPosition() const;

    // Every way of closing comes here: stores the row and brings the main window's count and dates
    // of the records up to date. The window stays, with the user told, where the row is refused.
    void done(int result) override;

private:
    void LoadGrid();
    // If that raises AdoError, the user gets a message, and there is nothing to edit.
    void TryToLoad(const std::function<void()>& load);
    void ShowDelete();

    std::unique_ptr<Ui::frmEditRecords> ui_;
};

}  // namespace rillbook
