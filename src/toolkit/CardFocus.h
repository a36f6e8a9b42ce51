#pragma once

#include <QObject>

class CardGrid;
class CardPool;
struct CardSource;
class QWidget;

/// The keyboard focus in a CardGrid. It goes through the controls of all cards in list order, though only the
/// cards near the view exist, and the page scrolls to the card that has it.
class CardFocus final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CardFocus)

public:
    /// `cards`: those of the grid.
    CardFocus(CardGrid &grid, const CardSource &source, const CardPool &cards);

    /// Moves the focus to the next control, or the one before it; from the grid itself to the first in view.
    /// False when there is none: the focus is to leave the cards.
    bool moveOn(bool next);

    /// Moves the focus from the grid, which it has just reached from behind, to the last control in view
    /// or in the row below it, which is scrolled into view.
    void enterBackwards();

private:
    int focusedIndex() const;
    QWidget *neighbour(bool next);
    QWidget *controlFrom(int index, int step);

    CardGrid &grid;
    const CardSource &source;
    const CardPool &cards;
};
