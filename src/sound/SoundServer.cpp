#include "sound/SoundServer.h"

#include "platform/Log.h"

#include <chrono>
#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Timeouts are counted in timer ticks. A main thread that is held up, however long, costs one tick: a server
// is not to blame for answers that we had no time to read.
constexpr auto checkInterval = 500ms;
constexpr int hungAfterTicks = 6;
constexpr int reconnectAfterTicks = 4;

} // namespace

void SoundServer::Free::operator()(pa_context *pulseContext) const
{
    pa_context_set_state_callback(pulseContext, nullptr, nullptr);
    pa_context_disconnect(pulseContext);
    pa_context_unref(pulseContext);
}

SoundServer::SoundServer()
{
    loop.setTimersPostponed([this] { return mayBeResolving(); });
    checkTimer.setInterval(checkInterval);
    connect(&checkTimer, &QTimer::timeout, this, &SoundServer::checkConnection);
}

SoundServer::~SoundServer()
{
    // A leak is better than the wait, see mayBeResolving(). Nothing enters the context any more, so it may
    // outlive the main loop. Static, so that leak checkers still find it.
    [[maybe_unused]] static pa_context *abandoned;
    if (mayBeResolving())
        abandoned = context.release();
}

pa_context *SoundServer::connection() const
{
    return context && pa_context_get_state(context.get()) == PA_CONTEXT_READY ? context.get() : nullptr;
}

void SoundServer::attach()
{
    if (attached++ > 0)
        return;
    ticksWithoutActivity = 0;
    checkTimer.start();
    if (!context)
        connectToServer();
}

void SoundServer::detach()
{
    if (--attached == 0)
        checkTimer.stop();
}

void SoundServer::reportPlayback()
{
    ticksWithoutActivity = 0;
    if (std::exchange(outage, false))
        Log::write(u"Sound server is back"_s);
}

void SoundServer::fail()
{
    const QString reason = QString::fromUtf8(pa_strerror(pa_context_errno(context.get())));
    // libpulse, which may have called this, still uses the context. By the next turn there may be another
    // one, even at the same address.
    const auto dropFailed = [this, reason, failed = contextNumber] {
        if (context && failed == contextNumber)
            drop(reason);
    };
    QMetaObject::invokeMethod(this, dropFailed, Qt::QueuedConnection);
}

// libpulse resolves host names on a thread, and joins it when the context is freed and also at its own
// timeout of five seconds. A name server that does not answer would hold the main thread. Only with a
// resolved name does libpulse have a socket to write to.
bool SoundServer::mayBeResolving() const
{
    return context && pa_context_get_state(context.get()) == PA_CONTEXT_CONNECTING &&
           !loop.isWaitingToWrite();
}

void SoundServer::connectToServer()
{
    ++contextNumber;
    pa_proplist *properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, BELFRY_ID);
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, BELFRY_ID);
    context.reset(pa_context_new_with_proplist(loop.api(), "Belfry", properties));
    pa_proplist_free(properties);
    Q_CHECK_PTR(context);
    pa_context_set_state_callback(
        context.get(), [](pa_context *, void *self) { static_cast<SoundServer *>(self)->contextChanged(); },
        this);
    // Starting a server would block, and is up to the user's session.
    if (pa_context_connect(context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        fail();
}

void SoundServer::contextChanged()
{
    ticksWithoutActivity = 0;
    const auto state = pa_context_get_state(context.get());
    if (state == PA_CONTEXT_READY)
        Q_EMIT connected();
    else if (!PA_CONTEXT_IS_GOOD(state))
        fail();
}

void SoundServer::drop(const QString &reason)
{
    Q_EMIT disconnected();
    context.reset();
    ticksToReconnect = outage ? reconnectAfterTicks : 1; // a server that restarts is often back at once
    reportOutage(reason);
}

void SoundServer::reportOutage(const QString &reason)
{
    if (attached == 0 || std::exchange(outage, true))
        return;
    Log::write(u"No sound server (%1); playback continues silently"_s.arg(reason));
}

void SoundServer::checkConnection()
{
    if (!context) {
        if (--ticksToReconnect <= 0)
            connectToServer();
        return;
    }
    if (++ticksWithoutActivity < hungAfterTicks)
        ping();
    else if (mayBeResolving())
        reportOutage(u"its name is not resolved"_s);
    else
        drop(u"it does not answer"_s);
}

// The answer shows that the server responds even while its device is asleep and no sound is played.
void SoundServer::ping()
{
    if (!connection())
        return;
    const auto answered = [](pa_context *, const pa_stat_info *, void *self) {
        static_cast<SoundServer *>(self)->ticksWithoutActivity = 0;
    };
    if (pa_operation *operation = pa_context_stat(connection(), answered, this))
        pa_operation_unref(operation);
}
