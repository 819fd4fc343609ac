#include "forms/reports/ReportForm.h"

#include <QAction>
#include <QShortcut>

#include "compute/Compute.h"
#include "forms/main/frmAbout.h"
#include "forms/records/frmEditRecords.h"
#include "forms/reference/frmCalibration.h"
#include "forms/reference/frmRating.h"
#include "forms/reports/frmOutputSettings.h"
#include "help/HTMLHelp.h"
#include "platform/desktop/Clipboard.h"
#include "platform/desktop/Desktop.h"
#include "platform/qt/MSFlexGrid.h"

namespace rillbook {

ReportForm::ReportForm(ReportMode mode, CommonDialog& printerDialog, QWidget* parent)
    : QDialog(parent), cdbprinter_(printerDialog), mode_(mode) {
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    BeginReport();
}

QAction& ReportForm::Item(const char* name) const {
    auto* item = findChild<QAction*>(QString::fromLatin1(name));
    Q_ASSERT(item != nullptr);
    return *item;
}

void ReportForm::ConnectCommonCommands() {
    connect(&Item("mnuFileExit"), &QAction::triggered, this, &QWidget::close);
    connect(&Item("mnuEditRecords"), &QAction::triggered, this, [this] {
        frmEditRecords(this).exec();
        Rebuild();
    });
    connect(&Item("mnuCal"), &QAction::triggered, this, [this] {
        frmCalibration journal(cdbprinter_, this);
        ShowEditor(journal);
    });
    connect(&Item("mnuRat"), &QAction::triggered, this, [this] {
        frmRating ratings(this);
        ShowEditor(ratings);
    });
    connect(&Item("mnuEditSettings"), &QAction::triggered, this, [this] {
        SettingsMode = mode_;
        frmOutputSettings settings(this);
        ShowEditor(settings);
    });
    if (auto* refresh = findChild<QAction*>(QStringLiteral("mnuEditRefresh"))) {
        connect(refresh, &QAction::triggered, this, [this] { Rebuild(); });
    } else {
        connect(new QShortcut(Qt::Key_F5, this), &QShortcut::activated, this,
                [this] { Rebuild(); });
    }
    connect(&Item("mnuHelpContent"), &QAction::triggered, this, &ShowHelpContents);
    connect(&Item("mnuHelpIndex"), &QAction::triggered, this, &ShowHelpIndex);
    connect(&Item("mnuHelpAbout"), &QAction::triggered, this, [this] { frmAbout(this).exec(); });
}

void ReportForm::ConnectCopy(const MSFlexGrid& grid) {
    Item("mnuEditCopy").setShortcut(QKeySequence::Copy);
    connect(&Item("mnuEditCopy"), &QAction::triggered, &grid, [&grid] {
        TheClipboard().Clear();
        TheClipboard().SetText(grid.Clip());
    });
}

void ReportForm::ShowEditor(QDialog& editor) {
    editor.exec();
    if (!DialogCancelled) {
        Rebuild();
    }
}

}  // namespace rillbook
