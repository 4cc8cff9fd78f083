#pragma once

namespace sim::watchdog {

/// From now on the run ends when the program works for 5 s of processor time without any call: it
/// spins on what nobody can change while it does.
void Begin();

/// The program has made a call.
void CallMade();

} // namespace sim::watchdog
