#pragma once

#include "app/AppStore.h"
#include "core/TickTimer.h"
#include "store/NewId.h"
#include "support/Controls.h"
#include "support/SharedObjects.h"
#include "toolkit/Card.h"
#include "toolkit/CardGrid.h"
#include "toolkit/Group.h"
#include "ui/ContentView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QTest>
#include <QToolBar>

#include <algorithm>

/// The main window over shared objects of its own. The clock stands on a Monday just before eight. Lists are
/// filled before open().
class MainWindow final : public SharedObjects
{
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    MainWindow() : SharedObjects("2026-03-02 07:59:58") {}

    /// A holiday that is long over, in the list.
    Holiday addHoliday(const QString &title, const QString &begin = QStringLiteral("2024-10-01"))
    {
        const Holiday holiday{false, newId(), title, begin, QStringLiteral("2024-10-07")};
        holidayStore.addHoliday(holiday);
        return holiday;
    }

    void open(bool animated = false)
    {
        for (CardGrid *grid : view.findChildren<CardGrid *>())
            grid->setAnimated(animated);
        view.show();
        QVERIFY(QTest::qWaitForWindowActive(&view));
    }

    void openInEditMode()
    {
        open();
        appStore.isEditMode = true;
        QTRY_VERIFY(control(toolBar(), QStringLiteral("Delete")));
    }

    /// Lets the window's timer see the time of day, "HH:mm:ss".
    void tick(const char *time)
    {
        clock.set(qPrintable(QStringLiteral("2026-03-02 ") + QString::fromLatin1(time)));
        view.findChild<TickTimer *>()->fire();
    }

    QToolBar *toolBar() const { return view.findChild<QToolBar *>(); }
    QListWidget *list() const { return view.findChild<QListWidget *>(); }

    /// The column of the sidebar, and in it the clock.
    QWidget *column() const { return list()->parentWidget(); }
    QLabel *clockLabel() const
    {
        return column()->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
    }

    /// Clicks the row of that text in the sidebar.
    void chooseScreen(const QString &text, Qt::KeyboardModifiers modifiers = {}) const
    {
        const QListWidgetItem *row = list()->findItems(text, Qt::MatchExactly).value(0);
        QVERIFY(row);
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, modifiers,
                          list()->visualItemRect(row).center());
        if (!modifiers)
            QTRY_VERIFY(control<CardGrid>(&view, text));
    }

    /// The card of that title on the screen that is shown; null when there is none.
    Card *card(const QString &title) const
    {
        const auto cards = view.findChildren<Card *>();
        const auto found = std::find_if(cards.begin(), cards.end(), [&title](const Card *card) {
            return card->isVisible() && card->title() == title;
        });
        return found == cards.end() ? nullptr : *found;
    }

    /// The panel of that kind in the window, once it has the focus; null when none comes.
    template<typename Dialog = QDialog>
    QPointer<Dialog> dialog() const
    {
        const auto find = [this] { return view.findChild<Dialog *>(); };
        const auto hasFocus = [&] { return find() && find()->isAncestorOf(QApplication::focusWidget()); };
        return QTest::qWaitFor(hasFocus) ? find() : nullptr;
    }

    /// Waits until the panels have gone and the window takes input again.
    void closeDialogs() const
    {
        QTRY_VERIFY(!view.findChild<QDialog *>());
        QTRY_VERIFY(toolBar()->isEnabled());
    }

    AppStore appStore;
    ContentView view{{appStore, planStore, holidayStore, historyStore, avPlayer, clock}};
};

/// Presses a key where the focus is.
inline void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
{
    QTRY_VERIFY(QApplication::focusWidget());
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
}

/// What a card shows, in reading order: its texts, and its icons by their names.
inline QStringList contents(const Card *card)
{
    QStringList shown;
    for (const QWidget *widget : card->findChild<Group *>()->findChildren<QWidget *>()) {
        const auto *label = qobject_cast<const QLabel *>(widget);
        const QString text = label && !label->text().isEmpty() ? label->text() : widget->accessibleName();
        if (widget->isVisible() && !text.isEmpty())
            shown << text;
    }
    return shown;
}

/// The colour behind what a card shows.
inline QColor background(Card *card)
{
    return card->grab().toImage().pixelColor(card->width() / 2, 2);
}
