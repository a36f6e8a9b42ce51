#include "store/LoadRetry.h"

#include "db/NoBusyWait.h"
#include "platform/Log.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

LoadRetry::LoadRetry(FMDatabase &db, PlanStore &planStore, HolidayStore &holidayStore,
                     HistoryStore &historyStore, QObject *parent)
    : QObject(parent)
    , db(db)
    , planStore(planStore)
    , holidayStore(holidayStore)
    , historyStore(historyStore)
{
    connect(&timer, &QTimer::timeout, this, &LoadRetry::retry);
    if (!isAnyLocked())
        return;
    Log::write(u"data.db is locked; retrying every second"_s);
    timer.start(1s);
}

bool LoadRetry::isAnyLocked() const
{
    return planStore.loadState() == LoadState::Locked || holidayStore.loadState() == LoadState::Locked ||
           historyStore.loadState() == LoadState::Locked;
}

void LoadRetry::retry()
{
    const NoBusyWait noWait(db);
    db.setLogsErrors(false); // Or every retry would repeat the lines of the first failure.
    if (planStore.loadState() == LoadState::Locked)
        planStore.loadPlans();
    if (holidayStore.loadState() == LoadState::Locked)
        holidayStore.loadHolidays();
    if (historyStore.loadState() == LoadState::Locked)
        historyStore.loadHistory();
    db.setLogsErrors(true);
    if (isAnyLocked())
        return;
    timer.stop();
    const bool isLoaded = planStore.loadState() == LoadState::Loaded &&
                          holidayStore.loadState() == LoadState::Loaded &&
                          historyStore.loadState() == LoadState::Loaded;
    Log::write(isLoaded ? u"data.db is no longer locked and has been loaded"_s
                        : u"data.db is no longer locked but cannot be loaded"_s);
}
