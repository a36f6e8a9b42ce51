#pragma once

class AVPlayer;
class HistoryStore;
class PlanStore;
struct Plan;

/// What happens when the user, and not the timetable, starts or stops a plan.
namespace ManualPlayback {

/// Stops `plan` when it is playing as it stands, else starts it in place of whatever plays. Unlike the
/// scheduler it plays first and finishes the log's current entry before it adds one, and it does not
/// rewind what it stops.
void toggle(const Plan &plan, PlanStore &planStore, HistoryStore &historyStore, AVPlayer &avPlayer);

} // namespace ManualPlayback
