#pragma once

#include <QTimer>

#include <chrono>

class Clock;
class Scheduler;

/// Runs the scheduler's tick exactly once in every second of the wall clock, just after it begins.
///
/// A repeating timer of one second would drift through the second and, when its phase comes to lie near
/// the end of one, skip seconds under load. This one fires once and is re-armed for the next second each
/// time. So it is back in step within a second after the machine slept or its clock was set; a second
/// in which it fires again, because the clock was set back by less than a second, is not ticked twice.
/// Seconds that nobody saw (a stalled machine, a clock set forward) are not caught up.
class TickTimer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TickTimer)

public:
    TickTimer(const Clock &clock, Scheduler &scheduler, QObject *parent = nullptr);

    /// How long it is until a tick is due: until the next second of the wall clock has begun, 1 … 1000 ms, or
    /// no time at all when the present one has begun unticked.
    std::chrono::milliseconds untilNextTick() const;

    /// Begins to fire; the first tick comes with the next second.
    void start();

    /// What each event of the timer does: ticks, unless this second has been ticked, and re-arms the timer.
    void fire();

private:
    bool hasTickedThisSecond() const;

    const Clock &clock;
    Scheduler &scheduler;
    QTimer timer;
};
