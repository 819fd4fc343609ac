#pragma once

#include <QPageRanges>
#include <QPageSize>
#include <QPrinter>
#include <memory>
#include <optional>

#include "platform/desktop/Printer.h"

namespace rillbook {

struct PdfFile {
    QString path;
    QPageRanges pages;  // to be written, counted from 1; if empty, all
};

// The machine's printers, and PDF files if it has none.
class QtPrinterDoor : public PrinterDoor {
public:
    QtPrinterDoor();
    // Prints only to files, on this paper, whatever printers there are.
    explicit QtPrinterDoor(const QPageSize& paper);
    ~QtPrinterDoor() override;

    std::optional<int> Choose(const QString& title, int orientation) override;
    std::unique_ptr<Printer> BeginDoc(const QString& name, int orientation) override;

private:
    // What later documents take over from the printer dialog.
    struct ChosenPrinter {
        QString name;
        QPageSize paper;
        QPrinter::DuplexMode duplex;
    };

    // The chosen printer, else the default one; null if the machine has none or the chosen one is
    // gone.
    std::unique_ptr<QPrinter> NewPrinter() const;
    bool AskForFile(const QString& title, const QString& proposal);

    bool filesOnly_ = false;
    QPageSize paper_;              // of files
    std::optional<PdfFile> file_;  // for the next document
    QString folder_;               // of the latest file
    std::optional<ChosenPrinter> chosen_;
    std::unique_ptr<QPrinter> next_;  // as the dialog left it, for the next document
};

// A document that EndDoc writes to a PDF file.
std::unique_ptr<Printer> NewPdfDocument(const PdfFile& file, const QString& name,
                                        const QPageLayout& layout);

// Letter where the locale measures as the United States do, else A4.
QPageSize PaperOf(const QLocale& locale);

}  // namespace rillbook
