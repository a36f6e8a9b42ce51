#include "toolkit/CardTransition.h"

#include "toolkit/Card.h"
#include "toolkit/CardShadow.h"
#include "toolkit/Style.h"
#include "toolkit/TiltEffect.h"

#include <QGraphicsOpacityEffect>
#include <QPainter>
#include <QStyle>

#include <cmath>
#include <utility>

namespace {

QRect interpolated(const QRect &from, const QRect &to, double progress)
{
    const auto mix = [progress](int a, int b) { return qRound(std::lerp(a, b, progress)); };
    return {mix(from.x(), to.x()), mix(from.y(), to.y()), mix(from.width(), to.width()),
            mix(from.height(), to.height())};
}

void configure(QVariantAnimation &animation, double from, double to)
{
    animation.setStartValue(from);
    animation.setEndValue(to);
    animation.setDuration(Style::animationMilliseconds);
    animation.setEasingCurve(Style::easeInOut());
}

} // namespace

CardTransition::CardTransition(QWidget *viewport, int shadowMargin)
    : viewport(viewport)
    , shadowMargin(shadowMargin)
{
    configure(movement, 0, 1);
    configure(tilt, TiltEffect::startDegrees, 0);
    connect(&movement, &QVariantAnimation::valueChanged, this, &CardTransition::advanced);
    connect(&movement, &QVariantAnimation::finished, this, &CardTransition::finish);
    connect(&tilt, &QVariantAnimation::finished, this, &CardTransition::finishTilt);
}

void CardTransition::setEnabled(bool enabled)
{
    isEnabled = enabled;
    if (enabled)
        return;
    finish();
    tilt.stop();
    finishTilt();
}

bool CardTransition::canAnimate() const
{
    return isEnabled &&
           viewport->style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, viewport) > 0;
}

QRect CardTransition::rect(const Card *card, const QRect &target) const
{
    return interpolated(starts.value(card, {target, 1}).rect, target, progress());
}

double CardTransition::opacity(const Card *card) const
{
    return std::lerp(starts.value(card, {{}, 1}).opacity, 1.0, progress());
}

void CardTransition::applyOpacity(Card *card) const
{
    if (opacity(card) >= 1)
        return card->setGraphicsEffect(nullptr);
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(card->graphicsEffect());
    if (!effect) {
        effect = new QGraphicsOpacityEffect;
        card->setGraphicsEffect(effect);
    }
    effect->setOpacity(opacity(card));
}

void CardTransition::setStart(const Card *card, const QRect &rect, double opacity)
{
    starts.insert(card, {rect, opacity});
}

void CardTransition::start(int scrolled)
{
    for (FadingCard &card : fadingCards) {
        card.rect.translate(0, scrolled);
        card.startOpacity *= 1 - progress();
    }
    movement.stop();
    movement.start();
}

void CardTransition::finish()
{
    movement.stop();
    starts.clear();
    fadingCards.clear();
    Q_EMIT advanced();
}

void CardTransition::forget(Card *card)
{
    card->setGraphicsEffect(nullptr);
    starts.remove(card);
}

void CardTransition::fadeOut(Card *card, const QRect &visible)
{
    const Start start = starts.value(card);
    forget(card);
    if (start.rect.intersects(visible))
        fadingCards.push_back({card->grab(), start.rect, start.opacity});
}

void CardTransition::paintFadingCards(QPainter *painter, CardShadow &shadow, int top) const
{
    for (const FadingCard &card : fadingCards) {
        const QRect rect = card.rect.translated(0, -top);
        painter->setOpacity(card.startOpacity * (1 - progress()));
        shadow.paint(painter, rect);
        painter->drawPixmap(rect, card.picture);
    }
}

void CardTransition::appear()
{
    if (std::exchange(hasAppeared, true) || !canAnimate())
        return;
    auto *effect = new TiltEffect(*viewport, shadowMargin);
    viewport->setGraphicsEffect(effect);
    connect(&tilt, &QVariantAnimation::valueChanged, effect,
            [effect](const QVariant &degrees) { effect->setDegrees(degrees.toDouble()); });
    tilt.start();
}

bool CardTransition::isTilting() const
{
    return tilt.state() == QAbstractAnimation::Running;
}

double CardTransition::progress() const
{
    return movement.state() == QAbstractAnimation::Running ? movement.currentValue().toDouble() : 1;
}

void CardTransition::finishTilt()
{
    viewport->setGraphicsEffect(nullptr);
    Q_EMIT tiltFinished();
}
