#include "toolkit/FocusRing.h"

#include "toolkit/Style.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

namespace {

bool isModifier(const QEvent *event)
{
    const int key = static_cast<const QKeyEvent *>(event)->key();
    return key == Qt::Key_Control || key == Qt::Key_Shift || key == Qt::Key_Alt || key == Qt::Key_Meta;
}

bool isInWindow(const QObject *object, const QWidget *window)
{
    const auto *widget = qobject_cast<const QWidget *>(object);
    return widget && widget->window() == window;
}

} // namespace

FocusRing::FocusRing(QWidget *window) : QObject(window), window(window)
{
    qApp->installEventFilter(this);
}

bool FocusRing::isShownBy(const QWidget *widget)
{
    return widget->hasFocus() && widget->window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

bool FocusRing::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride: // comes before every key press, also before that of a shortcut
        if (!isModifier(event))
            setShown(watched, true);
        return false;
    case QEvent::MouseButtonPress:
        setShown(watched, false);
        return false;
    case QEvent::Paint:
        return isFramed(watched) && paintFramed(static_cast<QWidget *>(watched), event);
    default:
        return false;
    }
}

bool FocusRing::isFramed(const QObject *object) const
{
    const bool isButton =
        qobject_cast<const QPushButton *>(object) || qobject_cast<const QToolButton *>(object);
    return isButton && isInWindow(object, window) && isShownBy(static_cast<const QWidget *>(object));
}

bool FocusRing::paintFramed(QWidget *button, QEvent *event)
{
    static_cast<QObject *>(button)->event(event);
    QPainter painter(button);
    Style::paintFocus(&painter, button->rect(), Style::accent(Style::Accent::blue, button->palette()));
    return true;
}

void FocusRing::setShown(const QObject *input, bool isShown)
{
    if (!isInWindow(input, window) || window->testAttribute(Qt::WA_KeyboardFocusChange) == isShown)
        return;
    window->setAttribute(Qt::WA_KeyboardFocusChange, isShown);
    QWidget *focused = window->focusWidget();
    if (!focused)
        return;
    focused->update();
    if (const auto *area = qobject_cast<QAbstractScrollArea *>(focused))
        area->viewport()->update();
}
