#include "toolkit/CardShadow.h"

#include "toolkit/Style.h"

#include <QPainter>

#include <array>
#include <cmath>
#include <numbers>

namespace {

constexpr int offset = 5;

/// The distance of a point to the edge of a rounded square around the origin, negative inside.
double distanceToEdge(double x, double y, double half)
{
    const double dx = std::abs(x) - half + Style::cardRadius;
    const double dy = std::abs(y) - half + Style::cardRadius;
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) -
           Style::cardRadius;
}

} // namespace

CardShadow::CardShadow(int radius, const QColor &color) : radius(radius), color(color) {}

int CardShadow::margin() const
{
    return radius + radius / 4 + offset;
}

void CardShadow::paint(QPainter *painter, const QRect &card)
{
    const qreal ratio = painter->device()->devicePixelRatio();
    if (tile.isNull() || tile.devicePixelRatio() != ratio)
        render(ratio);

    const int reach = margin() - offset;
    const QRect outer = card.adjusted(-reach, -reach, reach, reach).translated(0, offset);
    const int corner = (qRound(tile.width() / ratio) - 1) / 2;
    const std::array<int, 4> x{outer.left(), outer.left() + corner, outer.right() + 1 - corner,
                               outer.right() + 1};
    const std::array<int, 4> y{outer.top(), outer.top() + corner, outer.bottom() + 1 - corner,
                               outer.bottom() + 1};
    const std::array<qreal, 4> source{0, corner * ratio, tile.width() - corner * ratio, qreal(tile.width())};
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column) {
            if (row == 1 && column == 1 && painter->opacity() == 1)
                continue;
            painter->drawPixmap(
                QRectF(QPointF(x[column], y[row]), QPointF(x[column + 1], y[row + 1])), tile,
                QRectF(QPointF(source[column], source[row]), QPointF(source[column + 1], source[row + 1])));
        }
    }
}

void CardShadow::render(qreal pixelRatio)
{
    const int reach = margin() - offset;
    const double half = reach + Style::cardRadius + 0.5;
    const int side = qRound(2 * (half + reach) * pixelRatio);
    const double sigma = radius / 2.0;
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    // Compute one quadrant and mirror it.
    for (int y = 0; y < (side + 1) / 2; ++y) {
        for (int x = 0; x < (side + 1) / 2; ++x) {
            const double distance = distanceToEdge((x + 0.5 - side / 2.0) / pixelRatio,
                                                   (y + 0.5 - side / 2.0) / pixelRatio, half);
            const double cover = 0.5 * std::erfc(distance / (sigma * std::numbers::sqrt2));
            QColor pixel = color;
            pixel.setAlphaF(float(color.alphaF() * cover));
            for (const int row : {y, side - 1 - y}) {
                for (const int column : {x, side - 1 - x})
                    image.setPixel(column, row, qPremultiply(pixel.rgba()));
            }
        }
    }
    tile = QPixmap::fromImage(image);
    tile.setDevicePixelRatio(pixelRatio);
}
