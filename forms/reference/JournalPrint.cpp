#include "forms/reference/JournalPrint.h"

#include <algorithm>
#include <tuple>

#include "forms/reports/Print.h"
#include "platform/desktop/Printer.h"

namespace rillbook {

namespace {

constexpr double kLeft = 1152;
constexpr double kReadingsLeft = 3152;
constexpr double kReadingsStep = 1000;
constexpr double kNotesLeft = 7152;
constexpr double kLineGap = 10;
constexpr double kFootRoom = 3008;  // for the notes of a last row, and the footer
constexpr std::size_t kNotes = std::tuple_size_v<PrintedVisit> - 1;
constexpr qsizetype kPieceLength = 50;

void PrintHeader(Printer& printer, const QString& channel) {
    printer.Font.size = 10;
    printer.Font.bold = true;
    printer.Font.italic = false;
    printer.CurrentX = kLeft;
    printer.CurrentY = 1008;
    printer.Print(QStringLiteral("Journal and Calibration Offsets"));
    printer.CurrentX = kLeft;
    printer.Print(channel);
    printer.Font.size = 9;
    printer.Font.bold = false;
    printer.Font.italic = false;
    printer.CurrentX = kLeft;
    printer.CurrentY = 1708;
}

// The start of a text as far as a line holds it, on narrow paper with fewer characters; one that
// takes two places stays whole.
QString FirstPiece(const Printer& printer, const QString& text) {
    const double room = printer.Width() - kPrinterRim - kNotesLeft;
    qsizetype length = std::min(text.size(), kPieceLength);
    while (length > 1 && printer.TextWidth(text.left(length)) > room) {
        --length;
    }
    const bool parts = length > 0 && length < text.size() && text[length - 1].isHighSurrogate() &&
                       text[length].isLowSurrogate();
    return text.left(parts ? std::max(length - 1, qsizetype{2}) : length);
}

// Notes without a text take one line as well.
void PrintNotes(Printer& printer, QString notes) {
    do {
        const QString piece = FirstPiece(printer, notes);
        printer.CurrentX = kNotesLeft;
        printer.Print(piece);
        printer.CurrentY += kLineGap;
        notes.remove(0, piece.size());
    } while (!notes.isEmpty());
}

}  // namespace

void PrintJournal(Printer& printer, const QString& channel,
                  const std::vector<PrintedVisit>& visits) {
    PrintHeader(printer, channel);
    bool isHeading = true;
    for (const PrintedVisit& visit : visits) {
        printer.Font.bold = isHeading;
        isHeading = false;
        printer.CurrentX = kLeft;
        printer.PrintOn(visit[0]);
        for (std::size_t i = 1; i < kNotes; ++i) {
            printer.CurrentX = kReadingsLeft + kReadingsStep * static_cast<double>(i - 1);
            printer.PrintOn(visit[i]);
        }
        PrintNotes(printer, visit[kNotes]);
        if (printer.CurrentY > printer.Height() - kFootRoom) {
            PrintFooter(printer);
            printer.NewPage();
            PrintHeader(printer, channel);
        }
    }
    PrintFooter(printer);
}

}  // namespace rillbook
