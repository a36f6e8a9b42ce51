#pragma once

#include "platform/ObservableObject.h"
#include "store/Holiday.h"
#include "store/LoadState.h"

#include <QList>

#include <memory>

class FMDatabase;

/// All holidays, in memory for the screens and the scheduler and in the table `holiday`.
///
/// The table is read once. Afterwards each operation writes to it first and changes the list only if that
/// succeeds. Rows read before a failure are listed.
class HolidayStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HolidayStore)

public:
    explicit HolidayStore(std::shared_ptr<FMDatabase> db, QObject *parent = nullptr);

    /// In ascending order of `begin`; holidays with the same begin in the order in which they were added.
    Published<QList<Holiday>> holidays{this};

    /// Whether the editor for a new holiday is shown. Used by the screens alone.
    Published<bool> showHolidayEdit{this, false};

    /// Reads the table into the list. Called by the constructor, and by LoadRetry while the file is locked.
    void loadHolidays();

    /// The result of the last attempt to read the table.
    LoadState loadState() const { return state; }

    /// Stores a new holiday. Returns false, with nothing changed, if the database rejects it.
    bool addHoliday(const Holiday &holiday);

    /// Stores the fields of the holiday with that id; isChecked of the entry in the list is kept. Returns
    /// false, with nothing changed, if the database rejects it.
    bool updateHoliday(const Holiday &holiday);

    /// Deletes the checked holidays. One that the database does not delete stays in the list, checked.
    void deleteCheckedHolidays();

    /// Toggles isChecked of the holiday with that id. In memory only.
    void toggleChecked(const Holiday &holiday);

private:
    std::shared_ptr<FMDatabase> db;
    LoadState state = LoadState::Failed;
};
