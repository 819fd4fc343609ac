#pragma once

#include <QDialog>
#include <QString>
#include <memory>
#include <vector>

#include "store/Journal.h"

namespace rillbook {

class AdoError;
class CommonDialog;
class GridCellEditing;

namespace Ui {
class frmCalibration;
}

// "Journal and Offsets": the field visits to the open station's output channel, edited in a grid
// and stored all at once when the window closes. DialogCancelled is false afterwards if they were
// stored. If the journal cannot be read, the user gets a message and cannot edit it.
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
    // open if the user cancels, and if the journal cannot be saved.
    void reject() override;

protected:
    // The space bar ticks as a click does.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ConnectCommands();
    void SetUpGrid(const std::vector<JournalRow>& rows);
    void FillRow(int row, const JournalRow& visit);
    void ToggleUse(int row);
    // Makes each text of the column Use a tick or empty.
    void TidyUse();
    // Whether the grid may be saved; the user gets a message about the first fault.
    bool CheckTable();
    // Selects the row, reports the reason, and returns false.
    bool Refuse(int row, int col, const QString& reason);
    // Stores the grid. If that fails, the user gets a message, the stored journal stays as it was,
    // and the result is false.
    bool LoadArray();
    void ReportUnsaved(const AdoError& error);
    void Print();
    // A text of blanks counts as empty.
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
