#pragma once

#include <QHash>
#include <QString>

#include <array>

/// One entry of the weekly timetable: what to play, at which times of day, on which weekdays.
struct Plan
{
    bool isChecked = false; ///< Selected in edit mode; in memory only.
    bool isPlaying = false; ///< It is being played; in memory only.
    QString id;             ///< A UUID in upper case; never changes.
    QString title;
    QString begin;        ///< "HH:mm"
    QString end;          ///< "HH:mm"
    QString music;        ///< File name of the audio file, as the card shows it.
    QString content;      ///< What is played: the path of the audio file, or the name of a resource.
    bool isLoop = false;  ///< Whether the file is repeated.
    bool isMusic = false; ///< Only chooses the label and the icon of the file in the editor.
    bool week0 = false;   ///< Sunday
    bool week1 = false;
    bool week2 = false;
    bool week3 = false;
    bool week4 = false;
    bool week5 = false;
    bool week6 = false; ///< Saturday

    bool operator==(const Plan &) const = default;
};

/// The weekday flags by weekday, 0 for Sunday … 6 for Saturday.
inline constexpr std::array<bool Plan::*, 7> planWeekdays{
    &Plan::week0, &Plan::week1, &Plan::week2, &Plan::week3, &Plan::week4, &Plan::week5, &Plan::week6};

inline size_t qHash(const Plan &plan, size_t seed = 0)
{
    return qHashMulti(seed, plan.isChecked, plan.isPlaying, plan.id, plan.title, plan.begin, plan.end,
                      plan.music, plan.content, plan.isLoop, plan.isMusic, plan.week0, plan.week1, plan.week2,
                      plan.week3, plan.week4, plan.week5, plan.week6);
}
