#pragma once

#include "platform/Clock.h"

/// A clock that stands where a test sets it.
class SetClock final : public Clock
{
public:
    explicit SetClock(const QDateTime &moment) : moment(moment) {}

    /// From "2026-03-02 07:59:59", local time.
    explicit SetClock(const char *moment) { set(moment); }

    QDateTime now() const override { return moment; }

    void set(const char *text)
    {
        moment = QDateTime::fromString(QString::fromLatin1(text), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    }
    void advance(qint64 milliseconds) { moment = moment.addMSecs(milliseconds); }

private:
    QDateTime moment;
};
