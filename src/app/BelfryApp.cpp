#include "app/BelfryApp.h"

#include "platform/Log.h"
#include "store/SQLiteHelper.h"

#include <QTimer>

using namespace std::chrono_literals;

BelfryApp::BelfryApp()
    : planStore(SQLiteHelper::shared().db())
    , holidayStore(SQLiteHelper::shared().db())
    , historyStore(SQLiteHelper::shared().db(), clock)
    , avplayer([this](const QString &path, QString &error) { return sound.makePlayer(path, error); },
               resources)
    , window({appStore, planStore, holidayStore, historyStore, avplayer, clock, resources})
{}

void BelfryApp::show()
{
    window.show();
    // When the window is there, so that neither it nor the first bell has to wait.
    QTimer::singleShot(1s, &window, [this] {
        QString error;
        if (!sound.load(error))
            Log::write(error);
    });
}
