#pragma once

#include <QString>
#include <array>
#include <vector>

namespace rillbook {

class Printer;

// The texts of a visit from left to right: date and time, logger, actual, offset, discharge, notes.
using PrintedVisit = std::array<QString, 6>;

// The journal of a channel on upright pages, each with its header and footer, the visits below each
// other in this order. The first one holds the headings. The caller ends the document. Raises
// PrinterError.
void PrintJournal(Printer& printer, const QString& channel,
                  const std::vector<PrintedVisit>& visits);

}  // namespace rillbook
