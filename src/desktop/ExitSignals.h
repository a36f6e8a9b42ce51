#pragma once

#include <QObject>

/// Ends the program cleanly when the system tells it to: a log-out, a shutdown, the end of its terminal.
///
/// While one lives, SIGTERM, SIGINT and SIGHUP end the event loop, with exit code 0, between two events and
/// whatever sheet is open: what was being written to the timetable is written to its end. The same signal
/// again ends the program at once. One at a time.
class ExitSignals final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ExitSignals)

public:
    explicit ExitSignals(QObject *parent = nullptr);
    ~ExitSignals() override;
};
