#pragma once

#include <cstdint>

/// The handlers that the simulated program has for signals: what they call goes through the gate,
/// and they never run in the middle of the simulation.
namespace sim::program_signals {

/// The signals that came for the calling thread meanwhile, a bit each; they are still blocked, and
/// from now on forgotten.
std::uint64_t TakeDeferred();

/// The mask that a program asks for, without the signals by which gate and watchdog work.
std::uint64_t Granted(std::uint64_t mask);

} // namespace sim::program_signals
