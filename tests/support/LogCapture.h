#pragma once

#include "platform/Log.h"

#include <QStringList>

#include <utility>

/// Collects the lines of the platform log for as long as it lives, instead of having them written.
/// One at a time: the end of a capture restores standard error.
class LogCapture final
{
    Q_DISABLE_COPY_MOVE(LogCapture)

public:
    LogCapture()
    {
        Log::setSink([this](const QString &line) { captured << line; });
    }

    ~LogCapture() { Log::setSink({}); }

    /// The lines so far, oldest first.
    const QStringList &lines() const { return captured; }

    /// The lines since the last call, oldest first.
    QStringList takeLines() { return std::exchange(captured, {}); }

private:
    QStringList captured;
};
