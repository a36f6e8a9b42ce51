#pragma once

#include "platform/ObservableObject.h"
#include "store/History.h"
#include "store/LoadState.h"

#include <QList>

#include <memory>

class Clock;
class FMDatabase;

/// The log of playbacks, in memory for the screens and in the table `history`. Those of earlier days are
/// deleted at the first playback of a day.
///
/// For each playback, call addHistory() when it starts, deleteOldHistory() right after that, and
/// finishHistory() when it stops. The table is read once; a failed write leaves the list as it was.
class HistoryStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HistoryStore)

public:
    HistoryStore(std::shared_ptr<FMDatabase> db, const Clock &clock, QObject *parent = nullptr);

    /// Newest first; entries of the same second in the order in which they were added.
    Published<QList<History>> historys{this};

    /// The id of the entry of the playback in progress; empty if there is none.
    Published<QString> curId{this};

    /// Reads the table into the list. Called by the constructor, and by LoadRetry while the file is locked.
    void loadHistory();

    /// The result of the last attempt to read the table.
    LoadState loadState() const { return state; }

    /// Adds an entry that begins now and makes it the current one; the previous one is not finished. If the
    /// database rejects it, `curId` is the id of no entry.
    void addHistory(const QString &title);

    /// Sets the end of the current entry to now; does nothing if there is none.
    void finishHistory();

    /// Deletes all entries that did not begin today.
    void deleteOldHistory();

    /// Deletes the checked entries. One that the database does not delete stays in the list, checked.
    void deleteCheckedHistory();

    /// Toggles isChecked of the entry with that id. In memory only.
    void toggleChecked(const History &history);

private:
    std::shared_ptr<FMDatabase> db;
    LoadState state = LoadState::Failed;
    const Clock &clock;
};
