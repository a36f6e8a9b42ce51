#include "core/TickTimer.h"

#include "core/Scheduler.h"
#include "core/TimeText.h"
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
    // A tick that a locked database held up may have ended in a later second.
    if (!scheduler.nowTime->isEmpty() && !isTicked())
        return 0ms;
    return 1s - std::chrono::milliseconds(clock.now().time().msec());
}

void TickTimer::start()
{
    timer.start(untilNextTick());
}

void TickTimer::fire()
{
    if (!isTicked())
        scheduler.tick();
    timer.start(untilNextTick());
}

bool TickTimer::isTicked() const
{
    const QString now = TimeText::formatDate(clock.now(), TimeText::timestampPattern);
    return now == scheduler.nowDate.value() + u' ' + scheduler.nowTime.value();
}
