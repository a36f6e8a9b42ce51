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
    bool isOnSystemBus = false;

    QDBusConnection bus() const
    {
        return isOnSystemBus ? QDBusConnection::systemBus() : QDBusConnection::sessionBus();
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

// Calls `onReply` with the reply when it arrives, unless `context` has been deleted by then.
template<typename OnReply>
void call(const Interface &interface, const QString &method, const QVariantList &arguments, QObject *context,
          OnReply onReply)
{
    auto message = QDBusMessage::createMethodCall(interface.service, interface.path, interface.name, method);
    message.setArguments(arguments);
    message.setAutoStartService(interface.isOnSystemBus);
    const QDBusPendingCall pending = interface.bus().asyncCall(message);
    if (pending.isFinished()) // without a bus, at once
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
    // From any sender: to match that of the service, Qt would look up the owner of its name and block.
    idleMonitor.bus().connect(QString(), idleMonitor.path, idleMonitor.name, u"WatchFired"_s, this,
                              SLOT(onWatchFired(uint)));
    const auto onRegistered = [this](const Interface &interface, auto ask) {
        auto *watcher = new QDBusServiceWatcher(interface.service, interface.bus(),
                                                QDBusServiceWatcher::WatchForRegistration, this);
        connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, ask);
    };
    onRegistered(logind, [this] { inhibitViaLogind(); });
    onRegistered(powerManager, [this] { inhibitViaPowerManager(); });
    onRegistered(idleMonitor, [this] { watchForIdle(); });
    onRegistered(sessionManager, [this] {
        if (isInhibiting)
            inhibitViaSessionManager();
    });
    inhibitViaLogind();
    inhibitViaPowerManager();
    watchForIdle();
}

// The lock is held for as long as its file descriptor is open.
void IdleInhibitor::inhibitViaLogind()
{
    call(logind, u"Inhibit"_s, {u"idle"_s, u"Belfry"_s, QString(reason), u"block"_s}, this,
         [this](const QDBusPendingReply<QDBusUnixFileDescriptor> &reply) {
             if (!reply.isError())
                 logindLock = reply.value();
             else if (!std::exchange(hasLoggedLogindError, true))
                 Log::write(u"Cannot inhibit idle suspend: "_s + reply.error().message());
         });
}

// This inhibitor and the session manager's last until the program leaves the bus.
void IdleInhibitor::inhibitViaPowerManager()
{
    call(powerManager, u"Inhibit"_s, {u"Belfry"_s, QString(reason)}, this, ignoreReply);
}

void IdleInhibitor::watchForIdle()
{
    constexpr qulonglong idleMs = 30000; // desktops suspend after minutes
    uninhibitSessionManager();
    call(idleMonitor, u"AddIdleWatch"_s, {idleMs}, this, [this](const QDBusPendingReply<uint> &reply) {
        idleWatch = reply.isError() ? 0 : reply.value();
        if (reply.isError())
            inhibitViaSessionManager();
    });
}

void IdleInhibitor::onWatchFired(uint watch)
{
    if (watch == userActiveWatch)
        uninhibitSessionManager();
    if (watch != idleWatch)
        return;
    inhibitViaSessionManager();
    call(idleMonitor, u"AddUserActiveWatch"_s, {}, this, [this](const QDBusPendingReply<uint> &reply) {
        userActiveWatch = reply.isError() ? 0 : reply.value();
    });
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
                 uninhibitSessionManager();
         });
}

void IdleInhibitor::uninhibitSessionManager()
{
    isInhibiting = false;
    if (const uint held = std::exchange(cookie, 0))
        call(sessionManager, u"Uninhibit"_s, {held}, this, ignoreReply);
}
