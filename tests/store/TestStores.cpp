#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/LoadRetry.h"
#include "store/PlanStore.h"

#include "support/FakeClock.h"
#include "support/LogCapture.h"
#include "support/TemplateDatabase.h"

#include <QElapsedTimer>
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

// Makes the database refuse writes of one kind, to rows for which `condition` holds.
void refuse(const TemplateDatabase &base, const QString &event, const QString &condition = u"true"_s)
{
    base.run(u"create trigger \"%1\" before %1 when %2 begin select raise(abort, 'refused'); end"_s.arg(
        event, condition));
}

// Another program that locks the file.
std::shared_ptr<FMDatabase> lock(const TemplateDatabase &base)
{
    auto other = FMDatabase::databaseWithPath(base.path());
    return other->open() && other->executeStatements(u"begin exclusive"_s) ? other : nullptr;
}

} // namespace

class TestStores final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plans_surviveARestart()
    {
        const TemplateDatabase base;
        Plan plan{.isChecked = true, .isPlaying = true, .id = u"1"_s, .begin = u"08:00"_s, .end = u"08:30"_s};
        plan.title = awkward;
        plan.music = u"O'Neill.ogg"_s;
        plan.content = u"/Tom's/O'Neill.ogg"_s;
        plan.isLoop = true;
        QVERIFY(PlanStore(base.db).addPlan(plan));
        plan.isChecked = plan.isPlaying = false;
        QCOMPARE(PlanStore(base.db).plans.value(), QList{plan});
        plan.begin = u"09:00"_s;
        plan.end = u"09:30"_s;
        for (const auto text : {&Plan::title, &Plan::music, &Plan::content})
            plan.*text += u'\'';
        std::swap(plan.isLoop, plan.isMusic);
        QVERIFY(PlanStore(base.db).updatePlan(plan));
        QCOMPARE(PlanStore(base.db).plans.value(), QList{plan});
        QCOMPARE(base.rows(u"select isloop, ismusic from plan"_s), {u"false|true"_s});
        for (int day = 0; day < 7; ++day) {
            Plan weekly{.id = u"day %1"_s.arg(day), .begin = u"10:00"_s};
            weekly.*planWeekdays[size_t(day)] = true;
            PlanStore(base.db).addPlan(weekly);
            QCOMPARE(base.rows(u"select id from plan where week%1 = 'true'"_s.arg(day)), {weekly.id});
            QCOMPARE(PlanStore(base.db).plans->last(), weekly);
        }
    }

    void holidays_surviveARestart()
    {
        const TemplateDatabase base;
        HolidayStore store(base.db);
        Holiday autumn{.id = u"1"_s, .title = awkward, .begin = u"2024-10-01"_s, .end = u"2024-10-07"_s};
        QVERIFY(store.addHoliday(autumn));
        QVERIFY(store.addHoliday({.id = u"2"_s, .begin = u"2024-05-01"_s}));
        QCOMPARE(ids(store.holidays.value()), (QStringList{u"2"_s, u"1"_s}));
        QCOMPARE(HolidayStore(base.db).holidays.value(), store.holidays.value());
        store.toggleChecked(store.holidays->first());
        store.toggleChecked(autumn);
        autumn = {.id = u"1"_s, .title = u"O'Neill"_s, .begin = u"2024-04-02"_s, .end = u"2024-04-08"_s};
        QVERIFY(store.updateHoliday(autumn));
        QCOMPARE(HolidayStore(base.db).holidays->first(), autumn);
        QCOMPARE(ids(store.holidays.value()), (QStringList{u"1"_s, u"2"_s}));
        QVERIFY(store.holidays->first().isChecked);
        store.toggleChecked(autumn);
        store.deleteCheckedHolidays();
        QCOMPARE(store.holidays.value(), QList{autumn});
        QCOMPARE(HolidayStore(base.db).holidays.value(), QList{autumn});
    }

    void plans_areKeptInOrderOfBegin_withTheirFlags_whateverIsRefused()
    {
        const TemplateDatabase base;
        PlanStore store(base.db);
        for (const auto &begin : {u"09:00"_s, u"07:00"_s, u"08:00"_s, u"22:00"_s})
            store.addPlan({.id = begin, .begin = begin});
        QStringList ordered{u"07:00"_s, u"08:00"_s, u"09:00"_s, u"22:00"_s};
        for (int i = 30; i > 10; --i) {
            store.addPlan({.id = QString::number(i), .begin = u"07:00"_s});
            ordered.insert(31 - i, QString::number(i));
        }
        QCOMPARE(ids(store.plans.value()), ordered);
        store.togglePlaying(store.plans->first());
        store.toggleChecked(store.plans->first());
        QVERIFY(store.updatePlan({.id = u"07:00"_s, .begin = u"23:59"_s}));
        ordered.append(ordered.takeFirst());
        QCOMPARE(ids(PlanStore(base.db).plans.value()), ordered);
        const QList<Plan> plans = store.plans;
        QCOMPARE(ids(plans), ordered);
        QVERIFY(plans.last().isPlaying && plans.last().isChecked && plans.last().begin == u"23:59"_s);

        refuse(base, u"update on plan"_s);
        const LogCapture log;
        QVERIFY(!store.updatePlan({.id = u"07:00"_s, .begin = u"10:00"_s}));
        QVERIFY(!store.addPlan({.id = u"07:00"_s, .begin = u"10:00"_s}));
        // SQLite would take such a statement for one that ends there.
        QVERIFY(!store.addPlan({.id = QString(QChar(u'\0')), .begin = u"10:00"_s}));
        QCOMPARE(store.plans.value(), plans);
    }

    void history_isNewestFirst_andOnlyTheCurrentEntryIsFinished()
    {
        const TemplateDatabase base;
        FakeClock clock("2024-05-01 23:59:59");
        HistoryStore store(base.db, clock);
        QStringList seen;
        for (int i = 10; i < 30; ++i) {
            store.addHistory(QString::number(i));
            seen += QString::number(i) + u" 2024-05-01 23:59:59 ------"_s;
        }
        clock.advance(1000);
        store.addHistory(awkward);
        clock.advance(10'000);
        store.finishHistory();
        QVERIFY(store.curId->isEmpty());
        clock.advance(1000);
        store.finishHistory();
        seen.prepend(awkward + u" 2024-05-02 00:00:00 2024-05-02 00:00:10"_s);
        for (const History &entry : store.historys.value())
            QCOMPARE(entry.title + u' ' + entry.begin + u' ' + entry.end, seen.takeFirst());
        QCOMPARE(HistoryStore(base.db, clock).historys.value(), store.historys.value());
        QCOMPARE(base.rows(u"select count(*) from history where end is null"_s), {u"20"_s});

        const QString id = store.historys->first().id;
        store.deleteOldHistory();
        QCOMPARE(ids(store.historys.value()), QStringList(id));
        QCOMPARE(base.rows(u"select id from history"_s), QStringList(id));
        clock.advance(-3'600'000); // An entry of tomorrow is not one of today either.
        store.deleteOldHistory();
        QCOMPARE(store.historys->size() + base.rows(u"select id from history"_s).size(), 0);

        base.run(u"drop table history"_s);
        const LogCapture log;
        store.finishHistory(); // Without an entry it runs no statement.
        QCOMPARE(log.lines(), {});
    }

    void curId_isThatOfThePlayback_whateverBecomesOfItsEntry()
    {
        const TemplateDatabase base;
        FakeClock clock("2024-05-01 08:00:00");
        HistoryStore store(base.db, clock);
        store.addHistory(u"deleted"_s);
        const QString deleted = store.curId;
        store.toggleChecked(store.historys->first());
        store.deleteCheckedHistory();
        store.finishHistory();
        QVERIFY(store.historys->isEmpty() && base.rows(u"select id from history"_s).isEmpty());
        QCOMPARE(store.curId.value(), deleted);

        store.addHistory(u"refused"_s);
        const QString id = store.curId;
        const QList<History> before = store.historys;
        for (const auto &event : {u"insert"_s, u"update"_s, u"delete"_s})
            refuse(base, event + u" on history"_s);
        const LogCapture log;
        store.finishHistory();
        QCOMPARE(store.curId.value(), id);
        clock.advance(86'400'000);
        store.deleteOldHistory();
        store.addHistory(u"refused"_s);
        QVERIFY(!store.curId->isEmpty() && store.curId.value() != id);
        QCOMPARE(store.historys.value(), before);
    }

    // Values that the program itself never writes, in columns of no type and in another order.
    void oddValues_areReadAsTextsOrEmpty()
    {
        const auto db = FMDatabase::databaseWithPath(std::nullopt);
        QVERIFY(db->open() &&
                db->executeStatements(
                    u"create table plan(week6,week5,week4,week3,week2,week1,week0,ismusic,isloop,content,"
                    "music,end,begin,title,id); insert into plan values('true',1,'True',null,'','true ',"
                    "'false','true','TRUE','a'||char(0),cast(x'41ff' as text),x'e28899',null,0.5,7)"_s));
        QCOMPARE(PlanStore(db).plans.value(), (QList<Plan>{{.id = u"7"_s,
                                                            .title = u"0.5"_s,
                                                            .end = u"∙"_s,
                                                            .content = u"a"_s,
                                                            .isMusic = true,
                                                            .week6 = true}}));
    }

    void aFileLockedAtTheStart_isWaitedForOnce_andReadWhenItIsFree()
    {
        const TemplateDatabase base;
        const FakeClock clock("2024-05-01 08:00:00");
        PlanStore(base.db).addPlan({.id = u"stored"_s, .begin = u"08:00"_s});
        HolidayStore(base.db).addHoliday({.id = u"1"_s});
        HistoryStore(base.db, clock).addHistory(u"Bell"_s);
        const auto other = lock(base);
        const LogCapture log;
        const auto db = FMDatabase::databaseWithPath(base.path());
        db->setMaxBusyRetryTimeInterval(1);
        QElapsedTimer waited;
        waited.start();
        PlanStore plans(db);
        HolidayStore holidays(db);
        HistoryStore history(db, clock);
        for (int i = 0; i < 7; ++i)
            HolidayStore{db};
        QVERIFY(waited.elapsed() >= 1000 && waited.elapsed() < 5000);
        const LoadRetry retry(*db, plans, holidays, history);
        db->setTraceExecution(true);
        QTRY_COMPARE(log.lines().filter(u"executeQuery"_s).size(), 3);
        QVERIFY(other->executeStatements(u"commit"_s));
        QVERIFY(plans.addPlan({.id = u"added"_s, .begin = u"07:00"_s}));
        plans.togglePlaying(plans.plans->first());
        QVERIFY(other->executeStatements(u"begin exclusive"_s));
        db->setMaxBusyRetryTimeInterval(60);
        QTRY_COMPARE(log.lines().filter(u"executeQuery"_s).size(), 6);
        QVERIFY(waited.elapsed() < 30'000); // A retry does not wait.
        QCOMPARE(ids(plans.plans.value()), {u"added"_s});
        QVERIFY(other->executeStatements(u"commit"_s));
        QTRY_COMPARE(ids(plans.plans.value()), (QStringList{u"added"_s, u"stored"_s}));
        QVERIFY(plans.plans->first().isPlaying);
        QCOMPARE(holidays.holidays->size() + history.historys->size(), 2);
        QCOMPARE(db->maxBusyRetryTimeInterval(), 60.0);
        QVERIFY(db->logsErrors() && !retry.findChild<QTimer *>()->isActive());
    }

    void aDeletion_waitsOnceForALockedFile_andKeepsWhatIsNotDeleted()
    {
        const TemplateDatabase base;
        PlanStore store(base.db);
        for (int i = 0; i < 10; ++i)
            store.addPlan({.isChecked = i != 5, .id = QString::number(i)});
        const auto other = lock(base);
        const LogCapture log;
        base.db->setMaxBusyRetryTimeInterval(1);
        QElapsedTimer waited;
        waited.start();
        store.deleteCheckedPlans();
        QVERIFY(waited.elapsed() >= 1000 && waited.elapsed() < 5000);
        QCOMPARE(store.plans->size(), 10);
        QVERIFY(other->executeStatements(u"commit"_s));
        refuse(base, u"delete on plan"_s, u"old.id = '4'"_s);
        store.deleteCheckedPlans();
        QCOMPARE(ids(store.plans.value()), (QStringList{u"4"_s, u"5"_s}));
        QVERIFY(store.plans->first().isChecked);
        QCOMPARE(base.rows(u"select id from plan order by id"_s), ids(store.plans.value()));
    }
};

QTEST_GUILESS_MAIN(TestStores)
#include "TestStores.moc"
