#pragma once

#include <QDateTime>
#include <QString>

class Clock;

/// The texts in which the system holds, stores, compares and shows every date and time.
///
/// The patterns are those of Unicode Technical Standard #35. Every field is zero-padded: texts of one
/// pattern have one length, and sort in the order of time.
namespace TimeText {

inline constexpr QStringView datePattern = u"yyyy-MM-dd";
inline constexpr QStringView minutePattern = u"HH:mm";
inline constexpr QStringView secondPattern = u"HH:mm:ss";
inline constexpr QStringView timestampPattern = u"yyyy-MM-dd HH:mm:ss";

/// The text of `moment` in `pattern`, in local time and with Western digits in every locale.
QString formatDate(const QDateTime &moment, QStringView pattern);

/// The moment that `text` denotes in `pattern`, in local time. A text of another form (a database
/// edited by hand) denotes the current moment of `clock`. A time that summer time skips denotes the
/// same time an hour on.
QDateTime toDate(const QString &text, QStringView pattern, const Clock &clock);

/// Today's weekday: 0 for Sunday … 6 for Saturday.
int currentWeekday(const Clock &clock);

/// A playback position or length in seconds as minutes and seconds: "00:59", "60:00", "125:30".
/// The fraction is cut off. What is not finite or does not fit 64 bits is "00:00".
QString formatDuration(double seconds);

} // namespace TimeText
