#include "platform/SoundServer.h"

#include "platform/Log.h"

#include <chrono>
#include <pulse/context.h>
#include <pulse/error.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Times are counted in turns of a timer, of which one is lost while the main thread is held, however long:
// a server is not to blame for what we had no time to read.
constexpr auto turn = 500ms;
constexpr int turnsUntilHung = 6;
constexpr int turnsBetweenTries = 4;

} // namespace

void SoundServer::Free::operator()(pa_context *context) const
{
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}

SoundServer::SoundServer(QByteArray address) : address(std::move(address))
{
    watchTimer.setInterval(turn);
    connect(&watchTimer, &QTimer::timeout, this, &SoundServer::watch);
}

SoundServer::~SoundServer() = default;

pa_context *SoundServer::connection() const
{
    return context && pa_context_get_state(context.get()) == PA_CONTEXT_READY ? context.get() : nullptr;
}

void SoundServer::attach()
{
    if (attached++ > 0)
        return;
    idleTurns = 0;
    watchTimer.start();
    if (!context)
        connectToServer();
}

void SoundServer::detach()
{
    if (--attached == 0)
        watchTimer.stop();
}

void SoundServer::noteLife(bool heard)
{
    idleTurns = 0;
    if (heard && std::exchange(outage, false))
        Log::write(u"The sound server plays again."_s);
}

void SoundServer::fail(const QString &reason)
{
    // Called out of libpulse, which is not done yet with what would be freed.
    QMetaObject::invokeMethod(
        this,
        [this, failed = context.get(), reason]() {
            if (context && context.get() == failed)
                drop(reason);
        },
        Qt::QueuedConnection);
}

void SoundServer::connectToServer()
{
    idleTurns = 0;
    turnsToConnect = turnsBetweenTries;
    context.reset(pa_context_new(loop.api(), "Belfry"));
    Q_CHECK_PTR(context);
    pa_context_set_state_callback(
        context.get(), [](pa_context *, void *self) { static_cast<SoundServer *>(self)->contextChanged(); },
        this);
    // To start a server takes libpulse a wait, and is the business of the user's session.
    const char *server = address.isEmpty() ? nullptr : address.constData();
    if (pa_context_connect(context.get(), server, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        fail(QString::fromUtf8(pa_strerror(pa_context_errno(context.get()))));
}

void SoundServer::contextChanged()
{
    noteLife(false);
    const auto state = pa_context_get_state(context.get());
    if (state == PA_CONTEXT_READY)
        Q_EMIT connected();
    else if (!PA_CONTEXT_IS_GOOD(state))
        fail(QString::fromUtf8(pa_strerror(pa_context_errno(context.get()))));
}

void SoundServer::drop(const QString &reason)
{
    Q_EMIT lost();
    context.reset();
    if (attached == 0 || std::exchange(outage, true))
        return;
    turnsToConnect = 1;
    Log::write(u"No sound server plays (%1). The playback goes on in silence until one does."_s.arg(reason));
}

void SoundServer::watch()
{
    if (!context) {
        if (--turnsToConnect <= 0)
            connectToServer();
    } else if (++idleTurns >= turnsUntilHung) {
        drop(u"it does not answer"_s);
    }
}
