#include "toolkit/CardPool.h"

#include "toolkit/Card.h"
#include "toolkit/CardSource.h"

#include <algorithm>

CardPool::CardPool(const CardSource &source, QWidget *viewport) : source(source), viewport(viewport) {}

Card *CardPool::card(const QString &id) const
{
    return card(firstIndex + int(ids.indexOf(id)));
}

Card *CardPool::card(int index) const
{
    const int position = index - firstIndex;
    return position >= 0 && position < int(cards.size()) ? cards[size_t(position)] : nullptr;
}

int CardPool::indexOf(const QWidget *widget) const
{
    const auto found = std::find_if(cards.begin(), cards.end(),
                                    [&](const Card *card) { return card && card->isAncestorOf(widget); });
    return found == cards.end() ? -1 : firstIndex + int(found - cards.begin());
}

std::vector<Card *> CardPool::keep(int first, const QStringList &newIds)
{
    QHash<QString, qsizetype> positions;
    for (qsizetype i = 0; i < newIds.size(); ++i)
        positions.insert(newIds[i], i);
    std::vector<Card *> kept(size_t(newIds.size()));
    std::vector<Card *> dropped;
    for (size_t i = 0; i < cards.size(); ++i) {
        const qsizetype position = positions.value(ids[qsizetype(i)], -1);
        if (position >= 0 && !kept[size_t(position)])
            kept[size_t(position)] = cards[i];
        else
            dropped.push_back(cards[i]);
    }
    cards = std::move(kept);
    ids = newIds;
    firstIndex = first;
    return dropped;
}

void CardPool::giveBack(Card *card)
{
    card->hide();
    spares.push_back(card);
}

std::vector<int> CardPool::addMissing()
{
    std::vector<int> added;
    for (size_t i = 0; i < cards.size(); ++i) {
        if (cards[i])
            continue;
        added.push_back(firstIndex + int(i));
        cards[i] = take(added.back());
    }
    orderChildren();
    return added;
}

void CardPool::refresh()
{
    for (size_t i = 0; i < cards.size(); ++i)
        source.show(cards[i], firstIndex + int(i));
}

int CardPool::heightOf(int index)
{
    const int heightClass = source.heightClass(index);
    if (const auto known = heights.constFind(heightClass); known != heights.constEnd())
        return *known;
    Card *card = take(index);
    giveBack(card);
    return heights[heightClass] = card->sizeHint().height();
}

void CardPool::forgetHeights()
{
    heights.clear();
}

Card *CardPool::take(int index)
{
    if (spares.empty()) {
        Card *created = source.create();
        created->setParent(viewport);
        created->hide();
        spares.push_back(created);
    }
    Card *card = spares.back();
    spares.pop_back();
    source.show(card, index);
    return card;
}

void CardPool::orderChildren()
{
    // Assistive technology reads the children in this order.
    for (size_t i = cards.size(); i-- > 1;) {
        const QObjectList &children = viewport->children();
        if (children.indexOf(cards[i - 1]) > children.indexOf(cards[i]))
            cards[i - 1]->stackUnder(cards[i]);
    }
}
