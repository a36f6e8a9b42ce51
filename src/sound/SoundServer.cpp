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

// Times are counted in ticks of a timer, of which one is lost while the main thread is held, however long:
// a server is not to blame for what we had no time to read.
constexpr auto watchInterval = 500ms;
constexpr int hungAfterTicks = 6;
constexpr int reconnectAfterTicks = 4;

QString errorOf(const pa_context *context)
{
    return QString::fromUtf8(pa_strerror(pa_context_errno(context)));
}

} // namespace

void SoundServer::Free::operator()(pa_context *pulseContext) const
{
    pa_context_set_state_callback(pulseContext, nullptr, nullptr);
    pa_context_disconnect(pulseContext);
    pa_context_unref(pulseContext);
}

SoundServer::SoundServer(QByteArray address) : address(std::move(address))
{
    loop.setTimersPostponed([this] { return mayBeResolving(); });
    watchTimer.setInterval(watchInterval);
    connect(&watchTimer, &QTimer::timeout, this, &SoundServer::watch);
}

SoundServer::~SoundServer()
{
    // It is never freed, which matters less than the wait, see mayBeResolving().
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
    watchTimer.start();
    if (!context)
        connectToServer();
}

void SoundServer::detach()
{
    if (--attached == 0)
        watchTimer.stop();
}

void SoundServer::reportPlayback()
{
    ticksWithoutActivity = 0;
    if (std::exchange(outage, false))
        Log::write(u"Sound server is back"_s);
}

void SoundServer::fail(const QString &reason)
{
    // Called out of libpulse, which is not done yet with what would be freed.
    const auto dropFailed = [this, reason, failed = contextNumber] {
        if (context && failed == contextNumber)
            drop(reason);
    };
    QMetaObject::invokeMethod(this, dropFailed, Qt::QueuedConnection);
}

// While a thread of libpulse looks a host name up, whatever ends that early waits for the thread: to free the
// context, and also libpulse's own timeout of five seconds. A name server that does not answer would hold the
// main thread. Only once the name is found does libpulse wait to write to a socket.
bool SoundServer::mayBeResolving() const
{
    return context && pa_context_get_state(context.get()) == PA_CONTEXT_CONNECTING &&
           !loop.isWaitingToWrite();
}

void SoundServer::connectToServer()
{
    ticksWithoutActivity = 0;
    ticksToReconnect = reconnectAfterTicks;
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
    // To start a server takes libpulse a wait, and is the business of the user's session.
    const char *server = address.isEmpty() ? nullptr : address.constData();
    if (pa_context_connect(context.get(), server, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        fail(errorOf(context.get()));
}

void SoundServer::contextChanged()
{
    ticksWithoutActivity = 0;
    const auto state = pa_context_get_state(context.get());
    if (state == PA_CONTEXT_READY)
        Q_EMIT connected();
    else if (!PA_CONTEXT_IS_GOOD(state))
        fail(errorOf(context.get()));
}

void SoundServer::drop(const QString &reason)
{
    Q_EMIT disconnected();
    context.reset();
    reportOutage(reason);
}

void SoundServer::reportOutage(const QString &reason)
{
    if (attached == 0 || std::exchange(outage, true))
        return;
    ticksToReconnect = 1;
    Log::write(u"No sound server (%1); playback continues silently"_s.arg(reason));
}

void SoundServer::watch()
{
    if (!context) {
        if (--ticksToReconnect <= 0)
            connectToServer();
    } else if (++ticksWithoutActivity < hungAfterTicks) {
        ping();
    } else if (mayBeResolving()) {
        reportOutage(u"its name is not resolved"_s);
    } else {
        drop(u"it does not answer"_s);
    }
}

// Any answer is a sign of life: a device may take its time to wake.
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
