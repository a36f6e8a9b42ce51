#include "toolkit/CardGrid.h"

#include "toolkit/Card.h"
#include "toolkit/FocusRing.h"
#include "toolkit/Style.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace {

constexpr int focusFrame = 2;
/// How far beyond the view cards exist, for quick scrolling and for assistive technology to read ahead.
constexpr int prefetchMargin = 500;

} // namespace

CardGrid::CardGrid(CardSource source, int shadowRadius, QWidget *parent)
    : QAbstractScrollArea(parent)
    , source(std::move(source))
    , shadow(shadowRadius)
    , pool(this->source, viewport())
    , transition(viewport(), shadow.margin())
    , focus(*this, this->source, pool)
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setViewportMargins(focusFrame, focusFrame, focusFrame, focusFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Window);
    connect(&transition, &CardTransition::advanced, this, [this] {
        placeCards();
        viewport()->update();
    });
    connect(&transition, &CardTransition::tiltFinished, this, &CardGrid::fillView);
}

int CardGrid::firstInView() const
{
    return geometry.firstAt(top());
}

int CardGrid::lastNearView() const
{
    return geometry.cardsBetween(top(), top() + viewport()->height()).end - 1;
}

void CardGrid::refresh()
{
    rebuild(transition.canAnimate());
}

bool CardGrid::bringUpToDate()
{
    if (ids.size() != source.count())
        refresh();
    return ids.size() == source.count();
}

void CardGrid::ensureVisible(int index)
{
    const QRect card = geometry.rect(index).adjusted(0, -Style::inset, 0, Style::inset);
    if (card.top() < top())
        verticalScrollBar()->setValue(card.top());
    else if (card.bottom() >= top() + viewport()->height())
        verticalScrollBar()->setValue(card.bottom() + 1 - viewport()->height());
}

void CardGrid::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    const QEvent::Type type = event->type();
    if (type != QEvent::FontChange && type != QEvent::StyleChange && type != QEvent::LayoutDirectionChange)
        return;
    // Later, as the cards hear of it after the grid does.
    const auto measureAgain = [this] {
        pool.forgetHeights();
        rebuild(false);
    };
    QMetaObject::invokeMethod(this, measureAgain, Qt::QueuedConnection);
}

bool CardGrid::event(QEvent *event)
{
    const bool done = QAbstractScrollArea::event(event);
    if (event->type() == QEvent::Paint && FocusRing::isShownBy(this)) {
        QPainter painter(this);
        painter.setPen(QPen(Style::accent(Style::Accent::blue, palette()), focusFrame));
        painter.drawRect(viewport()->geometry().adjusted(-1, -1, 1, 1));
    }
    return done;
}

void CardGrid::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    if (event->reason() == Qt::BacktabFocusReason)
        focus.enterBackwards();
}

bool CardGrid::focusNextPrevChild(bool next)
{
    if (focus.moveOn(next))
        return true;
    if (!hasFocus()) {
        // Backwards the grid itself is the stop before its cards; forwards the chain goes on behind it.
        setFocus(Qt::OtherFocusReason);
        if (!next)
            return true;
    }
    return QAbstractScrollArea::focusNextPrevChild(next);
}

void CardGrid::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Home)
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
    else if (event->key() == Qt::Key_End)
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMaximum);
    else
        QAbstractScrollArea::keyPressEvent(event);
}

void CardGrid::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    const int reach = shadow.margin();
    for (int index = pool.first(); const Card *card : pool.inUse()) {
        const QRect rect = drawnRect(index++).translated(0, -top());
        if (!rect.adjusted(-reach, -reach, reach, reach).intersects(event->rect()))
            continue;
        painter.setOpacity(transition.opacity(card));
        shadow.paint(&painter, rect);
    }
    transition.paintFadingCards(&painter, shadow, top());
}

void CardGrid::resizeEvent(QResizeEvent *)
{
    if (isLayingOut)
        return;
    const int anchor = geometry.firstAt(top());
    const int below = ids.isEmpty() ? 0 : geometry.rect(anchor).top() - top();
    const bool isAtTop = top() == 0;
    rebuild(false);
    if (!isAtTop && anchor < ids.size())
        verticalScrollBar()->setValue(geometry.rect(anchor).top() - below);
}

void CardGrid::scrollContentsBy(int, int dy)
{
    if (isLayingOut)
        return;
    viewport()->scroll(0, dy);
    fillView();
}

void CardGrid::showEvent(QShowEvent *event)
{
    QAbstractScrollArea::showEvent(event);
    rebuild(false);
}

int CardGrid::top() const
{
    return verticalScrollBar()->value();
}

// In page coordinates.
QRect CardGrid::drawnRect(int index) const
{
    return transition.rect(pool.card(index), geometry.rect(index));
}

void CardGrid::rebuild(bool animate)
{
    if (!isVisible())
        return;
    transition.appear(); // here, as a resize may come before the show event
    const int oldTop = top();
    const QStringList newIds = readIds();
    const GridGeometry newGeometry = layOut(int(newIds.size()));
    const bool isChanged = newIds != ids || newGeometry != geometry;
    if (isChanged && animate)
        startTransition(top() - oldTop);
    else if (isChanged)
        transition.finish();
    const Snapshot before{std::exchange(ids, newIds), std::exchange(geometry, newGeometry), top() - oldTop};
    populate(isChanged && animate ? &before : nullptr);
    pool.refresh();
    if (isChanged)
        viewport()->update();
}

QStringList CardGrid::readIds() const
{
    QStringList read;
    read.reserve(source.count());
    for (int index = 0; index < source.count(); ++index)
        read << source.id(index);
    return read;
}

GridGeometry CardGrid::layOut(int count)
{
    const QScopedValueRollback guard(isLayingOut, true);
    GridGeometry made;
    // A scroll bar that comes or goes changes the width.
    for (int width = -1; width != viewport()->width();) {
        width = viewport()->width();
        made =
            GridGeometry(count, width, layoutDirection(), [this](int index) { return pool.heightOf(index); });
        const int visible = viewport()->height();
        verticalScrollBar()->setPageStep(visible);
        verticalScrollBar()->setSingleStep(2 * Style::hitSize);
        verticalScrollBar()->setRange(0, std::max(0, made.height() - visible));
        // By itself Qt shows or hides the bar later, and that resize would end a transition.
        setVerticalScrollBarPolicy(made.height() > visible ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    }
    return made;
}

void CardGrid::startTransition(int scrolled)
{
    for (int index = pool.first(); const Card *card : pool.inUse())
        transition.setStart(card, drawnRect(index++).translated(0, scrolled), transition.opacity(card));
    transition.start(scrolled);
}

void CardGrid::fillView()
{
    if (bringUpToDate())
        populate();
}

void CardGrid::populate(const Snapshot *before)
{
    // The first frame need not wait for more than it shows.
    const int margin = transition.isTilting() ? 0 : prefetchMargin;
    const auto [first, end] = geometry.cardsBetween(top() - margin, top() + viewport()->height() + margin);
    for (Card *card : pool.keep(first, ids.mid(first, end - first)))
        release(card, before);
    for (const int index : pool.addMissing()) {
        if (before)
            setStart(index, *before);
    }
    placeCards();
    for (Card *card : pool.inUse())
        card->show();
}

void CardGrid::release(Card *card, bool fadeOut)
{
    if (card->isAncestorOf(window()->focusWidget()))
        setFocus(Qt::OtherFocusReason);
    if (fadeOut)
        transition.fadeOut(card, viewport()->rect().translated(0, top()));
    else
        transition.forget(card);
    pool.giveBack(card);
}

// A card that has come into view begins where its record was; that of a new record fades in.
void CardGrid::setStart(int index, const Snapshot &before)
{
    const auto oldIndex = before.ids.indexOf(ids[index]);
    if (oldIndex >= 0)
        transition.setStart(pool.card(index),
                            before.geometry.rect(int(oldIndex)).translated(0, before.scrolled), 1);
    else
        transition.setStart(pool.card(index), geometry.rect(index), 0);
}

void CardGrid::placeCards()
{
    for (int index = pool.first(); Card * card : pool.inUse()) {
        card->setGeometry(drawnRect(index++).translated(0, -top()));
        transition.applyOpacity(card);
    }
}
