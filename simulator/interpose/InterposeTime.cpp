// Stands in for the C library's clocks and sleeps: they run on board time.

#include "simulator/interpose/BoardClock.h"
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
namespace board_clock = sim::board_clock;

constexpr Nanoseconds kPerSecond = 1'000'000'000;

timespec AsTimespec(Nanoseconds time) {
    return {static_cast<time_t>(time / kPerSecond), static_cast<long>(time % kPerSecond)};
}

board_clock::Span AsSpan(const timespec& span) {
    return {span.tv_sec, span.tv_nsec};
}

void TellRest(Nanoseconds left, int error, timespec* rest) {
    if (error != 0 && error != EINVAL && rest != nullptr) {
        *rest = AsTimespec(left);
    }
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    Nanoseconds shown = 0;
    int result = 0;
    if (!board_clock::Read(clock, shown, result)) {
        return SIM_REAL(clock_gettime)(clock, time);
    }
    if (result == 0) {
        *time = AsTimespec(shown);
    }
    return result;
}

int gettimeofday(timeval* time, void* zone) noexcept {
    Nanoseconds shown = 0;
    if (!board_clock::ReadWall(shown)) {
        return SIM_REAL(gettimeofday)(time, zone);
    }
    const timespec wall = AsTimespec(shown);
    *time = {wall.tv_sec, wall.tv_nsec / 1'000};
    return 0;
}

time_t time(time_t* result) noexcept {
    Nanoseconds shown = 0;
    if (!board_clock::ReadWall(shown)) {
        return SIM_REAL(time)(result);
    }
    const time_t wall = AsTimespec(shown).tv_sec;
    if (result != nullptr) {
        *result = wall;
    }
    return wall;
}

clock_t clock() noexcept {
    if (Gate gate; gate) {
        gate->timeline.Work(sim::Microseconds(1));
        return static_cast<clock_t>(gate->timeline.Now() / 1'000);
    }
    return SIM_REAL(clock)();
}

int nanosleep(const timespec* span, timespec* rest) {
    Nanoseconds left = 0;
    int error = 0;
    if (!board_clock::Sleep(CLOCK_MONOTONIC, false, AsSpan(*span), left, error)) {
        return SIM_REAL(nanosleep)(span, rest);
    }
    TellRest(left, error, rest);
    return AsResult(-error);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* span, timespec* rest) {
    Nanoseconds left = 0;
    int error = 0;
    if (!board_clock::Sleep(clock, (flags & TIMER_ABSTIME) != 0, AsSpan(*span), left, error)) {
        return SIM_REAL(clock_nanosleep)(clock, flags, span, rest);
    }
    TellRest(left, error, rest);
    return error;
}

int usleep(useconds_t span) {
    constexpr useconds_t perSecond = 1'000'000;
    Nanoseconds left = 0;
    int error = 0;
    if (!board_clock::Sleep(CLOCK_MONOTONIC, false, {span / perSecond, span % perSecond * 1'000L},
                            left, error)) {
        return SIM_REAL(usleep)(span);
    }
    return AsResult(-error);
}

unsigned sleep(unsigned span) {
    Nanoseconds left = 0;
    int error = 0;
    if (!board_clock::Sleep(CLOCK_MONOTONIC, false, {span, 0}, left, error)) {
        return SIM_REAL(sleep)(span);
    }
    return 0;
}

} // extern "C"
