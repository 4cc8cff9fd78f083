#pragma once

#include <cstdio>
#include <ctime>
#include <sys/stat.h>
#include <sys/types.h>

/// The C library's own functions, past our stand-ins of the same names.
namespace sim::real {

/// The next definition of a symbol after ours; ends the process when there is none.
void* Next(const char* symbol);

int open(const char* path, int flags, mode_t mode = 0);
int close(int descriptor);
ssize_t read(int descriptor, void* buffer, size_t size);
ssize_t write(int descriptor, const void* buffer, size_t size);
FILE* fopen(const char* path, const char* mode);
size_t fwrite(const void* data, size_t size, size_t count, FILE* file);
int stat(const char* path, struct stat64* result);
int DescriptorStatus(int descriptor, struct stat64* result);
int mkdir(const char* path, mode_t mode);
void SleepFor(long long nanoseconds);
long long MonotonicNanoseconds();

/// Moves a descriptor of the simulation's own out of the program's way, to a high number where
/// there is one, and gives the number it has then; negative stays. Its owner closes it with
/// CloseOwn.
int MakeOwn(int descriptor);
void CloseOwn(int descriptor);
/// True for a descriptor that the simulation keeps for itself: the program has none of that number.
bool IsOwn(int descriptor);

} // namespace sim::real

/// The C library's function of this name, looked up once per place. Without a guarded static,
/// because the sanitizers stand in for the guards and call us before they are ready for them; a
/// second look-up at the same time finds the same address.
#define SIM_REAL(function)                                                                         \
    ([] {                                                                                          \
        static decltype(&::function) simRealFunction = nullptr;                                    \
        if (simRealFunction == nullptr) {                                                          \
            simRealFunction =                                                                      \
                reinterpret_cast<decltype(&::function)>(::sim::real::Next(#function));             \
        }                                                                                          \
        return simRealFunction;                                                                    \
    }())
