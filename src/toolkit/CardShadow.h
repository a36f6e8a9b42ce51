#pragma once

#include <QPixmap>

class QPainter;

/// The soft blue shadow under a card. It is blurred once for each pixel ratio and then only stretched.
class CardShadow final
{
public:
    /// `radius`: how far the blur reaches, in device-independent pixels.
    explicit CardShadow(int radius);

    /// How far the shadow reaches beyond the card.
    int margin() const;

    /// Paints the shadow of a card that lies at `card`; the part that the card covers only for a card that is
    /// not opaque, told by the opacity of `painter`.
    void paint(QPainter *painter, const QRect &card);

private:
    void render(qreal pixelRatio);

    int radius;
    QPixmap tile;
};
