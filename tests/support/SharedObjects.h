#pragma once

#include "core/AVPlayer.h"
#include "platform/Resources.h"
#include "store/HistoryStore.h"
#include "store/HolidayStore.h"
#include "store/NewId.h"
#include "store/PlanStore.h"
#include "support/FakeClock.h"
#include "support/FakePlayer.h"
#include "support/TemplateDatabase.h"

/// What the parts of one program share: an empty database, a clock that stands, players that make no sound.
struct SharedObjects
{
    /// The clock stands at `now`, of any kind that a FakeClock takes.
    template<typename Moment>
    explicit SharedObjects(const Moment &now) : clock(now)
    {}

    /// A plan in the list, with a file of the name of its title; `days` are the numbers of its weekdays.
    Plan addPlan(const QString &title, const QString &begin = QStringLiteral("08:00"),
                 const QString &end = QStringLiteral("09:30"), const QString &days = QStringLiteral("12345"))
    {
        Plan plan{.id = newId(), .title = title, .begin = begin, .end = end};
        plan.music = title + QStringLiteral(".ogg");
        plan.content = folder.filePath(plan.music);
        QFile(plan.content).open(QIODevice::WriteOnly);
        for (const QChar day : days)
            plan.*planWeekdays[size_t(day.digitValue())] = true;
        planStore.addPlan(plan);
        return plan;
    }

    /// The log in the order in which it was written: "Morning 08:00:00 - 08:30:00".
    QStringList log() const
    {
        return base.rows(QStringLiteral(
            "select title || ' ' || substr(begin, 12) || ' - ' || coalesce(substr(end, 12), '')"
            " from history order by rowid"));
    }

    const QTemporaryDir folder;
    const Resources resources{folder.path()};
    const TemplateDatabase base;
    FakeClock clock;
    FakePlayerFactory players;
    PlanStore planStore{base.db};
    HolidayStore holidayStore{base.db};
    HistoryStore historyStore{base.db, clock};
    AVPlayer avPlayer{players, resources};
};
