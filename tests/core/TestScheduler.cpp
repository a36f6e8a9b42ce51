#include "core/Scheduler.h"

#include "core/AVPlayer.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"
#include "support/FakePlayer.h"
#include "support/SetClock.h"
#include "support/TemplateDatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The timetable of one test, with everything that the scheduler works on.
class Timetable final
{
public:
    explicit Timetable(const char *now) : clock(now) {}

    // A plan whose file has the plan's name; `days` are the numbers of its weekdays.
    Timetable &plan(const QString &title, const QString &begin, const QString &end,
                    const QString &days = u"0123456"_s)
    {
        Plan plan{.id = title, .title = title, .begin = begin, .end = end, .content = folder.filePath(title)};
        QFile(plan.content).open(QIODevice::WriteOnly);
        for (const QChar day : days)
            plan.*planWeekdays[size_t(day.digitValue())] = true;
        planStore.addPlan(plan);
        return *this;
    }

    // Ticks at each moment, "HH:mm:ss" of the clock's day or a whole timestamp.
    Timetable &tickAt(const QStringList &moments)
    {
        for (const QString &moment : moments) {
            const QString day = clock.now().toString(u"yyyy-MM-dd "_s);
            clock.set(qPrintable(moment.size() > 8 ? moment : day + moment));
            scheduler.tick();
        }
        return *this;
    }

    void endSound() { stage.sounding->stop(); }

    // What is heard and what is marked: "Morning [Morning]"; "-" for nothing.
    QString state() const
    {
        QStringList marked;
        for (const Plan &plan : planStore.plans.value()) {
            if (plan.isPlaying)
                marked += plan.title;
        }
        const QString heard = stage.sounding ? QFileInfo(stage.played.last()).fileName() : u"-"_s;
        return heard + u" ["_s + marked.join(u',') + u']';
    }

    // The log in the order in which it was written: "Morning 08:00:00 - 08:30:00".
    QStringList log() const
    {
        return base.rows(u"select title || ' ' || substr(begin, 12) || ' - ' || coalesce(substr(end, 12), '')"
                         " from history order by rowid"_s);
    }

    QTemporaryDir folder;
    TemplateDatabase base;
    SetClock clock;
    FakePlayer::Stage stage;
    PlanStore planStore{base.db};
    HolidayStore holidayStore{base.db};
    HistoryStore historyStore{base.db, clock};
    AVPlayer player{FakePlayer::factory(stage), Resources(folder.path())};
    Scheduler scheduler{clock, planStore, holidayStore, historyStore, player};
};

struct PlanRow
{
    QString title, begin, end, days = u"0123456"_s;
};

} // namespace

Q_DECLARE_METATYPE(QList<PlanRow>)

class TestScheduler final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // 2026-03-02 is a Monday.
    void timetable_data()
    {
        QTest::addColumn<QList<PlanRow>>("plans");
        QTest::addColumn<QStringList>("ticks");
        QTest::addColumn<QString>("state");
        QTest::addColumn<QStringList>("log");

        const PlanRow monday{u"Monday"_s, u"08:00"_s, u"09:00"_s, u"1"_s};
        const PlanRow a{u"A"_s, u"10:00"_s, u"10:30"_s};
        const PlanRow b{u"B"_s, u"10:00"_s, u"10:20"_s};
        const PlanRow after{u"After"_s, u"10:30"_s, u"10:40"_s};
        const PlanRow night{u"Night"_s, u"23:00"_s, u"01:00"_s};
        const PlanRow early{u"Early"_s, u"01:00"_s, u"01:30"_s};
        const PlanRow broken{u"broken"_s, u"10:00"_s, u"10:30"_s};

        QTest::newRow("starts in its begin second")
            << QList{monday} << QStringList{u"07:59:59"_s, u"08:00:00"_s} << u"Monday [Monday]"_s
            << QStringList{u"Monday 08:00:00 - "_s};
        QTest::newRow("not before and not after it")
            << QList{monday} << QStringList{u"07:59:59"_s, u"08:00:01"_s, u"08:00:59"_s} << u"- []"_s
            << QStringList();
        QTest::newRow("not on another weekday")
            << QList{monday} << QStringList{u"2026-03-03 08:00:00"_s} << u"- []"_s << QStringList();
        QTest::newRow("not without a weekday")
            << QList{PlanRow{u"Never"_s, u"08:00"_s, u"09:00"_s, QString()}} << QStringList{u"08:00:00"_s}
            << u"- []"_s << QStringList();
        QTest::newRow("stops in its end second") << QList{monday} << QStringList{u"08:00:00"_s, u"09:00:00"_s}
                                                 << u"- []"_s << QStringList{u"Monday 08:00:00 - 09:00:00"_s};
        QTest::newRow("an end on another weekday stops whatever plays")
            << QList{PlanRow{u"Long"_s, u"07:00"_s, u"12:00"_s}, monday}
            << QStringList{u"2026-03-03 07:00:00"_s, u"09:00:00"_s, u"09:00:01"_s} << u"- []"_s
            << QStringList{u"Long 07:00:00 - 09:00:00"_s};
        QTest::newRow("whose own mark is cleared a tick later")
            << QList{PlanRow{u"Long"_s, u"07:00"_s, u"12:00"_s}, monday}
            << QStringList{u"2026-03-03 07:00:00"_s, u"09:00:00"_s} << u"- [Long]"_s
            << QStringList{u"Long 07:00:00 - 09:00:00"_s};
        QTest::newRow("of equal begins the last is heard, and the first is never ended")
            << QList{a, b} << QStringList{u"10:00:00"_s, u"10:00:01"_s} << u"B [B]"_s
            << QStringList{u"A 10:00:00 - "_s, u"B 10:00:00 - "_s};
        QTest::newRow("an end goes before the begin of a later plan")
            << QList{a, after} << QStringList{u"10:00:00"_s, u"10:30:00"_s} << u"After [After]"_s
            << QStringList{u"A 10:00:00 - 10:30:00"_s, u"After 10:30:00 - "_s};
        QTest::newRow("an end over midnight stops the earlier plan that has just begun")
            << QList{night, early} << QStringList{u"23:00:00"_s, u"2026-03-03 01:00:00"_s, u"01:00:01"_s}
            << u"- []"_s << QStringList{u"Early 01:00:00 - 01:00:00"_s};
        QTest::newRow("a plan over midnight plays on in the new day")
            << QList{night} << QStringList{u"23:00:00"_s, u"2026-03-03 00:00:00"_s} << u"Night [Night]"_s
            << QStringList{u"Night 23:00:00 - "_s};
        QTest::newRow("a failed play is cleared by the next tick")
            << QList{broken} << QStringList{u"10:00:00"_s, u"10:00:01"_s} << u"- []"_s
            << QStringList{u"broken 10:00:00 - 10:00:01"_s};
        QTest::newRow("a failed play leaves the earlier sound and its own mark")
            << QList{PlanRow{u"Long"_s, u"09:00"_s, u"12:00"_s}, broken}
            << QStringList{u"09:00:00"_s, u"10:00:00"_s, u"10:00:01"_s} << u"Long [broken]"_s
            << QStringList{u"Long 09:00:00 - "_s, u"broken 10:00:00 - "_s};
        QTest::newRow("a plan still marked at its next begin loses its mark")
            << QList{PlanRow{u"Endless"_s, u"10:00"_s, u"09:00"_s}}
            << QStringList{u"10:00:00"_s, u"10:00:00"_s} << u"Endless []"_s
            << QStringList{u"Endless 10:00:00 - "_s, u"Endless 10:00:00 - "_s};
    }
    void timetable()
    {
        QFETCH(QList<PlanRow>, plans);
        QFETCH(QStringList, ticks);
        Timetable timetable("2026-03-02 00:00:00");
        for (const PlanRow &row : plans)
            timetable.plan(row.title, row.begin, row.end, row.days);
        timetable.tickAt(ticks);
        QTEST(timetable.state(), "state");
        QTEST(timetable.log(), "log");
    }

    void holidays_data()
    {
        QTest::addColumn<QString>("begin");
        QTest::addColumn<QString>("end");
        QTest::addColumn<bool>("rings");
        QTest::newRow("the first day") << u"2026-03-02"_s << u"2026-03-05"_s << false;
        QTest::newRow("the last day") << u"2026-02-27"_s << u"2026-03-02"_s << false;
        QTest::newRow("a single day") << u"2026-03-02"_s << u"2026-03-02"_s << false;
        QTest::newRow("over") << u"2026-02-27"_s << u"2026-03-01"_s << true;
        QTest::newRow("to come") << u"2026-03-03"_s << u"2026-03-05"_s << true;
        QTest::newRow("an end before its begin") << u"2026-03-05"_s << u"2026-03-01"_s << true;
    }
    void holidays()
    {
        QFETCH(QString, begin);
        QFETCH(QString, end);
        Timetable timetable("2026-03-02 00:00:00");
        timetable.plan(u"Bell"_s, u"08:00"_s, u"08:30"_s);
        timetable.holidayStore.addHoliday(
            {.id = u"past"_s, .begin = u"2020-01-01"_s, .end = u"2020-01-02"_s});
        timetable.holidayStore.addHoliday({.id = u"other"_s, .begin = begin, .end = end});
        timetable.tickAt({u"08:00:00"_s});
        QTEST(timetable.stage.sounding != nullptr, "rings");
    }

    void aHolidayStopsNothing_butTheClockAndTheReadoutsGoOn()
    {
        Timetable timetable("2026-03-01 00:00:00");
        timetable.plan(u"Night"_s, u"23:50"_s, u"00:10"_s).tickAt({u"23:50:00"_s});
        timetable.holidayStore.addHoliday({.id = u"1"_s, .begin = u"2026-03-02"_s, .end = u"2026-03-02"_s});
        timetable.stage.sounding->setCurrentTime(61.5);
        timetable.tickAt({u"2026-03-02 00:10:00"_s});
        QCOMPARE(timetable.state(), u"Night [Night]"_s);
        QCOMPARE(timetable.player.currentTime.value(), u"01:01"_s);
        QCOMPARE(timetable.scheduler.nowTime.value(), u"00:10:00"_s);
        timetable.endSound();
        timetable.tickAt({u"00:10:01"_s});
        QCOMPARE(timetable.state(), u"- []"_s);
        QCOMPARE(timetable.log(), QStringList{u"Night 23:50:00 - 00:10:01"_s});
    }

    void aFileThatEndsByItself_isNoticedByTheNextTick_andKeepsItsReadouts()
    {
        Timetable timetable("2026-03-02 00:00:00");
        timetable.plan(u"Bell"_s, u"08:00"_s, u"08:30"_s).tickAt({u"08:00:00"_s});
        QCOMPARE(timetable.player.currentTime.value(), u"00:00"_s);
        timetable.stage.sounding->setCurrentTime(30.9);
        timetable.tickAt({u"08:00:30"_s});
        timetable.endSound();
        timetable.tickAt({u"08:00:31"_s, u"08:30:00"_s});
        QCOMPARE(timetable.state(), u"- []"_s);
        QCOMPARE(timetable.log(), QStringList{u"Bell 08:00:00 - 08:00:31"_s});
        QCOMPARE(timetable.player.currentTime + u' ' + timetable.player.durationTime.value(),
                 u"00:30 01:30"_s);
    }

    void anEndRewindsThePlayer_andAStartPrunesTheLog()
    {
        Timetable timetable("2026-03-02 00:00:00");
        timetable.plan(u"Bell"_s, u"08:00"_s, u"08:30"_s).tickAt({u"08:00:00"_s});
        timetable.stage.sounding->setCurrentTime(40);
        timetable.tickAt({u"08:30:00"_s});
        QCOMPARE(timetable.player.player.value()->currentTime(), 0.0);
        timetable.tickAt({u"2026-03-03 08:00:00"_s});
        QCOMPARE(timetable.historyStore.historys->size(), 1);
        QCOMPARE(timetable.log(), QStringList{u"Bell 08:00:00 - "_s});
    }

    void clockTexts_followTheClock()
    {
        Timetable timetable("2026-03-07 23:59:59");
        QVERIFY(timetable.scheduler.nowTime->isEmpty());
        const auto texts = [&timetable] {
            const Scheduler &scheduler = timetable.scheduler;
            return scheduler.nowDate + u' ' + scheduler.nowTime + u' ' + scheduler.nowWeek;
        };
        timetable.tickAt({u"23:59:59"_s});
        QCOMPARE(texts(), u"2026-03-07 23:59:59 6"_s);
        timetable.tickAt({u"2026-03-08 00:00:00"_s});
        QCOMPARE(texts(), u"2026-03-08 00:00:00 0"_s);
    }
};

QTEST_GUILESS_MAIN(TestScheduler)
#include "TestScheduler.moc"
