#pragma once

#include <QDateTime>
#include <QString>

class Clock;

/// The text forms in which every date and time is kept, stored, compared and shown.
///
/// The patterns are those of QDateTime::toString(). Fields are zero-padded, so texts of the same
/// pattern have the same length and sort chronologically.
namespace TimeText {

inline constexpr QStringView datePattern = u"yyyy-MM-dd";
inline constexpr QStringView minutePattern = u"HH:mm";
inline constexpr QStringView secondPattern = u"HH:mm:ss";
inline constexpr QStringView timestampPattern = u"yyyy-MM-dd HH:mm:ss";

/// `moment` formatted with `pattern`, in local time and with Western digits in every locale.
QString formatDate(const QDateTime &moment, QStringView pattern);

/// `text` parsed with `pattern`, in local time. Text of another form (a database edited by hand) gives the
/// current time of `clock`; a time that daylight saving skips gives the time an hour later.
QDateTime toDate(const QString &text, QStringView pattern, const Clock &clock);

/// Today's weekday: 0 for Sunday … 6 for Saturday.
int currentWeekday(const Clock &clock);

/// A position or duration in seconds as minutes and seconds: "00:59", "60:00", "125:30". Fractions are
/// truncated. A value that is not finite or exceeds 64 bits gives "00:00".
QString formatDuration(double seconds);

} // namespace TimeText
