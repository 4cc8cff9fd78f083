#include "simulator/interpose/BoardClock.h"

#include "simulator/interpose/Gate.h"

#include <algorithm>
#include <ctime>
#include <string>

namespace sim::board_clock {
namespace {

constexpr Nanoseconds kPerSecond = 1'000'000'000;

Nanoseconds Shown(const Simulation& simulation, int clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE ? simulation.board.WallTime()
                                                                     : simulation.timeline.Now();
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
    result = AsResult(-ReadOn(*gate, clock, nanoseconds));
    return true;
}

int ReadOn(Simulation& simulation, int clock, std::int64_t& nanoseconds) {
    const int error = static_cast<int>(-simulation.kernel.calls.Strike("clock_gettime", ""));
    if (error == 0) {
        simulation.timeline.LooksAtClock();
        nanoseconds = Shown(simulation, clock);
    }
    return error;
}

Nanoseconds Length(Span span) {
    return span.seconds >= kNever / kPerSecond ? kNever
                                               : span.seconds * kPerSecond + span.nanoseconds;
}

Nanoseconds MomentOf(Simulation& simulation, int clock, Span shown) {
    const Nanoseconds length = Length(shown);
    const Nanoseconds now = simulation.timeline.Now();
    return length == kNever ? kNever
                            : now + std::max<Nanoseconds>(length - Shown(simulation, clock), 0);
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
    SleepOn(*gate, clock, absolute, span, rest, error);
    return true;
}

void SleepOn(Simulation& simulation, int clock, bool absolute, Span span, std::int64_t& rest,
             int& error) {
    rest = 0;
    if (span.seconds < 0 || span.nanoseconds < 0 || span.nanoseconds >= kPerSecond) {
        error = EINVAL;
        return;
    }
    const Nanoseconds now = simulation.timeline.Now();
    const Nanoseconds longest = kNever - now;
    const Nanoseconds length =
        std::min(absolute ? MomentOf(simulation, clock, span) - now : Length(span), longest);
    error = static_cast<int>(-simulation.kernel.calls.Admit("nanosleep", ""));
    const Nanoseconds slept = error != 0 ? length / 2 : length;
    simulation.events.Add("sleep", "-", std::to_string(slept / 1'000) + " us");
    simulation.timeline.SleepUntil(length == longest ? kNever : simulation.timeline.Now() + slept,
                                   "the end of its sleep");
    rest = length - slept;
}

} // namespace sim::board_clock
