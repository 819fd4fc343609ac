#include "platform/qt/QtPrinter.h"

#include <QBuffer>
#include <QFileInfo>
#include <QLocale>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <utility>
#include <vector>

#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/ReplaceFile.h"
#include "platform/qt/PainterSurface.h"
#include "platform/qt/QtDoors.h"

namespace rillbook {

namespace {

constexpr int kPdfDotsPerInch = 1200;
constexpr double kTwipsPerInch = 1440;
constexpr double kTwipsPerPoint = 20;
constexpr double kPensPerInch = 600;

QPageLayout::Orientation OrientationOf(int orientation) {
    return orientation == cdlLandscape ? QPageLayout::Landscape : QPageLayout::Portrait;
}

// A document that is kept as steps until it is whole: printers start on a page at once, and a
// document once begun can't be taken back from them.
class PagedDocument : public Printer, public PainterSurface {
public:
    double Width() const override { return PageSize().width() * kTwipsPerPoint; }
    double Height() const override { return PageSize().height() * kTwipsPerPoint; }
    void Clear(Colour) override {}

    void NewPage() override {
        pages_.emplace_back();
        CurrentX = 0;
        CurrentY = 0;
    }

protected:
    virtual const QPagedPaintDevice& Pages() const = 0;

    const QPaintDevice& Device() const override { return Pages(); }
    double DotsPerInch() const override { return Pages().logicalDpiX(); }
    double DotsPerPen() const override { return DotsPerInch() / kPensPerInch; }
    void Paint(Step step) override { pages_.back().push_back(std::move(step)); }

    // False where the device fails.
    bool Draw(QPagedPaintDevice& device) const {
        QPainter painter;
        if (!painter.begin(&device)) {
            return false;
        }
        const double dotsPerTwip = DotsPerInch() / kTwipsPerInch;
        const QRectF drawable(0, 0, ScaleWidth() * dotsPerTwip, ScaleHeight() * dotsPerTwip);
        for (std::size_t page = 0; page < pages_.size(); ++page) {
            if (page > 0 && !device.newPage()) {
                return false;
            }
            painter.setClipRect(drawable);
            for (const Step& step : pages_[page]) {
                step(painter);
            }
        }
        return painter.end();
    }

private:
    QSizeF PageSize() const { return Pages().pageLayout().fullRect(QPageLayout::Point).size(); }

    std::vector<std::vector<Step>> pages_{1};
};

class PdfDocument : public PagedDocument {
public:
    PdfDocument(const QString& path, const QString& name, const QPageLayout& layout)
        : path_(path), pdf_(&contents_) {
        pdf_.setResolution(kPdfDotsPerInch);
        pdf_.setPageLayout(layout);
        pdf_.setTitle(name);
        pdf_.setCreator(TheDesktop().programTitle);
    }

    void EndDoc() override {
        contents_.open(QIODevice::WriteOnly);
        const QString reason = Draw(pdf_) ? ReplaceFile(path_, contents_.data())
                                          : QStringLiteral("The page can't be drawn");
        if (!reason.isEmpty()) {
            throw PrinterError(QStringLiteral("Can't write %1: %2").arg(path_, reason));
        }
    }

protected:
    const QPagedPaintDevice& Pages() const override { return pdf_; }

private:
    QString path_;
    QBuffer contents_;
    QPdfWriter pdf_;
};

class PrinterDocument : public PagedDocument {
public:
    PrinterDocument(std::shared_ptr<QPrinter> printer, const QString& name, int orientation)
        : printer_(std::move(printer)) {
        printer_->setFullPage(true);
        printer_->setPageOrientation(OrientationOf(orientation));
        printer_->setDocName(name);
    }

    void EndDoc() override {
        // A printer that has gone takes a document and loses it without a word.
        const QString name = printer_->printerName();
        if (QPrinterInfo::printerInfo(name).isNull() || !Draw(*printer_) ||
            printer_->printerState() == QPrinter::Error ||
            printer_->printerState() == QPrinter::Aborted) {
            throw PrinterError(QStringLiteral("Can't print on %1.").arg(name));
        }
    }

protected:
    const QPagedPaintDevice& Pages() const override { return *printer_; }

private:
    std::shared_ptr<QPrinter> printer_;
};

// The default printer, or where none is the default, the first; nullptr without printers. One that
// was chosen before stands for the default while it is there.
std::shared_ptr<QPrinter> DefaultPrinter(const QPrinter* chosen) {
    QPrinterInfo info;
    if (chosen != nullptr) {
        info = QPrinterInfo::printerInfo(chosen->printerName());
    }
    if (info.isNull()) {
        info = QPrinterInfo::defaultPrinter();
    }
    if (info.isNull()) {
        info = QPrinterInfo::availablePrinters().value(0);
    }
    return info.isNull() ? nullptr : std::make_shared<QPrinter>(info, QPrinter::HighResolution);
}

}  // namespace

QPageSize PaperOf(const QLocale& locale) {
    return QPageSize(locale.measurementSystem() == QLocale::ImperialUSSystem ? QPageSize::Letter
                                                                             : QPageSize::A4);
}

QtPrinterDoor::QtPrinterDoor() : paper_(PaperOf(QLocale::system())) {}

QtPrinterDoor::QtPrinterDoor(const QPageSize& paper) : filesOnly_(true), paper_(paper) {}

QtPrinterDoor::~QtPrinterDoor() = default;

std::optional<int> QtPrinterDoor::Choose(const QString& title, int orientation) {
    file_.reset();
    const std::shared_ptr<QPrinter> printer = filesOnly_ ? nullptr : DefaultPrinter(printer_.get());
    if (printer == nullptr) {
        return AskForFile(title, {}) ? std::optional(orientation) : std::nullopt;
    }
    printer->setPageOrientation(OrientationOf(orientation));
    QPrintDialog dialog(printer.get(), WindowOnTop());
    dialog.setWindowTitle(title);
    // All pages of a document are printed, so there is no choice among them.
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    const QPageLayout layout = printer->pageLayout();
    if (printer->outputFileName().isEmpty()) {
        printer_ = printer;
    } else {
        file_ = printer->outputFileName();
        paper_ = layout.pageSize();
    }
    return layout.orientation() == QPageLayout::Landscape ? cdlLandscape : cdlPortrait;
}

std::unique_ptr<Printer> QtPrinterDoor::BeginDoc(const QString& name, int orientation) {
    std::shared_ptr<QPrinter> printer;
    if (!file_) {
        printer = printer_ != nullptr || filesOnly_ ? printer_ : DefaultPrinter(nullptr);
        if (printer == nullptr && !AskForFile(QStringLiteral("Print"), name)) {
            throw DialogCancelledError();
        }
    }
    if (printer != nullptr) {
        return std::make_unique<PrinterDocument>(printer, name, orientation);
    }
    const QPageLayout layout(paper_, OrientationOf(orientation), QMarginsF());
    return std::make_unique<PdfDocument>(*std::exchange(file_, std::nullopt), name, layout);
}

bool QtPrinterDoor::AskForFile(const QString& title, const QString& proposal) {
    FileRequest request{.save = true,
                        .title = title,
                        .folder = folder_,
                        .filter = QStringLiteral("PDF Files (*.pdf)|*.pdf|All Files (*.*)|*.*"),
                        .fileName = proposal,
                        .confirmOverwrite = true};
    if (!proposal.isEmpty()) {
        request.fileName.replace(u'/', u'-').append(QStringLiteral(".pdf"));
    }
    file_ = FileDialogs().Ask(request);
    if (file_) {
        folder_ = QFileInfo(*file_).absolutePath();
    }
    return file_.has_value();
}

}  // namespace rillbook
