// Stands in for the C library's clocks and sleeps: they run on board time.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <ctime>
#include <sys/time.h>
#include <unistd.h>

namespace {

using sim::AsResult;
using sim::Gate;
using sim::Nanoseconds;

constexpr Nanoseconds kPerSecond = 1'000'000'000;

timespec AsTimespec(Nanoseconds time) {
    return {static_cast<time_t>(time / kPerSecond), static_cast<long>(time % kPerSecond)};
}

Nanoseconds AsNanoseconds(const timespec& time) {
    return static_cast<Nanoseconds>(time.tv_sec) * kPerSecond + time.tv_nsec;
}

bool IsSpan(const timespec& span) {
    return span.tv_sec >= 0 && span.tv_nsec >= 0 && span.tv_nsec < kPerSecond;
}

/// Sleeps on the board; a fault cuts the sleep in half and tells the rest, as a signal does.
int SleepOnBoard(Gate& gate, Nanoseconds span, timespec* rest) {
    const long error = gate->kernel.calls.Admit("nanosleep", "");
    const Nanoseconds slept = error != 0 ? span / 2 : span;
    gate->events.Add("sleep", "-", std::to_string(slept / 1'000) + " us");
    gate->timeline.SleepUntil(gate->timeline.Now() + slept, "the end of its sleep");
    if (error != 0 && rest != nullptr) {
        *rest = AsTimespec(span - slept);
    }
    return static_cast<int>(-error);
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock != CLOCK_PROCESS_CPUTIME_ID && clock != CLOCK_THREAD_CPUTIME_ID) {
        if (Gate gate; gate) {
            if (const long error = gate->kernel.calls.Strike("clock_gettime", ""); error != 0) {
                return AsResult(error);
            }
            gate->timeline.LooksAtClock();
            *time = AsTimespec(clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE
                                   ? gate->board.WallTime()
                                   : gate->timeline.Now());
            return 0;
        }
    }
    return SIM_REAL(clock_gettime)(clock, time);
}

int gettimeofday(timeval* time, void* zone) noexcept {
    if (Gate gate; gate) {
        gate->timeline.LooksAtClock();
        const timespec wall = AsTimespec(gate->board.WallTime());
        *time = {wall.tv_sec, wall.tv_nsec / 1'000};
        return 0;
    }
    return SIM_REAL(gettimeofday)(time, zone);
}

time_t time(time_t* result) noexcept {
    if (Gate gate; gate) {
        gate->timeline.LooksAtClock();
        const time_t wall = AsTimespec(gate->board.WallTime()).tv_sec;
        if (result != nullptr) {
            *result = wall;
        }
        return wall;
    }
    return SIM_REAL(time)(result);
}

clock_t clock() noexcept {
    if (Gate gate; gate) {
        gate->timeline.Work(sim::Microseconds(1));
        return static_cast<clock_t>(gate->timeline.Now() / 1'000);
    }
    return SIM_REAL(clock)();
}

int nanosleep(const timespec* span, timespec* rest) {
    if (Gate gate; gate) {
        if (!IsSpan(*span)) {
            return AsResult(-EINVAL);
        }
        return AsResult(-SleepOnBoard(gate, AsNanoseconds(*span), rest));
    }
    return SIM_REAL(nanosleep)(span, rest);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* span, timespec* rest) {
    if (Gate gate; gate) {
        if (!IsSpan(*span)) {
            return EINVAL;
        }
        Nanoseconds length = AsNanoseconds(*span);
        if ((flags & TIMER_ABSTIME) != 0) {
            length -= clock == CLOCK_REALTIME ? gate->board.WallTime() : gate->timeline.Now();
        }
        return SleepOnBoard(gate, length > 0 ? length : 0, rest);
    }
    return SIM_REAL(clock_nanosleep)(clock, flags, span, rest);
}

int usleep(useconds_t span) {
    if (Gate gate; gate) {
        return AsResult(-SleepOnBoard(gate, sim::Microseconds(span), nullptr));
    }
    return SIM_REAL(usleep)(span);
}

unsigned sleep(unsigned span) {
    if (Gate gate; gate) {
        SleepOnBoard(gate, sim::Seconds(span), nullptr);
        return 0;
    }
    return SIM_REAL(sleep)(span);
}

} // extern "C"
