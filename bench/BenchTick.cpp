// What one tick costs as the timetable grows: in a full minute, when it looks at every plan, and in any
// other second.

#include "NoPlayers.h"

#include "core/AVPlayer.h"
#include "core/Scheduler.h"
#include "db/FMDatabase.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

class StoppedClock final : public Clock
{
public:
    explicit StoppedClock(int second) : moment(QDate(2026, 3, 2), QTime(12, 0, second)) {}
    QDateTime now() const override { return moment; }

private:
    QDateTime moment;
};

// Plans through all minutes of the day but the one in which the clock stands.
QList<Plan> timetable(qsizetype size)
{
    QList<Plan> plans(size);
    for (qsizetype i = 0; i < size; ++i) {
        const int minute = int(i * 719 / size);
        Plan &plan = plans[i];
        plan.id = plan.title = QString::number(i);
        plan.begin = QTime(minute / 60, minute % 60).toString(u"HH:mm"_s);
        plan.end = QTime(12 + minute / 60, minute % 60).addSecs(60).toString(u"HH:mm"_s);
        plan.week1 = plan.week2 = plan.week3 = plan.week4 = plan.week5 = true;
    }
    return plans;
}

void tick(benchmark::State &state, int second)
{
    Log::setSink([](const QString &) {});
    const StoppedClock clock(second);
    const auto db = FMDatabase::databaseWithPath(std::nullopt);
    PlanStore plans(db);
    HolidayStore holidays(db);
    HistoryStore history(db, clock);
    NoPlayers factory;
    AVPlayer player(factory, Resources(QString()));
    Scheduler scheduler(clock, plans, holidays, history, player);
    plans.plans = timetable(state.range(0));
    for (auto _ : state)
        scheduler.tick();
}

} // namespace

BENCHMARK_CAPTURE(tick, full_minute, 0)->Arg(10)->Arg(1'000)->Arg(10'000)->Arg(100'000);
BENCHMARK_CAPTURE(tick, other_second, 1)->Arg(10)->Arg(1'000)->Arg(10'000)->Arg(100'000);
BENCHMARK_MAIN();
