#include "core/TickTimer.h"

#include "core/Scheduler.h"
#include "platform/Clock.h"

using namespace std::chrono_literals;

TickTimer::TickTimer(const Clock &clock, Scheduler &scheduler, QObject *parent)
    : QObject(parent)
    , clock(clock)
    , scheduler(scheduler)
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &TickTimer::fire);
}

std::chrono::milliseconds TickTimer::untilNextTick() const
{
    // A tick that waited for a locked database may have ended in a later second.
    if (scheduler.tickedSecond() && !hasTickedThisSecond())
        return 0ms;
    return 1s - std::chrono::milliseconds(clock.now().time().msec());
}

void TickTimer::start()
{
    timer.start(untilNextTick());
}

void TickTimer::fire()
{
    if (!hasTickedThisSecond())
        scheduler.tick();
    timer.start(untilNextTick());
}

// Compares seconds, not the scheduler's texts: in a tick at midnight those may belong to different days.
bool TickTimer::hasTickedThisSecond() const
{
    return scheduler.tickedSecond() == clock.now().toSecsSinceEpoch();
}
