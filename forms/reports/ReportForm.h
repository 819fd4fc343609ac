#pragma once

#include <QDialog>

#include "app/SharedState.h"

namespace rillbook {

class CommonDialog;
class MSFlexGrid;

// What the windows of the reports have in common: they can be maximised, and the commands of their
// menus that don't depend on what they show.
class ReportForm : public QDialog {
    Q_OBJECT
protected:
    // `mode` is the report for which its menu opens the output settings. `printerDialog` is the one
    // of the main window, and outlives the form.
    ReportForm(ReportMode mode, CommonDialog& printerDialog, QWidget* parent);

    // Gives the items mnuFileExit, mnuEditRecords, mnuCal, mnuRat, mnuEditSettings and those of
    // mnuHelp their work. F5 rebuilds the report, by the item mnuEditRefresh if there is one.
    // REQUIRES: the form has its menus.
    void ConnectCommonCommands();
    // mnuEditCopy, and Ctrl+C, put the selected cells on the clipboard.
    void ConnectCopy(const MSFlexGrid& grid);

    // Reads the readings anew and shows what they have become.
    virtual void Rebuild() = 0;

    CommonDialog& cdbprinter_;

private:
    QAction& Item(const char* name) const;
    // Shows a form in which the user may change what the report is made of.
    void ShowEditor(QDialog& editor);

    const ReportMode mode_;
};

}  // namespace rillbook
