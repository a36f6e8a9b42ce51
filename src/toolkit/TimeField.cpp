#include "toolkit/TimeField.h"

#include "core/TimeText.h"
#include "platform/Clock.h"

TimeField::TimeField(const QString &text, const Clock &clock, QWidget *parent) : DateTimeField(parent)
{
    setLocale(QLocale::c());
    setDisplayFormat(TimeText::minutePattern.toString());
    setWrapping(true);
    const QTime time = QTime::fromString(text, TimeText::minutePattern.toString());
    setTime(time.isValid() ? time : clock.now().toLocalTime().time());
}

QString TimeField::minuteText() const
{
    return time().toString(TimeText::minutePattern);
}
