#pragma once

#include <QHash>
#include <QString>

/// A named period of whole days in which the timetable is suspended.
struct Holiday
{
    bool isChecked = false; ///< Selected in edit mode; in memory only.
    QString id;             ///< A UUID in upper case; never changes.
    QString title;
    QString begin; ///< The first day, "yyyy-MM-dd".
    QString end;   ///< The last day, "yyyy-MM-dd".

    bool operator==(const Holiday &) const = default;
};

inline size_t qHash(const Holiday &holiday, size_t seed = 0)
{
    return qHashMulti(seed, holiday.isChecked, holiday.id, holiday.title, holiday.begin, holiday.end);
}
