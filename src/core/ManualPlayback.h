#pragma once

class AVPlayer;
class HistoryStore;
class PlanStore;
struct Plan;

/// Playback started or stopped by the user, not by the timetable.
namespace ManualPlayback {

/// Stops playback if `plan.isPlaying`, else plays `plan` instead of whatever is playing. Unlike the
/// scheduler, it plays first, finishes the current history entry before adding one, and does not rewind what
/// it stops.
void toggle(const Plan &plan, PlanStore &planStore, HistoryStore &historyStore, AVPlayer &avPlayer);

} // namespace ManualPlayback
