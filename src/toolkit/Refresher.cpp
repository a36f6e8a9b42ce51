#include "toolkit/Refresher.h"

#include "platform/ObservableObject.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

Refresher::Refresher(std::function<void()> refresh, std::initializer_list<const ObservableObject *> observed,
                     QObject *parent)
    : QObject(parent)
    , refresh(std::move(refresh))
{
    for (const ObservableObject *object : observed) {
        connect(object, &ObservableObject::objectWillChange, this, [this] {
            if (!std::exchange(isPending, true))
                QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
        });
    }
}

bool Refresher::event(QEvent *event)
{
    if (event->type() != QEvent::UpdateRequest)
        return QObject::event(event);
    isPending = false;
    refresh();
    return true;
}
