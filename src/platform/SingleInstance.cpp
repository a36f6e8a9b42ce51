#include "platform/SingleInstance.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>

#include <cerrno>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 2000; // milliseconds

// The right to take the focus that Wayland's desktops hand to a program that they start: where they put it,
// and where Qt looks for it. For X11 there is no such thing that Qt would look at after the start.
constexpr char tokenVariable[] = "XDG_ACTIVATION_TOKEN";
constexpr QLatin1String tokenKey("activation-token");

// Whether the program has the name now; a bus that does not say so does not keep a program from running.
bool takeName(const QDBusConnection &bus)
{
    constexpr uint doNotQueue = 4;
    constexpr uint exists = 3;
    auto request = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                  u"org.freedesktop.DBus"_s, u"RequestName"_s);
    request << QStringLiteral(BELFRY_ID) << doNotQueue;
    const QDBusMessage reply = bus.call(request, QDBus::Block, patience);
    return reply.arguments().value(0).toUInt() != exists;
}

// Whether the program that has the name has taken the call.
bool activateOther(const QDBusConnection &bus, const QString &path)
{
    auto activate = QDBusMessage::createMethodCall(QStringLiteral(BELFRY_ID), path,
                                                   u"org.freedesktop.Application"_s, u"Activate"_s);
    activate << QVariantMap{{tokenKey, qEnvironmentVariable(tokenVariable)}};
    activate.setAutoStartService(false);
    return bus.call(activate, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

} // namespace

bool SingleInstance::claim(bool hasBus)
{
    return claimName() && (!hasBus || claimLock());
}

// Whether no other program has the name; if one has, it is told to come to the front.
bool SingleInstance::claimName()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    // First, so that whoever sees the name finds the object.
    const QString path = u'/' + QStringLiteral(BELFRY_ID).replace(u'.', u'/');
    bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots);
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (takeName(bus))
            return true;
        if (activateOther(bus, path)) {
            Log::write(u"Belfry is running already: its window comes to the front."_s);
            return false;
        }
        // It may just have ended.
    }
    Log::write(u"Belfry is running already, but does not answer."_s);
    return false;
}

// Whether no other program has the lock. One that is just ending is waited for.
bool SingleInstance::claimLock()
{
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    lock.setFileName(folder + u"/" BELFRY_ID ".lock"_s);
    if (folder.isEmpty() || !lock.open(QIODevice::WriteOnly))
        return true;
    const QDeadlineTimer deadline(patience);
    while (::flock(lock.handle(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        if (deadline.hasExpired()) {
            Log::write(u"Belfry is running already, but cannot be reached."_s);
            return false;
        }
        ::usleep(20000);
    }
    return true;
}

void SingleInstance::Activate(const QVariantMap &platformData)
{
    const QByteArray token = platformData.value(tokenKey).toString().toUtf8();
    if (!token.isEmpty())
        qputenv(tokenVariable, token);
    Q_EMIT activated();
}

void SingleInstance::Open(const QStringList &, const QVariantMap &platformData)
{
    Activate(platformData);
}

void SingleInstance::ActivateAction(const QString &, const QVariantList &, const QVariantMap &platformData)
{
    Activate(platformData);
}
