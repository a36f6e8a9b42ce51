#pragma once

class AppStore;
class AVPlayer;
class Clock;
class HistoryStore;
class HolidayStore;
class PlanStore;

/// The shared objects, created once at start-up and handed to every screen.
struct Environment
{
    AppStore &appStore;
    PlanStore &planStore;
    HolidayStore &holidayStore;
    HistoryStore &historyStore;
    AVPlayer &avPlayer;
    const Clock &clock;
};
