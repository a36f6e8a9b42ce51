#pragma once

#include <QHash>
#include <QPixmap>
#include <QRect>
#include <QVariantAnimation>

#include <vector>

class Card;
class CardShadow;
class QPainter;

/// The animations of a CardGrid: cards that move or change size glide, new ones fade in, and pictures of
/// those that have gone fade out. The page is tilted when it first appears, and swings into place.
///
/// It knows where and how opaque each card was when the current transition began; a card without such a start
/// is at rest. A new transition takes over from what is drawn. All rectangles are in page coordinates.
class CardTransition final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CardTransition)

public:
    /// `viewport` carries the cards, whose shadows reach `shadowMargin` beyond them.
    CardTransition(QWidget *viewport, int shadowMargin);

    /// Whether changes may animate where the style allows it; true at creation. Disabling ends what runs.
    void setEnabled(bool enabled);
    bool canAnimate() const;

    /// Where a card is drawn now on its way to `target`.
    QRect rect(const Card *card, const QRect &target) const;
    double opacity(const Card *card) const;

    /// Makes a card as opaque as it is drawn now.
    void applyOpacity(Card *card) const;

    /// Where and how opaque a card is when the next transition begins.
    void setStart(const Card *card, const QRect &rect, double opacity);

    /// Starts a transition. `scrolled`: by how much the page has moved under the view since the last frame.
    void start(int scrolled);

    /// Ends the transition: every card is at its target, and nothing is left of those that have gone.
    void finish();

    /// Makes a card that leaves the grid opaque and forgets its start.
    void forget(Card *card);

    /// Like forget(), but a picture of the card fades out if its start is within `visible`.
    void fadeOut(Card *card, const QRect &visible);

    void paintFadingCards(QPainter *painter, CardShadow &shadow, int top) const;

    /// Tilts the page if it is the first time that it appears.
    void appear();
    bool isTilting() const;

Q_SIGNALS:
    /// The results of rect() and opacity() have changed.
    void advanced();
    void tiltFinished();

private:
    struct Start
    {
        QRect rect;
        double opacity;
    };

    struct FadingCard
    {
        QPixmap picture;
        QRect rect;
        double startOpacity;
    };

    double progress() const;
    void finishTilt();

    QWidget *viewport;
    int shadowMargin;
    QHash<const Card *, Start> starts;
    std::vector<FadingCard> fadingCards;
    QVariantAnimation movement;
    QVariantAnimation tilt;
    bool isEnabled = true;
    bool hasAppeared = false;
};
