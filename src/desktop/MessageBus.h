#pragma once

/// The D-Bus message buses: that of the user's session and that of the machine.
namespace MessageBus {

/// Whether the session has a bus, be it unresponsive or dead. False once it has been disabled.
bool hasSession();

/// Makes this program do without a bus that accepts connections and does not respond, by the variables that
/// name its address. Blocks for two seconds at most, and logs what it disables. To be called before anything
/// uses D-Bus, Qt included.
void disableUnresponsive();

} // namespace MessageBus
