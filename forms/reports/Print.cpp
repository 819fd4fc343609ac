#include "forms/reports/Print.h"

#include <cstddef>

#include "app/Application.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Printer.h"
#include "platform/desktop/Screen.h"
#include "platform/text/DateTime.h"
#include "store/StationDatabase.h"

namespace rillbook {

namespace {

constexpr double kLeft = 1152;
constexpr double kTop = 1008;

void SetStyle(Printer& printer, double size, bool bold, bool italic) {
    printer.Font.size = size;
    printer.Font.bold = bold;
    printer.Font.italic = italic;
}

void PrintLine(Printer& printer, const QString& text) {
    printer.CurrentX = kLeft;
    printer.Print(text);
}

// The rows spread evenly from 1808 below the top edge to 1808 above the bottom edge, the columns,
// set flush right, from 2152 to 1472 before the right edge. The row of totals keeps its place.
void PrintCells(Printer& printer, const AnnualSheet& sheet, int lastRow) {
    const double height = printer.Height() - 1008 - 1600 - 1008;
    const double width = printer.Width() - 1152 - 1872 - 600;
    for (int row = 1; row <= lastRow; ++row) {
        for (int col = 1; col < AnnualSheet::kCols; ++col) {
            const QString& cell =
                sheet.cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)];
            printer.Font.bold = row == AnnualSheet::kHeaderRow || col == AnnualSheet::kLabelCol;
            printer.CurrentY = 1808 + height * (row - 1) / 36;
            printer.CurrentX = 2152 + width * (col - 1) / 13 - printer.TextWidth(cell);
            printer.Print(cell);
        }
    }
}

}  // namespace

void PrintDocument(const QString& name, int orientation,
                   const std::function<bool(Printer& printer)>& draw) {
    try {
        const Hourglass hourglass;
        const std::unique_ptr<Printer> printer = Printers().BeginDoc(name, orientation);
        if (draw(*printer)) {
            printer->EndDoc();
        }
    } catch (const DialogCancelledError&) {
        return;
    } catch (const PrinterError& error) {
        TellFault(name + QStringLiteral(" could not be printed"), error.Reason());
    }
}

void PrintFooter(Printer& printer) {
    const QString version = QStringLiteral("v%1.%2.%3")
                                .arg(Application::Major())
                                .arg(Application::Minor())
                                .arg(Application::Revision());
    printer.Font.name = QStringLiteral("Arial");
    SetStyle(printer, 8, false, true);
    printer.CurrentY = printer.Height() - 1008 - 500;
    PrintLine(printer, StationTitle + QStringLiteral("    ") + ShortDateText(Now()));
    PrintLine(printer, Application::Title() + u' ' + version);
}

void PrintAnnualSheet(Printer& printer, const AnnualHeading& heading, const AnnualSheet& sheet) {
    SetStyle(printer, 10, false, false);
    printer.CurrentY = kTop;
    PrintLine(printer, heading.title1);
    PrintLine(printer, heading.title2);
    SetStyle(printer, 8, false, false);
    printer.CurrentY = 1608;
    if (heading.printPeak) {
        PrintLine(printer, QStringLiteral("Instantaneous Peak: ") + heading.peak);
    }
    PrintCells(printer, sheet, heading.printTotals ? AnnualSheet::kTotalRow : AnnualSheet::kMaxRow);
}

}  // namespace rillbook
