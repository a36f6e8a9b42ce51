#include "platform/Clock.h"

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTime();
}
