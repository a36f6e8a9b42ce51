#pragma once

#include "app/AppStore.h"
#include "app/ColorScheme.h"
#include "app/Language.h"
#include "core/AVPlayer.h"
#include "platform/Clock.h"
#include "platform/Resources.h"
#include "platform/SoundModule.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/LoadRetry.h"
#include "store/PlanStore.h"
#include "ui/ContentView.h"

#include <QCoreApplication>

/// The running application: makes the shared objects, in the order of its members, and the main window.
///
/// The first store to be made brings the database file into being. A database that cannot be read
/// leaves the lists empty; start-up goes on. One that is locked is read when it is free.
class BelfryApp final
{
    Q_DECLARE_TR_FUNCTIONS(BelfryApp)
    Q_DISABLE_COPY_MOVE(BelfryApp)

public:
    BelfryApp();

    /// Shows the main window. Soon after, gets the sound ready, with an alert if that fails, and keeps the
    /// machine awake.
    void show();

    /// Brings the main window to the front, and the file panel over it if that is open.
    void activate();

private:
    SystemClock clock;
    Resources resources = Resources::ofApplication();
    Language language{resources};
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
