#include "platform/IdleInhibitor.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1String loginManager("org.freedesktop.login1");
constexpr QLatin1String why("Belfry keeps the timetable");

} // namespace

IdleInhibitor::IdleInhibitor(QObject *parent) : QObject(parent)
{
    auto *watcher = new QDBusServiceWatcher(loginManager, QDBusConnection::systemBus(),
                                            QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &IdleInhibitor::askLoginManager);
    askLoginManager();
    askDesktop();
}

void IdleInhibitor::askLoginManager()
{
    auto inhibit = QDBusMessage::createMethodCall(loginManager, u"/org/freedesktop/login1"_s,
                                                  u"org.freedesktop.login1.Manager"_s, u"Inhibit"_s);
    inhibit << u"idle"_s << u"Belfry"_s << QString(why) << u"block"_s;
    const QDBusPendingCall call = QDBusConnection::systemBus().asyncCall(inhibit);
    if (call.isFinished()) // at once where there is no bus
        return take(call);
    auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        take(*watcher);
        watcher->deleteLater();
    });
}

void IdleInhibitor::take(const QDBusPendingCall &answer)
{
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = answer;
    if (!reply.isError())
        lock = reply.value();
    else if (!std::exchange(hasLogged, true))
        Log::write(u"The machine may fall asleep when nobody uses it: "_s + reply.error().message());
}

// Each holds the lock for as long as the program is on the bus.
void IdleInhibitor::askDesktop()
{
    const auto ask = [](const QString &service, const QString &path, const QString &interface,
                        const QVariantList &arguments) {
        auto inhibit = QDBusMessage::createMethodCall(service, path, interface, u"Inhibit"_s);
        inhibit.setArguments(arguments);
        inhibit.setAutoStartService(false);
        QDBusConnection::sessionBus().asyncCall(inhibit);
    };
    constexpr uint noWindow = 0;
    constexpr uint sleep = 4;
    ask(u"org.gnome.SessionManager"_s, u"/org/gnome/SessionManager"_s, u"org.gnome.SessionManager"_s,
        {QStringLiteral(BELFRY_ID), noWindow, QString(why), sleep});
    ask(u"org.freedesktop.PowerManagement"_s, u"/org/freedesktop/PowerManagement/Inhibit"_s,
        u"org.freedesktop.PowerManagement.Inhibit"_s, {u"Belfry"_s, QString(why)});
}
