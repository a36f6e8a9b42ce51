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

// Wayland desktops hand this token to the programs that they start; its owner may take the focus. Qt reads it
// from this variable whenever a window is activated. (Its counterpart on X11 is read at the start only.)
constexpr char tokenVariable[] = "XDG_ACTIVATION_TOKEN";
constexpr QLatin1String tokenKey("activation-token");

// The interface requires this path, made from the application id.
QString objectPath()
{
    return u'/' + QStringLiteral(BELFRY_ID).replace(u'.', u'/');
}

int timeoutMs(QDeadlineTimer deadline)
{
    return std::max(1, int(deadline.remainingTime())); // QtDBus takes -1 for its default of 25 s
}

// False only if the bus says that another program owns the name: a bus in disorder must not silence the
// bells.
bool requestName(QDBusConnectionInterface &bus, QDeadlineTimer deadline)
{
    bus.setTimeout(timeoutMs(deadline));
    const auto reply = bus.registerService(QStringLiteral(BELFRY_ID));
    return !reply.isValid() || reply.value() == QDBusConnectionInterface::ServiceRegistered;
}

// Raises the window of the program that owns the name. False if that does not reply.
bool activateOwner(const QDBusConnection &bus, QDeadlineTimer deadline)
{
    auto activate = QDBusMessage::createMethodCall(QStringLiteral(BELFRY_ID), objectPath(),
                                                   u"org.freedesktop.Application"_s, u"Activate"_s);
    activate << QVariantMap{{tokenKey, qEnvironmentVariable(tokenVariable)}};
    activate.setAutoStartService(false);
    return bus.call(activate, QDBus::Block, timeoutMs(deadline)).type() == QDBusMessage::ReplyMessage;
}

// Opens the lock file, or creates it. -1 if that is not possible: anything there that is not a regular file
// is neither waited for nor changed.
int openLockFile()
{
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/" BELFRY_ID ".lock";
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
    if (lockFile >= 0)
        ::close(lockFile);
}

bool SingleInstance::claim(bool hasBus)
{
    const QDeadlineTimer deadline(2s);
    return claimName(deadline) && (!hasBus || claimLock(deadline));
}

// False if another program owns the name; its window is raised.
bool SingleInstance::claimName(QDeadlineTimer deadline)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return true;
    // Before the name, so that whoever sees the name finds the object.
    bus.registerObject(objectPath(), this, QDBusConnection::ExportScriptableSlots);
    // Again if the owner does not reply: it may just have exited.
    for (int attempt = 0; attempt < 3 && !deadline.hasExpired(); ++attempt) {
        if (requestName(*bus.interface(), deadline))
            return true;
        if (activateOwner(bus, deadline)) {
            Log::write(u"Already running; raising its window"_s);
            return false;
        }
    }
    Log::write(u"Already running, but not responding"_s);
    return false;
}

// False if another program keeps the lock until `deadline`; one that is about to exit releases it before.
bool SingleInstance::claimLock(QDeadlineTimer deadline)
{
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        lockFile = openLockFile();
    while (lockFile >= 0 && ::flock(lockFile, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
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
