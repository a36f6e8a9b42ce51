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

Plan planAt(const QString &id, const QString &begin)
{
    return {.id = id, .title = u"t"_s, .begin = begin, .end = begin, .music = u"m"_s, .content = u"c"_s};
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
        QStringList ordered{u"07:00"_s, u"08:00"_s, u"09:00"_s, u"22:00"_s};
        for (int i = 30; i > 10; --i) {
            store.addPlan(planAt(QString::number(i), u"07:00"_s));
            ordered.insert(31 - i, QString::number(i));
        }
        QCOMPARE(ids(store.plans.value()), ordered);
        store.updatePlan(planAt(u"07:00"_s, u"23:59"_s));
        ordered.append(ordered.takeFirst());
        QCOMPARE(ids(store.plans.value()), ordered);
        QCOMPARE(ids(PlanStore(base.db).plans.value()), ordered);
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

        refuse(base, u"update on plan"_s);
        const LogCapture log;
        QVERIFY(!store.updatePlan(planAt(u"a"_s, u"10:00"_s)));
        QVERIFY(!store.addPlan(planAt(u"a"_s, u"10:00"_s)));
        // SQLite would take such a statement for one that ends there.
        QVERIFY(!store.addPlan(planAt(QString(QChar(u'\0')), u"10:00"_s)));
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
        refuse(base, u"delete on plan"_s, u"old.id = '2'"_s);
        LogCapture log;
        store.deleteCheckedPlans();
        QCOMPARE(ids(store.plans.value()), (QStringList{u"1"_s, u"2"_s, u"4"_s}));
        QVERIFY(store.plans->at(1).isChecked);
        QCOMPARE(base.rows(u"select id from plan order by id"_s), ids(store.plans.value()));
    }

    void history_isNewestFirst_andOnlyTheCurrentEntryIsFinished()
    {
        const TemplateDatabase base;
        FakeClock clock("2024-05-01 23:59:59");
        HistoryStore store(base.db, clock);
        store.addHistory(u"first"_s);
        store.addHistory(u"same second"_s);
        QCOMPARE(store.historys->first().title, u"first"_s);
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
        clock.advance(-3'600'000); // An entry of tomorrow is not one of today either.
        store.deleteOldHistory();
        QCOMPARE(store.historys->size() + base.rows(u"select id from history"_s).size(), 0);
    }

    void aRefusedHistory_leavesTheList_butTheIdIsThatOfThePlayback()
    {
        const TemplateDatabase base;
        FakeClock clock("2024-05-01 08:00:00");
        HistoryStore store(base.db, clock);
        store.addHistory(u"Bell"_s);
        const QString id = store.curId;
        const QList<History> before = store.historys;
        for (const auto &event : {u"insert"_s, u"update"_s, u"delete"_s})
            refuse(base, event + u" on history"_s);
        LogCapture log;
        store.finishHistory();
        QCOMPARE(store.curId.value(), id);
        clock.advance(86'400'000);
        store.deleteOldHistory();
        store.addHistory(u"Bell"_s);
        QVERIFY(store.curId.value() != id);
        QCOMPARE(store.historys.value(), before);
    }

    void theCurrentEntryDeleted_leavesItsId()
    {
        const TemplateDatabase base;
        const FakeClock clock("2024-05-01 08:00:00");
        HistoryStore store(base.db, clock);
        store.addHistory(u"Bell"_s);
        const QString id = store.curId;
        store.toggleChecked(store.historys->first());
        store.deleteCheckedHistory();
        store.finishHistory();
        QVERIFY(store.historys->isEmpty());
        QCOMPARE(store.curId.value(), id);
    }

    // Values that the program itself never writes, in every column but the key.
    void oddValues_areReadAsTextsOrEmpty()
    {
        for (const auto &[value, text] :
             QList<std::pair<QString, QString>>{{u"9223372036854775807"_s, u"9223372036854775807"_s},
                                                {u"0.5"_s, u"0.5"_s},
                                                {u"null"_s, {}},
                                                {u"x'e28899'"_s, u"∙"_s},
                                                {u"cast(x'41ff' as text)"_s, {}},
                                                {u"'a'||char(0)"_s, u"a"_s},
                                                {u"'True'"_s, u"True"_s}}) {
            const auto db = FMDatabase::databaseWithPath(std::nullopt);
            QVERIFY(db->open());
            for (const auto &table : {u"plan(id,title,begin,end,music,content,isloop,ismusic,week0,week1,"
                                      "week2,week3,week4,week5,week6)"_s,
                                      u"holiday(id,title,begin,end)"_s, u"history(id,title,begin,end)"_s})
                QVERIFY(db->executeStatements(u"create table %1; insert into %2 values('1',%3)"_s.arg(
                    table, table.section(u'(', 0, 0), QStringList(table.count(u','), value).join(u','))));
            QCOMPARE(PlanStore(db).plans.value(), (QList<Plan>{{.id = u"1"_s,
                                                                .title = text,
                                                                .begin = text,
                                                                .end = text,
                                                                .music = text,
                                                                .content = text}}));
            QCOMPARE(HolidayStore(db).holidays.value(),
                     (QList<Holiday>{{.id = u"1"_s, .title = text, .begin = text, .end = text}}));
            QCOMPARE(HistoryStore(db, FakeClock("2026-03-02 08:00:00")).historys->first().end,
                     text.isEmpty() ? u"------"_s : text);
        }
    }

    void aLockedFile_isWaitedForOnce_andReadWhenItIsFree()
    {
        const TemplateDatabase base;
        const FakeClock clock("2024-05-01 08:00:00");
        PlanStore(base.db).addPlan(planAt(u"stored"_s, u"08:00"_s));
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
        QVERIFY(other->executeStatements(u"commit"_s));
        QVERIFY(plans.addPlan(planAt(u"added"_s, u"07:00"_s)));
        plans.togglePlaying(plans.plans->first());
        QTRY_COMPARE(ids(plans.plans.value()), (QStringList{u"added"_s, u"stored"_s}));
        QVERIFY(plans.plans->first().isPlaying);
        QCOMPARE(holidays.holidays->size() + history.historys->size(), 2);
        QCOMPARE(db->maxBusyRetryTimeInterval(), 1.0);
    }

    void aDeletionFromALockedFile_waitsOnce_andKeepsAll()
    {
        const TemplateDatabase base;
        PlanStore store(base.db);
        for (int i = 0; i < 10; ++i)
            store.addPlan({.isChecked = true, .id = QString::number(i)});
        const auto other = lock(base);
        const LogCapture log;
        base.db->setMaxBusyRetryTimeInterval(1);
        QElapsedTimer waited;
        waited.start();
        store.deleteCheckedPlans();
        QVERIFY(waited.elapsed() >= 1000 && waited.elapsed() < 5000);
        QVERIFY(other->executeStatements(u"commit"_s));
        store.deleteCheckedPlans();
        QVERIFY(store.plans->isEmpty() && base.rows(u"select id from plan"_s).isEmpty());
        QCOMPARE(log.lines().size(), 10);
    }
};

QTEST_GUILESS_MAIN(TestStores)
#include "TestStores.moc"
