#include "core/TickTimer.h"

#include "core/Scheduler.h"
#include "core/TimeText.h"
#include "platform/Clock.h"

TickTimer::TickTimer(const Clock &clock, Scheduler &scheduler, QObject *parent)
    : QObject(parent)
    , clock(clock)
    , scheduler(scheduler)
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &TickTimer::fire);
}

std::chrono::milliseconds TickTimer::untilNextSecond() const
{
    return std::chrono::milliseconds(1000 - clock.now().time().msec());
}

void TickTimer::start()
{
    timer.start(untilNextSecond());
}

void TickTimer::fire()
{
    if (!isTicked())
        scheduler.tick();
    timer.start(untilNextSecond());
}

bool TickTimer::isTicked() const
{
    const QString now = TimeText::formatDate(clock.now(), TimeText::timestampPattern);
    return now == scheduler.nowDate.value() + u' ' + scheduler.nowTime.value();
}
