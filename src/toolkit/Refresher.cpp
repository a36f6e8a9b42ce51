#include "toolkit/Refresher.h"

#include "platform/ObservableObject.h"

Refresher::Refresher(std::function<void()> refresh, std::initializer_list<const ObservableObject *> observed,
                     QObject *parent)
    : QObject(parent)
{
    nextTurn.setSingleShot(true);
    connect(&nextTurn, &QTimer::timeout, this, std::move(refresh));
    for (const ObservableObject *object : observed) {
        connect(object, &ObservableObject::objectWillChange, this, [this] {
            if (!nextTurn.isActive())
                nextTurn.start(0);
        });
    }
}
