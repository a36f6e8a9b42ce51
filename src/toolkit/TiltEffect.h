#pragma once

#include <QGraphicsEffect>

/// Draws a widget and its children rotated about the horizontal axis through its centre, in perspective.
class TiltEffect final : public QGraphicsEffect
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TiltEffect)

public:
    /// The angle when the page is first shown.
    static constexpr double startDegrees = 20;

    /// For `page`, whose children have shadows that reach up to `margin` beyond them. The rest of it is of
    /// one colour and is left out, as transforming a pixel is expensive.
    TiltEffect(QWidget &page, int margin);

    /// The rotation of `rect` by `degrees`; positive ones bring its lower edge nearer.
    static QTransform transform(const QRectF &rect, double degrees);

    void setDegrees(double degrees);

protected:
    void draw(QPainter *painter) override;

private:
    QWidget &page;
    int margin;
    double degrees = startDegrees;
};
