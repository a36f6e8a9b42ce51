#include "desktop/IdleInhibitor.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct Interface
{
    QLatin1String service, path, name;
    bool isOfSystem = false;

    QDBusConnection bus() const
    {
        return isOfSystem ? QDBusConnection::systemBus() : QDBusConnection::sessionBus();
    }
};

constexpr Interface logind{QLatin1String("org.freedesktop.login1"), QLatin1String("/org/freedesktop/login1"),
                           QLatin1String("org.freedesktop.login1.Manager"), true};
constexpr Interface powerManager{QLatin1String("org.freedesktop.PowerManagement"),
                                 QLatin1String("/org/freedesktop/PowerManagement/Inhibit"),
                                 QLatin1String("org.freedesktop.PowerManagement.Inhibit")};
constexpr Interface sessionManager{QLatin1String("org.gnome.SessionManager"),
                                   QLatin1String("/org/gnome/SessionManager"),
                                   QLatin1String("org.gnome.SessionManager")};
constexpr Interface idleMonitor{QLatin1String("org.gnome.Mutter.IdleMonitor"),
                                QLatin1String("/org/gnome/Mutter/IdleMonitor/Core"),
                                QLatin1String("org.gnome.Mutter.IdleMonitor")};

constexpr QLatin1String reason("Belfry keeps the timetable");

// Calls `onReply` with the reply when it is there, unless `context` is gone by then.
template<typename OnReply>
void call(const Interface &interface, const QString &method, const QVariantList &arguments, QObject *context,
          OnReply onReply)
{
    auto message = QDBusMessage::createMethodCall(interface.service, interface.path, interface.name, method);
    message.setArguments(arguments);
    message.setAutoStartService(interface.isOfSystem);
    const QDBusPendingCall pending = interface.bus().asyncCall(message);
    if (pending.isFinished()) // at once where there is no bus
        return onReply(pending);
    auto *watcher = new QDBusPendingCallWatcher(pending, context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, onReply] {
        onReply(*watcher);
        watcher->deleteLater();
    });
}

void ignoreReply(const QDBusPendingCall &) {}

} // namespace

IdleInhibitor::IdleInhibitor(QObject *parent) : QObject(parent)
{
    // From any sender: to look up the owner of a name would block.
    idleMonitor.bus().connect(QString(), idleMonitor.path, idleMonitor.name, u"WatchFired"_s, this,
                              SLOT(onWatchFired(uint)));
    const auto whenBack = [this](const Interface &interface, auto ask) {
        auto *watcher = new QDBusServiceWatcher(interface.service, interface.bus(),
                                                QDBusServiceWatcher::WatchForRegistration, this);
        connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, ask);
    };
    whenBack(logind, [this] { inhibitViaLogind(); });
    whenBack(powerManager, [this] { inhibitViaPowerManager(); });
    whenBack(idleMonitor, [this] { watchInput(); });
    whenBack(sessionManager, [this] {
        if (isInhibiting)
            inhibitViaSessionManager();
    });
    inhibitViaLogind();
    inhibitViaPowerManager();
    watchInput();
}

// The lock lasts as long as its file descriptor is open.
void IdleInhibitor::inhibitViaLogind()
{
    call(logind, u"Inhibit"_s, {u"idle"_s, u"Belfry"_s, QString(reason), u"block"_s}, this,
         [this](const QDBusPendingReply<QDBusUnixFileDescriptor> &reply) {
             if (!reply.isError())
                 logindLock = reply.value();
             else if (!std::exchange(hasLogged, true))
                 Log::write(u"Cannot inhibit idle suspend: "_s + reply.error().message());
         });
}

// This one and that of the session manager last as long as the program is on the bus.
void IdleInhibitor::inhibitViaPowerManager()
{
    call(powerManager, u"Inhibit"_s, {u"Belfry"_s, QString(reason)}, this, ignoreReply);
}

void IdleInhibitor::watchInput()
{
    constexpr qulonglong milliseconds = 30000; // desktops suspend after minutes
    releaseSessionManager();
    call(idleMonitor, u"AddIdleWatch"_s, {milliseconds}, this, [this](const QDBusPendingReply<uint> &reply) {
        inputlessWatch = reply.isError() ? 0 : reply.value();
        if (reply.isError())
            inhibitViaSessionManager();
    });
}

void IdleInhibitor::onWatchFired(uint watch)
{
    if (watch == inputWatch)
        releaseSessionManager();
    if (watch != inputlessWatch)
        return;
    inhibitViaSessionManager();
    call(idleMonitor, u"AddUserActiveWatch"_s, {}, this,
         [this](const QDBusPendingReply<uint> &reply) { inputWatch = reply.isError() ? 0 : reply.value(); });
}

void IdleInhibitor::inhibitViaSessionManager()
{
    constexpr uint noWindow = 0;
    constexpr uint suspend = 4;
    isInhibiting = true;
    call(sessionManager, u"Inhibit"_s, {QStringLiteral(BELFRY_ID), noWindow, QString(reason), suspend}, this,
         [this](const QDBusPendingReply<uint> &reply) {
             cookie = reply.isError() ? 0 : reply.value();
             if (!isInhibiting)
                 releaseSessionManager();
         });
}

void IdleInhibitor::releaseSessionManager()
{
    isInhibiting = false;
    if (const uint held = std::exchange(cookie, 0))
        call(sessionManager, u"Uninhibit"_s, {held}, this, ignoreReply);
}
