#pragma once

#include <QTimer>

#include <functional>

class ObservableObject;

/// Answers any number of changes of the objects that it observes with one call of `refresh`, on the next
/// turn of the event loop, when the new values are there.
class Refresher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Refresher)

public:
    Refresher(std::function<void()> refresh, std::initializer_list<const ObservableObject *> observed,
              QObject *parent);

private:
    QTimer nextTurn;
};
