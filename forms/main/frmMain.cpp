#include "forms/main/frmMain.h"

#include <QCloseEvent>
#include <QLayout>
#include <QRegularExpressionValidator>
#include <utility>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "forms/main/DesktopApplication.h"
#include "forms/main/Icons.h"
#include "forms/main/StationNodes.h"
#include "forms/main/frmAbout.h"
#include "forms/records/frmEditRecords.h"
#include "forms/reference/frmCalibration.h"
#include "forms/reference/frmRating.h"
#include "forms/reports/frmAnnualT.h"
#include "forms/reports/frmDailyT.h"
#include "forms/reports/frmInstT.h"
#include "forms/reports/frmOutputSettings.h"
#include "graphs/frmDailyG.h"
#include "graphs/frmInstG.h"
#include "help/HTMLHelp.h"
#include "import/Import.h"
#include "import/frmImport.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/SameFile.h"
#include "platform/desktop/Screen.h"
#include "platform/qt/RememberedWindow.h"
#include "platform/qt/Twips.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "store/StationDatabase.h"
#include "ui_frmMain.h"

namespace rillbook {

frmMain::frmMain(QWidget* parent) : QMainWindow(parent), ui_(std::make_unique<Ui::frmMain>()) {
    ui_->setupUi(this);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    SetUpPictures();
    SetUpSeparators();
    ConnectCommands();
    ConnectReports();
    ConnectTree();
    // A double quote would end the name's item in the project file.
    static const QRegularExpression noDoubleQuote(QStringLiteral("[^\"]*"));
    ui_->tbProjectName->setValidator(new QRegularExpressionValidator(noDoubleQuote, this));
    ui_->Frame1->hide();
    TheStationPanel = this;

    // A window that takes its size only as it is shown loses its frame from the position, and would
    // climb by the height of its title bar from run to run.
    layout()->activate();
    const QPoint remembered(ToPixels(MainLeft), ToPixels(MainTop));
    move(PlaceInView(QRect(remembered, sizeHint())));
    SetWindowCaption(Application::Title());
    EnableStationMenus(false);
    EnableProjectMenus(false);
    PrinterOrientation = cdbprinter.Orientation;
}

frmMain::~frmMain() {
    TheStationPanel = nullptr;
}

void frmMain::SetUpPictures() {
    setWindowIcon(PictureIcon(Picture::Program));
    ui_->New->setIcon(PictureIcon(Picture::New));
    ui_->Open->setIcon(PictureIcon(Picture::Open));
    ui_->Save->setIcon(PictureIcon(Picture::Save));
}

void frmMain::SetUpSeparators() {
    for (QAction* line :
         {ui_->mnuFileSeparator0, ui_->mnuFIleSeparator1, ui_->mnuFileSeparator4,
          ui_->mnuFileSeparator5, ui_->mnuEditSep1, ui_->mnuEditSep2, ui_->mnuOutSeparator1,
          ui_->mnuHelpSeparator1, ui_->mnuSep10, ui_->mnuSep20, ui_->menSep13}) {
        line->setSeparator(true);
    }
}

void frmMain::ConnectCommands() {
    const std::pair<QAction*, Command> commands[] = {
        {ui_->mnuFileProjectNew, &frmMain::NewProject},
        {ui_->New, &frmMain::NewProject},
        {ui_->mnuFileProjectOpen, &frmMain::ChooseProject},
        {ui_->Open, &frmMain::ChooseProject},
        {ui_->mnuFileProjectSave, &frmMain::SaveProjectCommand},
        {ui_->Save, &frmMain::SaveProjectCommand},
        {ui_->mnuFileProjectClose, &frmMain::CloseProject},
        {ui_->mnuFileStationNew, &frmMain::NewStation},
        {ui_->mnuFileStationOpen, &frmMain::AddExistingStation},
        {ui_->mnuFileStationClose, &frmMain::RemoveStation},
        {ui_->mnuFileStationSave, &frmMain::SaveStationData},
        {ui_->mnuFileImportSetup, &frmMain::SetUpImport},
        {ui_->mnuFileImportSetup2, &frmMain::SetUpImport},
        {ui_->mnuFileImport, &frmMain::ImportLoggerFile},
        {ui_->mnuFileImport2, &frmMain::ImportLoggerFile},
        {ui_->mnuEditRecords, &frmMain::ShowRecords},
        {ui_->mnuEditRecords2, &frmMain::ShowRecords},
        {ui_->mnuEditCalibration, &frmMain::ShowJournal},
        {ui_->mnuEditCalibration2, &frmMain::ShowJournal},
        {ui_->mnuRat, &frmMain::ShowRatings},
        {ui_->mnuRat2, &frmMain::ShowRatings},
        {ui_->mnuHelpAbout, &frmMain::ShowAboutBox},
    };
    for (const auto& [item, command] : commands) {
        connect(item, &QAction::triggered, this,
                [this, command = command] { Run([&] { (this->*command)(); }); });
    }
    connect(ui_->mnuFileExit, &QAction::triggered, this, &QWidget::close);
    connect(ui_->mnuHelpContent, &QAction::triggered, this, &ShowHelpContents);
    connect(ui_->mnuHelpIndex, &QAction::triggered, this, &ShowHelpIndex);
}

void frmMain::ConnectReports() {
    const auto project = [this] { return ui_->tbProjectName->text(); };
    const struct {
        QAction* item;
        QAction* ofPopup;
        ReportMode mode;
        ReportMaker make;
    } reports[] = {
        {ui_->mnuOutInstG, ui_->mnuOutInstG2, ReportMode::InstantaneousGraph,
         [this] { return MakeInstG(); }},
        {ui_->mnuOutDailyG, ui_->mnuOutDailyG2, ReportMode::DailyGraph,
         [=, this] { return std::make_unique<frmDailyG>(project(), cdbprinter, this); }},
        {ui_->mnuOutInstT, ui_->mnuOutInstT2, ReportMode::InstantaneousTable,
         [=, this] { return std::make_unique<frmInstT>(project(), cdbprinter, this); }},
        {ui_->mnuOutDailyT, ui_->mnuOutDailyT2, ReportMode::DailyTable,
         [=, this] { return std::make_unique<frmDailyT>(project(), cdbprinter, this); }},
        {ui_->mnuOutAnnual, ui_->mnuOutAnnual2, ReportMode::AnnualTable,
         [=, this] { return std::make_unique<frmAnnualT>(project(), cdbprinter, this); }},
    };
    for (const auto& report : reports) {
        const auto show = [this, mode = report.mode, make = report.make] {
            Run([&] { ShowReport(mode, make); });
        };
        connect(report.item, &QAction::triggered, this, show);
        connect(report.ofPopup, &QAction::triggered, this, show);
    }
}

void frmMain::ConnectTree() {
    const auto click = [this] { Run([this] { TreeClick(); }); };
    // The first signal opens another station, which brings its own OutputChannel; the second one
    // sets the channel that the user clicked. If the first one couldn't open the station, the
    // second one doesn't try again, which would repeat the message.
    connect(ui_->TreeView1, &StationTree::NodeClick, this, click);
    connect(ui_->TreeView1, &StationTree::Click, this, [this, click] {
        if (StationConnection->State() != 0) {
            click();
        }
    });
    connect(ui_->TreeView1, &StationTree::DblClick, this,
            [this] { Run([this] { TreeDoubleClick(); }); });
    connect(ui_->TreeView1, &StationTree::MenuAsked, this, &frmMain::ShowTreeMenu);
}

void frmMain::Run(const std::function<void()>& command) {
    try {
        command();
    } catch (const std::exception& failure) {
        TellFailure(failure);
    }
}

void frmMain::EnableStationMenus(bool on) {
    for (QAction* item : {ui_->mnuFileStationClose, ui_->mnuFileStationSave, ui_->mnuFileImport,
                          ui_->mnuFileImportSetup}) {
        item->setEnabled(on);
    }
    ui_->mnuEdit->setEnabled(on);
    ui_->mnuOutput->setEnabled(on);
}

void frmMain::EnableProjectMenus(bool on) {
    for (QAction* item : {ui_->mnuFileProjectClose, ui_->mnuFileProjectSave, ui_->mnuFileStationNew,
                          ui_->mnuFileStationOpen, ui_->Save}) {
        item->setEnabled(on);
    }
    ui_->TreeView1->setVisible(on);
    ui_->tbProjectName->setVisible(on);
    ui_->lblProjName->setVisible(on);
}

QString frmMain::Text(Item item) const {
    switch (item) {
        case Item::Name:
            return ui_->tbName->isModified() ? ui_->tbName->text() : nameAsRead_;
        case Item::Notes:
            return ui_->tbNotes->document()->isModified() ? ui_->tbNotes->toPlainText()
                                                          : notesAsRead_;
        case Item::Channels:
            return ui_->lblChannels->text();
        case Item::Records:
            return ui_->lblNOR->text();
        case Item::BeginDate:
            return ui_->lblBDate->text();
        case Item::EndDate:
            return ui_->lblEDate->text();
    }
    return {};
}

void frmMain::SetText(Item item, const QString& text) {
    switch (item) {
        case Item::Name:
            nameAsRead_ = text;
            return ui_->tbName->setText(text);
        case Item::Notes:
            notesAsRead_ = text;
            return ui_->tbNotes->setPlainText(text);
        case Item::Channels:
            return ui_->lblChannels->setText(text);
        case Item::Records:
            return ui_->lblNOR->setText(text);
        case Item::BeginDate:
            return ui_->lblBDate->setText(text);
        case Item::EndDate:
            return ui_->lblEDate->setText(text);
    }
}

void frmMain::ShowPanel(bool visible) {
    ui_->Frame1->setVisible(visible);
}

void frmMain::StationRenamed(const QString& former) {
    if (QTreeWidgetItem* station = FindStation(*ui_->TreeView1, former)) {
        QTreeWidgetItem* other = FindStation(*ui_->TreeView1, StationPath);
        if (other != station) {
            delete other;  // of a file that was written over
        }
        FillStationNode(station, StationPath, StationTitle);
    }
}

void frmMain::SetWindowCaption(const QString& caption) {
    setWindowTitle(caption);
}

void frmMain::TreeClick() {
    QTreeWidgetItem* node = ui_->TreeView1->currentItem();
    if (node == nullptr) {
        return;
    }
    QTreeWidgetItem* station = StationOf(node);
    // Set before the station that is left is closed, which stores it.
    StationInfo.OutputChannel = node == station ? std::int16_t{1} : ChannelOf(node);
    const bool isOpen =
        StationConnection->State() != 0 && IsSameFile(NodeKey(station), StationPath);
    if (!isOpen && SwitchToStation(NodeKey(station), station->text(0))) {
        // Its channels may be others by now, for example in a backup that was put back. Leaving a
        // station whose file is gone may have replaced its node.
        if (QTreeWidgetItem* opened = FindStation(*ui_->TreeView1, StationPath)) {
            FillStationNode(opened, StationPath, StationTitle);
        }
    }
}

void frmMain::SelectStation(QTreeWidgetItem* station) {
    station->setExpanded(true);
    ui_->TreeView1->setCurrentItem(station);
    ui_->TreeView1->setFocus();
    TreeClick();
}

void frmMain::TreeDoubleClick() {
    TreeClick();
    if (ui_->TreeView1->currentItem() == nullptr || StationConnection->State() == 0) {
        return;
    }
    // Over more than a year, and with no axis to draw on, the user settles both first.
    const ChannelInfoData& channel = ChannelInfo[StationInfo.OutputChannel];
    if (ReportEndDate - ReportBeginDate >= 367 && channel.GraphMin >= channel.GraphMax) {
        ShowReport(ReportMode::InstantaneousGraph, [this] { return MakeInstG(); });
    } else {
        MakeInstG()->exec();
    }
}

void frmMain::ShowTreeMenu(const QPoint& globalPosition) {
    QTreeWidgetItem* node = ui_->TreeView1->currentItem();
    if (node == nullptr) {
        return;
    }
    QMenu* menu = node == StationOf(node) ? ui_->mnuPopup2 : ui_->mnuPopup;
    for (QAction* item : menu->actions()) {
        item->setEnabled(StationConnection->State() != 0);
    }
    menu->popup(globalPosition);
}

void frmMain::SetUpImport() {
    if (StationConnection->State() == 0 || frmImport(this).exec() != QDialog::Accepted) {
        return;
    }
    delete FindStation(*ui_->TreeView1, StationPath);
    AddStaToTree();
}

void frmMain::ShowRecords() {
    if (StationConnection->State() != 0) {
        frmEditRecords(this).exec();
    }
}

void frmMain::ShowJournal() {
    if (StationConnection->State() != 0) {
        frmCalibration(cdbprinter, this).exec();
    }
}

void frmMain::ShowRatings() {
    if (StationConnection->State() != 0) {
        frmRating(this).exec();
    }
}

void frmMain::ImportLoggerFile() {
    if (StationConnection->State() == 0) {
        return;
    }
    dlgCommonDialog.Flags = cdlOFNHideReadOnly;
    dlgCommonDialog.InitDir = StationInfo.ImportDir;
    if (!AskForFile(QStringLiteral("File Import - ") + StationTitle,
                    QStringLiteral("Import File (*.csv;*.cap;*.dat;*.prn;*.txt)|"
                                   "*.csv;*.cap;*.dat;*.prn;*.txt|All Files (*.*)|*.*"),
                    &CommonDialog::ShowOpen)) {
        TheScreen().SetMousePointer(vbDefault);
        return;
    }
    StationInfo.ImportDir = ChosenFolder();
    const Hourglass hourglass;
    ImportFile(dlgCommonDialog.FileName);
    if (StationConnection->State() == 0) {
        return;  // its file is gone, and the copy did not open
    }
    RefreshRecordStats();
    WriteStationInfo();
}

void frmMain::ShowReport(ReportMode mode, const ReportMaker& make) {
    if (StationConnection->State() == 0) {
        return;
    }
    SettingsMode = mode;
    frmOutputSettings(this).exec();
    if (!DialogCancelled) {
        make()->exec();
    }
}

std::unique_ptr<QDialog> frmMain::MakeInstG() {
    return std::make_unique<frmInstG>(ui_->tbProjectName->text(), cdbprinter, this);
}

void frmMain::ShowAboutBox() {
    frmAbout(this).exec();
}

void frmMain::closeEvent(QCloseEvent*) {
    if (ProjectPath.isEmpty()) {
        ReleaseHelp();
        return;
    }
    SaveProjectAtExit();
    CloseOpenStation();
    cdbprinter.Orientation = PrinterOrientation;
    StoreTwips(MainTop, pos().y());
    StoreTwips(MainLeft, pos().x());
    SaveAppSettings();
    ReleaseHelp();
    // Also where another window is up. Not from within the closing, which quitting would start
    // anew.
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

}  // namespace rillbook
