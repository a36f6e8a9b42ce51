#pragma once

#include <QTimer>

class FMDatabase;
class HistoryStore;
class HolidayStore;
class PlanStore;

/// Repeats what the stores did at their creation: reads, once a second, the tables of those that found the
/// file locked, until each has been read once. A retry does not wait for the file, so it does not hold up the
/// scheduler.
class LoadRetry final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LoadRetry)

public:
    /// `db` is the connection of the stores.
    LoadRetry(FMDatabase &db, PlanStore &planStore, HolidayStore &holidayStore, HistoryStore &historyStore,
              QObject *parent = nullptr);

private:
    bool isAnyLocked() const;
    void retry();

    FMDatabase &db;
    PlanStore &planStore;
    HolidayStore &holidayStore;
    HistoryStore &historyStore;
    QTimer timer;
};
