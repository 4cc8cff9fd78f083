#pragma once

#include "simulator/interpose/Gate.h"

#include <cstdio>
#include <string>

namespace sim {

/// Stops the run when a call meets the board in a way that the board does not model: on a path, on
/// a descriptor, or by the C library's own input and output, which reads and writes inside the
/// library and would pass by the simulated kernel.
inline void Refuse(const char* call, const char* path) {
    if (Gate gate(path); gate) {
        gate->kernel.calls.Unmodelled(std::string(call) + " of " + path);
    }
}
inline void Refuse(const char* call, int descriptor) {
    if (Gate gate(descriptor); gate) {
        gate->kernel.calls.Unmodelled(std::string(call) + " of " + gate->kernel.PathOf(descriptor));
    }
}
inline void Refuse(const char* call, FILE* stream) {
    Refuse(call, fileno(stream));
}

/// What the scheduler does not know how to wait for, and threads that nobody joins.
struct NotScheduled {};
inline void Refuse(const char* call, NotScheduled /*any*/) {
    if (Gate gate; gate) {
        gate->kernel.calls.Unmodelled(std::string(call) +
                                      ", because the board schedules threads that are joined, and "
                                      "waits on mutexes and joins only");
    }
}

/// A program that puts another in its own place would take that one off the simulated board and
/// onto this machine. A process that the program forked off may become what it likes.
struct Becoming {
    const char* program;
};
inline void Refuse(const char* call, Becoming other) {
    if (Gate gate; gate) {
        gate->kernel.calls.Unmodelled(std::string(call) + " of " + other.program +
                                      ", which would not run on the board; name the program "
                                      "itself");
    }
}

} // namespace sim

/// Stands in for a call that is refused for what it is about, and goes through elsewhere.
#define SIM_REFUSE(result, function, shown, parameters, about, ...)                                \
    result function parameters noexcept(noexcept(::function(__VA_ARGS__))) {                       \
        sim::Refuse(shown, about);                                                                 \
        return SIM_REAL(function)(__VA_ARGS__);                                                    \
    }
