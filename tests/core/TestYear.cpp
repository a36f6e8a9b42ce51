#include "core/Scheduler.h"

#include "support/SharedObjects.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <compare>
#include <iterator>
#include <malloc.h>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

#ifdef __SANITIZE_ADDRESS__
// The sanitizer's interface; not every compiler brings its header along.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

constexpr qint64 day = 24 * 3600;
constexpr int stopping = -1;

// In the second `second` since 1970, plan number `plan` was played, or (`stopping`) what plays was stopped.
struct Event
{
    qint64 second;
    int plan;
    auto operator<=>(const Event &) const = default;
};

// A bell of 20 seconds that notes when it is played and stopped.
class Bell final : public AVAudioPlayer
{
public:
    Bell(int plan, const qint64 &now, std::vector<Event> &events) : plan(plan), now(now), events(events) {}

    bool isPlaying() const override { return now < endsAt; }
    double currentTime() const override { return double(now % 20); }
    double duration() const override { return 20; }
    int numberOfLoops() const override { return loops; }
    bool play() override
    {
        events.push_back({now, plan});
        endsAt = now + 20 * (loops + 1);
        return true;
    }
    void stop() override
    {
        events.push_back({now, stopping});
        endsAt = now;
    }
    void setCurrentTime(double) override {}
    void setNumberOfLoops(int count) override { loops = count; }
    void setDelegate(AVAudioPlayerDelegate *) override {}

private:
    const int plan;
    const qint64 &now;
    std::vector<Event> &events;
    qint64 endsAt = 0;
    int loops = 0;
};

// A timetable by chance, kept twice: in the stores, and as numbers to reckon with.
class Timetable final : public SharedObjects
{
public:
    explicit Timetable(QDate firstDay) : SharedObjects("2026-01-01 00:00:00")
    {
        base.run(u"pragma synchronous = off"_s);
        for (int i = 0; i < 60; ++i)
            addPlanByChance();
        for (int i = 0; i < 20; ++i) {
            const QDate begin = firstDay.addDays(i == 0 ? 2 : upTo(365));
            holidays.push_back({begin, begin.addDays(i == 0 ? 0 : upTo(7) - 1)});
            holidayStore.addHoliday({.id = QString::number(i),
                                     .begin = holidays.back()[0].toString(Qt::ISODate),
                                     .end = holidays.back()[1].toString(Qt::ISODate)});
        }
    }

    // All that the seconds from `first` until before `last` call for, by the days and not by the seconds.
    std::vector<Event> due(qint64 first, qint64 last) const
    {
        std::vector<Event> events;
        const auto add = [&](QDate date, int minute, int plan) {
            for (const qint64 second : secondsAt(date, minute)) {
                if (second >= first && second < last)
                    events.push_back({second, plan});
            }
        };
        const auto dateOf = [](qint64 second) { return QDateTime::fromSecsSinceEpoch(second).date(); };
        for (QDate date = dateOf(first); date <= dateOf(last); date = date.addDays(1)) {
            if (isHoliday(date))
                continue;
            for (size_t i = 0; i < plans.size(); ++i) {
                if (plans[i].weekdays >> (date.dayOfWeek() % 7) & 1)
                    add(date, plans[i].begin, int(i));
                add(date, plans[i].end, stopping);
            }
        }
        std::sort(events.begin(), events.end());
        // Before the first begin there is nothing to stop.
        events.erase(events.begin(), std::find_if(events.begin(), events.end(),
                                                  [](const Event &event) { return event.plan != stopping; }));
        return events;
    }

    qint64 now = 0;
    std::vector<Event> events;
    AVPlayer bells{[this](const QString &path, QString &) {
                       return std::make_unique<Bell>(QFileInfo(path).baseName().toInt(), now, events);
                   },
                   resources};
    Scheduler scheduler{clock, planStore, holidayStore, historyStore, bells};

private:
    struct Times
    {
        int begin; // in minutes
        int end;
        int weekdays; // a bit for each, from Sunday on
    };

    int upTo(int limit) { return int(random() % unsigned(limit)); }

    // Five-minute steps let begins and ends coincide now and then.
    void addPlanByChance()
    {
        const int begin = 5 * upTo(288);
        const Times times{begin, (begin + 5 * (1 + upTo(20))) % 1440, upTo(128)};
        const auto text = [](int minute) { return QTime(0, 0).addSecs(60 * minute).toString(u"HH:mm"_s); };
        QString days;
        for (int i = 0; i < 7; ++i) {
            if (times.weekdays >> i & 1)
                days += QString::number(i);
        }
        Plan plan = addPlan(QString::number(plans.size()), text(times.begin), text(times.end), days);
        plan.isLoop = upTo(3) == 0;
        planStore.updatePlan(plan);
        plans.push_back(times);
    }

    bool isHoliday(QDate date) const
    {
        return std::any_of(holidays.begin(), holidays.end(),
                           [date](const auto &holiday) { return date >= holiday[0] && date <= holiday[1]; });
    }

    // Central European summer time skips an hour of one night and repeats an hour of another.
    static std::vector<qint64> secondsAt(QDate date, int minute)
    {
        static const auto summer = QDateTime(QDate(2026, 3, 29), QTime(1, 0), Qt::UTC).toSecsSinceEpoch();
        static const auto winter = QDateTime(QDate(2026, 10, 25), QTime(1, 0), Qt::UTC).toSecsSinceEpoch();
        std::vector<qint64> seconds;
        for (const int offset : {7200, 3600}) {
            const qint64 second = QDate(1970, 1, 1).daysTo(date) * day + minute * 60 - offset;
            if ((second >= summer && second < winter) == (offset == 7200))
                seconds.push_back(second);
        }
        return seconds;
    }

    std::minstd_rand random{1};
    std::vector<Times> plans;
    std::vector<std::array<QDate, 2>> holidays;
};

size_t memoryInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

} // namespace

class TestYear final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Every begin and end that the timetable calls for happens exactly once, and no other does.
    void everyBellRingsOnce()
    {
        const bool isLong = qEnvironmentVariableIsSet("BELFRY_LONG");
        const QDate firstDay = isLong ? QDate(2026, 1, 1) : QDate(2026, 3, 28);
        const qint64 first = QDateTime(firstDay, QTime(0, 0)).toSecsSinceEpoch();
        const qint64 last = first + (isLong ? 365 : 3) * day;
        Timetable timetable(firstDay);
        const std::vector<Event> due = timetable.due(first, last);
        timetable.events.reserve(2 * due.size());
        size_t early = 0;
        for (timetable.now = first; timetable.now < last; ++timetable.now) {
            timetable.clock = SetClock(QDateTime::fromSecsSinceEpoch(timetable.now));
            timetable.scheduler.tick();
            if (timetable.now == first + (last - first) / 6)
                early = memoryInUse();
        }
        QVERIFY(memoryInUse() < early + 100'000);
        QVERIFY(timetable.historyStore.historys->size() <= timetable.planStore.plans->size());

        QVERIFY(due.size() > (isLong ? 20'000 : 100));
        std::sort(timetable.events.begin(), timetable.events.end());
        std::vector<Event> wrong;
        std::set_symmetric_difference(due.begin(), due.end(), timetable.events.begin(),
                                      timetable.events.end(), std::back_inserter(wrong));
        if (!wrong.empty())
            QFAIL(qPrintable(u"%1 in all, such as %2 of plan %3"_s.arg(wrong.size())
                                 .arg(QDateTime::fromSecsSinceEpoch(wrong[0].second).toString(Qt::ISODate))
                                 .arg(wrong[0].plan)));
    }
};

QTEST_GUILESS_MAIN(TestYear)
#include "TestYear.moc"
