#pragma once

#include "platform/ObservableObject.h"
#include "store/LoadState.h"
#include "store/Plan.h"

#include <QList>

#include <memory>

class FMDatabase;

/// The timetable: all plans, in memory for the screens and the scheduler and in the table `plan`.
///
/// The table is read once. Afterwards each operation writes to it first and changes the list only if that
/// succeeds. Rows read before a failure are listed.
class PlanStore final : public ObservableObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlanStore)

public:
    explicit PlanStore(std::shared_ptr<FMDatabase> db, QObject *parent = nullptr);

    /// In ascending order of `begin`; plans with the same begin in the order in which they were added.
    Published<QList<Plan>> plans{this};

    /// Whether the editor for a new plan is shown. Used by the screens alone.
    Published<bool> showPlanEdit{this, false};

    /// Reads the table into the list. Called by the constructor, and by LoadRetry while the file is locked.
    void loadPlans();

    /// The result of the last attempt to read the table.
    LoadState loadState() const { return state; }

    /// Stores a new plan. Returns false, with nothing changed, if the database rejects it.
    bool addPlan(const Plan &plan);

    /// Stores the fields of the plan with that id; isChecked and isPlaying of the entry in the list are kept.
    /// Returns false, with nothing changed, if the database rejects it.
    bool updatePlan(const Plan &plan);

    /// Deletes the checked plans. One that the database does not delete stays in the list, checked.
    void deleteCheckedPlans();

    /// Toggles isPlaying of the plan with that id and clears that of all others. In memory only.
    void togglePlaying(const Plan &plan);

    /// Toggles isChecked of the plan with that id. In memory only.
    void toggleChecked(const Plan &plan);

private:
    std::shared_ptr<FMDatabase> db;
    LoadState state = LoadState::Failed;
};
