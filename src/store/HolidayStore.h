#pragma once

#include "platform/ObservableObject.h"
#include "store/Holiday.h"
#include "store/LoadState.h"

#include <QList>

#include <memory>

class FMDatabase;

/// All holidays, in memory for the screens and the scheduler and in the table `holiday`.
///
/// The table is read once. Afterwards each operation writes it first and changes the list only when that
/// succeeded. A database that cannot be read leaves the list empty.
class HolidayStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HolidayStore)

public:
    explicit HolidayStore(std::shared_ptr<FMDatabase> db, QObject *parent = nullptr);

    /// In ascending order of `begin`; holidays of equal begin in the order in which they were added.
    Published<QList<Holiday>> holidays{this};

    /// The editor for a new holiday is shown. Belongs to the screens.
    Published<bool> showHolidayEdit{this, false};

    /// Reads the table into the list: at creation, and once a second from then on while the file is locked
    /// (see LoadRetry).
    void loadHolidays();

    /// What became of the last attempt to read the table.
    LoadState loadState() const { return state; }

    /// Stores a new holiday. Returns false, with nothing changed, when the database refuses it.
    bool addHoliday(const Holiday &holiday);

    /// Stores the fields of the holiday with that id; the check of the entry in the list stays. Returns
    /// false, with nothing changed, when the database refuses it.
    bool updateHoliday(const Holiday &holiday);

    /// Deletes the checked holidays. One that the database refuses to delete stays, checked.
    void deleteCheckedHolidays();

    /// Inverts the check of the holiday with that id. Memory only.
    void toggleChecked(const Holiday &holiday);

private:
    std::shared_ptr<FMDatabase> db;
    LoadState state = LoadState::Failed;
};
