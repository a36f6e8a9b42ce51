#include "toolkit/Style.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

bool Style::isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QColor Style::accent(Accent accent, const QPalette &palette)
{
    const bool dark = isDark(palette);
    switch (accent) {
    case Accent::red:
        return dark ? QColor(255, 123, 114) : QColor(196, 22, 28);
    case Accent::green:
        return dark ? QColor(76, 201, 106) : green;
    case Accent::blue:
        break;
    }
    return dark ? QColor(108, 176, 255) : QColor(11, 94, 215);
}

QColor Style::lineColor(const QPalette &palette)
{
    QColor line = palette.color(QPalette::WindowText);
    line.setAlphaF(0.25F);
    return line;
}

QColor Style::sidebarColor(const QPalette &palette)
{
    constexpr double share = 0.06;
    const QColor window = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    const auto mix = [](int from, int to) { return qRound(std::lerp(from, to, share)); };
    return {mix(window.red(), text.red()), mix(window.green(), text.green()),
            mix(window.blue(), text.blue())};
}

int Style::scaledToFont(int length, const QFont &font)
{
    // The line height of the font that the lengths were designed with, one of 10 points at 96 dpi.
    constexpr int usualHeight = 19;
    return std::max(length, length * QFontMetrics(font).height() / usualHeight);
}

QSize Style::iconSizeBeside(const QFont &font)
{
    const int side = scaledToFont(iconSize, font);
    return {side, side};
}

void Style::paintFocus(QPainter *painter, const QRect &rect, const QColor &color)
{
    constexpr int width = 2;
    constexpr int corner = 5;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, width));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(rect).adjusted(1, 1, -1, -1), corner, corner);
    painter->restore();
}

QFont Style::scaled(QFont font, qreal factor)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(std::max(1, int(font.pixelSize() * factor)));
    return font;
}

qreal Style::fittingScale(qreal minimum, const std::function<bool(qreal scale)> &fits)
{
    constexpr qreal step = 0.05;
    qreal scale = 1;
    while (scale > minimum && !fits(scale))
        scale -= step;
    return std::max(scale, minimum);
}

QFont Style::titleFont(const QFont &font)
{
    QFont title = scaled(font, 1.3);
    title.setBold(true);
    return title;
}

QEasingCurve Style::easeInOut()
{
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
    return curve;
}
