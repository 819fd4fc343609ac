#pragma once

#include <functional>

#include "forms/reports/AnnualSheet.h"

namespace rillbook {

class Printer;

// Runs a print command to its end under the hourglass: begins a document in this orientation, lets
// `draw` fill its pages, and prints them. Prints nothing if `draw` returns false, if the user
// cancels, or if the printer fails; the last shows one message with the document's name and the
// reason.
void PrintDocument(const QString& name, int orientation,
                   const std::function<bool(Printer& printer)>& draw);

// The foot of the page in progress: the station's file and today's date, the program and its
// version. The caller ends the page or the document. Raises PrinterError.
void PrintFooter(Printer& printer);

// What stands above the yearly sheet's table, and which parts of the sheet are wanted.
struct AnnualHeading {
    QString title1;
    QString title2;
    QString peak;
    bool printPeak = true;    // the peak line
    bool printTotals = true;  // the row of totals
};

// The yearly sheet as the texts stand on the screen, spread over one page of any size. A part that
// isn't wanted leaves its place empty. Raises PrinterError.
void PrintAnnualSheet(Printer& printer, const AnnualHeading& heading, const AnnualSheet& sheet);

}  // namespace rillbook
