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
    // Once the window is visible, which must not wait for this, and well before most first bells.
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
    // X11 window managers give the focus only to a request with a timestamp later than the last input in
    // another program. Any change of a window property makes the server report the current time.
    window.windowHandle()->setTitle(window.windowTitle());
    QTimer::singleShot(50ms, &window, [this] {
        window.raise();
        // The file panel is a window of its own and is modal while it is open.
        QWidget *filePanel = QApplication::activeModalWidget();
        (filePanel ? filePanel : &window)->activateWindow();
    });
}
