#pragma once

#include <QMainWindow>
#include <cstdint>
#include <functional>
#include <memory>

#include "app/SharedState.h"
#include "platform/desktop/CommonDialog.h"
#include "store/StationPanel.h"

class QDialog;
class QTreeWidgetItem;

namespace rillbook {

namespace Ui {
class frmMain;
}

// The window of the project: the tree of its stations and their channels, the header of the open
// station, and the commands from which every other form is shown. A node of the tree is how the
// user chooses the station and the channel that all else works on: root nodes are stations.
// REQUIRES: StationConnection made; the settings loaded.
class frmMain final : public QMainWindow, public StationPanel {
    Q_OBJECT
public:
    explicit frmMain(QWidget* parent = nullptr);
    ~frmMain() override;

    // Adds the open station, which StationPath and StationTitle name, with its channels at the end
    // of the tree and selects it; OutputChannel becomes 1. False, with nothing added, if it is
    // there.
    bool AddStaToTree();

    // Writes the project file from the tree and the report period. Returns false after a message if
    // it can't be written.
    bool SaveProject();

    // Takes the chosen file as the project and opens each of its stations in turn; the last one
    // stays open. A message names what couldn't be read. Returns false after a message, and leaves
    // the open project and station as they are, if the file is not a project.
    bool OpenProject();

    void EnableProjectMenus(bool on);

    QString Text(Item item) const override;
    void SetText(Item item, const QString& text) override;
    void ShowPanel(bool visible) override;
    void EnableStationMenus(bool on) override;
    void StationRenamed(const QString& former) override;
    void SetWindowCaption(const QString& caption) override;

protected:
    // Saves the project, closes the station and saves the settings, without a question; with no
    // project open it only closes.
    void closeEvent(QCloseEvent* event) override;

private:
    using Command = void (frmMain::*)();
    using ReportMaker = std::function<std::unique_ptr<QDialog>()>;

    void SetUpPictures();
    void SetUpSeparators();
    void ConnectCommands();
    void ConnectReports();
    void ConnectTree();
    void Run(const std::function<void()>& command);

    // The tree's click: opens the selected node's station unless it is open, and sets
    // OutputChannel.
    void TreeClick();
    // Expands and selects a station's node, and runs the click.
    void SelectStation(QTreeWidgetItem* station);
    // The click, and then the graph of the readings.
    void TreeDoubleClick();
    void ShowTreeMenu(const QPoint& globalPosition);

    void NewProject();
    void ChooseProject();
    void SaveProjectCommand();
    void CloseProject();
    void NewStation();
    void AddExistingStation();
    void RemoveStation();
    void SaveStationData();
    void SetUpImport();
    void ImportLoggerFile();
    void ShowRecords();
    void ShowJournal();
    void ShowRatings();
    std::unique_ptr<QDialog> MakeInstG();
    // The output settings of a report, then its form unless the user cancelled.
    void ShowReport(ReportMode mode, const ReportMaker& make);
    void ShowAboutBox();

    // "Save Current Project?" False if the command that asks must end.
    bool AskToSave();
    void SaveProjectAtExit();
    // Why it failed; empty if it didn't.
    QString TryToSaveProject();
    // The chosen file is dlgCommonDialog's. False if there is none.
    bool AskForNewFile(const QString& filter);
    bool AskForOldFile(const QString& filter);
    bool AskForFile(const QString& title, const QString& filter, void (CommonDialog::*dialog)());
    QString ChosenFolder() const;
    // Returns false after a message for a path that no project file can hold.
    bool ChosenStationIsUsable() const;
    void TakeChosenProject();
    // Closes the open station first. StationPath and StationTitle follow on success only.
    bool SwitchToStation(const QString& path, const QString& title);
    // The station that a command leaves, to return to if it can't open another one.
    struct LeftStation {
        QString path;  // empty: none was open
        QString title;
        std::int16_t channel = 0;
    };
    LeftStation LeaveStation();
    void ReturnTo(const LeftStation& left);
    // Opens the chosen station, or the one that was left if that fails.
    bool OpenChosenStation(const LeftStation& left);

    std::unique_ptr<Ui::frmMain> ui_;
    CommonDialog dlgCommonDialog;
    CommonDialog cdbprinter;
    // Name and notes as the station has them: what the user left alone goes back unchanged, even
    // where the text boxes can't show it (longer than they take, other line ends).
    QString nameAsRead_;
    QString notesAsRead_;
    // The project file couldn't be read whole, or one of its stations didn't open. The first save
    // keeps it beside the new one.
    bool keepsOldFile_ = false;
};

}  // namespace rillbook
