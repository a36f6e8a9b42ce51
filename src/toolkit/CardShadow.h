#pragma once

#include <QColor>
#include <QPixmap>

class QPainter;

/// The soft shadow under a card or a panel. It is blurred once for each pixel ratio and then only stretched.
class CardShadow final
{
public:
    /// `radius`: how far the blur reaches, in device-independent pixels. A card's own shadow is blue.
    explicit CardShadow(int radius, const QColor &color = QColor(0, 122, 255, 77));

    /// How far the shadow reaches beyond the card.
    int margin() const;

    /// Paints the shadow of a card at `card`. While the painter is opaque, so is the card, and the part that
    /// it covers is left out.
    void paint(QPainter *painter, const QRect &card);

private:
    void render(qreal pixelRatio);

    int radius;
    QColor color;
    QPixmap tile;
};
