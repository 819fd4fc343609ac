#pragma once

#include <QByteArray>
#include <QString>
#include <exception>
#include <memory>

#include "platform/desktop/DrawingSurface.h"

namespace rillbook {

enum PrinterOrientationConstants : int { cdlPortrait = 1, cdlLandscape = 2 };

// The printer, or the file that stands for it, can't go on.
class PrinterError : public std::exception {
public:
    explicit PrinterError(const QString& reason) : reason_(reason), utf8_(reason.toUtf8()) {}
    const QString& Reason() const { return reason_; }
    const char* what() const noexcept override { return utf8_.constData(); }

private:
    QString reason_;
    QByteArray utf8_;
};

// One document in the making, its first page begun. Positions count from the corner of the paper,
// not from that of its printable part. Let go without EndDoc, it never comes to be: no page is
// printed, no file is written or replaced.
class Printer : public virtual DrawingSurface {
public:
    // Of the page, in its orientation, in twips. ScaleWidth and ScaleHeight are the same.
    double Width() const { return ScaleWidth(); }
    double Height() const { return ScaleHeight(); }

    // Goes on at the corner of an empty page, with the same font and pens.
    virtual void NewPage() = 0;
    // Raises PrinterError where the document can't be handed over whole.
    virtual void EndDoc() = 0;
};

class PrinterDoor {
public:
    virtual ~PrinterDoor() = default;

    // The printer dialog under this title, set to an orientation: the user chooses a printer or,
    // where the machine has none, the PDF file that stands for it. A file holds for the next
    // document alone, a printer until another is chosen. False if the user cancelled.
    virtual bool Choose(const QString& title, int orientation) = 0;

    // Begins a document on the chosen printer, else on the default one; where the machine has none
    // and no file was chosen, asks for one. Raises DialogCancelledError or PrinterError.
    virtual std::unique_ptr<Printer> BeginDoc(const QString& name, int orientation) = 0;
};

}  // namespace rillbook
