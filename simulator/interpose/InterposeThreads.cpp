// Stands in for the C library's threads and mutexes: one thread runs at a time, in the scheduler's
// order.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <map>
#include <memory>
#include <pthread.h>
#include <string>

namespace {

using sim::Gate;
using sim::Scheduler;
using sim::Simulation;

/// What a new thread needs to begin.
struct Beginning {
    Simulation* simulation;
    Scheduler::Thread* thread;
    void* (*body)(void*);
    void* argument;
};

std::map<pthread_t, Scheduler::Thread*>& Threads() {
    static std::map<pthread_t, Scheduler::Thread*> known;
    return known;
}

/// Runs when a thread ends, whether it returns or calls pthread_exit.
void AtThreadEnd(void* data) {
    auto* simulation = static_cast<Simulation*>(data);
    Scheduler::Thread* self = sim::ThreadSelf();
    simulation->events.Add("thread-end", "-");
    sim::SetThreadSelf(nullptr);
    simulation->scheduler.Finish(*self);
}

pthread_key_t EndKey() {
    static const pthread_key_t key = [] {
        pthread_key_t made = 0;
        pthread_key_create(&made, AtThreadEnd);
        return made;
    }();
    return key;
}

void* Trampoline(void* data) {
    const std::unique_ptr<Beginning> beginning(static_cast<Beginning*>(data));
    const Beginning begin = *beginning;
    begin.simulation->scheduler.Begin(*begin.thread);
    sim::SetThreadSelf(begin.thread);
    pthread_setspecific(EndKey(), begin.simulation);
    return begin.body(begin.argument);
}

/// Who locked each mutex that is held, to name them in a deadlock.
std::map<const pthread_mutex_t*, unsigned>& Lockers() {
    static std::map<const pthread_mutex_t*, unsigned> known;
    return known;
}

std::string HeldMutex(const pthread_mutex_t* mutex) {
    const auto locker = Lockers().find(mutex);
    return locker == Lockers().end()
               ? std::string("a mutex that is held")
               : "a mutex that thread " + std::to_string(locker->second) + " locked";
}

/// Locks as the C library does, but waits in the scheduler.
int LockOnBoard(Gate& gate, pthread_mutex_t* mutex) {
    for (;;) {
        const int result = SIM_REAL(pthread_mutex_trylock)(mutex);
        if (result != EBUSY) {
            Lockers()[mutex] = gate.Self().number;
            return result;
        }
        gate->scheduler.WaitFor(gate.Self(), mutex, HeldMutex(mutex));
    }
}

bool IsDetached(const pthread_attr_t* attributes) {
    int state = PTHREAD_CREATE_JOINABLE;
    return attributes != nullptr && pthread_attr_getdetachstate(attributes, &state) == 0 &&
           state == PTHREAD_CREATE_DETACHED;
}

} // namespace

extern "C" {

int pthread_create(pthread_t* result, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept {
    Gate gate;
    if (!gate) {
        return SIM_REAL(pthread_create)(result, attributes, body, argument);
    }
    if (IsDetached(attributes)) {
        gate->kernel.calls.Unmodelled("pthread_create of a thread that nobody joins");
    }
    if (const long error = gate->kernel.calls.Admit("pthread_create", ""); error != 0) {
        return static_cast<int>(-error);
    }
    EndKey();
    Scheduler::Thread& thread = gate->scheduler.Create();
    auto beginning =
        std::make_unique<Beginning>(Beginning{Simulation::OfThisThread(), &thread, body, argument});
    const int error = SIM_REAL(pthread_create)(result, attributes, Trampoline, beginning.get());
    if (error != 0) {
        gate->scheduler.Forget(thread);
        return error;
    }
    static_cast<void>(beginning.release()); // the new thread's now
    Threads()[*result] = &thread;
    gate->events.Add("thread-start", "-", std::to_string(thread.number));
    return 0;
}

int pthread_join(pthread_t joined, void** result) {
    Gate gate;
    const auto found = gate ? Threads().find(joined) : Threads().end();
    if (!gate || found == Threads().end()) {
        return SIM_REAL(pthread_join)(joined, result);
    }
    if (const long error = gate->kernel.calls.Admit("pthread_join", ""); error != 0) {
        return static_cast<int>(-error);
    }
    Scheduler::Thread* thread = found->second;
    if (thread == &gate.Self()) {
        return EDEADLK;
    }
    while (!thread->finished) {
        gate->scheduler.WaitFor(gate.Self(), thread,
                                "the end of thread " + std::to_string(thread->number));
    }
    const int error = SIM_REAL(pthread_join)(joined, result);
    gate->events.Add("join", "-", std::to_string(thread->number));
    Threads().erase(found);
    gate->scheduler.Forget(*thread);
    return error;
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
    if (Gate gate; gate) {
        if (const long error = gate->kernel.calls.Admit("pthread_mutex_init", ""); error != 0) {
            return static_cast<int>(-error);
        }
        Lockers().erase(mutex);
    }
    return SIM_REAL(pthread_mutex_init)(mutex, attributes);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    if (Gate gate; gate) {
        const long error = gate->kernel.calls.Admit("pthread_mutex_lock", "");
        return error != 0 ? static_cast<int>(-error) : LockOnBoard(gate, mutex);
    }
    return SIM_REAL(pthread_mutex_lock)(mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    if (Gate gate; gate) {
        const long error = gate->kernel.calls.Admit("pthread_mutex_unlock", "");
        const int result = SIM_REAL(pthread_mutex_unlock)(mutex);
        Lockers().erase(mutex);
        gate->scheduler.Wake(mutex);
        return error != 0 ? static_cast<int>(-error) : result;
    }
    return SIM_REAL(pthread_mutex_unlock)(mutex);
}

} // extern "C"
