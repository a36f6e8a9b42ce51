#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"

#include "support/LogCapture.h"
#include "support/SetClock.h"
#include "support/Table.h"
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
    void plans_surviveARestart()
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
        QCOMPARE(PlanStore(base.db).plans.value(), QList<Plan>{plan});

        plan.title = u"O'Neill"_s;
        plan.begin = u"09:00"_s;
        plan.isLoop = plan.week6 = false;
        plan.isMusic = plan.week0 = true;
        QVERIFY(PlanStore(base.db).updatePlan(plan));
        QCOMPARE(PlanStore(base.db).plans.value(), QList<Plan>{plan});
        QCOMPARE(base.rows(u"select * from plan"_s).value(0).section(u'|', -9),
                 u"false|true|true|true|false|false|false|false|false"_s);
    }

    void holidays_surviveARestart()
    {
        const TemplateDatabase base;
        Holiday holiday{.id = u"1"_s, .title = awkward, .begin = u"2024-10-01"_s, .end = u"2024-10-07"_s};
        QVERIFY(HolidayStore(base.db).addHoliday(holiday));
        holiday.title = u"New Year's Day"_s;
        holiday.end = u"2024-10-08"_s;
        QVERIFY(HolidayStore(base.db).updateHoliday(holiday));
        QCOMPARE(HolidayStore(base.db).holidays.value(), QList<Holiday>{holiday});
    }

    void aDatabaseWithoutTables_leavesTheListsEmptyAndRefuses()
    {
        LogCapture log;
        const auto db = FMDatabase::databaseWithPath(std::nullopt);
        const SetClock clock("2024-05-01 08:00:00");
        PlanStore plans(db);
        HolidayStore holidays(db);
        HistoryStore history(db, clock);
        QVERIFY(!plans.addPlan(planAt(u"1"_s, u"08:00"_s)));
        QVERIFY(!holidays.addHoliday({.id = u"1"_s}));
        history.addHistory(u"Bell"_s);
        history.finishHistory();
        history.deleteOldHistory();
        QVERIFY(plans.plans->isEmpty() && holidays.holidays->isEmpty() && history.historys->isEmpty());
        QVERIFY(!history.curId->isEmpty());
    }

    void plans_areKeptInOrderOfBegin_data()
    {
        columns<QString, QStringList>("begin", "order");
        QTest::newRow("between two others") << u"08:00"_s << QStringList{u"a"_s, u"new"_s, u"b"_s};
        QTest::newRow("after those of equal begin") << u"07:00"_s << QStringList{u"a"_s, u"new"_s, u"b"_s};
        QTest::newRow("last") << u"22:00"_s << QStringList{u"a"_s, u"b"_s, u"new"_s};
    }
    void plans_areKeptInOrderOfBegin()
    {
        QFETCH(QString, begin);
        QFETCH(QStringList, order);
        const TemplateDatabase base;
        PlanStore store(base.db);
        store.addPlan(planAt(u"b"_s, u"09:00"_s));
        store.addPlan(planAt(u"a"_s, u"07:00"_s));
        store.addPlan(planAt(u"new"_s, begin));
        QCOMPARE(ids(store.plans.value()), order);
        store.updatePlan(planAt(u"a"_s, u"23:59"_s));
        QCOMPARE(store.plans->last().id, u"a"_s);
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
        LogCapture log;
        QVERIFY(!store.updatePlan(planAt(u"a"_s, u"10:00"_s)));
        QVERIFY(!store.addPlan(planAt(u"a"_s, u"10:00"_s)));
        QCOMPARE(store.plans.value(), plans);
        QCOMPARE(log.lines(), (QStringList{u"Error inserting batch: refused"_s,
                                           u"Error inserting batch: UNIQUE constraint failed: plan.id"_s}));
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

    void history_ofOnePlayback()
    {
        const TemplateDatabase base;
        SetClock clock("2024-05-01 23:59:50");
        HistoryStore store(base.db, clock);
        store.addHistory(awkward);
        const QString id = store.curId;
        QCOMPARE(store.historys->first().end, u"------"_s);
        QCOMPARE(base.rows(u"select end, begin, id from history"_s),
                 QStringList{u"NULL|2024-05-01 23:59:50|"_s + id});

        clock.set("2024-05-02 00:00:10");
        store.finishHistory();
        QVERIFY(store.curId->isEmpty());
        const QList<History> entries = HistoryStore(base.db, clock).historys;
        QCOMPARE(entries, store.historys.value());
        QCOMPARE(entries, (QList<History>{{.id = id,
                                           .title = awkward,
                                           .begin = u"2024-05-01 23:59:50"_s,
                                           .end = u"2024-05-02 00:00:10"_s}}));
        store.deleteOldHistory();
        QVERIFY(store.historys->isEmpty() && base.rows(u"select * from history"_s).isEmpty());
    }

    void history_isNewestFirst_andOnlyTheCurrentEntryIsFinished()
    {
        const TemplateDatabase base;
        SetClock clock("2024-05-01 08:00:00");
        HistoryStore store(base.db, clock);
        store.addHistory(u"first"_s);
        store.addHistory(u"same second"_s);
        clock.advance(1000);
        store.addHistory(u"last"_s);
        store.finishHistory();
        store.finishHistory();
        QStringList seen;
        for (const History &entry : store.historys.value())
            seen += entry.title + u' ' + entry.end;
        QCOMPARE(seen,
                 (QStringList{u"last 2024-05-01 08:00:01"_s, u"first ------"_s, u"same second ------"_s}));
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
