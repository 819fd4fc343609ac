#include "platform/qt/PainterSurface.h"

#include <QFontMetricsF>
#include <algorithm>
#include <cmath>
#include <optional>

namespace rillbook {

namespace {

constexpr double kTwipsPerInch = 1440;

// The part of a line that lies in the area. A reading far off the axes makes lines many pages long,
// which not every painter and not every reader of the file can take.
std::optional<QLineF> Inside(const QLineF& line, const QRectF& area) {
    double from = 0;
    double to = 1;
    const auto cut = [&](double start, double step, double low, double high) {
        if (step == 0) {
            return start >= low && start <= high;
        }
        const auto [enter, leave] = std::minmax({(low - start) / step, (high - start) / step});
        from = std::max(from, enter);
        to = std::min(to, leave);
        return from <= to;
    };
    if (!cut(line.x1(), line.dx(), area.left(), area.right()) ||
        !cut(line.y1(), line.dy(), area.top(), area.bottom())) {
        return std::nullopt;
    }
    return QLineF(line.pointAt(from), line.pointAt(to));
}

}  // namespace

QColor ColorOf(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

double PainterSurface::TextWidth(const QString& text) const {
    return QFontMetricsF(DeviceFont(), &Device()).horizontalAdvance(text) * kTwipsPerInch /
           DotsPerInch();
}

double PainterSurface::TextHeight(const QString&) const {
    return QFontMetricsF(DeviceFont(), &Device()).height() * kTwipsPerInch / DotsPerInch();
}

void PainterSurface::Line(double x1, double y1, double x2, double y2) {
    if (!std::isfinite(x1 + y1 + x2 + y2)) {
        return;
    }
    const QLineF line(DotAt(x1, y1), DotAt(x2, y2));
    const double rim = PenDots() + 1;
    const QRectF area(-rim, -rim, Dots(ScaleWidth()) + 2 * rim, Dots(ScaleHeight()) + 2 * rim);
    if (const std::optional<QLineF> seen = Inside(line, area)) {
        // Between whole dots and not antialiased: else the many short lines of a dense series would
        // add up to a thick one.
        Paint([seen = *seen, ink = Pen(ForeColor)](QPainter& painter) {
            painter.setRenderHint(QPainter::Antialiasing, false);
            painter.setPen(ink);
            painter.drawLine(seen);
        });
    }
}

void PainterSurface::Box(double x1, double y1, double x2, double y2) {
    const QRectF box(DotAt(std::min(x1, x2), std::min(y1, y2)),
                     DotAt(std::max(x1, x2), std::max(y1, y2)));
    QPen outline = Pen(ForeColor);
    outline.setJoinStyle(Qt::MiterJoin);
    Paint([box, outline, fill = Brush()](QPainter& painter) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(outline);
        painter.setBrush(fill);
        painter.drawRect(box);
    });
}

void PainterSurface::Circle(double x, double y, double radius, Colour colour) {
    // Without antialiasing, whole numbers stand for the middle of dots.
    const double middle = PenDots() % 2 == 0 ? 0 : 0.5;
    const QPointF centre(Dots(x) + middle, Dots(y) + middle);
    const double reach = Dots(radius);
    const QRectF page(0, 0, Dots(ScaleWidth()), Dots(ScaleHeight()));
    const double rim = reach + PenDots();
    if (!std::isfinite(x + y) || !page.adjusted(-rim, -rim, rim, rim).contains(centre)) {
        return;
    }
    Paint([centre, reach, ink = Pen(colour), fill = Brush()](QPainter& painter) {
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setPen(ink);
        painter.setBrush(fill);
        painter.drawEllipse(centre, reach, reach);
    });
}

void PainterSurface::PaintStrip(Colour colour, double x, double y, double width, double height) {
    if (!(width > 0 && height > 0)) {
        return;
    }
    const QRectF strip(DotAt(x, y), QSizeF(StripDots(x, width), StripDots(y, height)));
    Paint([strip, ink = ColorOf(colour)](QPainter& painter) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(strip, ink);
    });
}

void PainterSurface::DrawText(double x, double y, const QString& text) {
    const QFont font = DeviceFont();
    const double ascent = QFontMetricsF(font, &Device()).ascent();
    const QPointF start(WholeDots(x), WholeDots(y) + std::round(ascent));
    Paint([start, text, font, ink = ColorOf(ForeColor)](QPainter& painter) {
        painter.setFont(font);
        painter.setPen(ink);
        painter.drawText(start, text);
    });
}

double PainterSurface::Dots(double twips) const {
    return twips * DotsPerInch() / kTwipsPerInch;
}

double PainterSurface::WholeDots(double twips) const {
    constexpr double kFarOff = 1e8;
    const double dots = Dots(twips);
    return std::isnan(dots) ? 0 : std::round(std::clamp(dots, -kFarOff, kFarOff));
}

QPointF PainterSurface::DotAt(double x, double y) const {
    return {WholeDots(x), WholeDots(y)};
}

// Thin strips have the same thickness wherever they stand; long ones end where their end is.
double PainterSurface::StripDots(double start, double length) const {
    constexpr double kThin = 60;
    return length < kThin ? std::max(1.0, WholeDots(length))
                          : WholeDots(start + length) - WholeDots(start);
}

QFont PainterSurface::DeviceFont() const {
    // The second face has the widths of Arial.
    QFont font(QStringList{Font.name, QStringLiteral("Liberation Sans")});
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(std::max(1.0, Font.size));
    font.setBold(Font.bold);
    font.setItalic(Font.italic);
    return font;
}

int PainterSurface::PenDots() const {
    return std::max(1, qRound(std::clamp(DrawWidth, 1, 1000) * DotsPerPen()));
}

QPen PainterSurface::Pen(Colour colour) const {
    return {ColorOf(colour), static_cast<double>(PenDots()), Qt::SolidLine, Qt::RoundCap,
            Qt::RoundJoin};
}

QBrush PainterSurface::Brush() const {
    return Fill == FillStyle::Solid ? QBrush(ColorOf(FillColor)) : QBrush(Qt::NoBrush);
}

}  // namespace rillbook
