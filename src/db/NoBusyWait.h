#pragma once

#include "db/FMDatabase.h"

/// While it lives, no call on the connection waits for a locked file: it fails at once.
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
