#pragma once

#include "toolkit/CardFocus.h"
#include "toolkit/CardPool.h"
#include "toolkit/CardShadow.h"
#include "toolkit/CardSource.h"
#include "toolkit/CardTransition.h"
#include "toolkit/GridGeometry.h"

#include <QAbstractScrollArea>

/// A page of cards that scrolls vertically: adaptive columns, in list order.
///
/// Cards are widgets and not painted by an item view's delegate: their controls take clicks and the focus,
/// have tool tips, and are known to assistive technology. They exist only for the rows in view and near it
/// and are used again for other records, so that a list costs a few bytes a record.
///
/// The grid is one stop in the window's tab chain, where the keys scroll; from there Tab goes through the
/// controls of all cards (CardFocus). It animates when it first appears and when the list changes
/// (CardTransition), but not when it is scrolled, resized or first filled.
class CardGrid : public QAbstractScrollArea
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CardGrid)

public:
    /// `shadowRadius`: that of every card, in device-independent pixels.
    CardGrid(CardSource source, int shadowRadius, QWidget *parent = nullptr);

    /// The card that shows the record of that id, or null when it is out of view.
    Card *card(const QString &id) const { return pool.card(id); }

    /// The first card of the first row in view, and the last one of the row below the view.
    int firstInView() const;
    int lastNearView() const;

    /// Looks at the list again and touches what differs. While the page is hidden that waits until it shows.
    void refresh();

    /// Refreshes if the list has got longer or shorter, its refresh still to come. False while the page is
    /// hidden and differs from the list.
    bool bringUpToDate();

    /// Scrolls by as little as it takes to have the whole card of a record in view.
    void ensureVisible(int index);

    /// Whether changes may animate where the style allows it; true at creation.
    void setAnimated(bool animated) { transition.setEnabled(animated); }

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
    /// What a transition starts from. `scrolled` is by how much the page has moved under the view since.
    struct Snapshot
    {
        QStringList ids;
        GridGeometry geometry;
        int scrolled;
    };

    int top() const;
    QRect drawnRect(int index) const;

    void rebuild(bool animate);
    QStringList readIds() const;
    GridGeometry layOut(int count);
    void startTransition(int scrolled);
    void fillView();
    void populate(const Snapshot *before = nullptr);
    void release(Card *card, bool fadeOut);
    void setStart(int index, const Snapshot &before);
    void placeCards();

    CardSource source;
    CardShadow shadow;
    QStringList ids;
    GridGeometry geometry;
    CardPool pool;
    CardTransition transition;
    CardFocus focus;
    bool isLayingOut = false;
};
