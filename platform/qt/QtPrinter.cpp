#include "platform/qt/QtPrinter.h"

#include <QAbstractButton>
#include <QBuffer>
#include <QFileInfo>
#include <QLineEdit>
#include <QLocale>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinterInfo>
#include <utility>
#include <vector>

#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/ReplaceFile.h"
#include "platform/qt/PainterSurface.h"
#include "platform/qt/PrintQueue.h"
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

// Raises PrinterError if the printer's queue does not take a document.
void CheckQueue(const QString& printer) {
    const QString fault = QueueFault(printer);
    if (!fault.isEmpty()) {
        throw PrinterError(fault);
    }
}

// A document that is kept as steps until it is whole: printers start on a page at once, and cannot
// take it back.
class PagedDocument : public Printer, public PainterSurface {
public:
    // `wanted` are the pages that EndDoc prints, counted from 1; if empty, all.
    explicit PagedDocument(const QPageRanges& wanted) : wanted_(wanted) {}

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

    // False if the device fails.
    bool Draw(QPagedPaintDevice& device) const {
        const std::vector<const std::vector<Step>*> pages = WantedPages();
        QPainter painter;
        if (!painter.begin(&device)) {
            return false;
        }
        const double dotsPerTwip = DotsPerInch() / kTwipsPerInch;
        const QRectF drawable(0, 0, ScaleWidth() * dotsPerTwip, ScaleHeight() * dotsPerTwip);
        for (const std::vector<Step>* page : pages) {
            if (page != pages.front() && !device.newPage()) {
                return false;
            }
            painter.setClipRect(drawable);
            for (const Step& step : *page) {
                step(painter);
            }
        }
        return painter.end();
    }

private:
    QSizeF PageSize() const { return Pages().pageLayout().fullRect(QPageLayout::Point).size(); }

    std::vector<const std::vector<Step>*> WantedPages() const {
        std::vector<const std::vector<Step>*> wanted;
        int number = 0;
        for (const std::vector<Step>& page : pages_) {
            ++number;
            if (wanted_.isEmpty() || wanted_.contains(number)) {
                wanted.push_back(&page);
            }
        }
        if (wanted.empty()) {
            throw PrinterError(QStringLiteral("The chosen pages are %1, the last page is %2.")
                                   .arg(wanted_.toString())
                                   .arg(number));
        }
        return wanted;
    }

    std::vector<std::vector<Step>> pages_{1};
    QPageRanges wanted_;
};

class PdfDocument : public PagedDocument {
public:
    PdfDocument(const PdfFile& file, const QString& name, const QPageLayout& layout)
        : PagedDocument(file.pages), path_(file.path), pdf_(&contents_) {
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
    PrinterDocument(std::unique_ptr<QPrinter> printer, const QString& name, int orientation)
        : PagedDocument(printer->pageRanges()), printer_(std::move(printer)) {
        printer_->setFullPage(true);
        printer_->setPageOrientation(OrientationOf(orientation));
        printer_->setDocName(name);
    }

    void EndDoc() override {
        const QString name = printer_->printerName();
        CheckQueue(name);
        if (!Draw(*printer_) || printer_->printerState() == QPrinter::Error ||
            printer_->printerState() == QPrinter::Aborted) {
            throw PrinterError(QStringLiteral("Can't print on %1.").arg(name));
        }
    }

protected:
    const QPagedPaintDevice& Pages() const override { return *printer_; }

private:
    std::unique_ptr<QPrinter> printer_;
};

// The default printer or, without one, the first; null without printers.
QPrinterInfo DefaultPrinter() {
    const QPrinterInfo printer = QPrinterInfo::defaultPrinter();
    return printer.isNull() ? QPrinterInfo::availablePrinters().value(0) : printer;
}

// Qt 6.4 rejects every text that is typed into this field of its dialog. The fields of the first
// and the last page remain.
void HideListOfPages(const QPrintDialog& dialog) {
    if (auto* choice = dialog.findChild<QAbstractButton*>(QStringLiteral("pagesRadioButton"))) {
        choice->hide();
    }
    if (auto* pages = dialog.findChild<QLineEdit*>(QStringLiteral("pagesLineEdit"))) {
        pages->hide();
    }
}

}  // namespace

std::unique_ptr<Printer> NewPdfDocument(const PdfFile& file, const QString& name,
                                        const QPageLayout& layout) {
    return std::make_unique<PdfDocument>(file, name, layout);
}

QPageSize PaperOf(const QLocale& locale) {
    return QPageSize(locale.measurementSystem() == QLocale::ImperialUSSystem ? QPageSize::Letter
                                                                             : QPageSize::A4);
}

QtPrinterDoor::QtPrinterDoor() : paper_(PaperOf(QLocale::system())) {}

QtPrinterDoor::QtPrinterDoor(const QPageSize& paper) : filesOnly_(true), paper_(paper) {}

QtPrinterDoor::~QtPrinterDoor() = default;

std::optional<int> QtPrinterDoor::Choose(const QString& title, int orientation) {
    file_.reset();
    next_.reset();
    if (chosen_ && QPrinterInfo::printerInfo(chosen_->name).isNull()) {
        chosen_.reset();
    }
    std::unique_ptr<QPrinter> printer = NewPrinter();
    if (printer == nullptr) {
        return AskForFile(title, {}) ? std::optional(orientation) : std::nullopt;
    }
    printer->setPageOrientation(OrientationOf(orientation));
    QPrintDialog dialog(printer.get(), WindowOnTop());
    dialog.setWindowTitle(title);
    HideListOfPages(dialog);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    const QPageLayout layout = printer->pageLayout();
    if (printer->outputFileName().isEmpty()) {
        chosen_ = {printer->printerName(), layout.pageSize(), printer->duplex()};
        next_ = std::move(printer);
    } else {
        file_ = {printer->outputFileName(), printer->pageRanges()};
        paper_ = layout.pageSize();
    }
    return layout.orientation() == QPageLayout::Landscape ? cdlLandscape : cdlPortrait;
}

std::unique_ptr<Printer> QtPrinterDoor::BeginDoc(const QString& name, int orientation) {
    if (!file_) {
        std::unique_ptr<QPrinter> printer = next_ != nullptr ? std::move(next_) : NewPrinter();
        if (printer != nullptr) {
            CheckQueue(printer->printerName());
            return std::make_unique<PrinterDocument>(std::move(printer), name, orientation);
        }
        if (chosen_) {
            throw PrinterError(PrinterIsGone(std::exchange(chosen_, std::nullopt)->name));
        }
        if (!AskForFile(QStringLiteral("Print"), name)) {
            throw DialogCancelledError();
        }
    }
    const QPageLayout layout(paper_, OrientationOf(orientation), QMarginsF());
    return NewPdfDocument(*std::exchange(file_, std::nullopt), name, layout);
}

// A used QPrinter would keep the page range and the copies of its document.
std::unique_ptr<QPrinter> QtPrinterDoor::NewPrinter() const {
    if (filesOnly_) {
        return nullptr;
    }
    const QPrinterInfo info = chosen_ ? QPrinterInfo::printerInfo(chosen_->name) : DefaultPrinter();
    if (info.isNull()) {
        return nullptr;
    }
    auto printer = std::make_unique<QPrinter>(info, QPrinter::HighResolution);
    // Otherwise Qt 6.4 begins with A4, whatever the printer's own paper is.
    const QPageSize paper = chosen_ ? chosen_->paper : info.defaultPageSize();
    if (paper.isValid()) {
        printer->setPageSize(paper);
    }
    if (chosen_) {
        printer->setDuplex(chosen_->duplex);
    }
    return printer;
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
    const std::optional<QString> path = FileDialogs().Ask(request);
    if (path) {
        file_ = {*path, {}};
        folder_ = QFileInfo(*path).absolutePath();
    }
    return path.has_value();
}

}  // namespace rillbook
