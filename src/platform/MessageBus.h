#pragma once

/// The D-Bus message buses: that of the user's session and that of the machine.
namespace MessageBus {

/// Has this program do without a bus that takes connections and does not answer: the D-Bus library would wait
/// for it, and hold the start, for 25 seconds. Waits for two seconds at the most, and logs what it gives up.
/// To be called before anything uses D-Bus, Qt included. Returns whether the session has a bus, be it frozen
/// or dead.
bool passOverFrozen();

} // namespace MessageBus
