// On a 32-bit machine a program with 64-bit times calls other symbols of the C library than one
// without. Compiled with those times, so that the headers give each definition below its other
// symbol.

#include "simulator/interpose/Bridge32.h"

#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace {

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
    time.tv_sec = nanoseconds / 1'000'000'000;
    time.tv_nsec = static_cast<long>(nanoseconds % 1'000'000'000);
    return time;
}

int Fill(struct stat* result, unsigned mode, int outcome) {
    if (outcome == 0) {
        *result = {};
        result->st_mode = mode;
        result->st_nlink = 1;
    }
    return outcome;
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    std::int64_t nanoseconds = 0;
    int result = 0;
    if (sim::bridge::WallOrBoardTime(clock, nanoseconds, result)) {
        *time = AsTimespec(nanoseconds);
        return result;
    }
    return Next<decltype(&clock_gettime)>("__clock_gettime64")(clock, time);
}

time_t time(time_t* result) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr) {
        *result = now.tv_sec;
    }
    return now.tv_sec;
}

int nanosleep(const timespec* span, timespec* rest) {
    std::int64_t left = 0;
    int result = 0;
    if (sim::bridge::SleepFor(span->tv_sec * 1'000'000'000 + span->tv_nsec, left, result)) {
        if (result != 0 && rest != nullptr) {
            *rest = AsTimespec(left);
        }
        return result;
    }
    return Next<decltype(&nanosleep)>("__nanosleep64")(span, rest);
}

int stat(const char* path, struct stat* found) noexcept {
    unsigned mode = 0;
    int result = 0;
    if (sim::bridge::Status(path, true, mode, result)) {
        return Fill(found, mode, result);
    }
    return Next<decltype(&stat)>("__stat64_time64")(path, found);
}

int lstat(const char* path, struct stat* found) noexcept {
    unsigned mode = 0;
    int result = 0;
    if (sim::bridge::Status(path, false, mode, result)) {
        return Fill(found, mode, result);
    }
    return Next<decltype(&lstat)>("__lstat64_time64")(path, found);
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
