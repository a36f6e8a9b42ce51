#pragma once

#include <QList>
#include <QObject>

#include <memory>

struct pa_defer_event;
struct pa_mainloop_api;

/// Lets libpulse live in Qt's event loop: its view of the loop is made of notifiers and timers.
///
/// It must outlive every libpulse object that was given its api().
class PulseMainLoop final : public QObject
{
    Q_DISABLE_COPY_MOVE(PulseMainLoop)

public:
    PulseMainLoop();
    ~PulseMainLoop() override;

    pa_mainloop_api *api() const { return functions.get(); }

    /// Does at once what libpulse has put off to the next turn of the loop, such as sending a command.
    void runDeferred();

private:
    friend struct pa_defer_event;

    std::unique_ptr<pa_mainloop_api> functions;
    QList<pa_defer_event *> deferred;
};
