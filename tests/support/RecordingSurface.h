#pragma once

#include <QStringList>
#include <memory>
#include <optional>

#include "platform/desktop/DrawingSurface.h"
#include "platform/desktop/Printer.h"

namespace rillbook {

// What was drawn, one operation a line, with the state that it was drawn with and whole twips:
//
//     text 100,200 Arial 8 bold black "Date"
//     line 0,0 150,75 width 4 (0,0,225)
//     box 0,0 150,75 width 1 white, filled white
//     circle 150,75 radius 34 black, filled black
//     strip 420,620 5000x20 (225,225,225)
//     clear white
//     new page
//     end of document
//     given up
//
// The last one stands where a document was let go before its end.
struct Recording {
    QStringList lines;
    QString Text() const { return lines.join(QLatin1Char('\n')); }
};

// One document, shared by the test and the printer that writes it.
struct PrintRecording : Recording {
    QString name;         // empty until the document has begun
    QString dialogTitle;  // of the printer dialog; empty where none was shown
    int dialogOrientation = 0;
    std::optional<int> turnedTo;  // by the user, in the dialog
    QString refusal;              // if not empty, no document can begin, for this reason
    int orientation = 0;          // of the document
    // After that many lines the printer fails: each further operation raises PrinterError with the
    // reason "Out of paper". Below 0 it never does.
    qsizetype linesUntilFailure = -1;
};

// A DrawingSurface or a Printer that writes down what it is asked to draw. Every character is 100
// twips wide and 200 high at 8 points, bold or not, and in proportion at other sizes.
template <typename Surface>
class Recorder : public Surface {
public:
    double TextWidth(const QString& text) const override;
    double TextHeight(const QString& text) const override;
    void Line(double x1, double y1, double x2, double y2) override;
    void Box(double x1, double y1, double x2, double y2) override;
    void Circle(double x, double y, double radius, Colour colour) override;
    void PaintStrip(Colour colour, double x, double y, double width, double height) override;

protected:
    void DrawText(double x, double y, const QString& text) override;
    virtual void Note(const QString& line) = 0;

private:
    QString FillText() const;
};

class RecordingSurface : public Recorder<DrawingSurface> {
public:
    RecordingSurface(double width, double height) : width_(width), height_(height) {}

    Recording recording;

    double ScaleWidth() const override { return width_; }
    double ScaleHeight() const override { return height_; }
    void Clear(Colour background) override;

protected:
    void Note(const QString& line) override { recording.lines += line; }

private:
    double width_;
    double height_;
};

class RecordingPrinter : public Recorder<Printer> {
public:
    RecordingPrinter(double width, double height, std::shared_ptr<PrintRecording> recording);
    ~RecordingPrinter() override;

    double Width() const override { return width_; }
    double Height() const override { return height_; }
    void Clear(Colour) override {}
    void NewPage() override;
    void EndDoc() override;

protected:
    void Note(const QString& line) override;

private:
    double width_;
    double height_;
    std::shared_ptr<PrintRecording> recording_;
    bool ended_ = false;
};

}  // namespace rillbook
