#pragma once

#include <QHash>
#include <QString>

/// One playback in the history.
struct History
{
    bool isChecked = false; ///< Selected in edit mode; in memory only.
    QString id;             ///< A UUID in upper case.
    QString title;          ///< The title of the plan that was played.
    QString begin;          ///< "yyyy-MM-dd HH:mm:ss"
    QString end;            ///< The same, or "------" until the playback is finished.

    bool operator==(const History &) const = default;
};

inline size_t qHash(const History &history, size_t seed = 0)
{
    return qHashMulti(seed, history.isChecked, history.id, history.title, history.begin, history.end);
}
