#pragma once

#include <QDateTime>

/// The time of day, handed to whoever needs to know it. Nothing else asks the system, so that a test
/// decides what time it is.
class Clock
{
public:
    virtual ~Clock() = default;

    /// The current moment in the user's time zone, to the millisecond.
    virtual QDateTime now() const = 0;
};

/// The clock of the machine. It jumps when somebody sets it.
class SystemClock final : public Clock
{
public:
    QDateTime now() const override;
};
