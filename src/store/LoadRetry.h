#pragma once

#include <QTimer>

class FMDatabase;
class HistoryStore;
class HolidayStore;
class PlanStore;

/// Reloads the stores that found the file locked when they were created, every second until each has been
/// loaded once. A retry fails at once while the file is locked, so that it does not delay the scheduler.
class LoadRetry final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LoadRetry)

public:
    /// `db` is the stores' connection.
    LoadRetry(FMDatabase &db, PlanStore &planStore, HolidayStore &holidayStore, HistoryStore &historyStore,
              QObject *parent = nullptr);

private:
    bool isAnyLocked() const;
    void retry();

    FMDatabase &db;
    PlanStore &planStore;
    HolidayStore &holidayStore;
    HistoryStore &historyStore;
    QTimer timer{this};
};
