#include "toolkit/GridGeometry.h"

#include "toolkit/Style.h"

#include <algorithm>

GridGeometry::GridGeometry(int count, int width, Qt::LayoutDirection direction,
                           const std::function<int(int)> &heightOf)
    : count(count)
    , width(width)
    , columns(
          std::max(1, (width - 2 * Style::inset + Style::columnGap) / (Style::cardWidth + Style::columnGap)))
    , direction(direction)
{
    tops.reserve(size_t(count / columns) + 2);
    tops.push_back(Style::inset);
    for (int first = 0; first < count; first += columns) {
        int highest = 0;
        for (int index = first; index < std::min(first + columns, count); ++index)
            highest = std::max(highest, heightOf(index));
        tops.push_back(tops.back() + highest + Style::rowGap);
    }
}

int GridGeometry::height() const
{
    return count == 0 ? 2 * Style::inset : tops.back() - Style::rowGap + Style::inset;
}

QRect GridGeometry::rect(int index) const
{
    const auto row = size_t(index / columns);
    const int column = index % columns;
    const int pitched = width - 2 * Style::inset + Style::columnGap;
    const int left = Style::inset + pitched * column / columns;
    const int right = Style::inset + pitched * (column + 1) / columns - Style::columnGap;
    const int x = direction == Qt::RightToLeft ? width - right : left;
    return {x, tops[row], right - left, tops[row + 1] - tops[row] - Style::rowGap};
}

int GridGeometry::firstAt(int y) const
{
    const auto row = std::upper_bound(tops.begin(), tops.end(), y) - tops.begin() - 1;
    return std::clamp(int(row) * columns, 0, std::max(0, count - 1));
}

GridGeometry::Range GridGeometry::cardsBetween(int top, int bottom) const
{
    const auto before = std::upper_bound(tops.begin(), tops.end(), top) - tops.begin();
    const auto after = std::lower_bound(tops.begin(), tops.end(), bottom) - tops.begin();
    return {std::clamp((int(before) - 2) * columns, 0, count),
            std::clamp((int(after) + 1) * columns, 0, count)};
}
