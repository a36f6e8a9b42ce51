#pragma once

#include <QObject>

#include <functional>

class ObservableObject;

/// Answers any number of changes of the objects that it observes with one call of `refresh`, on the next
/// turn of the event loop, when the new values are there.
///
/// It asks for that turn as a widget asks for its repaint, by an event UpdateRequest, which DisplayGuard
/// holds back while the display does not respond: to show a widget takes replies of the display, too.
class Refresher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Refresher)

public:
    Refresher(std::function<void()> refresh, std::initializer_list<const ObservableObject *> observed,
              QObject *parent);

    bool event(QEvent *event) override;

private:
    std::function<void()> refresh;
    bool isPending = false;
};
