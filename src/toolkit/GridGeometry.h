#pragma once

#include <QRect>

#include <functional>
#include <vector>

/// Where the cards are on their page: as many columns of equal width as fit, filled row by row, each row as
/// high as its highest card, the standard inset around them. It costs four bytes a row.
class GridGeometry final
{
public:
    /// A run of cards: from `first` up to, but without, `end`.
    struct Range
    {
        int first = 0;
        int end = 0;
        bool operator==(const Range &) const = default;
    };

    GridGeometry() = default;

    /// A page of `count` cards, `width` wide. `heightOf` is asked for the height of every card. Columns
    /// begin at the right for a right-to-left `direction`.
    GridGeometry(int count, int width, Qt::LayoutDirection direction,
                 const std::function<int(int)> &heightOf);

    /// The height of the page.
    int height() const;

    QRect rect(int index) const;

    /// The first card of the row at `y`; 0 without cards.
    int firstAt(int y) const;

    /// The cards of the rows from `top` to `bottom`, and of one row more on either side.
    Range cardsBetween(int top, int bottom) const;

    bool operator==(const GridGeometry &) const = default;

private:
    int count = 0;
    int width = 0;
    int columns = 1;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    /// The top of each row, and of the one that would follow the last.
    std::vector<int> tops;
};
