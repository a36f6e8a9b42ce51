#pragma once

#include "app/AppStore.h"
#include "app/ColorScheme.h"
#include "app/Language.h"
#include "core/AVPlayer.h"
#include "platform/Clock.h"
#include "platform/SoundModule.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/LoadRetry.h"
#include "store/PlanStore.h"
#include "ui/ContentView.h"

#include <QCoreApplication>

class Resources;
class SQLiteHelper;

/// The running application: makes the shared objects, in the order of its members, and the main window.
///
/// A database that cannot be read leaves the lists empty, and the start goes on. One that is locked is read
/// as soon as it is unlocked.
class BelfryApp final
{
    Q_DECLARE_TR_FUNCTIONS(BelfryApp)
    Q_DISABLE_COPY_MOVE(BelfryApp)

public:
    BelfryApp(SQLiteHelper &database, const Resources &resources);

    /// Shows the main window. A second later loads the sound, with an alert if that fails, and starts to
    /// inhibit idle suspend.
    void show();

    /// Brings the main window to the front, and the file panel over it if that is open.
    void activate();

private:
    SystemClock clock;
    Language language;
    ColorScheme colorScheme;
    SoundModule sound{SoundModule::pathOfApplication()};

    AppStore appStore;
    PlanStore planStore;
    HolidayStore holidayStore;
    HistoryStore historyStore;
    LoadRetry loadRetry;
    AVPlayer avplayer;

    ContentView window;
};
