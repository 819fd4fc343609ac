#include "graphs/GraphForm.h"

#include <QResizeEvent>

#include "app/InitialFile.h"
#include "compute/Compute.h"
#include "forms/main/DesktopApplication.h"
#include "forms/reports/Print.h"
#include "platform/ado/AdoError.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/Printer.h"
#include "platform/desktop/Screen.h"
#include "platform/qt/RememberedWindow.h"
#include "platform/qt/Twips.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "ui_GraphForm.h"

namespace rillbook {

namespace {

const RememberedWindow kPlace{GraphH, GraphW, GraphT, GraphL, GraphM};

// Entry 0 and the spare one; each record in the period adds one to InstTimes.
constexpr std::size_t kEmptySeries = 2;

QString ReasonForNoGraph() {
    const ChannelInfoData& channel = ChannelInfo[StationInfo.OutputChannel];
    return channel.GraphMin < channel.GraphMax
               ? QStringLiteral("No data within dates!")
               : QStringLiteral("Max value must be greater than Min Value");
}

}  // namespace

GraphForm::GraphForm(const Kind& kind, const QString& projectName, CommonDialog& printerDialog,
                     QWidget* parent)
    : ReportForm(kind.mode, printerDialog, parent),
      seriesCount_(kind.seriesCount),
      projectName_(projectName),
      ui_(std::make_unique<Ui::GraphForm>()) {
    ui_->setupUi(this);
    // A window without a control for the focus would leave it in the menu bar, which takes Esc.
    ui_->Picture1->setFocus();
    setObjectName(kind.name);
    ConnectCommonCommands();
    connect(ui_->mnuFilePrint, &QAction::triggered, this, &GraphForm::PrintGraph);
    ui_->mnuEditCopy->setShortcut(QKeySequence::Copy);
    connect(ui_->mnuEditCopy, &QAction::triggered, ui_->Picture1, &PictureBox::CopyToClipboard);
    kPlace.Restore(*this);
    setWindowTitle(kind.captionHead + projectName);
    FitPicture();
}

GraphForm::~GraphForm() = default;

void GraphForm::done(int result) {
    kPlace.Remember(*this);
    QDialog::done(result);
}

void GraphForm::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    FitPicture();
    RebuildSoon();
}

void GraphForm::FitPicture() {
    QSize picture = ui_->Picture1->size();
    if (ToTwips(width()) > 360) {
        picture.setWidth(ToPixels(ToTwips(width()) - 125));
    }
    if (ToTwips(height()) > 500) {
        picture.setHeight(ToPixels(ToTwips(height()) - 685));
    }
    ui_->Picture1->resize(picture);
}

// Waits until the window is shown: its first size comes before that. If the latest load failed or
// found no reading, the user has read why, and there is still nothing to draw.
void GraphForm::RebuildSoon() {
    if (rebuildsSoon_) {
        return;
    }
    rebuildsSoon_ = true;
    const auto rebuild = [this] {
        rebuildsSoon_ = false;
        if (isVisible() && hasReadings_) {
            Rebuild();
        }
    };
    QMetaObject::invokeMethod(this, rebuild, Qt::QueuedConnection);
}

void GraphForm::Rebuild() {
    const QSize size = ui_->Picture1->size();
    hasReadings_ = false;
    try {
        LoadGraph(false, ui_->Picture1->Surface());
        hasReadings_ = InstCount > 0;
    } catch (const std::exception& failure) {
        TellFailure(failure);
    }
    // The user can resize the window, or the desktop maximise it, while a message is shown.
    if (hasReadings_ && ui_->Picture1->size() != size) {
        RebuildSoon();
    }
}

bool GraphForm::LoadGraph(bool toPrinter, DrawingSurface& surface) {
    const Hourglass hourglass;
    const int chan = StationInfo.OutputChannel;
    const DateTime from = ReportBeginDate;
    const DateTime to = ReportEndDate + 1;  // the last day is shown whole
    LoadValues(from, to, chan);
    try {
        LoadMeasuredValues(chan);
    } catch (const AdoError&) {
        if (InstCount > 0) {
            throw;
        }
        // There is nothing to draw, and LoadSeries has reported why.
    }
    const ChartPoints points = Points(chan);
    const ChannelInfoData& channel = ChannelInfo[chan];
    const ChartTexts texts{.title1 = channel.RecSta + TitleWords(chan) + ReportDescription(chan),
                           .title2 = projectName_,
                           .xTitle = QStringLiteral("Date"),
                           .yTitle = ReportLabel(chan)};
    // The settings refuse limits in the wrong order, but a station's file may have them.
    const bool draws = channel.GraphMin < channel.GraphMax && points.count > 1 && to > from;
    if (draws) {
        DrawChart(points.table, from, to, channel.GraphMin, channel.GraphMax, texts, seriesCount_,
                  points.count, toPrinter, surface);
    }
    return draws;
}

// LoadSeries is silent about records without a value for the channel.
void GraphForm::PrintGraph() {
    cdbprinter_.DialogTitle = QStringLiteral("Print");
    cdbprinter_.Orientation = cdlLandscape;
    try {
        cdbprinter_.ShowPrinter();
        PrintDocument(windowTitle(), cdbprinter_.Orientation, [this](Printer& printer) {
            const bool drawn = LoadGraph(true, printer);
            if (drawn) {
                PrintFooter(printer);
            } else if (InstCount > 0 || InstTimes.size() > kEmptySeries) {
                throw PrinterError(ReasonForNoGraph());
            }
            return drawn;
        });
    } catch (const DialogCancelledError&) {
        return;
    } catch (const std::exception& failure) {
        TellFailure(failure);
    }
}

}  // namespace rillbook
