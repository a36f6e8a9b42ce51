#pragma once

#include <QObject>

/// Ends the program cleanly at log-out, at shutdown and when its terminal closes.
///
/// While it lives, SIGTERM, SIGINT and SIGHUP end the event loop with exit code 0, between two events and
/// whatever sheet is open, so that no write to the timetable is cut short. A second signal of the same kind
/// ends the program at once. Only one may exist at a time.
class ExitSignals final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ExitSignals)

public:
    explicit ExitSignals(QObject *parent = nullptr);
    ~ExitSignals() override;
};
