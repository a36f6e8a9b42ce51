#include "toolkit/TiltEffect.h"

#include <QPainter>
#include <QWidget>
#include <QtMath>

#include <algorithm>

TiltEffect::TiltEffect(QWidget &page, int margin) : page(page), margin(margin) {}

QTransform TiltEffect::transform(const QRectF &rect, double degrees)
{
    constexpr double perspective = 0.2;
    const double radians = qDegreesToRadians(degrees);
    const double depth = perspective * std::sin(radians) / std::max({rect.width(), rect.height(), 1.0});
    const QTransform rotation(1, 0, 0, 0, std::cos(radians), -depth, 0, 0, 1);
    const QPointF centre = rect.center();
    return QTransform::fromTranslate(-centre.x(), -centre.y()) * rotation *
           QTransform::fromTranslate(centre.x(), centre.y());
}

void TiltEffect::setDegrees(double newDegrees)
{
    degrees = newDegrees;
    update();
}

void TiltEffect::draw(QPainter *painter)
{
    const QRect filled = page.childrenRect().adjusted(-margin, -margin, margin, margin) & page.rect();
    const qreal ratio = painter->device()->devicePixelRatio();
    QPixmap picture(filled.size() * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    page.render(&picture, QPoint(), filled, QWidget::DrawChildren);
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->setTransform(transform(page.rect(), degrees), true);
    painter->drawPixmap(filled.topLeft(), picture);
    painter->restore();
}
