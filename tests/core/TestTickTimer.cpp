#include "core/TickTimer.h"

#include "core/Scheduler.h"
#include "support/SharedObjects.h"
#include "support/Table.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A scheduler whose ticks are written down, and a set clock in place of waiting.
class Ticks final : public SharedObjects
{
public:
    explicit Ticks(const QDateTime &now) : SharedObjects(now)
    {
        // Each tick changes the three texts of the clock, and nothing else here.
        QObject::connect(&scheduler, &ObservableObject::objectWillChange, &scheduler, [this] {
            const int text = changes++ % 3;
            if (text == 0)
                seen += clock.now().toString(u"HH:mm:ss"_s);
            else if (text == 2)
                clock.advance(std::exchange(delay, 0));
        });
    }

    // Lets the timer fire `count` times, each `late` ms after it is due.
    void fire(int count, int late = 0)
    {
        for (int i = 0; i < count; ++i) {
            clock.advance(timer.untilNextTick().count() + late);
            timer.fire();
        }
    }

    // Lets the timer fire once more while the clock is set by `step` ms: it was aimed before that.
    void fireAcrossStep(int step)
    {
        const qint64 wait = timer.untilNextTick().count();
        clock.advance(wait + step);
        timer.fire();
    }

    // Holds the next tick up for so many ms.
    void delayTick(int milliseconds) { delay = milliseconds; }

    QStringList takeSeen() { return std::exchange(seen, {}); }

private:
    Scheduler scheduler{clock, planStore, holidayStore, historyStore, avPlayer};
    TickTimer timer{clock, scheduler};
    QStringList seen;
    int changes = 0;
    int delay = 0;
};

} // namespace

class TestTickTimer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySecondIsTickedOnce_howeverLateTheTimerFires()
    {
        for (const int late : {0, 1, 400, 999}) {
            Ticks ticks(QDateTime(QDate(2026, 3, 2), QTime(7, 59, 57, 300)));
            ticks.fire(4, late);
            QCOMPARE(ticks.takeSeen(),
                     (QStringList{u"07:59:58"_s, u"07:59:59"_s, u"08:00:00"_s, u"08:00:01"_s}));
        }
    }

    void aTickThatIsHeldUp_costsNotTheSecondInWhichItEnds()
    {
        Ticks ticks(QDateTime(QDate(2026, 3, 2), QTime(7, 59, 58)));
        ticks.delayTick(1300);
        ticks.fire(3);
        QCOMPARE(ticks.takeSeen(), (QStringList{u"07:59:59"_s, u"08:00:00"_s, u"08:00:01"_s}));
    }

    // The clock is set while the timer, aimed at 07:59:59 from the second before, runs.
    void clockSteps_data()
    {
        columns<int, QStringList>("step", "seen");
        const QStringList all{u"07:59:59"_s, u"08:00:00"_s, u"08:00:01"_s};
        QTest::newRow("half a second back") << -500 << all;
        QTest::newRow("nearly a second back") << -990 << all;
        QTest::newRow("half a second forward") << 500 << all;
        QTest::newRow("an hour back")
            << -3600'000 << QStringList{u"06:59:59"_s, u"07:00:00"_s, u"07:00:01"_s};
        QTest::newRow("an hour forward")
            << 3600'000 << QStringList{u"08:59:59"_s, u"09:00:00"_s, u"09:00:01"_s};
        QTest::newRow("a stall or a sleep of five seconds")
            << 5000 << QStringList{u"08:00:04"_s, u"08:00:05"_s, u"08:00:06"_s};
    }
    void clockSteps()
    {
        QFETCH(int, step);
        Ticks ticks(QDateTime(QDate(2026, 3, 2), QTime(7, 59, 57)));
        ticks.fire(1);
        ticks.takeSeen();
        ticks.fireAcrossStep(step);
        QStringList seen = ticks.takeSeen();
        while (seen.size() < 3) {
            ticks.fire(1);
            seen += ticks.takeSeen();
        }
        QTEST(seen, "seen");
    }

    void summerTime_data()
    {
        columns<QDateTime, QStringList>("start", "seen");
        QTest::newRow("begins") << QDateTime(QDate(2026, 3, 29), QTime(1, 59, 58))
                                << QStringList{u"01:59:59"_s, u"03:00:00"_s, u"03:00:01"_s};
        QTest::newRow("ends") << QDateTime(QDate(2026, 10, 25), QTime(0, 59, 58), Qt::UTC).toLocalTime()
                              << QStringList{u"02:59:59"_s, u"02:00:00"_s, u"02:00:01"_s};
    }
    void summerTime()
    {
        QFETCH(QDateTime, start);
        Ticks ticks(start);
        ticks.fire(3);
        QTEST(ticks.takeSeen(), "seen");
    }

    // The real timer on the real clock: one tick soon after each second.
    void runsByItself()
    {
        SystemClock clock;
        SharedObjects shared(clock.now());
        Scheduler scheduler(clock, shared.planStore, shared.holidayStore, shared.historyStore,
                            shared.avPlayer);
        TickTimer timer(clock, scheduler);
        timer.start();
        QTRY_VERIFY(!scheduler.nowTime->isEmpty());
        const QString first = scheduler.nowTime;
        QTRY_VERIFY(scheduler.nowTime.value() != first);
    }
};

QTEST_GUILESS_MAIN(TestTickTimer)
#include "TestTickTimer.moc"
