#pragma once

#include "platform/ObservableObject.h"

#include <optional>

class AVPlayer;
class Clock;
class HistoryStore;
class HolidayStore;
class PlanStore;

/// The scheduler: what happens once in every second.
///
/// It keeps nothing between ticks but the clock's three texts and the second of the last tick. A begin second
/// that no tick sees is not caught up. Costs next to nothing in all seconds but the first of a minute, when
/// it looks at every plan.
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

    /// The second since 1970 whose text is `nowTime`; nothing before the first tick.
    std::optional<qint64> tickedSecond() const { return ticked; }

    /// Refreshes the clock texts and the player's readouts, notices the end of a playback and, unless
    /// today is a holiday, stops what ends and starts what begins in this very second.
    void tick();

private:
    bool isPlaying() const;
    bool isHoliday() const;
    void readClock();
    void readPlayer();
    void endPlayback();
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
