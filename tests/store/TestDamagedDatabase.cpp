#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"
#include "store/Records.h"

#include "support/Damage.h"
#include "support/LogCapture.h"
#include "support/SetClock.h"
#include "support/Table.h"
#include "support/TemplateDatabase.h"

#include <QTest>

#include <ctime>

using namespace Qt::StringLiterals;

namespace {

// Has one list changed by `write`, which says whether it did: the record is in the list then, as it was
// given, and else nothing has changed.
template<typename Record, typename Write>
void tryToWrite(const Published<QList<Record>> &list, const Record &record, bool isNew, Write &&write)
{
    const QList<Record> before = list;
    if (!write(record)) {
        QCOMPARE(list.value(), before);
        return;
    }
    QVERIFY(list->contains(record));
    QCOMPARE(list->size(), before.size() + (isNew ? 1 : 0));
}

// Adds a record, changes one, and deletes a third, if there is any.
template<typename Record, typename Add, typename Update, typename Check, typename Delete>
void tryToChange(const Published<QList<Record>> &list, const Record &fresh, Add &&add, Update &&update,
                 Check &&check, Delete &&deleteChecked)
{
    if (!list->isEmpty()) {
        Record changed = fresh;
        changed.id = list->at(list->size() / 2).id;
        tryToWrite(list, changed, false, update);
        check(list->constFirst());
    }
    tryToWrite(list, fresh, true, add);
    const QList<Record> before = list;
    deleteChecked();
    for (const Record &record : before)
        QVERIFY(record.isChecked || list->contains(record));
    QVERIFY(list->size() >= before.size() - 1);
}

void tryEverything(const std::shared_ptr<FMDatabase> &db)
{
    PlanStore plans(db);
    tryToChange(
        plans.plans, Plan{.id = u"new"_s, .title = u"Tom's"_s, .begin = u"12:00"_s, .week3 = true},
        [&](const Plan &plan) { return plans.addPlan(plan); },
        [&](const Plan &plan) { return plans.updatePlan(plan); },
        [&](const Plan &plan) { plans.toggleChecked(plan); }, [&] { plans.deleteCheckedPlans(); });
    HolidayStore holidays(db);
    tryToChange(
        holidays.holidays, Holiday{.id = u"new"_s, .begin = u"2026-07-01"_s, .end = u"2026-07-02"_s},
        [&](const Holiday &holiday) { return holidays.addHoliday(holiday); },
        [&](const Holiday &holiday) { return holidays.updateHoliday(holiday); },
        [&](const Holiday &holiday) { holidays.toggleChecked(holiday); },
        [&] { holidays.deleteCheckedHolidays(); });
    const SetClock clock("2026-03-02 08:00:00");
    HistoryStore history(db, clock);
    history.addHistory(u"Bell"_s);
    history.finishHistory();
    history.deleteOldHistory();
    history.deleteCheckedHistory();
}

} // namespace

class TestDamagedDatabase final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void damagedFile_isSurvived()
    {
        const QByteArray whole = filledDatabase();
        const QString path = folder.filePath(u"data.db"_s);
        const unsigned rounds = qEnvironmentVariableIsSet("BELFRY_LONG") ? 1000 : 60;
        for (unsigned seed = 1; seed <= rounds && !QTest::currentTestFailed(); ++seed) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(damaged(whole, seed));
            file.close();
            const LogCapture log;
            const auto begin = std::clock();
            const auto db = FMDatabase::databaseWithPath(path);
            if (db->open())
                db->executeStatements(u"pragma synchronous = off"_s);
            tryEverything(db);
            const double busy = double(std::clock() - begin) / CLOCKS_PER_SEC;
            if (QTest::currentTestFailed() || busy > 1)
                QFAIL(qPrintable(u"seed %1, %2 s"_s.arg(seed).arg(busy)));
        }
    }

    // Values that the program itself never writes, in every column but the key.
    void oddValues_areReadAsTextsOrEmpty_andCanBeReplaced_data()
    {
        columns<QString, QString>("value", "text");
        QTest::newRow("an integer") << u"9223372036854775807"_s << u"9223372036854775807"_s;
        QTest::newRow("a real") << u"0.5"_s << u"0.5"_s;
        QTest::newRow("NULL") << u"null"_s << QString();
        QTest::newRow("a blob that is a text") << u"x'74727565'"_s << u"true"_s;
        QTest::newRow("a blob that is none") << u"x'ff'"_s << QString();
        QTest::newRow("a text that is not UTF-8") << u"cast(x'41ff' as text)"_s << QString();
        QTest::newRow("a text with a NUL in it") << u"'a'||char(0)||'b'"_s << u"a"_s;
        QTest::newRow("true in capitals") << u"'TRUE'"_s << u"TRUE"_s;
        QTest::newRow("a megabyte") << u"hex(zeroblob(500000))"_s << QString(1'000'000, u'0');
    }
    void oddValues_areReadAsTextsOrEmpty_andCanBeReplaced()
    {
        QFETCH(const QString, value);
        QFETCH(const QString, text);
        const auto db = FMDatabase::databaseWithPath(std::nullopt);
        QVERIFY(db->open());
        const auto fill = [&](const QString &table, const QString &columns) {
            const QString values = QStringList(columns.count(u','), value).join(u',');
            QVERIFY(db->executeStatements(
                u"create table %1(%2); insert into %1 values('1', %3)"_s.arg(table, columns, values)));
        };
        fill(u"plan"_s,
             u"id,title,begin,end,music,content,isloop,ismusic,week0,week1,week2,week3,week4,week5,week6"_s);
        fill(u"holiday"_s, u"id,title,begin,end"_s);
        fill(u"history"_s, u"id,title,begin,end"_s);

        Plan plan{.id = u"1"_s, .title = text, .begin = text, .end = text, .music = text, .content = text};
        Holiday holiday{.id = u"1"_s, .title = text, .begin = text, .end = text};
        PlanStore plans(db);
        HolidayStore holidays(db);
        QCOMPARE(plans.plans.value(), QList<Plan>{plan});
        QCOMPARE(holidays.holidays.value(), QList<Holiday>{holiday});
        const SetClock clock("2026-03-02 08:00:00");
        QCOMPARE(
            HistoryStore(db, clock).historys.value(),
            (QList<History>{
                {.id = u"1"_s, .title = text, .begin = text, .end = text.isEmpty() ? u"------"_s : text}}));

        plan.begin = holiday.begin = u"new"_s;
        plan.week6 = true;
        QVERIFY(plans.updatePlan(plan) && holidays.updateHoliday(holiday));
        QCOMPARE(PlanStore(db).plans.value(), QList<Plan>{plan});
        QCOMPARE(HolidayStore(db).holidays.value(), QList<Holiday>{holiday});
    }

    // SQLite would take such a statement for one that ends there.
    void textWithNul_isRefused()
    {
        const LogCapture log;
        const TemplateDatabase base;
        const QString title = u"a"_s + QChar(u'\0') + u"b"_s;
        PlanStore plans(base.db);
        QVERIFY(plans.addPlan({.id = u"1"_s, .title = u"whole"_s}));
        QVERIFY(!plans.updatePlan({.id = u"1"_s, .title = title}));
        QVERIFY(!plans.addPlan({.id = u"2"_s, .title = title}));
        QCOMPARE(plans.plans.value(), PlanStore(base.db).plans.value());
    }

private:
    // A timetable of several pages, some of whose titles need pages of their own.
    static QByteArray filledDatabase()
    {
        const TemplateDatabase base;
        const QString count =
            u"with recursive c(n) as (values(1) union all select n + 1 from c where n < %1) "_s;
        base.run(
            count.arg(60) +
            u"insert into plan select 'P' || n, substr(hex(zeroblob(n * n * 2)), 1), '08:' || (n % 60), "
            u"'09:00', "
            "'bell.ogg', '/home/bells/bell.ogg', 'false', 'true', 'true', 'true', 'true', 'true', 'true', "
            "'true', 'false' from c;"_s +
            count.arg(20) +
            u"insert into holiday select 'H' || n, 'Easter', '2026-04-01', '2026-04-12' from c;"_s +
            count.arg(100) +
            u"insert into history select 'L' || n, 'Bell', '2026-03-0' || (n % 9), null from c"_s);
        QFile file(base.path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(TestDamagedDatabase)
#include "TestDamagedDatabase.moc"
