#pragma once

#include "toolkit/DateTimeField.h"

class Clock;

/// A time of day to the minute, shown as "HH:mm" in every locale.
class TimeField final : public DateTimeField
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TimeField)

public:
    /// Shows the time `text` ("HH:mm"), or the current one where that is not a time.
    TimeField(const QString &text, const Clock &clock, QWidget *parent = nullptr);

    /// The time as "HH:mm".
    QString minuteText() const;
};
