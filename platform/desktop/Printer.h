#pragma once

#include <QByteArray>
#include <QString>
#include <exception>
#include <memory>
#include <optional>

#include "platform/desktop/DrawingSurface.h"

namespace rillbook {

enum PrinterOrientationConstants : int { cdlPortrait = 1, cdlLandscape = 2 };

// The document cannot be printed.
class PrinterError : public std::exception {
public:
    explicit PrinterError(const QString& reason) : reason_(reason), utf8_(reason.toUtf8()) {}
    const QString& Reason() const { return reason_; }
    const char* what() const noexcept override { return utf8_.constData(); }

private:
    QString reason_;
    QByteArray utf8_;
};

// What printers leave blank at each side of the paper, in twips: a quarter of an inch.
constexpr double kPrinterRim = 360;

// One document with its first page begun. Positions count from the corner of the paper. If
// destroyed before EndDoc, no page is printed, and no file is written or replaced.
class Printer : public virtual DrawingSurface {
public:
    // Paper size in twips, for the current orientation.
    virtual double Width() const = 0;
    virtual double Height() const = 0;

    // What can be drawn on from the paper's corner: its size less the rims of both sides. Nothing
    // is drawn beyond.
    double ScaleWidth() const override { return Width() - 2 * kPrinterRim; }
    double ScaleHeight() const override { return Height() - 2 * kPrinterRim; }

    // Goes on at the corner of an empty page, with the same font and pens.
    virtual void NewPage() = 0;
    // Prints the pages that the user chose, by default all. Raises PrinterError if none of the
    // chosen pages exists, or if the document cannot be printed whole.
    virtual void EndDoc() = 0;
};

class PrinterDoor {
public:
    virtual ~PrinterDoor() = default;

    // The printer dialog under this title, set to an orientation: the user chooses a printer or, if
    // the machine has none, a PDF file in its place. A printer, its paper and its duplex mode are
    // used until others are chosen; a file, the page range and all else only for the next document.
    // Returns the orientation that the user leaves it at, or nothing if the user cancelled.
    virtual std::optional<int> Choose(const QString& title, int orientation) = 0;

    // Begins a document on the chosen printer, else on the default one; if the machine has none
    // and no file was chosen, asks for one. Raises DialogCancelledError, or PrinterError if the
    // printer is not available any more or does not accept documents.
    virtual std::unique_ptr<Printer> BeginDoc(const QString& name, int orientation) = 0;
};

}  // namespace rillbook
