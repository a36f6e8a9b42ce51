#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"

#include "support/LogCapture.h"
#include "support/SetClock.h"
#include "support/TemplateDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString awkward = u"Tom's \"50%\"; drop table plan;-- 铃声 🔔\n';"_s;

template<typename Record>
QStringList ids(const QList<Record> &records)
{
    QStringList list;
    for (const Record &record : records)
        list += record.id;
    return list;
}

Plan planAt(const QString &id, const QString &begin)
{
    return {.id = id, .title = u"t"_s, .begin = begin, .end = begin, .music = u"m"_s, .content = u"c"_s};
}

// Makes the database refuse writes of one kind to one row.
void refuse(const TemplateDatabase &base, const QString &event, const QString &table, const QString &id)
{
    base.run(
        u"create trigger refuse before %1 on %2 when %3.id = '%4' begin select raise(abort, 'refused'); end"_s
            .arg(event, table, event == u"insert"_s ? u"new"_s : u"old"_s, id));
}

} // namespace

class TestStores final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What one run of the program writes, the next one reads.
    void records_surviveARestart()
    {
        const TemplateDatabase base;
        Plan plan{.isChecked = true,
                  .isPlaying = true,
                  .id = u"1"_s,
                  .title = awkward,
                  .begin = u"08:00"_s,
                  .end = u"08:30"_s,
                  .music = awkward,
                  .content = awkward,
                  .isLoop = true,
                  .week1 = true,
                  .week6 = true};
        QVERIFY(PlanStore(base.db).addPlan(plan));
        plan.isChecked = plan.isPlaying = false;
        QCOMPARE(PlanStore(base.db).plans.value(), QList{plan});
        plan.title = plan.music = plan.content = u"O'Neill"_s;
        plan.begin = u"09:00"_s;
        plan.isLoop = plan.week6 = false;
        plan.isMusic = plan.week0 = true;
        QVERIFY(PlanStore(base.db).updatePlan(plan));
        QCOMPARE(PlanStore(base.db).plans.value(), QList{plan});
        QCOMPARE(base.rows(u"select * from plan"_s).value(0).section(u'|', -9),
                 u"false|true|true|true|false|false|false|false|false"_s);

        Holiday holiday{.id = u"1"_s, .title = awkward, .begin = u"2024-10-01"_s, .end = u"2024-10-07"_s};
        QVERIFY(HolidayStore(base.db).addHoliday(holiday));
        QCOMPARE(HolidayStore(base.db).holidays.value(), QList{holiday});
        holiday = {.id = u"1"_s, .title = u"O'Neill"_s, .begin = u"2024-10-02"_s, .end = u"2024-10-08"_s};
        QVERIFY(HolidayStore(base.db).updateHoliday(holiday));
        QCOMPARE(HolidayStore(base.db).holidays.value(), QList{holiday});
    }

    void plans_areKeptInOrderOfBegin()
    {
        const TemplateDatabase base;
        PlanStore store(base.db);
        for (const auto &begin : {u"09:00"_s, u"07:00"_s, u"08:00"_s, u"22:00"_s})
            store.addPlan(planAt(begin, begin));
        store.addPlan(planAt(u"after its equal"_s, u"07:00"_s));
        QCOMPARE(ids(store.plans.value()).join(u' '), u"07:00 after its equal 08:00 09:00 22:00"_s);
        store.updatePlan(planAt(u"07:00"_s, u"23:59"_s));
        QCOMPARE(ids(store.plans.value()).join(u' '), u"after its equal 08:00 09:00 22:00 07:00"_s);
    }

    void updatePlan_keepsTheMarks_andARefusedOneChangesNothing()
    {
        const TemplateDatabase base;
        PlanStore store(base.db);
        store.addPlan(planAt(u"a"_s, u"08:00"_s));
        store.togglePlaying(store.plans->first());
        store.toggleChecked(store.plans->first());
        QVERIFY(store.updatePlan(planAt(u"a"_s, u"09:00"_s)));
        const QList<Plan> plans = store.plans;
        QVERIFY(plans.first().isPlaying && plans.first().isChecked && plans.first().begin == u"09:00"_s);

        refuse(base, u"update"_s, u"plan"_s, u"a"_s);
        const LogCapture log;
        QVERIFY(!store.updatePlan(planAt(u"a"_s, u"10:00"_s)));
        QVERIFY(!store.addPlan(planAt(u"a"_s, u"10:00"_s)));
        QCOMPARE(store.plans.value(), plans);
    }

    void deleteChecked_keepsWhatTheDatabaseRefuses()
    {
        const TemplateDatabase base;
        PlanStore store(base.db);
        for (const auto &id : {u"0"_s, u"1"_s, u"2"_s, u"3"_s, u"4"_s})
            store.addPlan(planAt(id, u"08:00"_s));
        for (const int index : {0, 2, 3})
            store.toggleChecked(store.plans->at(index));
        refuse(base, u"delete"_s, u"plan"_s, u"2"_s);
        LogCapture log;
        store.deleteCheckedPlans();
        QCOMPARE(ids(store.plans.value()), (QStringList{u"1"_s, u"2"_s, u"4"_s}));
        QVERIFY(store.plans->at(1).isChecked);
        QCOMPARE(base.rows(u"select id from plan order by id"_s), ids(store.plans.value()));
    }

    void history_isNewestFirst_andOnlyTheCurrentEntryIsFinished()
    {
        const TemplateDatabase base;
        SetClock clock("2024-05-01 23:59:59");
        HistoryStore store(base.db, clock);
        store.addHistory(u"first"_s);
        store.addHistory(u"same second"_s);
        clock.advance(1000);
        store.addHistory(awkward);
        const QString id = store.curId;
        QCOMPARE(base.rows(u"select end, begin from history where id = '%1'"_s.arg(id)),
                 QStringList{u"NULL|2024-05-02 00:00:00"_s});
        clock.advance(10'000);
        store.finishHistory();
        QVERIFY(store.curId->isEmpty());
        clock.advance(1000);
        store.finishHistory();
        QStringList seen;
        for (const History &entry : store.historys.value())
            seen += entry.title + u' ' + entry.end;
        QCOMPARE(seen, (QStringList{awkward + u" 2024-05-02 00:00:10"_s, u"first ------"_s,
                                    u"same second ------"_s}));
        QCOMPARE(HistoryStore(base.db, clock).historys->first(), store.historys->first());
        store.deleteOldHistory();
        QCOMPARE(ids(store.historys.value()), QStringList(id));
        QCOMPARE(base.rows(u"select id from history"_s), QStringList(id));
    }

    void finishHistory_keepsTheIdUntilItSucceeds()
    {
        const TemplateDatabase base;
        const SetClock clock("2024-05-01 08:00:00");
        HistoryStore store(base.db, clock);
        store.addHistory(u"Bell"_s);
        const QString id = store.curId;
        refuse(base, u"update"_s, u"history"_s, id);
        LogCapture log;
        store.finishHistory();
        QCOMPARE(store.curId.value(), id);
        QCOMPARE(store.historys->first().end, u"------"_s);

        store.toggleChecked(store.historys->first());
        store.deleteCheckedHistory();
        store.finishHistory();
        QVERIFY(store.historys->isEmpty());
        QCOMPARE(store.curId.value(), id);
    }
};

QTEST_GUILESS_MAIN(TestStores)
#include "TestStores.moc"
