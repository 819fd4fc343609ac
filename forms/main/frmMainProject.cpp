// The project and station commands of the File menu.

#include <QTreeWidgetItem>
#include <algorithm>
#include <cstdint>

#include "app/InitialFile.h"
#include "forms/main/StationNodes.h"
#include "forms/main/frmMain.h"
#include "platform/desktop/MsgBox.h"
#include "store/FileError.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "store/StationConversion.h"
#include "store/StationDatabase.h"
#include "ui_frmMain.h"

namespace rillbook {

namespace {

const QString kProjectFilter =
    QStringLiteral("Rillbook Project Files (*.prj)|*.prj|All Files (*.*)|*.*");
const QString kStationFilter = QStringLiteral("Access Files (*.mdb)|*.mdb|All Files (*.*)|*.*");

}  // namespace

bool frmMain::AskForNewFile(const QString& filter) {
    dlgCommonDialog.Flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
    dlgCommonDialog.InitDir = InitDir;
    return AskForFile(QStringLiteral("New"), filter, &CommonDialog::ShowSave);
}

bool frmMain::AskForOldFile(const QString& filter) {
    dlgCommonDialog.InitDir = InitDir;
    return AskForFile(QStringLiteral("Open"), filter, &CommonDialog::ShowOpen);
}

bool frmMain::AskForFile(const QString& title, const QString& filter,
                         void (CommonDialog::*dialog)()) {
    dlgCommonDialog.DialogTitle = title;
    dlgCommonDialog.Filter = filter;
    dlgCommonDialog.FileName.clear();
    try {
        (dlgCommonDialog.*dialog)();
    } catch (const DialogCancelledError&) {
        return false;
    }
    return !dlgCommonDialog.FileName.isEmpty();
}

QString frmMain::ChosenFolder() const {
    return dlgCommonDialog.FileName.chopped(dlgCommonDialog.FileTitle.size());
}

bool frmMain::ChosenStationIsUsable() const {
    if (IsUsablePath(dlgCommonDialog.FileName)) {
        return true;
    }
    MsgBox(QStringLiteral("A project can't hold a station with a double quote in its path: ") +
               dlgCommonDialog.FileName,
           MsgBoxButtons::Ok, MsgBoxIcon::Information);
    return false;
}

bool frmMain::AskToSave() {
    switch (MsgBox(QStringLiteral("Save Current Project?"), MsgBoxButtons::YesNoCancel)) {
        case MsgBoxAnswer::Yes:
            return SaveProject();
        case MsgBoxAnswer::No:
            return true;
        default:
            return false;
    }
}

void frmMain::TakeChosenProject() {
    ProjectPath = dlgCommonDialog.FileName;
    InitDir = ChosenFolder();
    ui_->TreeView1->clear();
    keepsOldFile_ = false;
}

void frmMain::NewProject() {
    if (!ProjectPath.isEmpty() && !AskToSave()) {
        return;
    }
    if (!AskForNewFile(kProjectFilter)) {
        return;
    }
    TakeChosenProject();
    ReportBeginDate = DateSerial(2002, 1, 1);
    ReportPeriodCode = QStringLiteral("921");
    EnableProjectMenus(true);
    ui_->TreeView1->setFocus();
}

void frmMain::ChooseProject() {
    if (!ProjectPath.isEmpty() && !AskToSave()) {
        return;
    }
    if (!AskForOldFile(kProjectFilter)) {
        return;
    }
    TakeChosenProject();
    OpenProject();
    EnableProjectMenus(true);
    ui_->TreeView1->setFocus();
}

void frmMain::OpenProject() {
    const ProjectReading reading =
        ReadProjectFile(ProjectPath, {.stations = {},
                                      .reportBeginDate = ReportBeginDate,
                                      .reportPeriodCode = ReportPeriodCode,
                                      .name = ui_->tbProjectName->text()});
    const ProjectContents& project = reading.contents;
    ReportBeginDate = project.reportBeginDate;
    ReportPeriodCode = project.reportPeriodCode;
    ReportEndDate = ReadDateTime(ReportEndFromPeriod(ReportBeginDate, ReportPeriodCode))
                        .value_or(ReportEndDate);
    ui_->tbProjectName->setText(project.name);
    keepsOldFile_ = !reading.fault.isEmpty();
    if (keepsOldFile_) {
        MsgBox(ProjectPath + QLatin1Char('\n') + reading.fault, MsgBoxButtons::Ok,
               MsgBoxIcon::Exclamation);
    }
    QStringList files;
    for (const ProjectStation& station : project.stations) {
        files += station.path;
    }
    const ConversionCommand conversion(files);
    for (const ProjectStation& station : project.stations) {
        bool isOpen = false;
        Attempt([&] {
            isOpen = SwitchToStation(station.path, station.title);
            if (isOpen) {
                AddStaToTree();
            }
        });
        // One on a disk that isn't there today isn't in the tree, and would be gone from the
        // project.
        keepsOldFile_ = keepsOldFile_ || !isOpen;
    }
}

bool frmMain::SwitchToStation(const QString& path, const QString& title) {
    CloseOpenStation();
    const ConversionCommand conversion;
    if (!OpenDB(path)) {
        return false;
    }
    StationPath = path;
    StationTitle = title;
    // A station stores the channel that was clicked when it was left, and that was another's.
    const std::int16_t last = std::max(StationInfo.Channels, std::int16_t{1});
    StationInfo.OutputChannel = std::clamp(StationInfo.OutputChannel, std::int16_t{1}, last);
    return true;
}

QString frmMain::TryToSaveProject() {
    ProjectContents contents{.stations = {},
                             .reportBeginDate = ReportBeginDate,
                             .reportPeriodCode = ReportPeriodCode,
                             .name = ui_->tbProjectName->text()};
    for (int i = 0; i < ui_->TreeView1->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* station = ui_->TreeView1->topLevelItem(i);
        contents.stations.push_back({NodeKey(station), station->text(0)});
    }
    try {
        if (keepsOldFile_) {
            KeepOldProjectFile(ProjectPath);
        }
        WriteProjectFile(ProjectPath, contents);
    } catch (const FileError& failure) {
        return QStringLiteral("%1 could not be saved: %2").arg(failure.Path(), failure.Reason());
    }
    keepsOldFile_ = false;
    return {};
}

bool frmMain::SaveProject() {
    const QString failure = TryToSaveProject();
    if (!failure.isEmpty()) {
        MsgBox(failure, MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }
    return failure.isEmpty();
}

void frmMain::SaveProjectAtExit() {
    QString failure;
    do {
        failure = TryToSaveProject();
    } while (!failure.isEmpty() &&
             MsgBox(failure + QStringLiteral("\nCancel leaves without saving the project."),
                    MsgBoxButtons::RetryCancel, MsgBoxIcon::Exclamation) == MsgBoxAnswer::Retry);
}

void frmMain::SaveProjectCommand() {
    SaveProject();
}

void frmMain::CloseProject() {
    if (!AskToSave()) {
        return;
    }
    CloseOpenStation();
    ui_->TreeView1->clear();
    ProjectPath.clear();
    EnableProjectMenus(false);
}

void frmMain::NewStation() {
    if (!AskForNewFile(kStationFilter) || !ChosenStationIsUsable()) {
        return;
    }
    CloseOpenStation();
    try {
        CopyStationTemplate(dlgCommonDialog.FileName);
    } catch (const FileError&) {
        return;
    }
    Attempt([&] {
        if (SwitchToStation(dlgCommonDialog.FileName, dlgCommonDialog.FileTitle)) {
            AddStaToTree();
        }
    });
}

void frmMain::AddExistingStation() {
    if (!AskForOldFile(kStationFilter) || !ChosenStationIsUsable()) {
        return;
    }
    const ConversionCommand conversion;
    Attempt([&] {
        if (SwitchToStation(dlgCommonDialog.FileName, dlgCommonDialog.FileTitle) &&
            !AddStaToTree()) {
            MsgBox(QStringLiteral("Station already in project."), MsgBoxButtons::Ok,
                   MsgBoxIcon::Information);
        }
    });
}

bool frmMain::AddStaToTree() {
    if (FindStation(*ui_->TreeView1, StationPath) != nullptr) {
        return false;
    }
    QTreeWidgetItem* station = AddStationNode(*ui_->TreeView1, StationPath, StationTitle);
    station->setExpanded(true);
    ui_->TreeView1->setCurrentItem(station);
    TreeClick();
    return true;
}

void frmMain::RemoveStation() {
    const QTreeWidgetItem* node = ui_->TreeView1->currentItem();
    if (node == nullptr) {
        return;
    }
    CloseOpenStation();
    QTreeWidgetItem* station = FindStation(*ui_->TreeView1, NodeKey(StationOf(node)));
    // The tree then selects the station behind it, or the one before where it is the last.
    ui_->TreeView1->setCurrentItem(station);
    delete station;
    // The one that the tree selects now opens, also where it was open though another was selected.
    StationPath.clear();
    TreeClick();
}

void frmMain::SaveStationData() {
    if (StationConnection->State() != 0) {
        SaveStationInfo();
    }
}

}  // namespace rillbook
