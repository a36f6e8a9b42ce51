#include "toolkit/CardGrid.h"

#include "toolkit/Card.h"
#include "toolkit/FocusRing.h"
#include "toolkit/Style.h"
#include "toolkit/TiltEffect.h"

#include <QApplication>
#include <QGraphicsOpacityEffect>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int focusFrame = 2;
/// How far beyond the view cards exist, for quick scrolling and for assistive technology to read ahead.
constexpr int ahead = 500;

QRect between(const QRect &from, const QRect &to, double progress)
{
    const auto mix = [progress](int a, int b) { return qRound(a + (b - a) * progress); };
    return {mix(from.x(), to.x()), mix(from.y(), to.y()), mix(from.width(), to.width()),
            mix(from.height(), to.height())};
}

void setOpacity(Card *card, double opacity)
{
    if (opacity >= 1) {
        card->setGraphicsEffect(nullptr);
        return;
    }
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(card->graphicsEffect());
    if (!effect) {
        effect = new QGraphicsOpacityEffect;
        card->setGraphicsEffect(effect);
    }
    effect->setOpacity(opacity);
}

void prepare(QVariantAnimation &animation, double from, double to)
{
    animation.setStartValue(from);
    animation.setEndValue(to);
    animation.setDuration(Style::animationMilliseconds);
    animation.setEasingCurve(Style::easeInOut());
}

} // namespace

CardGrid::CardGrid(CardSource source, int shadowRadius, QWidget *parent)
    : QAbstractScrollArea(parent)
    , source(std::move(source))
    , shadow(shadowRadius)
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setViewportMargins(focusFrame, focusFrame, focusFrame, focusFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Window);
    prepare(movement, 0, 1);
    prepare(tilt, TiltEffect::startDegrees, 0);
    connect(&movement, &QVariantAnimation::valueChanged, this, &CardGrid::placeCards);
    connect(&movement, &QVariantAnimation::finished, this, &CardGrid::finishMovement);
    connect(&tilt, &QVariantAnimation::finished, this, &CardGrid::finishTilt);
    connect(qApp, &QApplication::focusChanged, this, [this] {
        // A card that slid away under the mouse could not be clicked.
        if (const int index = indexWithFocus(); index >= 0 && QApplication::mouseButtons() == Qt::NoButton)
            reveal(index);
    });
}

CardGrid::~CardGrid()
{
    // The focus may leave a card while the grid is being taken apart.
    disconnect(qApp, nullptr, this, nullptr);
}

Card *CardGrid::card(const QString &id) const
{
    const auto found = std::find_if(places.begin(), places.end(), [&](const Place &p) { return p.id == id; });
    return found == places.end() ? nullptr : found->card;
}

bool CardGrid::isMoving() const
{
    return movement.state() == QAbstractAnimation::Running || tilt.state() == QAbstractAnimation::Running;
}

void CardGrid::refresh()
{
    rebuild(canAnimate());
}

void CardGrid::reveal(int index)
{
    const QRect card = geometry.rect(index).adjusted(0, -Style::inset, 0, Style::inset);
    if (card.top() < top())
        verticalScrollBar()->setValue(card.top());
    else if (card.bottom() >= top() + viewport()->height())
        verticalScrollBar()->setValue(card.bottom() + 1 - viewport()->height());
}

void CardGrid::setAnimated(bool animated)
{
    isAnimated = animated;
    if (animated)
        return;
    movement.stop();
    finishMovement();
    tilt.stop();
    finishTilt();
}

void CardGrid::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::LayoutDirectionChange:
        // The cards hear of it after the grid does.
        QMetaObject::invokeMethod(
            this,
            [this] {
                heights.clear();
                rebuild(false);
            },
            Qt::QueuedConnection);
        break;
    default:
        break;
    }
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
    if (event->reason() != Qt::BacktabFocusReason || ids.size() != source.count())
        return;
    const int last = geometry.rowsBetween(top(), top() + viewport()->height()).last - 1;
    if (QWidget *control = controlFrom(last, -1))
        control->setFocus(Qt::BacktabFocusReason);
}

bool CardGrid::focusNextPrevChild(bool next)
{
    if (QWidget *control = neighbourControl(next)) {
        control->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    if (!hasFocus()) {
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
    const auto paintShadow = [&](const QRect &rect, double opacity) {
        painter.setOpacity(opacity);
        if (rect.adjusted(-reach, -reach, reach, reach).intersects(event->rect()))
            shadow.paint(&painter, rect);
    };
    for (size_t place = 0; place < places.size(); ++place)
        paintShadow(drawnRect(place).translated(0, -top()), drawnOpacity(place));
    for (const Ghost &ghost : ghosts) {
        const QRect rect = ghost.rect.translated(0, -top());
        paintShadow(rect, ghost.startOpacity * (1 - progress()));
        painter.drawPixmap(rect, ghost.picture);
    }
}

void CardGrid::resizeEvent(QResizeEvent *)
{
    if (isArranging)
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
    if (isArranging)
        return;
    viewport()->scroll(0, dy);
    fillOrRefresh();
}

void CardGrid::showEvent(QShowEvent *event)
{
    QAbstractScrollArea::showEvent(event);
    if (!hasAppeared && canAnimate())
        startTilt();
    hasAppeared = true;
    rebuild(false);
}

int CardGrid::top() const
{
    return verticalScrollBar()->value();
}

double CardGrid::progress() const
{
    return movement.state() == QAbstractAnimation::Running ? movement.currentValue().toDouble() : 1;
}

QRect CardGrid::drawnRect(size_t place) const
{
    return between(places[place].start, geometry.rect(firstPlace + int(place)), progress());
}

double CardGrid::drawnOpacity(size_t place) const
{
    return std::lerp(places[place].startOpacity, 1.0, progress());
}

int CardGrid::indexWithFocus() const
{
    const QWidget *focused = window()->focusWidget();
    for (size_t place = 0; focused && place < places.size(); ++place) {
        if (places[place].card->isAncestorOf(focused))
            return firstPlace + int(place);
    }
    return -1;
}

bool CardGrid::canAnimate() const
{
    return isAnimated && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
}

void CardGrid::rebuild(bool animate)
{
    if (!isVisible())
        return;
    std::vector<Place> stopped = places;
    for (size_t place = 0; place < places.size(); ++place) {
        stopped[place].start = drawnRect(place);
        stopped[place].startOpacity = drawnOpacity(place);
    }
    Before before{std::exchange(ids, {}), geometry, -top()};
    ids.reserve(source.count());
    for (int index = 0; index < source.count(); ++index)
        ids << source.id(index);
    arrange();
    before.scrolled += top();
    const bool isMoved = ids != before.ids || geometry != before.geometry;
    if (isMoved && animate) {
        places = std::move(stopped);
        freeze(before.scrolled);
    }
    fill(isMoved && animate ? &before : nullptr);
    for (size_t place = 0; place < places.size(); ++place)
        source.show(places[place].card, firstPlace + int(place));
    if (!isMoved)
        return;
    movement.stop();
    if (animate) {
        movement.start();
        placeCards();
    } else {
        finishMovement();
    }
}

void CardGrid::arrange()
{
    const QScopedValueRollback guard(isArranging, true);
    // A scroll bar that comes or goes changes the width.
    for (int width = -1; width != viewport()->width();) {
        width = viewport()->width();
        geometry = GridGeometry(int(ids.size()), width, layoutDirection(),
                                [this](int index) { return heightOf(index); });
        const int visible = viewport()->height();
        verticalScrollBar()->setPageStep(visible);
        verticalScrollBar()->setSingleStep(2 * Style::hitSize);
        verticalScrollBar()->setRange(0, std::max(0, geometry.height() - visible));
    }
}

int CardGrid::heightOf(int index)
{
    const int shape = source.shape(index);
    if (const auto known = heights.constFind(shape); known != heights.constEnd())
        return *known;
    Card *card = takeSpare();
    source.show(card, index);
    spares.push_back(card);
    return heights[shape] = card->sizeHint().height();
}

void CardGrid::freeze(int scrolled)
{
    for (Place &place : places)
        place.start.translate(0, scrolled);
    for (Ghost &ghost : ghosts) {
        ghost.rect.translate(0, scrolled);
        ghost.startOpacity *= 1 - progress();
    }
}

void CardGrid::fill(const Before *before)
{
    // The first frame need not wait for more than it shows.
    const int margin = tilt.state() == QAbstractAnimation::Running ? 0 : ahead;
    const auto [first, last] = geometry.rowsBetween(top() - margin, top() + viewport()->height() + margin);
    QHash<QString, int> wanted;
    for (int index = first; index < last; ++index)
        wanted.insert(ids[index], index - first);

    std::vector<Place> next(size_t(last - first));
    for (Place &place : places) {
        const int position = wanted.value(place.id, -1);
        if (position >= 0 && !next[size_t(position)].card)
            next[size_t(position)] = std::move(place);
        else
            release(place, before);
    }
    for (int index = first; index < last; ++index) {
        if (Place &place = next[size_t(index - first)]; !place.card)
            place = newPlace(index, before);
    }
    places = std::move(next);
    firstPlace = first;
    orderChildren();
    for (size_t place = 0; place < places.size(); ++place) {
        places[place].card->setGeometry(drawnRect(place).translated(0, -top()));
        places[place].card->show();
    }
}

void CardGrid::fillOrRefresh()
{
    // The list may have changed already, with the refresh still to come.
    if (ids.size() == source.count())
        fill();
    else
        refresh();
}

CardGrid::Place CardGrid::newPlace(int index, const Before *before)
{
    Place place{takeSpare(), ids[index], geometry.rect(index), 1};
    source.show(place.card, index);
    if (!before)
        return place;
    const auto was = before->ids.indexOf(place.id);
    if (was >= 0)
        place.start = before->geometry.rect(int(was)).translated(0, before->scrolled);
    else
        place.startOpacity = 0;
    return place;
}

void CardGrid::release(const Place &place, bool leaveGhost)
{
    if (place.card->isAncestorOf(window()->focusWidget()))
        setFocus(Qt::OtherFocusReason);
    setOpacity(place.card, 1);
    if (leaveGhost && place.start.translated(0, -top()).intersects(viewport()->rect()))
        ghosts.push_back({place.card->grab(), place.start, place.startOpacity});
    place.card->hide();
    spares.push_back(place.card);
}

Card *CardGrid::takeSpare()
{
    if (spares.empty()) {
        Card *card = source.create();
        card->setParent(viewport());
        card->hide();
        return card;
    }
    Card *card = spares.back();
    spares.pop_back();
    return card;
}

void CardGrid::orderChildren()
{
    // Assistive technology reads the children in this order.
    for (size_t place = places.size(); place-- > 1;) {
        const QObjectList &children = viewport()->children();
        if (children.indexOf(places[place - 1].card) > children.indexOf(places[place].card))
            places[place - 1].card->stackUnder(places[place].card);
    }
}

void CardGrid::placeCards()
{
    for (size_t place = 0; place < places.size(); ++place) {
        places[place].card->setGeometry(drawnRect(place).translated(0, -top()));
        setOpacity(places[place].card, drawnOpacity(place));
    }
    viewport()->update();
}

void CardGrid::finishMovement()
{
    for (size_t place = 0; place < places.size(); ++place) {
        places[place].start = geometry.rect(firstPlace + int(place));
        places[place].startOpacity = 1;
    }
    ghosts.clear();
    placeCards();
}

void CardGrid::startTilt()
{
    auto *effect = new TiltEffect(*viewport(), shadow.margin());
    viewport()->setGraphicsEffect(effect);
    connect(&tilt, &QVariantAnimation::valueChanged, effect,
            [effect](const QVariant &degrees) { effect->setDegrees(degrees.toDouble()); });
    tilt.start();
}

void CardGrid::finishTilt()
{
    viewport()->setGraphicsEffect(nullptr);
    fillOrRefresh();
}

QWidget *CardGrid::neighbourControl(bool next)
{
    if (ids.size() != source.count())
        refresh();
    const int index = indexWithFocus();
    if (index < 0) {
        if (!next || !hasFocus())
            return nullptr;
        QWidget *control = controlFrom(geometry.firstAt(top()), 1);
        return control ? control : controlFrom(0, 1);
    }
    const QList<QWidget *> controls = places[size_t(index - firstPlace)].card->controls();
    const auto neighbour = controls.indexOf(window()->focusWidget()) + (next ? 1 : -1);
    if (neighbour >= 0 && neighbour < controls.size())
        return controls[neighbour];
    return next ? controlFrom(index + 1, 1) : controlFrom(index - 1, -1);
}

QWidget *CardGrid::controlFrom(int index, int step)
{
    for (; index >= 0 && index < ids.size(); index += step) {
        if (!source.hasControls(index))
            continue;
        reveal(index);
        const size_t place = size_t(index - firstPlace);
        if (place >= places.size()) // the list has changed, with the refresh still to come
            continue;
        const QList<QWidget *> controls = places[place].card->controls();
        if (!controls.isEmpty())
            return step > 0 ? controls.first() : controls.last();
    }
    return nullptr;
}
