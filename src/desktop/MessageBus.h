#pragma once

/// The D-Bus message buses of the user's session and of the system.
namespace MessageBus {

/// Whether the session has a bus, responsive or not. False once it has been disabled.
bool hasSession();

/// Disables a bus that is there but does not respond, for this program: sets the environment variable with
/// its address, and logs that. Blocks for two seconds at most. To be called before anything uses D-Bus, Qt
/// included.
void disableUnresponsive();

} // namespace MessageBus
