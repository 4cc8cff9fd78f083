#pragma once

#include <cstdint>

/// The board's clocks and sleeps in plain numbers, for the stand-ins of both kinds of the C
/// library's time records. Each tells whether the calling thread takes part in a simulation.
namespace sim {
class Simulation;
}

namespace sim::board_clock {

/// What the clock shows, in nanoseconds; result is what clock_gettime returns, with errno set.
/// False for the clocks of processor time too, which are this machine's.
bool Read(int clock, std::int64_t& nanoseconds, int& result);

/// The time of day, in nanoseconds since 1970.
bool ReadWall(std::int64_t& nanoseconds);

/// A time record's fields.
struct Span {
    std::int64_t seconds;
    std::int64_t nanoseconds;
};

/// Sleeps for the span or, absolute, until the clock shows it. Error is 0, EINVAL, or that of a
/// fault, which cuts the sleep in half as a signal does; rest, in nanoseconds, is then what is
/// left.
bool Sleep(int clock, bool absolute, Span span, std::int64_t& rest, int& error);

// The same for a thread that is known to take part.
int ReadOn(Simulation& simulation, int clock, std::int64_t& nanoseconds);
void SleepOn(Simulation& simulation, int clock, bool absolute, Span span, std::int64_t& rest,
             int& error);

/// A span in nanoseconds, or for ever when there are too many of them.
std::int64_t Length(Span span);

/// The moment of board time at which a clock shows a time.
std::int64_t MomentOf(Simulation& simulation, int clock, Span shown);

} // namespace sim::board_clock
