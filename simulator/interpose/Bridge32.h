#pragma once

#include <cstdint>

/// The simulation in plain numbers, for the stand-ins that are compiled with another idea of the C
/// library's records than the rest of the simulator (Interpose32.cpp).
namespace sim::bridge {

/// Each tells whether the calling thread takes part in a simulation that answers the call; result
/// is then what the call returns, with errno set.
bool WallOrBoardTime(int clock, std::int64_t& nanoseconds, int& result);
bool SleepFor(std::int64_t nanoseconds, std::int64_t& rest, int& result);
bool Status(const char* path, bool followLinks, unsigned& mode, int& result);
bool Control(int descriptor, unsigned long request, void* argument, int& result);

} // namespace sim::bridge
