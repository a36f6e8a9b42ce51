#include "toolkit/TiltEffect.h"

#include <QPainter>
#include <QWidget>
#include <QtMath>

#include <algorithm>

TiltEffect::TiltEffect(const QWidget &page, int margin) : page(page), margin(margin) {}

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
    const QPixmap picture = sourcePixmap(Qt::LogicalCoordinates, &offset, QGraphicsEffect::NoPad);
    const QRect filled = page.childrenRect().adjusted(-margin, -margin, margin, margin) & page.rect();
    const qreal ratio = picture.devicePixelRatio();
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->setTransform(transform(sourceBoundingRect(), degrees), true);
    const QRectF source(QPointF(filled.topLeft() - offset) * ratio, QSizeF(filled.size()) * ratio);
    painter->drawPixmap(QRectF(filled), picture, source);
    painter->restore();
}
