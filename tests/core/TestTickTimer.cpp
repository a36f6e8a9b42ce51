#include "core/TickTimer.h"

#include "core/Scheduler.h"
#include "support/SharedObjects.h"
#include "support/Table.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Records the ticks of a scheduler whose clock the test sets.
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
            if (text == heldText)
                clock.advance(std::exchange(hold, 0));
        });
    }

    // Fires when the timer is due, while the clock is `step` ms off.
    void fire(int step = 0)
    {
        clock.advance(timer.untilNextTick().count() + step);
        timer.fire();
    }

    QStringList seen; // The times of the ticks.
    int heldText = 0; // After which of its texts a tick is held up,
    int hold = 0;     // and for how many ms the next one is.

    Scheduler scheduler{clock, planStore, holidayStore, historyStore, avPlayer};
    TickTimer timer{clock, scheduler};

private:
    int changes = 0;
};

} // namespace

class TestTickTimer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySecondIsTickedOnce_whateverTheClockDoes_data()
    {
        columns<QDateTime, int, int, int, QString>("start", "step", "heldText", "hold", "seen");
        const QDateTime morning(QDate(2026, 3, 2), QTime(7, 59, 57, 300));
        const QDateTime night(QDate(2026, 3, 2), QTime(23, 59, 57));
        const QDateTime autumn(QDate(2026, 10, 25), QTime(0, 59, 57), Qt::UTC);
        const QString all = u"07:59:59 08:00:00 08:00:01"_s;
        QTest::newRow("nearly a second late") << morning << 999 << 0 << 0 << all;
        QTest::newRow("set nearly a second back") << morning << -990 << 0 << 0 << all;
        QTest::newRow("set an hour back")
            << morning << -3600'000 << 0 << 0 << u"06:59:59 07:00:00 07:00:01"_s;
        QTest::newRow("a sleep of five seconds")
            << morning << 5000 << 0 << 0 << u"08:00:04 08:00:05 08:00:06"_s;
        QTest::newRow("summer time ends") << autumn << 0 << 0 << 0 << u"02:59:59 02:00:00 02:00:01"_s;
        QTest::newRow("a tick that ends in the next second") << morning << 0 << 2 << 1300 << all;
        QTest::newRow("midnight in a tick") << night << 999 << 0 << 1 << u"23:59:59 00:00:01 00:00:02"_s;
    }

    void everySecondIsTickedOnce_whateverTheClockDoes()
    {
        QFETCH(QDateTime, start);
        QFETCH(int, step);
        QFETCH(int, heldText);
        QFETCH(int, hold);
        Ticks ticks(start.toLocalTime());
        ticks.fire();
        ticks.seen.clear();
        ticks.heldText = heldText;
        ticks.hold = hold;
        ticks.fire(step);
        while (ticks.seen.size() < 3)
            ticks.fire();
        QTEST(ticks.seen.join(u' '), "seen");
    }

    void theTimerIsArmedAgainAfterEachTick()
    {
        Ticks ticks(QDateTime(QDate(2026, 3, 2), QTime(7, 59, 59, 999)));
        ticks.timer.start();
        for (int i = 1; i < 4; ++i) {
            QTRY_COMPARE(ticks.seen.size(), i);
            ticks.clock.advance(1000);
        }
    }
};

QTEST_GUILESS_MAIN(TestTickTimer)
#include "TestTickTimer.moc"
