#include "simulator/interpose/BoardClock.h"

#include "simulator/interpose/Gate.h"

#include <algorithm>
#include <ctime>
#include <string>

namespace sim::board_clock {
namespace {

constexpr Nanoseconds kPerSecond = 1'000'000'000;

Nanoseconds Shown(Gate& gate, int clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE ? gate->board.WallTime()
                                                                     : gate->timeline.Now();
}

} // namespace

bool Read(int clock, std::int64_t& nanoseconds, int& result) {
    if (clock == CLOCK_PROCESS_CPUTIME_ID || clock == CLOCK_THREAD_CPUTIME_ID) {
        return false;
    }
    Gate gate;
    if (!gate) {
        return false;
    }
    result = AsResult(gate->kernel.calls.Strike("clock_gettime", ""));
    if (result == 0) {
        gate->timeline.LooksAtClock();
        nanoseconds = Shown(gate, clock);
    }
    return true;
}

bool ReadWall(std::int64_t& nanoseconds) {
    Gate gate;
    if (!gate) {
        return false;
    }
    gate->timeline.LooksAtClock();
    nanoseconds = gate->board.WallTime();
    return true;
}

bool Sleep(int clock, bool absolute, Span span, std::int64_t& rest, int& error) {
    Gate gate;
    if (!gate) {
        return false;
    }
    rest = 0;
    if (span.seconds < 0 || span.nanoseconds < 0 || span.nanoseconds >= kPerSecond) {
        error = EINVAL;
        return true;
    }
    Nanoseconds length = span.seconds * kPerSecond + span.nanoseconds;
    if (absolute) {
        length = std::max<Nanoseconds>(length - Shown(gate, clock), 0);
    }
    error = static_cast<int>(-gate->kernel.calls.Admit("nanosleep", ""));
    const Nanoseconds slept = error != 0 ? length / 2 : length;
    gate->events.Add("sleep", "-", std::to_string(slept / 1'000) + " us");
    gate->timeline.SleepUntil(gate->timeline.Now() + slept, "the end of its sleep");
    rest = length - slept;
    return true;
}

} // namespace sim::board_clock
