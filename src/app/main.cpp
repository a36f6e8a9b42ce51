#include "app/BelfryApp.h"

#include <QApplication>

#include <csignal>

int main(int argc, char *argv[])
{
    // A reader of our output that goes away must not end the program.
    std::signal(SIGPIPE, SIG_IGN);

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("belfry"));
    QApplication::setApplicationVersion(QStringLiteral(BELFRY_VERSION));

    BelfryApp belfry;
    belfry.show();
    return QApplication::exec();
}
