#pragma once

#include <QDialog>
#include <QString>
#include <memory>
#include <vector>

#include "store/Journal.h"

namespace rillbook {

class CommonDialog;
class GridCellEditing;

namespace Ui {
class frmCalibration;
}

// "Journal and Offsets": the field visits to the open station's output channel, edited in a grid
// and stored all at once when the window closes. It leaves DialogCancelled cleared where it stored
// them. A journal that can't be read is told of, and can't be edited.
class frmCalibration : public QDialog {
    Q_OBJECT
public:
    explicit frmCalibration(CommonDialog& printerDialog, QWidget* parent = nullptr);
    ~frmCalibration() override;

    // Fills the column of offsets from the texts of the readings.
    void CalcOffsets();
    // Scrolls the current row into view.
    void VisibleRows();
    // Every way of closing comes here: asks whether to save what may have changed. The window stays
    // where the user cancels, and where the journal can't be saved.
    void reject() override;

protected:
    // The space bar ticks as a click does.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ConnectCommands();
    void SetUpGrid(const std::vector<JournalRow>& rows);
    void FillRow(int row, const JournalRow& visit);
    void ToggleUse(int row);
    // Whether the grid may be saved; the first fault is told.
    bool CheckTable();
    // Stores the grid. False, after telling why, where the stored journal stays as it was.
    bool LoadArray();
    void Print();
    QString Cell(int row, int col) const;

    const int chan_;
    const QString channelText_;
    CommonDialog& cdbprinter_;
    std::unique_ptr<Ui::frmCalibration> ui_;
    GridCellEditing* editing_ = nullptr;  // owned by the grid
    int tableRows_ = 0;                   // rows of data, the spare ones included
    bool dirty_ = false;
};

}  // namespace rillbook
