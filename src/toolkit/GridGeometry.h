#pragma once

#include <QRect>

#include <functional>
#include <vector>

/// Where the cards of a page lie: as many columns of equal width as fit, filled row by row, each row as high
/// as its highest card, the standard inset around them. It costs four bytes a row.
class GridGeometry final
{
public:
    /// A run of cards: from `first` up to, but without, `last`.
    struct Range
    {
        int first = 0;
        int last = 0;
        bool operator==(const Range &) const = default;
    };

    GridGeometry() = default;

    /// A page of `count` cards, `width` wide. `heightOf` is asked for the height of every card. Columns
    /// begin at the right for a right-to-left `direction`.
    GridGeometry(int count, int width, Qt::LayoutDirection direction,
                 const std::function<int(int)> &heightOf);

    /// The height of the page.
    int height() const;

    /// The place of a card on the page.
    QRect rect(int index) const;

    /// The first card of the row at a height on the page; 0 without cards.
    int firstAt(int top) const;

    /// The cards of the rows between two heights on the page, and of one row more on either side.
    Range rowsBetween(int top, int bottom) const;

    bool operator==(const GridGeometry &) const = default;

private:
    int count = 0;
    int width = 0;
    int columns = 1;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    /// The top of each row and, last, of the row that would follow.
    std::vector<int> tops;
};
