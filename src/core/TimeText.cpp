#include "core/TimeText.h"

#include "platform/Clock.h"

#include <QLocale>

#include <cmath>

using namespace Qt::StringLiterals;

QString TimeText::formatDate(const QDateTime &moment, QStringView pattern)
{
    return moment.toLocalTime().toString(pattern);
}

QDateTime TimeText::toDate(const QString &text, QStringView pattern, const Clock &clock)
{
    QDateTime moment = QDateTime::fromString(text, pattern.toString());
    if (moment.isValid())
        return moment;
    // Where daylight saving begins at midnight, a holiday's first day has no 00:00.
    const QDateTime afterGap(moment.date(), moment.time().addSecs(3600));
    return afterGap.isValid() ? afterGap : clock.now();
}

int TimeText::currentWeekday(const Clock &clock)
{
    return clock.now().toLocalTime().date().dayOfWeek() % 7;
}

QString TimeText::formatDuration(double seconds)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(std::fabs(seconds) < limit))
        return u"00:00"_s;
    const auto whole = qint64(seconds);
    return QString::asprintf("%.2lld:%.2lld", whole / 60, whole % 60);
}
