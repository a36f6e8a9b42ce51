#pragma once

#include <QObject>

#include <functional>

class ObservableObject;

/// Calls `refresh` once for any number of changes of the objects that it observes, in the next iteration of
/// the event loop, when the new values are there.
///
/// It posts itself an UpdateRequest, as a widget does for its repaint: DisplayGuard holds that back while the
/// display does not respond, because showing a widget waits for the display, too.
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
