#include "tests/support/RecordingSurface.h"

#include <cmath>
#include <utility>

namespace rillbook {

namespace {

QString Number(double value) {
    return QString::number(std::round(value) + 0.0, 'f', 0);  // never "-0"
}

QString Point(double x, double y) {
    return Number(x) + u',' + Number(y);
}

QString ColourText(Colour colour) {
    if (colour == kBlack) {
        return u"black"_qs;
    }
    if (colour == kWhite) {
        return u"white"_qs;
    }
    return u"(%1,%2,%3)"_qs.arg(colour.red).arg(colour.green).arg(colour.blue);
}

QString FontText(const SurfaceFont& font) {
    return font.name + u' ' + QString::number(font.size) + (font.bold ? u" bold"_qs : QString()) +
           (font.italic ? u" italic"_qs : QString());
}

}  // namespace

template <typename Surface>
double Recorder<Surface>::TextWidth(const QString& text) const {
    return 100.0 / 8 * this->Font.size * static_cast<double>(text.size());
}

template <typename Surface>
double Recorder<Surface>::TextHeight(const QString&) const {
    return 200.0 / 8 * this->Font.size;
}

template <typename Surface>
void Recorder<Surface>::Line(double x1, double y1, double x2, double y2) {
    Note(u"line %1 %2 width %3 %4"_qs.arg(Point(x1, y1), Point(x2, y2))
             .arg(this->DrawWidth)
             .arg(ColourText(this->ForeColor)));
}

template <typename Surface>
void Recorder<Surface>::Box(double x1, double y1, double x2, double y2) {
    Note(u"box %1 %2 width %3 %4%5"_qs.arg(Point(x1, y1), Point(x2, y2))
             .arg(this->DrawWidth)
             .arg(ColourText(this->ForeColor), FillText()));
}

template <typename Surface>
void Recorder<Surface>::Circle(double x, double y, double radius, Colour colour) {
    Note(u"circle %1 radius %2 %3%4"_qs.arg(Point(x, y), Number(radius), ColourText(colour),
                                            FillText()));
}

template <typename Surface>
void Recorder<Surface>::PaintStrip(Colour colour, double x, double y, double width, double height) {
    Note(u"strip %1 %2x%3 %4"_qs.arg(Point(x, y), Number(width), Number(height),
                                     ColourText(colour)));
}

template <typename Surface>
void Recorder<Surface>::DrawText(double x, double y, const QString& text) {
    Note(u"text %1 %2 %3 \"%4\""_qs.arg(Point(x, y), FontText(this->Font),
                                        ColourText(this->ForeColor), text));
}

template <typename Surface>
QString Recorder<Surface>::FillText() const {
    return this->Fill == FillStyle::Solid ? u", filled "_qs + ColourText(this->FillColor)
                                          : QString();
}

template class Recorder<DrawingSurface>;
template class Recorder<Printer>;

void RecordingSurface::Clear(Colour background) {
    Note(u"clear "_qs + ColourText(background));
}

RecordingPrinter::RecordingPrinter(double width, double height,
                                   std::shared_ptr<PrintRecording> recording)
    : width_(width), height_(height), recording_(std::move(recording)) {}

RecordingPrinter::~RecordingPrinter() {
    if (!ended_) {
        recording_->lines += u"given up"_qs;
    }
}

void RecordingPrinter::NewPage() {
    Note(u"new page"_qs);
}

void RecordingPrinter::EndDoc() {
    Note(u"end of document"_qs);
    ended_ = true;
}

void RecordingPrinter::Note(const QString& line) {
    if (recording_->lines.size() == recording_->linesUntilFailure) {
        throw PrinterError(u"Out of paper"_qs);
    }
    recording_->lines += line;
}

}  // namespace rillbook
