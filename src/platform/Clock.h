#pragma once

#include <QDateTime>

/// The wall clock. Whatever depends on the time of day is handed a Clock, so that a test can set it.
class Clock
{
public:
    virtual ~Clock() = default;

    /// The current time in the user's time zone, to the millisecond.
    virtual QDateTime now() const = 0;
};

/// The system clock. It jumps when it is set.
class SystemClock final : public Clock
{
public:
    QDateTime now() const override;
};
