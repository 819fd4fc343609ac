#pragma once

#include <QDialog>

#include "app/SharedState.h"

namespace rillbook {

class MSFlexGrid;

// What the windows of the reports have in common: they can be maximised, and the commands of their
// menus that don't depend on what they show.
class ReportForm : public QDialog {
    Q_OBJECT
protected:
    // `mode` is the report for which its menu opens the output settings.
    explicit ReportForm(ReportMode mode, QWidget* parent = nullptr);

    // Gives the items mnuFileExit, mnuEditSettings and mnuHelpAbout their work. REQUIRES: the form
    // has its menus.
    void ConnectCommonCommands();
    // mnuEditCopy, and Ctrl+C, put the selected cells on the clipboard.
    void ConnectCopy(const MSFlexGrid& grid);

    // Reads the readings anew and shows what they have become.
    virtual void Rebuild() = 0;

private:
    QAction& Item(const char* name) const;
    void ShowSettings();

    const ReportMode mode_;
};

}  // namespace rillbook
