#include "tests/support/RecordingSurface.h"

#include <cmath>
#include <utility>

namespace rillbook {

namespace {

QString Number(double value) {
    return QString::number(std::round(value) + 0.0, 'f', 0);  // never "-0"
}

QString Point(double x, double y) {
    return Number(x) + QLatin1Char(',') + Number(y);
}

QString ColourText(Colour colour) {
    if (colour == kBlack) {
        return QStringLiteral("black");
    }
    if (colour == kWhite) {
        return QStringLiteral("white");
    }
    return QStringLiteral("(%1,%2,%3)").arg(colour.red).arg(colour.green).arg(colour.blue);
}

QString FontText(const SurfaceFont& font) {
    return font.name + QLatin1Char(' ') + QString::number(font.size) +
           (font.bold ? QStringLiteral(" bold") : QString()) +
           (font.italic ? QStringLiteral(" italic") : QString());
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
    Note(QStringLiteral("line %1 %2 width %3 %4")
             .arg(Point(x1, y1), Point(x2, y2))
             .arg(this->DrawWidth)
             .arg(ColourText(this->ForeColor)));
}

template <typename Surface>
void Recorder<Surface>::Box(double x1, double y1, double x2, double y2) {
    Note(QStringLiteral("box %1 %2 width %3 %4%5")
             .arg(Point(x1, y1), Point(x2, y2))
             .arg(this->DrawWidth)
             .arg(ColourText(this->ForeColor), FillText()));
}

template <typename Surface>
void Recorder<Surface>::Circle(double x, double y, double radius, Colour colour) {
    Note(QStringLiteral("circle %1 radius %2 %3%4")
             .arg(Point(x, y), Number(radius), ColourText(colour), FillText()));
}

template <typename Surface>
void Recorder<Surface>::PaintStrip(Colour colour, double x, double y, double width, double height) {
    Note(QStringLiteral("strip %1 %2x%3 %4")
             .arg(Point(x, y), Number(width), Number(height), ColourText(colour)));
}

template <typename Surface>
void Recorder<Surface>::DrawText(double x, double y, const QString& text) {
    Note(QStringLiteral("text %1 %2 %3 \"%4\"")
             .arg(Point(x, y), FontText(this->Font), ColourText(this->ForeColor), text));
}

template <typename Surface>
QString Recorder<Surface>::FillText() const {
    return this->Fill == FillStyle::Solid
               ? QStringLiteral(", filled ") + ColourText(this->FillColor)
               : QString();
}

template class Recorder<DrawingSurface>;
template class Recorder<Printer>;

void RecordingSurface::Clear(Colour background) {
    Note(QStringLiteral("clear ") + ColourText(background));
}

RecordingPrinter::RecordingPrinter(double width, double height,
                                   std::shared_ptr<PrintRecording> recording)
    : width_(width), height_(height), recording_(std::move(recording)) {}

RecordingPrinter::~RecordingPrinter() {
    if (!ended_) {
        recording_->lines += QStringLiteral("given up");
    }
}

void RecordingPrinter::NewPage() {
    Note(QStringLiteral("new page"));
}

void RecordingPrinter::EndDoc() {
    Note(QStringLiteral("end of document"));
    ended_ = true;
}

void RecordingPrinter::Note(const QString& line) {
    if (recording_->lines.size() == recording_->linesUntilFailure) {
        throw PrinterError(QStringLiteral("Out of paper"));
    }
    recording_->lines += line;
}

}  // namespace rillbook
