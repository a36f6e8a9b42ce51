#include "sound/PulseMainLoop.h"

#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <pulse/mainloop-api.h>
#include <pulse/timeval.h>
#include <sys/time.h>

// Events are children of the loop. libpulse frees some of them in their own callbacks, so they are disabled
// at once and deleted later.

struct pa_io_event final : public QObject
{
    pa_io_event(PulseMainLoop *loop, int file, pa_io_event_cb_t callback, void *data)
        : QObject(loop)
        , file(file)
        , callback(callback)
        , data(data)
    {
        connect(&input, &QSocketNotifier::activated, this, [this] { notify(PA_IO_EVENT_INPUT); });
        connect(&output, &QSocketNotifier::activated, this, [this] { notify(PA_IO_EVENT_OUTPUT); });
    }

    void enable(int events)
    {
        input.setEnabled(events & PA_IO_EVENT_INPUT);
        output.setEnabled(events & PA_IO_EVENT_OUTPUT);
    }

    void disable() { enable(PA_IO_EVENT_NULL); }
    bool isWaitingToWrite() const { return output.isEnabled(); }
    void notify(pa_io_event_flags_t events);

    int file;
    pa_io_event_cb_t callback;
    void *data;
    pa_io_event_destroy_cb_t destroyed = nullptr;
    QSocketNotifier input{file, QSocketNotifier::Read, this};
    QSocketNotifier output{file, QSocketNotifier::Write, this};
};

struct pa_time_event final : public QObject
{
    pa_time_event(PulseMainLoop *loop, pa_time_event_cb_t callback, void *data)
        : QObject(loop)
        , loop(loop)
        , callback(callback)
        , data(data)
    {
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        connect(&timer, &QTimer::timeout, this, &pa_time_event::notify);
    }

    // `moment` is on the wall clock, which may be set in the meantime: only the delay until then counts.
    void restart(const timeval *moment)
    {
        timer.stop();
        if (!moment)
            return;
        due = *moment;
        timeval now = {};
        pa_gettimeofday(&now);
        const std::chrono::microseconds delay(pa_timeval_cmp(&due, &now) > 0 ? pa_timeval_diff(&due, &now)
                                                                             : 0);
        timer.start(std::chrono::ceil<std::chrono::milliseconds>(delay));
    }

    void disable() { timer.stop(); }
    void notify();

    PulseMainLoop *loop;
    pa_time_event_cb_t callback;
    void *data;
    pa_time_event_destroy_cb_t destroyed = nullptr;
    timeval due = {};
    QTimer timer{this};
};

struct pa_defer_event final : public QObject
{
    pa_defer_event(PulseMainLoop *loop, pa_defer_event_cb_t callback, void *data)
        : QObject(loop)
        , loop(loop)
        , callback(callback)
        , data(data)
    {
        loop->deferred.append(this);
        connect(&timer, &QTimer::timeout, this, &pa_defer_event::notify);
        timer.start(0);
    }

    void enable(bool enabled)
    {
        if (!enabled)
            timer.stop();
        else if (!timer.isActive())
            timer.start(0);
    }

    void disable()
    {
        timer.stop();
        loop->deferred.removeOne(this);
    }

    void notify();

    PulseMainLoop *loop;
    pa_defer_event_cb_t callback;
    void *data;
    pa_defer_event_destroy_cb_t destroyed = nullptr;
    QTimer timer{this};
};

namespace {

constexpr std::chrono::milliseconds postponement(500);

PulseMainLoop *loopOf(const pa_mainloop_api *api)
{
    return static_cast<PulseMainLoop *>(api->userdata);
}

pa_mainloop_api *apiOf(const QObject *event)
{
    return static_cast<PulseMainLoop *>(event->parent())->api();
}

template<typename Event>
void release(Event *event)
{
    event->disable();
    if (event->destroyed)
        event->destroyed(apiOf(event), event, event->data);
    event->deleteLater();
}

template<typename Event, typename Callback>
void setDestroy(Event *event, Callback callback)
{
    event->destroyed = callback;
}

pa_io_event *newIo(pa_mainloop_api *api, int file, pa_io_event_flags_t events, pa_io_event_cb_t callback,
                   void *data)
{
    auto *event = new pa_io_event(loopOf(api), file, callback, data);
    event->enable(events);
    return event;
}

pa_time_event *newTime(pa_mainloop_api *api, const timeval *moment, pa_time_event_cb_t callback, void *data)
{
    auto *event = new pa_time_event(loopOf(api), callback, data);
    event->restart(moment);
    return event;
}

pa_defer_event *newDefer(pa_mainloop_api *api, pa_defer_event_cb_t callback, void *data)
{
    return new pa_defer_event(loopOf(api), callback, data);
}

} // namespace

void pa_io_event::notify(pa_io_event_flags_t events)
{
    callback(apiOf(this), this, file, events, data);
}

void pa_time_event::notify()
{
    if (loop->timersPostponed())
        return timer.start(postponement);
    callback(apiOf(this), this, &due, data);
}

void pa_defer_event::notify()
{
    callback(apiOf(this), this, data);
}

PulseMainLoop::PulseMainLoop() : functions(std::make_unique<pa_mainloop_api>())
{
    *functions = {
        .userdata = this,
        .io_new = newIo,
        .io_enable = [](pa_io_event *event, pa_io_event_flags_t events) { event->enable(events); },
        .io_free = release<pa_io_event>,
        .io_set_destroy = setDestroy<pa_io_event, pa_io_event_destroy_cb_t>,
        .time_new = newTime,
        .time_restart = [](pa_time_event *event, const timeval *moment) { event->restart(moment); },
        .time_free = release<pa_time_event>,
        .time_set_destroy = setDestroy<pa_time_event, pa_time_event_destroy_cb_t>,
        .defer_new = newDefer,
        .defer_enable = [](pa_defer_event *event, int enabled) { event->enable(enabled != 0); },
        .defer_free = release<pa_defer_event>,
        .defer_set_destroy = setDestroy<pa_defer_event, pa_defer_event_destroy_cb_t>,
        .quit = [](pa_mainloop_api *, int) {},
    };
}

PulseMainLoop::~PulseMainLoop()
{
    qDeleteAll(findChildren<QObject *>(Qt::FindDirectChildrenOnly));
}

void PulseMainLoop::runDeferred()
{
    const auto events = deferred;
    for (pa_defer_event *event : events) {
        if (deferred.contains(event) && event->timer.isActive())
            event->notify();
    }
}

bool PulseMainLoop::isWaitingToWrite() const
{
    const auto events = children();
    return std::any_of(events.begin(), events.end(), [](const QObject *event) {
        const auto *io = dynamic_cast<const pa_io_event *>(event);
        return io && io->isWaitingToWrite();
    });
}
