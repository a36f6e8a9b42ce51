#include "core/Scheduler.h"

#include "support/SharedObjects.h"
#include "support/Table.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The timetable of one test, with everything that the scheduler works on.
class Timetable final : public SharedObjects
{
public:
    using SharedObjects::SharedObjects;

    // Ticks at each moment, "HH:mm:ss" of the clock's day or a whole timestamp; at "ends" the file does.
    void tickAt(const QString &moments)
    {
        for (const QString &moment : moments.split(u", "_s)) {
            if (moment == u"ends")
                players.playing->stop();
            else
                clock.set(
                    qPrintable(clock.now().toString(u"yyyy-MM-dd "_s).first(19 - moment.size()) + moment));
            scheduler.tick();
        }
    }

    // What is heard and what is marked: "Morning [Morning]"; "-" for nothing.
    QString state() const
    {
        QStringList marked;
        for (const Plan &plan : planStore.plans.value()) {
            if (plan.isPlaying)
                marked += plan.title;
        }
        const QString heard = players.playing ? QFileInfo(players.played.last()).completeBaseName() : u"-"_s;
        return heard + u" ["_s + marked.join(u',') + u']';
    }

    Scheduler scheduler{clock, planStore, holidayStore, historyStore, avPlayer};
};

} // namespace

class TestScheduler final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timetable_data()
    {
        columns<QString, QString, QString, QString>("plans", "ticks", "state", "log");
        const auto row = [](const char *name, const char *plans, const char *ticks, const char *state,
                            const char *log) {
            QTest::newRow(name) << QString::fromLatin1(plans) << QString::fromLatin1(ticks)
                                << QString::fromLatin1(state) << QString::fromLatin1(log);
        };
        row("starts in its begin second", "Monday 08:00 09:00 1", "07:59:59, 08:00:00, 08:00:01",
            "Monday [Monday]", "Monday 08:00:00 - ");
        row("starts on its weekdays alone", "Sunday 10:00 11:00 0, Other 10:00 11:00 123456",
            "2026-03-08 10:00:00", "Sunday [Sunday]", "Sunday 10:00:00 - ");
        row("an end in the begin second of its own plan goes first", "Now 08:00 08:00 1", "08:00:00",
            "Now [Now]", "Now 08:00:00 - ");
        row("a file that ends clears its mark", "Bell 08:00 09:00", "08:00:00, 08:00:31, ends", "- []",
            "Bell 08:00:00 - 08:00:31");
        row("an end on another weekday stops whatever plays, whose own mark stays",
            "Long 07:00 12:00, Monday 08:00 09:00 1", "2026-03-03 07:00:00, 09:00:00", "- [Long]",
            "Long 07:00:00 - 09:00:00");
        row("of equal begins the last is heard, and the first is never ended", "A 10:00 10:30, B 10:00 10:20",
            "10:00:00, 10:00:01", "B [B]", "A 10:00:00 - , B 10:00:00 - ");
        row("an end goes before the begin of a later plan", "A 10:00 10:30, After 10:30 10:40",
            "10:00:00, 10:30:00", "After [After]", "A 10:00:00 - 10:30:00, After 10:30:00 - ");
        row("an end over midnight stops the earlier plan that has just begun",
            "Night 23:00 01:00, Early 01:00 01:30", "23:00:00, 2026-03-03 01:00:00, 01:00:01", "- []",
            "Early 01:00:00 - 01:00:00");
        row("a failed play leaves the earlier sound and its own mark", "Long 09:00 12:00, broken 10:00 10:30",
            "09:00:00, 10:00:00, 10:00:01", "Long [broken]", "Long 09:00:00 - , broken 10:00:00 - ");
        row("a plan still marked at its next begin loses its mark", "Endless 10:00 09:00",
            "10:00:00, 10:00:00", "Endless []", "Endless 10:00:00 - , Endless 10:00:00 - ");
        row("a holiday starts nothing", "Bell 08:00 09:00", "2026-03-04 08:00:00", "- []", "");
        row("a holiday stops nothing", "Night 23:50 00:10", "2026-03-03 23:50:00, 2026-03-04 00:10:00",
            "Night [Night]", "Night 23:50:00 - ");
        row("a file that ends in a holiday clears its mark", "Night 23:50 00:10",
            "2026-03-03 23:50:00, 2026-03-04 00:00:05, ends", "- []", "Night 23:50:00 - 00:00:05");
    }
    void timetable()
    {
        QFETCH(QString, plans);
        QFETCH(QString, ticks);
        Timetable timetable("2026-03-02 00:00:00");
        for (const auto &day : {u"2026-03-01"_s, u"2026-03-04"_s})
            timetable.holidayStore.addHoliday({.id = day, .begin = day, .end = day});
        for (const QString &plan : plans.split(u", "_s)) {
            const QStringList words = plan.split(u' ');
            timetable.addPlan(words[0], words[1], words[2], words.value(3, u"0123456"_s));
        }
        timetable.tickAt(ticks);
        QTEST(timetable.state(), "state");
        QTEST(timetable.log().join(u", "_s), "log");
    }

    void theReadoutsFollowThePlayer_andAnEndRewindsIt()
    {
        Timetable timetable("2026-03-08 00:00:00");
        timetable.addPlan(u"Bell"_s, u"08:00"_s, u"08:30"_s, u"0123456"_s);
        timetable.planStore.plans.modify([](QList<Plan> &plans) { plans.first().isLoop = true; });
        timetable.tickAt(u"08:00:00"_s);
        QCOMPARE(timetable.players.playing->numberOfLoops(), 100);
        timetable.players.playing->setCurrentTime(61.5);
        timetable.tickAt(u"08:00:30, ends, 08:30:00"_s);
        const AVPlayer &player = timetable.avPlayer;
        QCOMPARE(player.currentTime + u' ' + player.durationTime.value(), u"01:01 01:30"_s);
        QCOMPARE(player.current + player.duration, 152.0);
        QCOMPARE(player.player.value()->currentTime(), 0.0);
        const Scheduler &scheduler = timetable.scheduler;
        QCOMPARE(scheduler.nowDate + u' ' + scheduler.nowTime + u' ' + scheduler.nowWeek,
                 u"2026-03-08 08:30:00 0"_s);
        timetable.tickAt(u"2026-03-09 08:00:00"_s); // A start prunes the history.
        QCOMPARE(timetable.log(), QStringList{u"Bell 08:00:00 - "_s});
    }
};

QTEST_GUILESS_MAIN(TestScheduler)
#include "TestScheduler.moc"
