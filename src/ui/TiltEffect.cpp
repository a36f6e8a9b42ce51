#include "ui/TiltEffect.h"

#include <QPainter>
#include <QtMath>

#include <algorithm>

QTransform TiltEffect::transform(const QRectF &rect, double degrees)
{
    constexpr double perspective = 0.2;
    const double radians = qDegreesToRadians(degrees);
    const double depth = perspective * std::sin(radians) / std::max({rect.width(), rect.height(), 1.0});
    const QTransform turn(1, 0, 0, 0, std::cos(radians), -depth, 0, 0, 1);
    const QPointF centre = rect.center();
    return QTransform::fromTranslate(-centre.x(), -centre.y()) * turn *
           QTransform::fromTranslate(centre.x(), centre.y());
}

void TiltEffect::setDegrees(double newDegrees)
{
    degrees = newDegrees;
    update();
}

void TiltEffect::draw(QPainter *painter)
{
    QPoint offset;
    const QPixmap page = sourcePixmap(Qt::LogicalCoordinates, &offset, QGraphicsEffect::NoPad);
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->setTransform(transform(sourceBoundingRect(), degrees), true);
    painter->drawPixmap(offset, page);
    painter->restore();
}
