#pragma once

#include "platform/ObservableObject.h"
#include "store/History.h"
#include "store/LoadState.h"

#include <QList>

#include <memory>

class Clock;
class FMDatabase;

/// The log of today's playbacks, in memory for the screens and in the table `history`.
///
/// Around one playback the callers use addHistory() when it starts, deleteOldHistory() right after it,
/// and finishHistory() when it stops. The table is read once; a failed write leaves the list as it was.
class HistoryStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HistoryStore)

public:
    HistoryStore(std::shared_ptr<FMDatabase> db, const Clock &clock, QObject *parent = nullptr);

    /// Newest first; entries of one second in the order in which they were added.
    Published<QList<History>> historys{this};

    /// The id of the entry of the playback in progress; empty when there is none.
    Published<QString> curId{this};

    /// Reads the table into the list: at creation, and once a second from then on while the file is locked
    /// (see LoadRetry).
    void loadHistory();

    /// What became of the last attempt to read the table.
    LoadState loadState() const { return state; }

    /// Starts an entry that begins now and makes it the current one. The entry before it is not
    /// finished. When the database refuses it, `curId` names no entry.
    void addHistory(const QString &title);

    /// Ends the current entry now; does nothing when there is none.
    void finishHistory();

    /// Deletes all entries that did not begin today.
    void deleteOldHistory();

    /// Deletes the checked entries. One that the database refuses to delete stays, checked.
    void deleteCheckedHistory();

    /// Inverts the check of the entry with that id. Memory only.
    void toggleChecked(const History &history);

private:
    std::shared_ptr<FMDatabase> db;
    LoadState state = LoadState::Failed;
    const Clock &clock;
};
