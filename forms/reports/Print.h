#pragma once

#include "forms/reports/AnnualSheet.h"

namespace rillbook {

class Printer;

// The foot of the page in progress: the station's file and today's date, the program and its
// version. The caller ends the page or the document.
void PrintFooter(Printer& printer);

struct AnnualPrintChoice {
    bool peak = true;    // the peak line
    bool totals = true;  // the row of totals
};

// The yearly sheet as the texts stand on the screen, on one landscape page; the document stays
// open.
void PrintAnnualSheet(Printer& printer, const QString& title1, const QString& title2,
                      const QString& peak, const AnnualSheet& cells,
                      const AnnualPrintChoice& choice);

}  // namespace rillbook
