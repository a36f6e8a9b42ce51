#pragma once

#include <QHash>
#include <QString>

/// One playback in the log.
struct History
{
    bool isChecked = false; ///< Selected in edit mode; memory only.
    QString id;             ///< A UUID in upper case.
    QString title;          ///< The title of the plan that was played.
    QString begin;          ///< "yyyy-MM-dd HH:mm:ss"
    QString end;            ///< The same, or "------" while the playback has not been finished.

    bool operator==(const History &) const = default;
};

inline size_t qHash(const History &history, size_t seed = 0)
{
    return qHashMulti(seed, history.isChecked, history.id, history.title, history.begin, history.end);
}
