#include "desktop/SingleInstance.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The right to take the focus that Wayland's desktops hand to a program that they start: where they put it,
// and where Qt looks for it. For X11 there is no such thing that Qt would look at after the start.
constexpr char tokenVariable[] = "XDG_ACTIVATION_TOKEN";
constexpr QLatin1String tokenKey("activation-token");

int timeoutMs(QDeadlineTimer deadline)
{
    return std::max(1, int(deadline.remainingTime())); // 0 and less have meanings of their own
}

// False when another program owns the name; a bus that does not say so keeps no program from running.
bool requestName(QDBusConnectionInterface &bus, QDeadlineTimer deadline)
{
    bus.setTimeout(timeoutMs(deadline));
    const auto reply = bus.registerService(QStringLiteral(BELFRY_ID));
    return !reply.isValid() || reply.value() == QDBusConnectionInterface::ServiceRegistered;
}

// Whether the program that owns the name has answered the call.
bool activateOther(const QDBusConnection &bus, const QString &path, QDeadlineTimer deadline)
{
    auto activate = QDBusMessage::createMethodCall(QStringLiteral(BELFRY_ID), path,
                                                   u"org.freedesktop.Application"_s, u"Activate"_s);
    activate << QVariantMap{{tokenKey, qEnvironmentVariable(tokenVariable)}};
    activate.setAutoStartService(false);
    return bus.call(activate, QDBus::Block, timeoutMs(deadline)).type() == QDBusMessage::ReplyMessage;
}

// Opens the lock file, which is made if need be; -1 where that is not possible. Whatever else lies there is
// neither waited for nor changed.
int openLockFile(const QByteArray &folder)
{
    const QByteArray path = folder + "/" BELFRY_ID ".lock";
    const int file = ::open(path, O_RDONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    struct stat status = {};
    if (file < 0 || (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)))
        return file;
    ::close(file);
    return -1;
}

} // namespace

SingleInstance::~SingleInstance()
{
    if (lock >= 0)
        ::close(lock);
}

bool SingleInstance::claim(bool hasBus)
{
    const QDeadlineTimer deadline(2s);
    return claimName(deadline) && (!hasBus || claimLock(deadline));
}

// Whether no other program owns the name; if one does, its window is raised.
bool SingleInstance::claimName(QDeadlineTimer deadline)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return true;
    // First, so that whoever sees the name finds the object.
    const QString path = u'/' + QStringLiteral(BELFRY_ID).replace(u'.', u'/');
    bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots);
    // More than once, as the other program may just have ended.
    for (int attempt = 0; attempt < 3 && !deadline.hasExpired(); ++attempt) {
        if (requestName(*bus.interface(), deadline))
            return true;
        if (activateOther(bus, path, deadline)) {
            Log::write(u"Already running; raising its window"_s);
            return false;
        }
    }
    Log::write(u"Already running, but not responding"_s);
    return false;
}

// Whether no other program holds the lock. One that is just ending is waited for.
bool SingleInstance::claimLock(QDeadlineTimer deadline)
{
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    if (!folder.isEmpty())
        lock = openLockFile(folder);
    while (lock >= 0 && ::flock(lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        if (deadline.hasExpired()) {
            Log::write(u"Already running, but not reachable on the session bus"_s);
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
