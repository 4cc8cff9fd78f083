// Stands in for the C library's clocks and sleeps: they run on board time.

#include "simulator/libc/Real.h"
#include "simulator/run/Simulation.h"
#include "simulator/scenario/ErrnoNames.h"

#include <cerrno>
#include <ctime>
#include <sys/time.h>
#include <unistd.h>

namespace {

using sim::asResult;
using sim::Gate;
using sim::Nanoseconds;

constexpr Nanoseconds perSecond = 1'000'000'000;

timespec asTimespec(Nanoseconds time) {
    return {static_cast<time_t>(time / perSecond), static_cast<long>(time % perSecond)};
}

Nanoseconds asNanoseconds(const timespec& time) {
    return static_cast<Nanoseconds>(time.tv_sec) * perSecond + time.tv_nsec;
}

bool isSpan(const timespec& span) {
    return span.tv_sec >= 0 && span.tv_nsec >= 0 && span.tv_nsec < perSecond;
}

/// Sleeps on the board; a fault cuts the sleep in half and tells the rest, as a signal does.
int sleepOnBoard(Gate& gate, Nanoseconds span, timespec* rest) {
    const long error = gate->kernel.enter("nanosleep", "");
    const Nanoseconds slept = error != 0 ? span / 2 : span;
    gate->events.add("sleep", "-", std::to_string(slept / 1'000) + " us");
    gate->timeline.sleepUntil(gate->timeline.now() + slept, "the end of its sleep");
    if (error != 0 && rest != nullptr) {
        *rest = asTimespec(span - slept);
    }
    return static_cast<int>(-error);
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock != CLOCK_PROCESS_CPUTIME_ID && clock != CLOCK_THREAD_CPUTIME_ID) {
        if (Gate gate; gate) {
            if (const int error =
                    gate->faults.meet("clock_gettime", "").value_or(sim::Faults::Hit{}).error;
                error != 0) {
                gate->events.add("clock_gettime", "-", sim::errnoName(error));
                return static_cast<int>(asResult(-error));
            }
            gate->timeline.looksAtClock();
            *time = asTimespec(clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE
                                   ? gate->board.wallTime()
                                   : gate->timeline.now());
            return 0;
        }
    }
    return SIM_REAL(clock_gettime)(clock, time);
}

int gettimeofday(timeval* time, void* zone) noexcept {
    if (Gate gate; gate) {
        gate->timeline.looksAtClock();
        const timespec wall = asTimespec(gate->board.wallTime());
        *time = {wall.tv_sec, wall.tv_nsec / 1'000};
        return 0;
    }
    return SIM_REAL(gettimeofday)(time, zone);
}

time_t time(time_t* result) noexcept {
    if (Gate gate; gate) {
        gate->timeline.looksAtClock();
        const time_t wall = asTimespec(gate->board.wallTime()).tv_sec;
        if (result != nullptr) {
            *result = wall;
        }
        return wall;
    }
    return SIM_REAL(time)(result);
}

clock_t clock() noexcept {
    if (Gate gate; gate) {
        gate->timeline.work(sim::microseconds(1));
        return static_cast<clock_t>(gate->timeline.now() / 1'000);
    }
    return SIM_REAL(clock)();
}

int nanosleep(const timespec* span, timespec* rest) {
    if (Gate gate; gate) {
        if (!isSpan(*span)) {
            return static_cast<int>(asResult(-EINVAL));
        }
        const int error = sleepOnBoard(gate, asNanoseconds(*span), rest);
        return static_cast<int>(asResult(-error));
    }
    return SIM_REAL(nanosleep)(span, rest);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* span, timespec* rest) {
    if (Gate gate; gate) {
        if (!isSpan(*span)) {
            return EINVAL;
        }
        Nanoseconds length = asNanoseconds(*span);
        if ((flags & TIMER_ABSTIME) != 0) {
            length -= clock == CLOCK_REALTIME ? gate->board.wallTime() : gate->timeline.now();
        }
        return sleepOnBoard(gate, length > 0 ? length : 0, rest);
    }
    return SIM_REAL(clock_nanosleep)(clock, flags, span, rest);
}

int usleep(useconds_t span) {
    if (Gate gate; gate) {
        return static_cast<int>(asResult(-sleepOnBoard(gate, sim::microseconds(span), nullptr)));
    }
    return SIM_REAL(usleep)(span);
}

unsigned sleep(unsigned span) {
    if (Gate gate; gate) {
        sleepOnBoard(gate, sim::seconds(span), nullptr);
        return 0;
    }
    return SIM_REAL(sleep)(span);
}

} // extern "C"
