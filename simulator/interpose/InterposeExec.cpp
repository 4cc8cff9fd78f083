// Putting another program in the own one's place.

#include "simulator/interpose/Refuse.h"
#include "simulator/libc/Real.h"

#include <bit>
#include <cstdarg>
#include <unistd.h>
#include <vector>

namespace {

using sim::Becoming;

/// The arguments of a call that lists them one by one, up to and with the null at the end.
std::vector<char*> Listed(const char* first, va_list arguments) {
    std::vector<char*> list{std::bit_cast<char*>(first)};
    while (list.back() != nullptr) {
        list.push_back(va_arg(arguments, char*));
    }
    return list;
}

} // namespace

extern "C" {

SIM_REFUSE(int, execve, "execve",
           (const char* path, char* const arguments[], char* const environment[]), Becoming{path},
           path, arguments, environment)
SIM_REFUSE(int, execv, "execv", (const char* path, char* const arguments[]), Becoming{path}, path,
           arguments)
SIM_REFUSE(int, execvp, "execvp", (const char* name, char* const arguments[]), Becoming{name}, name,
           arguments)
SIM_REFUSE(int, execvpe, "execvpe",
           (const char* name, char* const arguments[], char* const environment[]), Becoming{name},
           name, arguments, environment)

int execl(const char* path, const char* first, ...) noexcept {
    sim::Refuse("execl", Becoming{path});
    va_list arguments;
    va_start(arguments, first);
    const std::vector<char*> list = Listed(first, arguments);
    va_end(arguments);
    return SIM_REAL(execv)(path, list.data());
}

int execlp(const char* name, const char* first, ...) noexcept {
    sim::Refuse("execlp", Becoming{name});
    va_list arguments;
    va_start(arguments, first);
    const std::vector<char*> list = Listed(first, arguments);
    va_end(arguments);
    return SIM_REAL(execvp)(name, list.data());
}

int execle(const char* path, const char* first, ...) noexcept {
    sim::Refuse("execle", Becoming{path});
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
