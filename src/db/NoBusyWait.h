#pragma once

#include "db/FMDatabase.h"

/// In its scope, a call on the connection that finds the file locked fails at once.
class NoBusyWait final
{
    Q_DISABLE_COPY_MOVE(NoBusyWait)

public:
    explicit NoBusyWait(FMDatabase &db) : db(db), interval(db.maxBusyRetryTimeInterval())
    {
        db.setMaxBusyRetryTimeInterval(0);
    }
    ~NoBusyWait() { db.setMaxBusyRetryTimeInterval(interval); }

private:
    FMDatabase &db;
    const double interval;
};
