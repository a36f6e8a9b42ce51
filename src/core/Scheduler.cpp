#include "core/Scheduler.h"

#include "core/AVPlayer.h"
#include "core/TimeText.h"
#include "platform/Clock.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"

#include <algorithm>

using namespace Qt::StringLiterals;

Scheduler::Scheduler(const Clock &clock, PlanStore &planStore, const HolidayStore &holidayStore,
                     HistoryStore &historyStore, AVPlayer &avPlayer, QObject *parent)
    : ObservableObject(parent)
    , clock(clock)
    , planStore(planStore)
    , holidayStore(holidayStore)
    , historyStore(historyStore)
    , avPlayer(avPlayer)
{}

void Scheduler::tick()
{
    readClock();
    if (isPlaying())
        updatePosition();
    else
        clearFinishedPlayback();
    if (isHoliday())
        return;
    // Plans begin and end on full minutes.
    if (!nowTime->endsWith(u":00"))
        return;
    const qsizetype count = planStore.plans->size();
    for (qsizetype index = 0; index < count; ++index)
        checkPlan(index);
}

bool Scheduler::isPlaying() const
{
    return avPlayer.player.value() && avPlayer.player.value()->isPlaying();
}

bool Scheduler::isHoliday() const
{
    return std::any_of(holidayStore.holidays->cbegin(), holidayStore.holidays->cend(),
                       [this](const Holiday &holiday) {
                           return holiday.begin <= nowDate.value() && nowDate.value() <= holiday.end;
                       });
}

// Date and time are two readings of the clock: in a tick at midnight they may belong to different days.
void Scheduler::readClock()
{
    nowDate = TimeText::formatDate(clock.now(), TimeText::datePattern);
    const QDateTime moment = clock.now();
    ticked = moment.toSecsSinceEpoch();
    nowTime = TimeText::formatDate(moment, TimeText::secondPattern);
    nowWeek = QString::number(TimeText::currentWeekday(clock));
}

void Scheduler::updatePosition()
{
    const AVAudioPlayer &player = *avPlayer.player.value();
    avPlayer.current = player.currentTime();
    avPlayer.duration = player.duration();
    avPlayer.currentTime = TimeText::formatDuration(avPlayer.current);
    avPlayer.durationTime = TimeText::formatDuration(avPlayer.duration);
}

void Scheduler::clearFinishedPlayback()
{
    const QList<Plan> &plans = planStore.plans;
    const auto playing =
        std::find_if(plans.cbegin(), plans.cend(), [](const Plan &plan) { return plan.isPlaying; });
    if (playing == plans.cend())
        return;
    planStore.plans.modify(
        [index = playing - plans.cbegin()](QList<Plan> &list) { list[index].isPlaying = false; });
    historyStore.finishHistory();
}

void Scheduler::checkPlan(qsizetype index)
{
    const Plan &plan = planStore.plans->at(index);
    const QStringView minute = QStringView(nowTime.value()).chopped(3);
    const bool begins = plan.begin == minute && plan.*planWeekdays[nowWeek->toUInt()];
    if (plan.end == minute)
        stopPlan(index);
    if (begins)
        startPlan(index);
}

// Stops whatever is playing, even if it belongs to another plan.
void Scheduler::stopPlan(qsizetype index)
{
    planStore.plans.modify([index](QList<Plan> &list) { list[index].isPlaying = false; });
    if (const auto &player = avPlayer.player.value()) {
        player->stop();
        player->setCurrentTime(0);
    }
    historyStore.finishHistory();
}

void Scheduler::startPlan(qsizetype index)
{
    const Plan plan = planStore.plans->at(index);
    planStore.togglePlaying(plan);
    historyStore.addHistory(plan.title);
    historyStore.deleteOldHistory();
    avPlayer.play(plan.content, plan.isLoop);
}
