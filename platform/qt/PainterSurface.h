#pragma once

#include <QFont>
#include <QPainter>
#include <functional>

#include "platform/desktop/DrawingSurface.h"

namespace rillbook {

// What pictures and printed pages have in common: twips become the dots of a paint device, and each
// operation becomes one step on its painter. Boxes and strips are fitted to whole dots, so that
// they are sharp and equally thick wherever they stand.
class PainterSurface : public virtual DrawingSurface {
public:
    double TextWidth(const QString& text) const override;
    double TextHeight(const QString& text) const override;

    void Line(double x1, double y1, double x2, double y2) override;
    void Box(double x1, double y1, double x2, double y2) override;
    void Circle(double x, double y, double radius, Colour colour) override;
    void PaintStrip(Colour colour, double x, double y, double width, double height) override;

protected:
    using Step = std::function<void(QPainter& painter)>;

    // The device whose dots to the inch rule the fonts.
    virtual const QPaintDevice& Device() const = 0;
    virtual double DotsPerInch() const = 0;
    // How many dots a pen of DrawWidth 1 has.
    virtual double DotsPerPen() const = 0;
    // Takes a step, to be run on a painter of the device in the order of the calls. What the step
    // sets on the painter may stay.
    virtual void Paint(Step step) = 0;

    void DrawText(double x, double y, const QString& text) override;

private:
    double Dots(double twips) const;
    double WholeDots(double twips) const;
    QPointF DotAt(double x, double y) const;
    double StripDots(double start, double length) const;
    QFont DeviceFont() const;
    int PenDots() const;
    QPen Pen(Colour colour) const;
    QBrush Brush() const;
};

QColor ColorOf(Colour colour);

}  // namespace rillbook
