#pragma once

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

struct pa_defer_event;
struct pa_mainloop_api;

/// Implements libpulse's pa_mainloop_api on Qt's event loop, by notifiers and timers.
///
/// libpulse's own pa_glib_mainloop needs Qt's event loop to be GLib's, which Qt may be built without and
/// QT_NO_GLIB turns off. Its timers could not be postponed either.
///
/// It must outlive every libpulse object that was given its api().
class PulseMainLoop final : public QObject
{
    Q_DISABLE_COPY_MOVE(PulseMainLoop)

public:
    PulseMainLoop();
    ~PulseMainLoop() override;

    pa_mainloop_api *api() const { return functions.get(); }

    /// Runs the enabled deferred events, which libpulse uses to send commands, without waiting for the next
    /// turn.
    void runDeferred();

    /// True while libpulse waits for a socket to become writable, as when it connects.
    bool isWaitingToWrite() const;

    /// While `condition` is true no timer of libpulse fires. One that is due fires within half a second
    /// after.
    void setTimersPostponed(std::function<bool()> condition) { timersPostponed = std::move(condition); }

private:
    friend struct pa_defer_event;
    friend struct pa_time_event;

    std::unique_ptr<pa_mainloop_api> functions;
    QList<pa_defer_event *> deferred;
    std::function<bool()> timersPostponed = [] { return false; };
};
