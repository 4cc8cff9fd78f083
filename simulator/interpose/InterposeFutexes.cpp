// Stands in for what the C++ library waits with (guarded statics, atomics, condition variables)
// where no gate brings its system calls before the scheduler.

#include "simulator/interpose/Gate.h"
#include "simulator/interpose/ThreadWaits.h"
#include "simulator/libc/Real.h"

#include <array>
#include <cstdarg>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

using sim::Gate;

extern "C" {

long syscall(long number, ...) noexcept {
    va_list list;
    va_start(list, number);
    std::array<long, 6> with{};
    for (long& argument : with) {
        argument = va_arg(list, long);
    }
    va_end(list);
    Gate gate;
    const long operation = with[1] & ~long{FUTEX_PRIVATE_FLAG};
    const bool waits = operation == FUTEX_WAIT && with[3] == 0; // without a time-out
    if (!gate || number != SYS_futex || (!waits && operation != FUTEX_WAKE)) {
        return SIM_REAL(syscall)(number, with[0], with[1], with[2], with[3], with[4], with[5]);
    }
    const auto* word = reinterpret_cast<const std::uint32_t*>(with[0]);
    return sim::AsResult<long>(waits ? gate->futexes.Wait(word, static_cast<std::uint32_t>(with[2]),
                                                          sim::Futexes::kAnyBit, sim::kNever,
                                                          sim::WhatWordIs(word))
                                     : gate->futexes.Wake(word, static_cast<int>(with[2])));
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    {
        Gate gate;
        if (!gate) {
            return SIM_REAL(pthread_cond_wait)(condition, mutex);
        }
        gate->scheduler.Wake(mutex);
        SIM_REAL(pthread_mutex_unlock)(mutex);
        gate->scheduler.WaitFor(gate.Self(), condition, "a condition");
    }
    return pthread_mutex_lock(mutex);
}

int pthread_cond_signal(pthread_cond_t* condition) noexcept {
    if (Gate gate; gate) {
        gate->scheduler.WakeSome(condition, 1);
    }
    return SIM_REAL(pthread_cond_signal)(condition);
}

int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
    if (Gate gate; gate) {
        gate->scheduler.Wake(condition);
    }
    return SIM_REAL(pthread_cond_broadcast)(condition);
}

} // extern "C"
