#include "forms/main/ProgramIcon.h"

#include <QDebug>
#include <QFile>
#include <QPainter>
#include <QPainterPath>
#include <QXmlStreamReader>

// The resources of a static library are taken in by their name, and in no namespace.
static void TakeInIcons() {
    Q_INIT_RESOURCE(icons);
}

namespace rillbook {

namespace {

QPainterPath PathOf(QStringView data) {
    QPainterPath path;
    const QList<QStringView> words = data.split(u' ');
    qsizetype at = 0;
    const auto point = [&] {
        const QPointF next(words.value(at).toDouble(), words.value(at + 1).toDouble());
        at += 2;
        return next;
    };
    while (at < words.size()) {
        const QStringView command = words.at(at++);
        if (command == u"M") {
            path.moveTo(point());
        } else if (command == u"L") {
            path.lineTo(point());
        } else if (command == u"Q") {
            const QPointF control = point();
            path.quadTo(control, point());
        } else if (command == u"C") {
            const QPointF control1 = point();
            const QPointF control2 = point();
            path.cubicTo(control1, control2, point());
        } else if (command == u"Z") {
            path.closeSubpath();
        } else {
            qWarning() << "The icon holds a command that isn't drawn:" << command;
        }
    }
    return path;
}

}  // namespace

void DrawProgramIcon(QPainter& painter) {
    TakeInIcons();
    QFile file(QStringLiteral(":/rillbook.svg"));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning() << "The icon isn't there";
    }
    QXmlStreamReader reader(&file);
    while (reader.readNextStartElement()) {
        if (reader.name() == u"svg") {
            continue;
        }
        const QXmlStreamAttributes attributes = reader.attributes();
        const QStringView fill = attributes.value(QLatin1String("fill"));
        const QStringView stroke = attributes.value(QLatin1String("stroke"));
        painter.setBrush(fill == u"none" ? QBrush() : QColor(fill.toString()));
        painter.setPen(stroke == u"none"
                           ? QPen(Qt::NoPen)
                           : QPen(QColor(stroke.toString()),
                                  attributes.value(QLatin1String("stroke-width")).toDouble(),
                                  Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(PathOf(attributes.value(QLatin1String("d"))));
        reader.skipCurrentElement();
    }
}

}  // namespace rillbook
