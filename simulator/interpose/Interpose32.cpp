// On a 32-bit machine a program with 64-bit times calls other symbols of the C library than one
// without. Compiled with those times, so that the headers give each definition below its other
// symbol.

#include "simulator/interpose/BoardClock.h"
#include "simulator/interpose/Bridge32.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/time.h>

namespace {

using sim::bridge::FileStatus;
namespace board_clock = sim::board_clock;

constexpr std::int64_t kPerSecond = 1'000'000'000;

template <typename Function>
Function Next(const char* symbol) {
    void* address = dlsym(RTLD_NEXT, symbol);
    if (address == nullptr) {
        std::abort();
    }
    return reinterpret_cast<Function>(address);
}

timespec AsTimespec(std::int64_t nanoseconds) {
    timespec time{};
    time.tv_sec = nanoseconds / kPerSecond;
    time.tv_nsec = static_cast<long>(nanoseconds % kPerSecond);
    return time;
}

void TellRest(std::int64_t left, int error, timespec* rest) {
    if (error != 0 && error != EINVAL && rest != nullptr) {
        *rest = AsTimespec(left);
    }
}

int Fill(struct stat* result, const FileStatus& status, int outcome) {
    if (outcome == 0) {
        *result = {};
        result->st_mode = status.mode;
        result->st_nlink = 1;
        result->st_size = status.size;
    }
    return outcome;
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    std::int64_t shown = 0;
    int result = 0;
    if (!board_clock::Read(clock, shown, result)) {
        return Next<decltype(&clock_gettime)>("__clock_gettime64")(clock, time);
    }
    if (result == 0) {
        *time = AsTimespec(shown);
    }
    return result;
}

int gettimeofday(timeval* time, void* zone) noexcept {
    std::int64_t shown = 0;
    if (!board_clock::ReadWall(shown)) {
        return Next<decltype(&gettimeofday)>("__gettimeofday64")(time, zone);
    }
    time->tv_sec = shown / kPerSecond;
    time->tv_usec = static_cast<long>(shown % kPerSecond / 1'000);
    return 0;
}

time_t time(time_t* result) noexcept {
    std::int64_t shown = 0;
    if (!board_clock::ReadWall(shown)) {
        return Next<decltype(&time)>("__time64")(result);
    }
    const time_t wall = shown / kPerSecond;
    if (result != nullptr) {
        *result = wall;
    }
    return wall;
}

int nanosleep(const timespec* span, timespec* rest) {
    std::int64_t left = 0;
    int error = 0;
    if (!board_clock::Sleep(CLOCK_MONOTONIC, false, {span->tv_sec, span->tv_nsec}, left, error)) {
        return Next<decltype(&nanosleep)>("__nanosleep64")(span, rest);
    }
    TellRest(left, error, rest);
    errno = error != 0 ? error : errno;
    return error != 0 ? -1 : 0;
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* span, timespec* rest) {
    std::int64_t left = 0;
    int error = 0;
    if (!board_clock::Sleep(clock, (flags & TIMER_ABSTIME) != 0, {span->tv_sec, span->tv_nsec},
                            left, error)) {
        return Next<decltype(&clock_nanosleep)>("__clock_nanosleep_time64")(clock, flags, span,
                                                                            rest);
    }
    TellRest(left, error, rest);
    return error;
}

int stat(const char* path, struct stat* found) noexcept {
    FileStatus status{};
    int result = 0;
    if (sim::bridge::PathStatus(path, true, status, result)) {
        return Fill(found, status, result);
    }
    return Next<decltype(&stat)>("__stat64_time64")(path, found);
}

int lstat(const char* path, struct stat* found) noexcept {
    FileStatus status{};
    int result = 0;
    if (sim::bridge::PathStatus(path, false, status, result)) {
        return Fill(found, status, result);
    }
    return Next<decltype(&lstat)>("__lstat64_time64")(path, found);
}

int fstat(int descriptor, struct stat* found) noexcept {
    FileStatus status{};
    int result = 0;
    if (sim::bridge::DescriptorStatus(descriptor, status, result)) {
        return Fill(found, status, result);
    }
    return Next<decltype(&fstat)>("__fstat64_time64")(descriptor, found);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    int result = 0;
    if (sim::bridge::Control(descriptor, request, argument, result)) {
        return result;
    }
    return Next<decltype(&ioctl)>("__ioctl_time64")(descriptor, request, argument);
}

} // extern "C"
