#pragma once

#include <QPageSize>
#include <memory>
#include <optional>

#include "platform/desktop/Printer.h"

class QPrinter;

namespace rillbook {

// The machine's printers, and PDF files where it has none.
class QtPrinterDoor : public PrinterDoor {
public:
    QtPrinterDoor();
    // Prints to files alone, on this paper, whatever printers there are.
    explicit QtPrinterDoor(const QPageSize& paper);
    ~QtPrinterDoor() override;

    std::optional<int> Choose(const QString& title, int orientation) override;
    std::unique_ptr<Printer> BeginDoc(const QString& name, int orientation) override;

private:
    bool AskForFile(const QString& title, const QString& proposal);

    bool filesOnly_ = false;
    QPageSize paper_;
    std::optional<QString> file_;        // for the next document
    QString folder_;                     // of the latest file
    std::shared_ptr<QPrinter> printer_;  // with its settings; none before one is chosen
};

// Letter where the locale measures as the United States do, else A4.
QPageSize PaperOf(const QLocale& locale);

}  // namespace rillbook
