#include "platform/ExitSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int exitSignals[] = {SIGTERM, SIGINT, SIGHUP};

// Hardly anything is allowed in a signal handler, but to write into a pipe is.
int pipeEnds[2] = {-1, -1};

void pass(int)
{
    const int error = errno;
    const char anything = 0;
    [[maybe_unused]] const auto written = ::write(pipeEnds[1], &anything, 1);
    errno = error;
}

// But for the signals that the program was started to ignore, as nohup does it.
void handleExitSignals(void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    for (const int signal : exitSignals) {
        struct sigaction present = {};
        if (::sigaction(signal, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

} // namespace

ExitSignals::ExitSignals(QObject *parent) : QObject(parent)
{
    if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto *arrival = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(arrival, &QSocketNotifier::activated, this, [arrival] {
        arrival->setEnabled(false);
        QCoreApplication::exit();
    });
    handleExitSignals(pass, SA_RESTART | SA_RESETHAND);
}

ExitSignals::~ExitSignals()
{
    handleExitSignals(SIG_DFL, 0);
    for (int &end : pipeEnds)
        ::close(std::exchange(end, -1));
}
