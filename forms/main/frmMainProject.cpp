// The project and station commands of the File menu.

#include <QTreeWidgetItem>
#include <algorithm>
#include <cstdint>

#include "app/InitialFile.h"
#include "forms/main/StationNodes.h"
#include "forms/main/frmMain.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/SameFile.h"
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
    if (AskForOldFile(kProjectFilter) && OpenProject()) {
        EnableProjectMenus(true);
        ui_->TreeView1->setFocus();
    }
}

bool frmMain::OpenProject() {
    const QString path = dlgCommonDialog.FileName;
    const ProjectReading reading = ReadProjectFile(path);
    if (!reading.isProject) {
        MsgBox(path + QLatin1Char('\n') + reading.fault, MsgBoxButtons::Ok,
               MsgBoxIcon::Exclamation);
        return false;
    }
    CloseOpenStation();
    TakeChosenProject();
    const ProjectContents& project = reading.contents;
    ReportBeginDate = project.reportBeginDate;
    ReportPeriodCode = project.reportPeriodCode;
    ReportEndDate = ReadDateTime(ReportEndFromPeriod(ReportBeginDate, ReportPeriodCode))
                        .value_or(ReportEndDate);
    ui_->tbProjectName->setText(project.name);
    keepsOldFile_ = !reading.fault.isEmpty();
    if (keepsOldFile_) {
        MsgBox(path + QLatin1Char('\n') + reading.fault, MsgBoxButtons::Ok,
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
        // A station on a disk that is missing today isn't in the tree, and the next save would
        // leave it out of the project.
        keepsOldFile_ = keepsOldFile_ || !isOpen;
    }
    return true;
}

bool frmMain::SwitchToStation(const QString& path, const QString& title) {
    CloseOpenStation();
    const ConversionCommand conversion;
    if (!OpenDB(path)) {
        return false;
    }
    StationPath = path;
    StationTitle = title;
    // The stored channel may be that of another station: see TreeClick.
    const std::int16_t last = std::max(StationInfo.Channels, std::int16_t{1});
    StationInfo.OutputChannel = std::clamp(StationInfo.OutputChannel, std::int16_t{1}, last);
    return true;
}

frmMain::LeftStation frmMain::LeaveStation() {
    if (StationConnection->State() == 0) {
        return {};
    }
    const std::int16_t channel = StationInfo.OutputChannel;
    CloseOpenStation();
    // Closing saves a station whose file is gone under another name.
    return {StationPath, StationTitle, channel};
}

void frmMain::ReturnTo(const LeftStation& left) {
    if (!left.path.isEmpty() && SwitchToStation(left.path, left.title)) {
        StationInfo.OutputChannel = left.channel;
    }
}

bool frmMain::OpenChosenStation(const LeftStation& left) {
    if (SwitchToStation(dlgCommonDialog.FileName, dlgCommonDialog.FileTitle)) {
        return true;
    }
    // A second attempt would only repeat the message.
    if (!IsSameFile(dlgCommonDialog.FileName, left.path)) {
        ReturnTo(left);
    }
    return false;
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
        WriteProjectFile(ProjectPath, contents,
                         keepsOldFile_ ? OldProject::Keep : OldProject::Replace);
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
    const LeftStation left = LeaveStation();
    try {
        CopyStationTemplate(dlgCommonDialog.FileName);
    } catch (const FileError& failure) {
        // The reason may be that of the template.
        const QString of = failure.Path() == dlgCommonDialog.FileName
                               ? QString()
                               : failure.Path() + QStringLiteral(": ");
        MsgBox(QStringLiteral("%1 could not be created: %2%3")
                   .arg(dlgCommonDialog.FileName, of, failure.Reason()),
               MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
        ReturnTo(left);
        return;
    }
    Attempt([&] {
        if (OpenChosenStation(left) && !AddStaToTree()) {
            QTreeWidgetItem* replaced = FindStation(*ui_->TreeView1, StationPath);
            FillStationNode(replaced, StationPath, StationTitle);
            SelectStation(replaced);
        }
    });
}

void frmMain::AddExistingStation() {
    if (!AskForOldFile(kStationFilter) || !ChosenStationIsUsable()) {
        return;
    }
    const ConversionCommand conversion;
    Attempt([&] {
        if (OpenChosenStation(LeaveStation()) && !AddStaToTree()) {
            MsgBox(QStringLiteral("Station already in project."), MsgBoxButtons::Ok,
                   MsgBoxIcon::Information);
        }
    });
}

bool frmMain::AddStaToTree() {
    if (FindStation(*ui_->TreeView1, StationPath) != nullptr) {
        return false;
    }
    auto* station = new QTreeWidgetItem(ui_->TreeView1);
    FillStationNode(station, StationPath, StationTitle);
    SelectStation(station);
    return true;
}

void frmMain::RemoveStation() {
    if (ui_->TreeView1->currentItem() == nullptr) {
        return;
    }
    CloseOpenStation();
    // Only now: closing a station whose file is gone may have replaced its node.
    QTreeWidgetItem* node = ui_->TreeView1->currentItem();
    if (node == nullptr) {
        return;
    }
    QTreeWidgetItem* station = StationOf(node);
    // The tree then selects the next station, or the one before if it is the last.
    ui_->TreeView1->setCurrentItem(station);
    delete station;
    TreeClick();
}

void frmMain::SaveStationData() {
    if (StationConnection->State() != 0) {
        SaveStationInfo();
    }
}

}  // namespace rillbook
