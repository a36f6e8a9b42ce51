#pragma once

#include "platform/ObservableObject.h"

#include <optional>

class AVPlayer;
class Clock;
class HistoryStore;
class HolidayStore;
class PlanStore;

/// Starts and stops plans by the timetable, in a tick that is called once a second.
///
/// It keeps nothing between ticks but the three texts of the clock and the second of the last tick. A begin
/// second without a tick is not caught up. Plans are checked in the first second of a minute only.
class Scheduler final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Scheduler)

public:
    Scheduler(const Clock &clock, PlanStore &planStore, const HolidayStore &holidayStore,
              HistoryStore &historyStore, AVPlayer &avPlayer, QObject *parent = nullptr);

    Published<QString> nowDate{this}; ///< "yyyy-MM-dd"; empty before the first tick.
    Published<QString> nowTime{this}; ///< "HH:mm:ss"
    Published<QString> nowWeek{this}; ///< "0" for Sunday … "6" for Saturday

    /// `nowTime` in seconds since 1970; empty before the first tick.
    std::optional<qint64> tickedSecond() const { return ticked; }

    /// Updates the clock texts and the player's position, detects the end of a playback and, unless today is
    /// a holiday, stops and starts the plans that end and begin in this second.
    void tick();

private:
    bool isPlaying() const;
    bool isHoliday() const;
    void readClock();
    void updatePosition();
    void clearFinishedPlayback();
    void checkPlan(qsizetype index);
    void stopPlan(qsizetype index);
    void startPlan(qsizetype index);

    const Clock &clock;
    PlanStore &planStore;
    const HolidayStore &holidayStore;
    HistoryStore &historyStore;
    AVPlayer &avPlayer;
    std::optional<qint64> ticked;
};
