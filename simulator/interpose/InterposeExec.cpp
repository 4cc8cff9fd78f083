// A program that puts another in its own place would take that one off the simulated board and onto
// this machine: it stops the run. A process that the program forked off may become what it likes.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cstdarg>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using sim::Gate;

void Refuse(const char* call, const char* program) {
    if (Gate gate; gate) {
        gate->kernel.calls.Unmodelled(
            std::string(call) + " of " + program +
            ", which would not run on the board; name the program itself");
    }
}

/// The arguments of a call that lists them one by one, up to and with the null at the end.
std::vector<char*> Listed(const char* first, va_list arguments) {
    std::vector<char*> list{const_cast<char*>(first)};
    while (list.back() != nullptr) {
        list.push_back(va_arg(arguments, char*));
    }
    return list;
}

} // namespace

extern "C" {

int execve(const char* path, char* const arguments[], char* const environment[]) noexcept {
    Refuse("execve", path);
    return SIM_REAL(execve)(path, arguments, environment);
}

int execv(const char* path, char* const arguments[]) noexcept {
    Refuse("execv", path);
    return SIM_REAL(execv)(path, arguments);
}

int execvp(const char* name, char* const arguments[]) noexcept {
    Refuse("execvp", name);
    return SIM_REAL(execvp)(name, arguments);
}

int execvpe(const char* name, char* const arguments[], char* const environment[]) noexcept {
    Refuse("execvpe", name);
    return SIM_REAL(execvpe)(name, arguments, environment);
}

int execl(const char* path, const char* first, ...) noexcept {
    Refuse("execl", path);
    va_list arguments;
    va_start(arguments, first);
    const std::vector<char*> list = Listed(first, arguments);
    va_end(arguments);
    return SIM_REAL(execv)(path, list.data());
}

int execlp(const char* name, const char* first, ...) noexcept {
    Refuse("execlp", name);
    va_list arguments;
    va_start(arguments, first);
    const std::vector<char*> list = Listed(first, arguments);
    va_end(arguments);
    return SIM_REAL(execvp)(name, list.data());
}

int execle(const char* path, const char* first, ...) noexcept {
    Refuse("execle", path);
    va_list arguments;
    va_start(arguments, first);
    const std::vector<char*> list = Listed(first, arguments);
    char* const* environment = va_arg(arguments, char* const*);
    va_end(arguments);
    return SIM_REAL(execve)(path, list.data(), environment);
}

pid_t vfork() noexcept {
    return fork(); // the parent's memory is the simulation's
}

} // extern "C"
