#include "ui/Style.h"

#include <algorithm>

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

QFont Style::scaled(QFont font, qreal factor)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(std::max(1, int(font.pixelSize() * factor)));
    return font;
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
