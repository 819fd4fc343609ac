#pragma once

#include <QString>
#include <cstdint>

namespace rillbook {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend bool operator==(const Colour&, const Colour&) = default;
};

constexpr Colour kBlack{0, 0, 0};
constexpr Colour kWhite{255, 255, 255};

struct SurfaceFont {
    QString name = QStringLiteral("Arial");
    double size = 8;  // points
    bool bold = false;
    bool italic = false;
    friend bool operator==(const SurfaceFont&, const SurfaceFont&) = default;
};

enum class FillStyle { Solid = 0, Transparent = 1 };

// Something to draw on: a picture on a form, or a page of the printer. All positions and sizes are
// in twips from the top left corner; what lies outside is not drawn. A failure of the device raises
// PrinterError where it is a printer's, and never otherwise.
class DrawingSurface {
public:
    virtual ~DrawingSurface() = default;

    virtual double ScaleWidth() const = 0;
    virtual double ScaleHeight() const = 0;

    // What the operations below draw with.
    SurfaceFont Font;
    Colour ForeColor = kBlack;
    int DrawWidth = 1;  // pen, in the surface's own pixels or printer's dots of 1/600 inch
    Colour FillColor = kBlack;
    FillStyle Fill = FillStyle::Transparent;
    double CurrentX = 0;
    double CurrentY = 0;

    virtual double TextWidth(const QString& text) const = 0;
    virtual double TextHeight(const QString& text) const = 0;

    // Writes with the top left corner at the current position, in ForeColor, and moves on: to the
    // start of the next line (CurrentX 0), or with PrintOn to the end of the text.
    void Print(const QString& text);
    void PrintOn(const QString& text);

    // A straight line in ForeColor, as wide as DrawWidth.
    virtual void Line(double x1, double y1, double x2, double y2) = 0;
    // A box between two opposite corners: outline in ForeColor, filled by Fill and FillColor.
    virtual void Box(double x1, double y1, double x2, double y2) = 0;
    // Outline in `colour`, filled by Fill and FillColor.
    virtual void Circle(double x, double y, double radius, Colour colour) = 0;
    // An image of one colour, stretched to this size.
    virtual void PaintStrip(Colour colour, double x, double y, double width, double height) = 0;
    // Empties the whole surface. A printer's page has no background: nothing happens there.
    virtual void Clear(Colour background) = 0;

protected:
    virtual void DrawText(double x, double y, const QString& text) = 0;
};

}  // namespace rillbook
