#include "core/Scheduler.h"

#include "core/AVPlayer.h"
#include "core/TimeText.h"
#include "platform/Clock.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView fullMinute = u":00";

// Whether the time of day `time` ("HH:mm") followed by ":00" is `now`, without making that text.
bool isAt(const QString &time, const QString &now)
{
    return now.endsWith(fullMinute) && QStringView(now).chopped(fullMinute.size()) == time;
}

// The numbers of the weekdays on which a plan starts: "135" for Monday, Wednesday and Friday.
QString weekdayText(const Plan &plan)
{
    QString text;
    for (size_t day = 0; day < planWeekdays.size(); ++day) {
        if (plan.*planWeekdays[day])
            text += QString::number(day);
    }
    return text;
}

} // namespace

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
        readPlayer();
    else
        endPlayback();
    if (isHoliday())
        return;
    // A plan begins and ends on full minutes only: in every other second none can match.
    if (!nowTime->endsWith(fullMinute))
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

// The clock is read for each text: a tick at midnight may have the date of the day before.
void Scheduler::readClock()
{
    nowDate = TimeText::formatDate(clock.now(), TimeText::datePattern);
    const QDateTime moment = clock.now();
    ticked = moment.toSecsSinceEpoch();
    nowTime = TimeText::formatDate(moment, TimeText::secondPattern);
    nowWeek = QString::number(TimeText::currentWeekday(clock));
}

void Scheduler::readPlayer()
{
    const AVAudioPlayer &player = *avPlayer.player.value();
    avPlayer.current = player.currentTime();
    avPlayer.duration = player.duration();
    avPlayer.currentTime = TimeText::formatDuration(avPlayer.current);
    avPlayer.durationTime = TimeText::formatDuration(avPlayer.duration);
}

void Scheduler::endPlayback()
{
    const QList<Plan> &plans = planStore.plans;
    const auto marked =
        std::find_if(plans.cbegin(), plans.cend(), [](const Plan &plan) { return plan.isPlaying; });
    if (marked == plans.cend())
        return;
    planStore.plans.modify(
        [index = marked - plans.cbegin()](QList<Plan> &list) { list[index].isPlaying = false; });
    historyStore.finishHistory();
}

void Scheduler::checkPlan(qsizetype index)
{
    const Plan &plan = planStore.plans->at(index);
    const bool begins = isAt(plan.begin, nowTime) && weekdayText(plan).contains(nowWeek.value());
    if (isAt(plan.end, nowTime))
        stopPlan(index);
    if (begins)
        startPlan(index);
}

// Whatever plays is stopped, even if it belongs to another plan.
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
