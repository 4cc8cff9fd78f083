#include "simulator/libc/Real.h"

#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace sim::real {
namespace {

constexpr int kOwnFrom = 1000; // a process may have 1024 as a rule
constexpr int kOwnTo = 1024;
bool own[kOwnTo];

bool IsListable(int descriptor) {
    return descriptor >= 0 && descriptor < kOwnTo;
}

} // namespace

void* Next(const char* symbol) {
    void* address = dlsym(RTLD_NEXT, symbol);
    if (address == nullptr) {
        std::abort(); // the C library lacks what it has exported for decades
    }
    return address;
}

int open(const char* path, int flags, mode_t mode) {
    return SIM_REAL(open64)(path, flags, mode);
}

int close(int descriptor) {
    return SIM_REAL(close)(descriptor);
}

ssize_t read(int descriptor, void* buffer, size_t size) {
    return SIM_REAL(read)(descriptor, buffer, size);
}

ssize_t write(int descriptor, const void* buffer, size_t size) {
    return SIM_REAL(write)(descriptor, buffer, size);
}

FILE* fopen(const char* path, const char* mode) {
    return SIM_REAL(fopen64)(path, mode);
}

size_t fwrite(const void* data, size_t size, size_t count, FILE* file) {
    return SIM_REAL(fwrite)(data, size, count, file);
}

int stat(const char* path, struct stat64* result) {
    return SIM_REAL(stat64)(path, result);
}

int DescriptorStatus(int descriptor, struct stat64* result) {
    return SIM_REAL(fstat64)(descriptor, result);
}

int mkdir(const char* path, mode_t mode) {
    return SIM_REAL(mkdir)(path, mode);
}

void SleepFor(long long nanoseconds) {
    timespec span{static_cast<time_t>(nanoseconds / 1'000'000'000),
                  static_cast<long>(nanoseconds % 1'000'000'000)};
    while (SIM_REAL(nanosleep)(&span, &span) != 0) {
    }
}

long long MonotonicNanoseconds() {
    timespec time{};
    SIM_REAL(clock_gettime)(CLOCK_MONOTONIC, &time);
    return static_cast<long long>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

int MakeOwn(int descriptor) {
    if (descriptor < 0) {
        return descriptor;
    }
    const int moved = SIM_REAL(fcntl64)(descriptor, F_DUPFD_CLOEXEC, kOwnFrom);
    if (moved >= 0) {
        close(descriptor);
        descriptor = moved;
    }
    if (IsListable(descriptor)) {
        own[descriptor] = true;
    }
    return descriptor;
}

void CloseOwn(int descriptor) {
    if (IsListable(descriptor)) {
        own[descriptor] = false;
    }
    close(descriptor);
}

bool IsOwn(int descriptor) {
    return IsListable(descriptor) && own[descriptor];
}

} // namespace sim::real
