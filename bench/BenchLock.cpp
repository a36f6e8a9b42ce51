// How often a bell is late or lost because another program locks data.db while Belfry writes to it.
//
// Each trial is a process of its own that runs the real tick towards the begin of a plan. In the last three
// seconds before it something is written to the locked file: what the user saves, or the end of a playback.
// The lock is anywhere in its course then.

#include "core/AVPlayer.h"
#include "core/Scheduler.h"
#include "core/TickTimer.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/PlanStore.h"
#include "support/FakePlayer.h"
#include "support/TemplateDatabase.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>
#include <QTimer>

#include <array>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int trials = 200;
constexpr int atOnce = 100;
constexpr qint64 lead = 5000; // ms from the start of a trial to the begin
constexpr qint64 window = 3000;
constexpr qint64 indefinitely = 20'000;

enum class Writer { User, EndOfPlayback };
enum Outcome { InTime, Late, Lost };

// Stands `lead` before the begin minute when it is made, and then goes on.
class ShiftedClock final : public Clock
{
public:
    QDateTime now() const override { return QDateTime::currentDateTime().addMSecs(shift); }

private:
    const qint64 shift =
        QDateTime::currentDateTime().msecsTo(QDateTime(QDate(2026, 3, 2), QTime(12, 0))) - lead;
};

// Holds the write lock of the file until `length` ms have passed, or until it is destroyed.
class Locker final : public QThread
{
public:
    Locker(QString path, qint64 length) : path(std::move(path)), length(length) {}
    ~Locker() override
    {
        enough.release();
        wait();
    }
    Q_DISABLE_COPY_MOVE(Locker)

    // Begins, and returns once the file is locked.
    void lock()
    {
        start();
        locked.acquire();
    }

protected:
    void run() override
    {
        const auto db = FMDatabase::databaseWithPath(path);
        if (!db->open() || !db->executeStatements(u"begin immediate"_s))
            qFatal("The file cannot be locked.");
        locked.release();
        enough.tryAcquire(1, int(length));
    }

private:
    const QString path;
    const qint64 length;
    QSemaphore locked;
    QSemaphore enough;
};

// Everything that ticks. One bell sounds, and another one is due in `lead` ms.
struct Belfry
{
    Belfry()
    {
        const Plan sounding{.id = u"1"_s, .begin = u"11:00"_s, .end = u"13:00"_s, .content = base.path()};
        plans.addPlan(sounding);
        plans.addPlan(
            {.id = u"2"_s, .begin = u"12:00"_s, .end = u"13:00"_s, .content = u"/"_s, .week1 = true});
        plans.togglePlaying(sounding);
        history.addHistory(u"sounding"_s);
        player.play(sounding.content, false);
        timer.start();
    }

    const TemplateDatabase base;
    const ShiftedClock clock;
    PlanStore plans{base.db};
    HolidayStore holidays{base.db};
    HistoryStore history{base.db, clock};
    FakePlayerFactory players;
    AVPlayer player{players, Resources(QString())};
    Scheduler scheduler{clock, plans, holidays, history, player};
    TickTimer timer{clock, scheduler};
};

// One trial: what becomes of the bell.
Outcome ring(qint64 lock, Writer writer, unsigned number)
{
    char *noArguments[] = {nullptr};
    int count = 0;
    const QCoreApplication application(count, noArguments);
    Log::setSink([](const QString &) {});
    // The trials are spread evenly over the moments of the write and over the course of the lock.
    const qint64 before = 1 + window * number / trials;
    // The end of a playback is noticed, and written, by the next tick.
    const qint64 untilWritten = writer == Writer::User ? 0 : 1 + (before - 1) % 1000;
    const qint64 left = lock == indefinitely ? indefinitely : lock * (number * 79 % trials) / trials;

    Belfry belfry;
    Locker locker(belfry.base.path(), untilWritten + left);
    const QDateTime begin(QDate(2026, 3, 2), QTime(12, 0));
    QTimer::singleShot(int(belfry.clock.now().msecsTo(begin) - before), Qt::PreciseTimer, &locker, [&] {
        locker.lock();
        if (writer == Writer::User)
            belfry.holidays.addHoliday({.id = u"1"_s});
        else
            belfry.players.playing->stop();
    });
    while (belfry.players.played.size() < 2 && belfry.clock.now() < begin.addSecs(6))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (belfry.players.played.size() < 2)
        return Lost;
    return begin.msecsTo(belfry.clock.now()) < 300 ? InTime : Late;
}

// Prints what became of the bell in all trials of one kind.
void report(const char *name, qint64 lock, Writer writer)
{
    std::array<int, 3> counts = {};
    for (unsigned first = 0; first < trials; first += atOnce) {
        for (unsigned number = first; number < first + atOnce; ++number) {
            if (::fork() == 0)
                ::_exit(ring(lock, writer, number));
        }
        for (int status = 0; ::wait(&status) > 0;) {
            if (!WIFEXITED(status))
                qFatal("A trial has failed.");
            ++counts.at(size_t(WEXITSTATUS(status)));
        }
    }
    std::printf("%-12s %-18s %5.1f %% in time %5.1f %% late %5.1f %% lost\n", name,
                writer == Writer::User ? "save" : "end of a playback", 100.0 * counts[InTime] / trials,
                100.0 * counts[Late] / trials, 100.0 * counts[Lost] / trials);
}

} // namespace

int main()
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::puts("Of the writes to a locked data.db in the last three seconds before a begin:");
    for (const Writer writer : {Writer::User, Writer::EndOfPlayback}) {
        for (const qint64 seconds : {1, 2, 3, 10})
            report(qPrintable(u"%1 s"_s.arg(seconds)), 1000 * seconds, writer);
        report("indefinitely", indefinitely, writer);
    }
}
