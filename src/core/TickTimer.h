#pragma once

#include <QTimer>

#include <chrono>

class Clock;
class Scheduler;

/// Calls the scheduler's tick exactly once in every second of the wall clock, just after it begins.
///
/// A repeating timer would drift and, once its phase is near the end of a second, skip seconds under load.
/// This one is a single shot that is re-armed for the next second each time, so it is aligned again within a
/// second after the machine slept or the clock was set. If the clock is set back by less than a second, that
/// second is not ticked twice. Missed seconds (a stalled machine, a clock set forward) are not caught up.
class TickTimer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TickTimer)

public:
    TickTimer(const Clock &clock, Scheduler &scheduler, QObject *parent = nullptr);

    /// The time until the next tick is due: 1 … 1000 ms, until the next second of the wall clock begins, or 0
    /// if the current one has not been ticked.
    std::chrono::milliseconds untilNextTick() const;

    /// Starts the timer; the first tick comes with the next second.
    void start();

    /// Handles a timeout: ticks, unless this second has been ticked, and re-arms the timer.
    void fire();

private:
    bool hasTickedThisSecond() const;

    const Clock &clock;
    Scheduler &scheduler;
    QTimer timer;
};
