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

    /// For `page`, whose children reach beyond themselves by `margin` at most, with their shadows. The rest
    /// of it is of one colour and is left out, as turning a pixel is expensive.
    TiltEffect(QWidget &page, int margin);

    /// The turn of a rectangle by `degrees`: positive ones bring its lower edge nearer.
    static QTransform transform(const QRectF &rect, double degrees);

    void setDegrees(double degrees);

protected:
    void draw(QPainter *painter) override;

private:
    QWidget &page;
    int margin;
    double degrees = startDegrees;
};
