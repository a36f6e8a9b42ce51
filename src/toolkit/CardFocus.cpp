#include "toolkit/CardFocus.h"

#include "toolkit/Card.h"
#include "toolkit/CardGrid.h"
#include "toolkit/CardPool.h"
#include "toolkit/CardSource.h"

#include <QApplication>

CardFocus::CardFocus(CardGrid &grid, const CardSource &source, const CardPool &cards)
    : grid(grid)
    , source(source)
    , cards(cards)
{
    connect(qApp, &QApplication::focusChanged, this, [this] {
        // A card that slid away under the mouse could not be clicked.
        if (const int index = focusedIndex(); index >= 0 && QApplication::mouseButtons() == Qt::NoButton)
            this->grid.ensureVisible(index);
    });
}

bool CardFocus::moveOn(bool next)
{
    QWidget *control = grid.bringUpToDate() ? neighbour(next) : nullptr;
    if (control)
        control->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return control;
}

void CardFocus::enterBackwards()
{
    if (!grid.bringUpToDate())
        return;
    if (QWidget *control = controlFrom(grid.lastNearView(), -1))
        control->setFocus(Qt::BacktabFocusReason);
}

int CardFocus::focusedIndex() const
{
    return cards.indexOf(grid.window()->focusWidget());
}

QWidget *CardFocus::neighbour(bool next)
{
    const int index = focusedIndex();
    if (index < 0) {
        if (!next || !grid.hasFocus())
            return nullptr;
        QWidget *control = controlFrom(grid.firstInView(), 1);
        return control ? control : controlFrom(0, 1);
    }
    const QList<QWidget *> controls = cards.card(index)->controls();
    const auto position = controls.indexOf(grid.window()->focusWidget()) + (next ? 1 : -1);
    if (position >= 0 && position < controls.size())
        return controls[position];
    return next ? controlFrom(index + 1, 1) : controlFrom(index - 1, -1);
}

QWidget *CardFocus::controlFrom(int index, int step)
{
    for (; index >= 0 && index < source.count(); index += step) {
        if (!source.hasControls(index))
            continue;
        grid.ensureVisible(index);
        const Card *card = cards.card(index);
        const QList<QWidget *> controls = card ? card->controls() : QList<QWidget *>();
        if (!controls.isEmpty())
            return step > 0 ? controls.first() : controls.last();
    }
    return nullptr;
}
