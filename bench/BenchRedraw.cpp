// What the page of plans costs as the timetable grows: to draw it, and to answer a change of one plan.

#include "NoPlayers.h"

#include "app/AppStore.h"
#include "core/AVPlayer.h"
#include "db/FMDatabase.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"
#include "ui/Environment.h"
#include "ui/PlanView.h"

#include <QApplication>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

struct Page
{
    explicit Page(qsizetype size)
    {
        QList<Plan> list(size);
        for (qsizetype i = 0; i < size; ++i) {
            list[i].id = list[i].title = QString::number(i);
            list[i].begin = list[i].end = u"12:00"_s;
        }
        plans.plans = list;
        view.setAnimated(false);
        view.resize(960, 640);
        view.show();
        QCoreApplication::processEvents();
    }

    SystemClock clock;
    std::shared_ptr<FMDatabase> db = FMDatabase::databaseWithPath(std::nullopt);
    AppStore app;
    PlanStore plans{db};
    HolidayStore holidays{db};
    HistoryStore history{db, clock};
    NoPlayers factory;
    AVPlayer player{factory, Resources(QString())};
    PlanView view{{app, plans, holidays, history, player, clock}};
};

void redraw(benchmark::State &state)
{
    Page page(state.range(0));
    for (auto _ : state)
        page.view.viewport()->repaint();
}

void refresh(benchmark::State &state)
{
    Page page(state.range(0));
    for (auto _ : state) {
        page.plans.plans.modify([](QList<Plan> &plans) { plans[0].isMusic = !plans[0].isMusic; });
        QCoreApplication::processEvents();
    }
}

BENCHMARK(redraw)->Arg(10)->Arg(1'000)->Arg(10'000)->Arg(100'000);
BENCHMARK(refresh)->Arg(10)->Arg(1'000)->Arg(10'000)->Arg(100'000);

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    Log::setSink([](const QString &) {});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
