#pragma once

#include <QGraphicsEffect>

/// Draws a widget, with all that lies in it, turned about the horizontal axis through its centre, in
/// perspective.
class TiltEffect final : public QGraphicsEffect
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TiltEffect)

public:
    /// What the page starts from when it is first shown.
    static constexpr double startDegrees = 20;

    using QGraphicsEffect::QGraphicsEffect;

    /// The turn of a rectangle by `degrees`: positive ones bring its lower edge nearer.
    static QTransform transform(const QRectF &rect, double degrees);

    void setDegrees(double degrees);

protected:
    void draw(QPainter *painter) override;

private:
    double degrees = startDegrees;
};
