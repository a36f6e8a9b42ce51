#pragma once

#include <QHash>
#include <QStringList>

#include <vector>

class Card;
struct CardSource;
class QWidget;

/// The cards of a CardGrid: those in use, for a run of consecutive records, and spare ones for other records.
class CardPool final
{
public:
    /// Cards are made by `source` when no spare one is left, as hidden children of `viewport`.
    CardPool(const CardSource &source, QWidget *viewport);

    /// The cards in use in list order, the first for the record at index first().
    const std::vector<Card *> &inUse() const { return cards; }
    int first() const { return firstIndex; }

    /// The card in use for the record of that id or index; null when there is none.
    Card *card(const QString &id) const;
    Card *card(int index) const;

    /// The index of the record whose card contains `widget`, or -1.
    int indexOf(const QWidget *widget) const;

    /// Begins to use cards for the records from index `first` on, of these ids: keeps those in use that show
    /// one of them. The others are returned, each for giveBack().
    std::vector<Card *> keep(int first, const QStringList &ids);

    /// Takes back a card that is no longer in use, and hides it.
    void giveBack(Card *card);

    /// Ends what keep() began: uses spare or new cards for the records that have none. Returns their indexes.
    std::vector<int> addMissing();

    /// Lets the cards in use show what their records are now.
    void refresh();

    /// The height that a record's card needs, measured once for each height class.
    int heightOf(int index);

    /// Has heights measured again, as the font or the style has changed.
    void forgetHeights();

private:
    Card *take(int index);
    void orderChildren();

    const CardSource &source;
    QWidget *viewport;
    std::vector<Card *> cards;
    QStringList ids; // of the records of `cards`
    int firstIndex = 0;
    std::vector<Card *> spares;
    QHash<int, int> heights; // by height class
};
