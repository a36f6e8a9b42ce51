#include "app/BelfryApp.h"

#include <QApplication>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// One that is closed at our start would become the connection to the display, and our lines go there.
void occupyStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", O_RDWR);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    occupyStandardDescriptors();
    // A reader of our output that goes away must not end the program.
    std::signal(SIGPIPE, SIG_IGN);

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("belfry"));
    QApplication::setApplicationVersion(QStringLiteral(BELFRY_VERSION));

    BelfryApp belfry;
    belfry.show();
    return QApplication::exec();
}
