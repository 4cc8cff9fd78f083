// Stands in for the C library's threads and mutexes: one thread runs at a time, in the scheduler's
// order.

#include "simulator/interpose/Gate.h"
#include "simulator/interpose/SystemCallGate.h"
#include "simulator/interpose/ThreadStacks.h"
#include "simulator/interpose/ThreadWaits.h"
#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <memory>
#include <pthread.h>
#include <string>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

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

/// The kernel's numbers of threads that have ended their part in the run and may not be gone yet.
std::vector<int>& Leaving() {
    static std::vector<int> known;
    return known;
}

bool IsGone(int task) {
    return syscall(SYS_tgkill, getpid(), task, 0) != 0;
}

/// True for one that waits for nothing but the processor.
bool CouldRun(int task) {
    char text[64];
    std::snprintf(text, sizeof text, "/proc/self/task/%d/stat", task);
    const int file = sim::real::open(text, O_RDONLY | O_CLOEXEC);
    const ssize_t length = sim::real::read(file, text, sizeof text);
    sim::real::close(file);
    const std::string_view status(text, length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::size_t afterName = status.find(") ");
    return afterName != std::string_view::npos && status.substr(afterName + 2).starts_with('R');
}

pthread_key_t EndKey();

thread_local int timesEnded = 0;

/// Runs when a thread ends, whether it returns or calls pthread_exit: as late as the C library
/// lets it, because the program's own destructors call in too, but before a sanitizer gives the
/// thread up in the last round.
void AtThreadEnd(void* data) {
    auto* simulation = static_cast<Simulation*>(data);
    if (++timesEnded < PTHREAD_DESTRUCTOR_ITERATIONS - 1) {
        pthread_setspecific(EndKey(), data);
        return;
    }
    sim::system_calls::Open();
    Scheduler::Thread* self = sim::ThreadSelf();
    simulation->events.Add("thread-end", "-");
    Leaving().push_back(self->task);
    sim::stacks::End();
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
    sim::system_calls::Arm();
    sim::stacks::Begin(reinterpret_cast<const void*>(begin.body));
    pthread_setspecific(EndKey(), begin.simulation);
    return begin.body(begin.argument);
}

/// Who locked each mutex that is held, to name them in a deadlock.
std::map<const void*, unsigned>& Lockers() {
    static std::map<const void*, unsigned> known;
    return known;
}

/// Locks where no gate brings the C library's own wait before the scheduler.
int LockWithoutGate(pthread_mutex_t* mutex) {
    Gate gate;
    for (;;) {
        const int result = SIM_REAL(pthread_mutex_trylock)(mutex);
        if (result != EBUSY) {
            return result;
        }
        gate->scheduler.WaitFor(gate.Self(), mutex, sim::WhatWordIs(mutex));
    }
}

bool IsDetached(const pthread_attr_t* attributes) {
    int state = PTHREAD_CREATE_JOINABLE;
    return attributes != nullptr && pthread_attr_getdetachstate(attributes, &state) == 0 &&
           state == PTHREAD_CREATE_DETACHED;
}

} // namespace

void sim::AwaitEndedThreads() {
    constexpr int tries = 1000;
    constexpr long long pause = 20'000; // ns
    std::erase_if(Leaving(), IsGone);
    for (int asleep = 0; asleep < tries && !Leaving().empty();) {
        real::SleepFor(pause);
        std::erase_if(Leaving(), IsGone);
        asleep += std::ranges::any_of(Leaving(), CouldRun) ? 0 : 1;
    }
    Leaving().clear();
}

std::string sim::WhatWordIs(const void* word) {
    const auto locker = Lockers().find(word); // a mutex begins with its word
    return locker == Lockers().end()
               ? std::string("a word that another thread changes")
               : "a mutex that thread " + std::to_string(locker->second) + " locked";
}

extern "C" {

int pthread_create(pthread_t* result, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept {
    Gate gate;
    if (!gate) {
        return SIM_REAL(pthread_create)(result, attributes, body, argument);
    }
    if (const long error = gate->kernel.calls.Admit("pthread_create", ""); error != 0) {
        return static_cast<int>(-error);
    }
    EndKey();
    Scheduler::Thread& thread = gate->scheduler.Create();
    thread.detached = IsDetached(attributes);
    auto beginning =
        std::make_unique<Beginning>(Beginning{Simulation::OfThisThread(), &thread, body, argument});
    const int error = SIM_REAL(pthread_create)(result, attributes, Trampoline, beginning.get());
    if (error != 0) {
        gate->scheduler.Forget(thread);
        return error;
    }
    static_cast<void>(beginning.release()); // the new thread's now
    if (!thread.detached) {
        Threads()[*result] = &thread;
    }
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
    std::erase(Leaving(), thread->task);
    Threads().erase(found);
    gate->scheduler.Forget(*thread);
    return error;
}

int pthread_detach(pthread_t thread) noexcept {
    Gate gate;
    const auto found = gate ? Threads().find(thread) : Threads().end();
    if (gate && found != Threads().end()) {
        found->second->detached = true;
        if (found->second->finished) {
            gate->scheduler.Forget(*found->second);
        }
        Threads().erase(found);
    }
    return SIM_REAL(pthread_detach)(thread);
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
        if (const long error = gate->kernel.calls.Admit("pthread_mutex_lock", ""); error != 0) {
            return static_cast<int>(-error);
        }
    } else {
        return SIM_REAL(pthread_mutex_lock)(mutex);
    }
    const int result =
        sim::system_calls::IsArmed() ? SIM_REAL(pthread_mutex_lock)(mutex) : LockWithoutGate(mutex);
    const Gate gate;
    Lockers()[mutex] = gate.Self().number;
    return result;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    long error = 0;
    if (Gate gate; gate) {
        error = gate->kernel.calls.Admit("pthread_mutex_unlock", "");
        Lockers().erase(mutex);
        if (!sim::system_calls::IsArmed()) {
            gate->scheduler.Wake(mutex);
        }
    }
    const int result = SIM_REAL(pthread_mutex_unlock)(mutex);
    return error != 0 ? static_cast<int>(-error) : result;
}

} // extern "C"
