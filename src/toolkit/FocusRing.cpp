#include "toolkit/FocusRing.h"

#include "toolkit/Style.h"

#include <QApplication>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

FocusRing::FocusRing(QWidget *window) : QObject(window)
{
    connect(qApp, &QApplication::focusChanged, this, &FocusRing::follow);
}

bool FocusRing::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Paint)
        return false;
    watched->event(event);
    auto *button = static_cast<QWidget *>(watched);
    QPainter painter(button);
    Style::paintFocus(&painter, button->rect(), Style::accent(Style::Accent::blue, button->palette()));
    return true;
}

void FocusRing::follow(QWidget *old, QWidget *now)
{
    if (old)
        old->removeEventFilter(this);
    const bool isButton = qobject_cast<QPushButton *>(now) || qobject_cast<QToolButton *>(now);
    if (isButton && now->window() == parent())
        now->installEventFilter(this);
}
