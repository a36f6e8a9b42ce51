#pragma once

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

struct pa_defer_event;
struct pa_mainloop_api;

/// Implements libpulse's pa_mainloop_api on Qt's event loop, by notifiers and timers.
///
/// Qt's loop need not be GLib's, so libpulse's own adapter for that one would not do.
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

    /// True while libpulse waits until it can write to some socket, as in opening a connection.
    bool isWaitingToWrite() const;

    /// No timer of libpulse's fires while `condition` is true: it fires within half a second afterwards.
    void setTimersPostponed(std::function<bool()> condition) { timersPostponed = std::move(condition); }

private:
    friend struct pa_defer_event;
    friend struct pa_time_event;

    std::unique_ptr<pa_mainloop_api> functions;
    QList<pa_defer_event *> deferred;
    std::function<bool()> timersPostponed = [] { return false; };
};
