#include "desktop/ExitSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int exitSignals[] = {SIGTERM, SIGINT, SIGHUP};

// The self-pipe: hardly anything is allowed in a signal handler, but writing to a pipe is.
int pipeEnds[2] = {-1, -1};

void onSignal(int)
{
    const int error = errno;
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(pipeEnds[1], &byte, 1);
    errno = error;
}

// Leaves out the signals that the program was started to ignore, as by nohup.
void handleExitSignals(void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    for (const int signal : exitSignals) {
        struct sigaction current = {};
        if (::sigaction(signal, nullptr, &current) == 0 && current.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

} // namespace

ExitSignals::ExitSignals(QObject *parent) : QObject(parent)
{
    if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto *notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::exit();
    });
    handleExitSignals(onSignal, SA_RESTART | SA_RESETHAND);
}

ExitSignals::~ExitSignals()
{
    handleExitSignals(SIG_DFL, 0);
    for (int &end : pipeEnds)
        ::close(std::exchange(end, -1));
}
