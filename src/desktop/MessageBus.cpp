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

QByteArray addressIn(const char *variable, const QByteArray &fallback)
{
    return qEnvironmentVariableIsEmpty(variable) ? fallback : qgetenv(variable);
}

// The name of the socket in an address such as "unix:path=/run/user/1000/bus,guid=…", with a null byte in
// front of an abstract one. Empty for other kinds, which are rare.
QByteArray socketName(const QByteArray &address)
{
    if (!address.startsWith("unix:"))
        return {};
    for (const QByteArray &pair : address.split(';').first().mid(5).split(',')) {
        const QByteArray value = QByteArray::fromPercentEncoding(pair.mid(pair.indexOf('=') + 1));
        if (pair.startsWith("path="))
            return value;
        if (pair.startsWith("abstract="))
            return '\0' + value;
    }
    return {};
}

// A connection to a bus that has been asked which authentication mechanisms it has. By hand, because neither
// QtDBus nor libdbus takes a timeout for connecting, and Qt itself connects while QApplication is made.
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
        if (::connect(socket, reinterpret_cast<const sockaddr *>(&socketAddress), size) != 0)
            isWaiting = errno == EAGAIN; // its queue is full
        else
            isWaiting = ::send(socket, "\0AUTH\r\n", 7, MSG_NOSIGNAL) == 7;
    }

    ~BusProbe() { ::close(socket); }

    // False when the bus is there and sends nothing until `deadline`.
    bool responds(QDeadlineTimer deadline) const
    {
        pollfd answer{socket, POLLIN, 0};
        return !isWaiting || ::poll(&answer, 1, int(deadline.remainingTime())) != 0;
    }

private:
    int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    bool isWaiting = false;
};

} // namespace

bool MessageBus::hasSession()
{
    const QByteArray defaultSocket = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    return qEnvironmentVariableIsEmpty(sessionVariable) ? ::access(defaultSocket.constData(), F_OK) == 0
                                                        : !qgetenv(sessionVariable).startsWith("disabled:");
}

void MessageBus::disableUnresponsive()
{
    const BusProbe session(addressIn(sessionVariable, "unix:path=" + qgetenv("XDG_RUNTIME_DIR") + "/bus"));
    const BusProbe system(addressIn(systemVariable, "unix:path=/run/dbus/system_bus_socket"));
    const QDeadlineTimer deadline(2s);
    const auto check = [&deadline](const BusProbe &bus, const char *variable, const QString &name) {
        if (bus.responds(deadline))
            return;
        qputenv(variable, "disabled:");
        Log::write(u"%1 bus is not responding; continuing without it"_s.arg(name));
    };
    check(session, sessionVariable, u"Session"_s);
    check(system, systemVariable, u"System"_s);
}
