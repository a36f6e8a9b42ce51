#include "app/BelfryApp.h"
#include "desktop/ExitSignals.h"
#include "desktop/MessageBus.h"
#include "desktop/SingleInstance.h"
#include "platform/Log.h"
#include "platform/Resources.h"
#include "store/SQLiteHelper.h"
#include "toolkit/DisplayGuard.h"
#include "toolkit/FileChooser.h"

#include <QApplication>
#include <QIcon>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

// The next file to be opened would take the place of a closed one: the connection to the display, for one,
// would then receive what is meant for standard output.
void openStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", O_RDWR);
    }
}

// For window managers that do not find the icon by the application id. The icon theme lies beside the
// resources, in the build tree too.
QIcon windowIcon(const Resources &resources)
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128}) {
        const QString name = QStringLiteral("../icons/hicolor/%1x%1/apps/" BELFRY_ID).arg(size);
        if (const auto file = resources.path(name, QStringLiteral("png")))
            icon.addFile(*file, {size, size});
    }
    return icon;
}

} // namespace

int main(int argc, char *argv[])
{
    openStandardDescriptors();
    // The end of whatever reads our output must not end the program.
    std::signal(SIGPIPE, SIG_IGN);

    Log::captureQtMessages();
    QApplication::setApplicationName(QStringLiteral("belfry"));
    QApplication::setApplicationVersion(QStringLiteral(BELFRY_VERSION));
    QApplication::setDesktopFileName(QStringLiteral(BELFRY_ID));
    const bool hasBus = MessageBus::hasSession(); // even an unresponsive one
    MessageBus::disableUnresponsive();
    if (MessageBus::hasSession())
        FileChooser::preferPortal();
    QApplication application(argc, argv);
    const ExitSignals exitSignals;
    SingleInstance instance; // before the timetable is touched
    if (!instance.claim(hasBus))
        return EXIT_SUCCESS;
    SQLiteHelper &database = SQLiteHelper::shared();
    if (database.dbURL().isEmpty())
        return EXIT_FAILURE;

    const Resources resources = Resources::ofApplication();
    QApplication::setWindowIcon(windowIcon(resources));
    const DisplayGuard displayGuard;
    BelfryApp belfry(database, resources);
    QObject::connect(&instance, &SingleInstance::activated, &application, [&belfry] { belfry.activate(); });
    belfry.show();
    return QApplication::exec();
}
