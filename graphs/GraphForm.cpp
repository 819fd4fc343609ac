#include "graphs/GraphForm.h"

#include <QBuffer>
#include <QResizeEvent>

#include "app/InitialFile.h"
#include "compute/Compute.h"
#include "forms/main/DesktopApplication.h"
#include "forms/main/frmAbout.h"
#include "forms/reports/Print.h"
#include "forms/reports/frmOutputSettings.h"
#include "platform/ado/AdoError.h"
#include "platform/desktop/Clipboard.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/Desktop.h"
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

}  // namespace

GraphForm::GraphForm(const Kind& kind, const QString& projectName, CommonDialog& printerDialog,
                     QWidget* parent)
    : QDialog(parent),
      kind_(kind),
      projectName_(projectName),
      cdbprinter_(printerDialog),
      ui_(std::make_unique<Ui::GraphForm>()) {
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    ui_->setupUi(this);
    setObjectName(kind.name);
    ConnectCommands();
    kPlace.Restore(*this);
    setWindowTitle(kind.captionHead + projectName);
    FitPicture();
}

GraphForm::~GraphForm() = default;

void GraphForm::done(int result) {
    kPlace.Remember(*this);
    QDialog::done(result);
}

void GraphForm::ConnectCommands() {
    connect(ui_->mnuFilePrint, &QAction::triggered, this, &GraphForm::PrintGraph);
    connect(ui_->mnuFileExit, &QAction::triggered, this, &QWidget::close);
    connect(ui_->mnuEditCopy, &QAction::triggered, this, &GraphForm::CopyPicture);
    connect(ui_->mnuEditSettings, &QAction::triggered, this, &GraphForm::ShowSettings);
    connect(ui_->mnuEditRefresh, &QAction::triggered, this, &GraphForm::Redraw);
    connect(ui_->mnuHelpAbout, &QAction::triggered, this, [this] { frmAbout(this).exec(); });
}

void GraphForm::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    FitPicture();
    RedrawSoon();
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

// Once the window stands: the first size comes before it does, and a maximised one gets its second
// size at once. A message about the readings would come before its window, and twice.
void GraphForm::RedrawSoon() {
    if (!redrawsSoon_) {
        redrawsSoon_ = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                redrawsSoon_ = false;
                if (isVisible()) {
                    Redraw();
                }
            },
            Qt::QueuedConnection);
    }
}

void GraphForm::Redraw() {
    try {
        LoadGraph(false, ui_->Picture1->Surface());
    } catch (const std::exception& failure) {
        TellFailure(failure);
    }
}

void GraphForm::LoadGraph(bool toPrinter, DrawingSurface& surface) {
    const Hourglass hourglass;
    const int chan = StationInfo.OutputChannel;
    const ChannelInfoData& channel = ChannelInfo[chan];
    const DateTime from = ReportBeginDate;
    const DateTime to = ReportEndDate + 1;  // the last day is shown whole
    LoadValues(from, to, chan);
    try {
        LoadMeasuredValues(chan);
    } catch (const AdoError&) {
        if (InstCount > 0) {
            throw;
        }
        // There is nothing to draw, and the user has been told why.
    }
    const ChartPoints points = Points(chan);
    const ChartTexts texts{.title1 = channel.RecSta + TitleWords(chan) + ReportDescription(chan),
                           .title2 = projectName_,
                           .xTitle = QStringLiteral("Date"),
                           .yTitle = ReportLabel(chan)};
    // A station's file may hold limits in the wrong order, which the settings don't take.
    if (channel.GraphMin < channel.GraphMax && points.count > 1 && to > from) {
        DrawChart(points.table, from, to, channel.GraphMin, channel.GraphMax, texts,
                  kind_.seriesCount, points.count, toPrinter, surface);
    }
}

void GraphForm::PrintGraph() {
    try {
        cdbprinter_.DialogTitle = QStringLiteral("Print");
        cdbprinter_.Orientation = cdlLandscape;
        cdbprinter_.ShowPrinter();
        const Hourglass hourglass;
        const std::unique_ptr<Printer> printer =
            Printers().BeginDoc(windowTitle(), cdbprinter_.Orientation);
        LoadGraph(true, *printer);
        PrintFooter(*printer);
        printer->EndDoc();
    } catch (const DialogCancelledError&) {
        return;
    } catch (const std::exception& failure) {
        TellFailure(failure);
    }
}

void GraphForm::CopyPicture() {
    QBuffer bitmap;
    ui_->Picture1->Image().save(&bitmap, "BMP");
    TheClipboard().Clear();
    TheClipboard().SetBitmap(bitmap.data());
}

void GraphForm::ShowSettings() {
    SettingsMode = kind_.mode;
    frmOutputSettings(this).exec();
    if (!DialogCancelled) {
        Redraw();
    }
}

}  // namespace rillbook
