#include "platform/SingleInstance.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>

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

bool SingleInstance::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    // First, so that whoever sees the name finds the object.
    const QString path = u'/' + QStringLiteral(BELFRY_ID).replace(u'.', u'/');
    bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots);
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (takeName(bus))
            return true;
        if (activateOther(bus, path))
            return false;
        // It may just have ended.
    }
    Log::write(u"Belfry is running already, but does not answer."_s);
    return false;
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
