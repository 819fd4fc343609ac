#include "forms/main/Icons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "forms/main/ProgramIcon.h"

namespace rillbook {

namespace {

// The pictures are drawn on a field of 16 by 16 units.
constexpr double kField = 16;

const QColor kInk(0x33, 0x3d, 0x47);
const QColor kPaper(0xfd, 0xfd, 0xfa);
const QColor kFolder(0xf2, 0xc1, 0x4e);
const QColor kMetal(0x5b, 0x7d, 0xa6);
const QColor kWater(0x1f, 0x78, 0xb4);

// A ripple from (x, y) to the right: rises and falls once in each `length`.
QPainterPath Ripple(double x, double y, double length, int count) {
    const double height = length * 0.3;
    QPainterPath path(QPointF(x, y));
    for (int i = 0; i < count; ++i) {
        path.quadTo(x + length * 0.25, y - height, x + length * 0.5, y);
        path.quadTo(x + length * 0.75, y + height, x + length, y);
        x += length;
    }
    return path;
}

void DrawNew(QPainter& painter) {
    painter.setBrush(kPaper);
    painter.drawPolygon(QPolygonF({{3, 1.5}, {9.5, 1.5}, {13, 5}, {13, 14.5}, {3, 14.5}}));
    painter.drawPolyline(QPolygonF({{9.5, 1.5}, {9.5, 5}, {13, 5}}));
}

void DrawOpen(QPainter& painter) {
    painter.setBrush(kFolder.darker(115));
    painter.drawPolygon(
        QPolygonF({{1.5, 13.5}, {1.5, 3}, {6, 3}, {7.5, 4.5}, {12.5, 4.5}, {12.5, 13.5}}));
    painter.setBrush(kFolder);
    painter.drawPolygon(QPolygonF({{1.5, 13.5}, {4, 7}, {15, 7}, {12.5, 13.5}}));
}

void DrawSave(QPainter& painter) {
    painter.setBrush(kMetal);
    painter.drawPolygon(QPolygonF({{2, 2}, {12, 2}, {14, 4}, {14, 14}, {2, 14}}));
    painter.setBrush(kPaper);
    painter.drawRect(QRectF(4.5, 2, 6, 4));
    painter.drawRect(QRectF(4, 8.5, 8, 5.5));
}

// A staff gauge that stands in the water.
void DrawStation(QPainter& painter) {
    painter.setBrush(kPaper);
    painter.drawRect(QRectF(5.5, 1, 5, 14));
    for (const double y : {3.5, 6.0, 8.5}) {
        painter.drawLine(QPointF(5.5, y), QPointF(8, y));
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kWater, 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(Ripple(1, 11, 7, 2));
    painter.drawPath(Ripple(1, 13.8, 7, 2));
}

// A hydrograph: a quick rise and a slow fall.
void DrawChannel(QPainter& painter) {
    painter.fillRect(QRectF(2, 1.5, 13, 12.5), kPaper);
    painter.drawPolyline(QPolygonF({{2, 1.5}, {2, 14}, {15, 14}}));
    painter.setPen(QPen(kWater, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    QPainterPath path(QPointF(3.5, 11.5));
    path.cubicTo(6, 11.5, 5.5, 4, 7.5, 4);
    path.cubicTo(9.5, 4, 9.5, 10, 14.5, 10.5);
    painter.drawPath(path);
}

void Draw(QPainter& painter, Picture picture) {
    painter.setPen(QPen(kInk, 1));
    switch (picture) {
        case Picture::New:
            return DrawNew(painter);
        case Picture::Open:
            return DrawOpen(painter);
        case Picture::Save:
            return DrawSave(painter);
        case Picture::Station:
            return DrawStation(painter);
        case Picture::Channel:
            return DrawChannel(painter);
        case Picture::Program:
            return DrawProgramIcon(painter);
    }
}

class PictureEngine : public QIconEngine {
public:
    explicit PictureEngine(Picture picture) : picture_(picture) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setOpacity(mode == QIcon::Disabled ? 0.35 : 1.0);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / kField, rect.height() / kField);
        Draw(*painter, picture_);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new PictureEngine(*this); }

private:
    Picture picture_;
};

}  // namespace

QIcon PictureIcon(Picture picture) {
    return QIcon(new PictureEngine(picture));
}

}  // namespace rillbook
