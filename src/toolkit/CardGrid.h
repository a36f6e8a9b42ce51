#pragma once

#include "toolkit/CardShadow.h"
#include "toolkit/GridGeometry.h"

#include <QAbstractScrollArea>
#include <QHash>
#include <QPixmap>
#include <QVariantAnimation>

#include <functional>
#include <vector>

class Card;

/// What a CardGrid shows: a list of records, each known by its index 0 … count() - 1. The functions look at
/// the list as it is when they are called. All are needed.
struct CardSource
{
    std::function<int()> count;
    /// What tells a record from all others, and stays the same when it moves or changes.
    std::function<QString(int index)> id;
    /// A new card without a record; the grid owns it.
    std::function<Card *()> create;
    /// Makes a card from create() show a record, whatever it showed before.
    std::function<void(Card *card, int index)> show;
    /// A number for the lines that the record's card has: all cards of one shape are equally high.
    std::function<int(int index)> shape;
    /// Whether the record's card now has a control that can have the focus.
    std::function<bool(int index)> hasControls;
};

/// A page of cards that scrolls vertically: adaptive columns, in list order.
///
/// Cards exist only for the rows in view and near it and are used again for other records, so that a list
/// costs a few bytes a record. The page is tilted when it is first shown and swings into place; later,
/// cards that come, go, move or change size glide, a new change taking over from where they are. Scrolling,
/// resizing and the first filling do not animate, nor does anything in a style without animations.
///
/// The grid is one stop in the window's tab chain, where the keys scroll; from there Tab goes through the
/// controls of all cards in list order, scrolling as needed.
class CardGrid : public QAbstractScrollArea
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CardGrid)

public:
    /// `shadowRadius`: that of every card, in device-independent pixels.
    CardGrid(CardSource source, int shadowRadius, QWidget *parent = nullptr);
    ~CardGrid() override;

    /// The card that shows the record of that id, or null when it is out of view.
    Card *card(const QString &id) const;

    /// True until the cards have come to rest.
    bool isMoving() const;

    /// Looks at the list again and touches what differs. While the page is hidden that waits until it shows.
    void refresh();

    /// Scrolls by as little as it takes to have the whole card of a record in view.
    void reveal(int index);

    /// Whether changes may animate where the style allows it; true at creation.
    void setAnimated(bool animated);

protected:
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void showEvent(QShowEvent *event) override;

private:
    /// A card in use, and where it is drawn, in page coordinates, when the present movement begins.
    struct Place
    {
        Card *card = nullptr;
        QString id;
        QRect start;
        double startOpacity = 1;
    };

    /// The picture of a card that has left the view, until it has faded.
    struct Ghost
    {
        QPixmap picture;
        QRect rect;
        double startOpacity = 1;
    };

    /// What a movement starts from. `scrolled` is by how much the page has moved under the view since.
    struct Before
    {
        QStringList ids;
        GridGeometry geometry;
        int scrolled = 0;
    };

    int top() const;
    double progress() const;
    QRect drawnRect(size_t place) const;
    double drawnOpacity(size_t place) const;
    int indexWithFocus() const;
    bool canAnimate() const;

    void rebuild(bool animate);
    void arrange();
    int heightOf(int index);
    void freeze(int scrolled);
    void fill(const Before *before = nullptr);
    void fillOrRefresh();
    Place newPlace(int index, const Before *before);
    void release(const Place &place, bool leaveGhost);
    Card *takeSpare();
    void orderChildren();
    void placeCards();
    void finishMovement();
    void startTilt();
    void finishTilt();
    QWidget *neighbourControl(bool next);
    QWidget *controlFrom(int index, int step);

    CardSource source;
    CardShadow shadow;
    QStringList ids;
    GridGeometry geometry;
    /// The cards of the records from `firstPlace` on, in list order.
    std::vector<Place> places;
    int firstPlace = 0;
    std::vector<Card *> spares;
    std::vector<Ghost> ghosts;
    /// The height of the cards of each shape.
    QHash<int, int> heights;
    QVariantAnimation movement;
    QVariantAnimation tilt;
    bool isAnimated = true;
    bool isArranging = false;
    bool hasAppeared = false;
};
