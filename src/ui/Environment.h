#pragma once

class AppStore;
class AVPlayer;
class Clock;
class HistoryStore;
class HolidayStore;
class PlanStore;

/// The shared objects, made once at start-up, that every screen gets: none makes a second one.
struct Environment
{
    AppStore &appStore;
    PlanStore &planStore;
    HolidayStore &holidayStore;
    HistoryStore &historyStore;
    AVPlayer &avPlayer;
    const Clock &clock;
};
