#pragma once

#include "app/AppStore.h"
#include "core/TickTimer.h"
#include "store/NewId.h"
#include "support/Controls.h"
#include "support/SharedObjects.h"
#include "toolkit/Card.h"
#include "toolkit/CardGrid.h"
#include "ui/ContentView.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QTest>
#include <QToolBar>

/// The main window over shared objects of its own. The clock stands on a Monday just before eight. Lists are
/// filled before open().
class MainWindow final : public SharedObjects
{
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    MainWindow() : SharedObjects("2026-03-02 07:59:58") {}

    /// A holiday that is long over, in the list.
    void addHoliday(const QString &title, const QString &begin = QStringLiteral("2024-10-01"))
    {
        holidayStore.addHoliday(
            {.id = newId(), .title = title, .begin = begin, .end = QStringLiteral("2024-10-07")});
    }

    void open(bool isEditMode = false)
    {
        for (CardGrid *grid : view.findChildren<CardGrid *>())
            grid->setAnimated(false);
        view.show();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        appStore.isEditMode = isEditMode;
        QTRY_COMPARE(control(toolBar(), QStringLiteral("Delete")) != nullptr, isEditMode);
    }

    /// Lets the window's timer see the time of day, "HH:mm:ss".
    void tick(const char *time)
    {
        clock.set(qPrintable(QStringLiteral("2026-03-02 ") + QString::fromLatin1(time)));
        view.findChild<TickTimer *>()->fire();
    }

    QToolBar *toolBar() const { return view.findChild<QToolBar *>(); }
    QListWidget *list() const { return view.findChild<QListWidget *>(); }

    QLabel *clockLabel() const
    {
        return list()->parentWidget()->findChild<QLabel *>({}, Qt::FindDirectChildrenOnly);
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
        for (Card *card : view.findChildren<Card *>()) {
            if (card->isVisible() && card->title() == title)
                return card;
        }
        return nullptr;
    }

    /// The panel in the window, once it has the focus; null when none comes.
    QPointer<QDialog> dialog() const
    {
        const auto find = [this] { return view.findChild<QDialog *>(); };
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
