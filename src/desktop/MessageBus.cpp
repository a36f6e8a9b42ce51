#include "desktop/MessageBus.h"

#include "platform/Log.h"

#include <QDeadlineTimer>
#include <QList>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Where the D-Bus library looks for the addresses of the buses.
constexpr char sessionVariable[] = "DBUS_SESSION_BUS_ADDRESS";
constexpr char systemVariable[] = "DBUS_SYSTEM_BUS_ADDRESS";

QByteArray defaultSessionSocket()
{
    return qgetenv("XDG_RUNTIME_DIR") + "/bus";
}

// The name of the socket in an address such as "unix:path=/run/user/1000/bus,guid=…", with a null byte in
// front if it is abstract. Empty for other transports, which are rare.
QByteArray socketName(const QByteArray &address)
{
    if (!address.startsWith("unix:"))
        return {};
    for (const QByteArray &pair : address.split(';').first().mid(5).split(',')) {
        QByteArray value = QByteArray::fromPercentEncoding(pair.mid(pair.indexOf('=') + 1));
        if (pair.startsWith("path="))
            return value;
        if (pair.startsWith("abstract="))
            return '\0' + value;
    }
    return {};
}

// A connection on which the first line of the D-Bus authentication has been sent; every bus replies to it.
// Neither QtDBus nor libdbus has a timeout for connecting, and Qt connects while QApplication is created.
class BusProbe final
{
    Q_DISABLE_COPY_MOVE(BusProbe)

public:
    explicit BusProbe(const QByteArray &address)
    {
        const QByteArray name = socketName(address);
        sockaddr_un socketAddress{AF_UNIX, {}};
        if (name.isEmpty() || name.size() >= qsizetype(sizeof socketAddress.sun_path))
            return;
        std::memcpy(socketAddress.sun_path, name.constData(), size_t(name.size()));
        const auto size = socklen_t(offsetof(sockaddr_un, sun_path) + size_t(name.size()));
        if (::connect(socket, reinterpret_cast<const sockaddr *>(&socketAddress), size) == 0)
            expectsReply = ::send(socket, "\0AUTH\r\n", 7, MSG_NOSIGNAL) == 7;
        else
            expectsReply = errno == EAGAIN; // the bus accepts no connections: its queue is full
    }

    ~BusProbe() { ::close(socket); }

    // Waits for the reply. False only if there is a bus, but no reply until `deadline`.
    bool responds(QDeadlineTimer deadline) const
    {
        pollfd reply{socket, POLLIN, 0};
        return !expectsReply || ::poll(&reply, 1, int(deadline.remainingTime())) != 0;
    }

private:
    int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    bool expectsReply = false;
};

void disableUnless(bool responds, const char *variable, const QString &name)
{
    if (responds)
        return;
    qputenv(variable, "disabled:");
    Log::write(u"%1 bus is not responding; continuing without it"_s.arg(name));
}

} // namespace

bool MessageBus::hasSession()
{
    return qEnvironmentVariableIsEmpty(sessionVariable)
               ? ::access(defaultSessionSocket().constData(), F_OK) == 0
               : !qgetenv(sessionVariable).startsWith("disabled:");
}

void MessageBus::disableUnresponsive()
{
    const auto addressIn = [](const char *variable, const QByteArray &fallback) {
        return qEnvironmentVariableIsEmpty(variable) ? fallback : qgetenv(variable);
    };
    // Both are probed at the same time, so that two frozen buses cost no more than one.
    const BusProbe session(addressIn(sessionVariable, "unix:path=" + defaultSessionSocket()));
    const BusProbe system(addressIn(systemVariable, "unix:path=/run/dbus/system_bus_socket"));
    const QDeadlineTimer deadline(2s);
    disableUnless(session.responds(deadline), sessionVariable, u"Session"_s);
    disableUnless(system.responds(deadline), systemVariable, u"System"_s);
}
