#include "app/BelfryApp.h"

#include "desktop/IdleInhibitor.h"
#include "platform/Log.h"
#include "store/SQLiteHelper.h"
#include "toolkit/Alert.h"

#include <QApplication>
#include <QTimer>
#include <QWindow>

using namespace std::chrono_literals;

BelfryApp::BelfryApp(SQLiteHelper &database, const Resources &resources)
    : language(resources)
    , planStore(database.db())
    , holidayStore(database.db())
    , historyStore(database.db(), clock)
    , loadRetry(*database.db(), planStore, holidayStore, historyStore)
    , avplayer(sound, resources)
    , window({appStore, planStore, holidayStore, historyStore, avplayer, clock})
{}

void BelfryApp::show()
{
    window.show();
    // When the window is there, so that neither it nor the first bell has to wait.
    QTimer::singleShot(1s, &window, [this] {
        QString error;
        if (!sound.load(error)) {
            Log::write(error);
            Alert::show(&window, tr("No Sound"),
                        tr("Bells will be silent: a part of Belfry cannot be loaded. Install Belfry again."),
                        {{tr("OK")}});
        }
        new IdleInhibitor(&window);
    });
}

void BelfryApp::activate()
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    // A window manager of X11 denies the focus to a program that knows no later time than that of the last
    // key in another one. Any change of a property comes back with the time.
    window.windowHandle()->setTitle(window.windowTitle());
    QTimer::singleShot(50ms, &window, [this] {
        window.raise();
        // The file panel, a window of its own, has the keys while it is open.
        QWidget *filePanel = QApplication::activeModalWidget();
        (filePanel ? filePanel : &window)->activateWindow();
    });
}
