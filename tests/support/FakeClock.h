#pragma once

#include "platform/Clock.h"

/// A clock that shows the time to which a test sets it.
class FakeClock final : public Clock
{
public:
    explicit FakeClock(const QDateTime &moment) : moment(moment) {}

    /// From "2026-03-02 07:59:59", local time.
    explicit FakeClock(const char *moment) { set(moment); }

    QDateTime now() const override { return moment; }

    void set(const char *text)
    {
        moment = QDateTime::fromString(QString::fromLatin1(text), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    }
    void advance(qint64 milliseconds) { moment = moment.addMSecs(milliseconds); }

private:
    QDateTime moment;
};
