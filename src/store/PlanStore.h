#pragma once

#include "platform/ObservableObject.h"
#include "store/LoadState.h"
#include "store/Plan.h"

#include <QList>

#include <memory>

class FMDatabase;

/// The timetable: all plans, in memory for the screens and the scheduler and in the table `plan`.
///
/// The table is read once. Afterwards each operation writes it first and changes the list only when that
/// succeeded. A database that cannot be read leaves the list empty.
class PlanStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlanStore)

public:
    explicit PlanStore(std::shared_ptr<FMDatabase> db, QObject *parent = nullptr);

    /// In ascending order of `begin`; plans of equal begin in the order in which they were added.
    Published<QList<Plan>> plans{this};

    /// The editor for a new plan is shown. Belongs to the screens.
    Published<bool> showPlanEdit{this, false};

    /// Reads the table into the list: at creation, and once a second from then on while the file is locked
    /// (see LoadRetry).
    void loadPlans();

    /// What became of the last attempt to read the table.
    LoadState loadState() const { return state; }

    /// Stores a new plan. Returns false, with nothing changed, when the database refuses it.
    bool addPlan(const Plan &plan);

    /// Stores the fields of the plan with that id; the marks of the entry in the list stay. Returns
    /// false, with nothing changed, when the database refuses it.
    bool updatePlan(const Plan &plan);

    /// Deletes the checked plans. One that the database refuses to delete stays, checked.
    void deleteCheckedPlans();

    /// Inverts the playing mark of the plan with that id and clears every other one. Memory only.
    void togglePlaying(const Plan &plan);

    /// Inverts the check of the plan with that id. Memory only.
    void toggleChecked(const Plan &plan);

private:
    std::shared_ptr<FMDatabase> db;
    LoadState state = LoadState::Failed;
};
