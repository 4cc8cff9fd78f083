// What the scheduler does not know how to wait for, and threads that nobody joins: in a simulated
// program such a call stops the run.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <pthread.h>
#include <semaphore.h>
#include <string>

namespace {

using sim::Gate;

void Refuse(const char* call) {
    if (Gate gate; gate) {
        gate->kernel.calls.Unmodelled(
            std::string(call) + ", because the board schedules threads that are joined, and waits "
                                "on mutexes and joins only");
    }
}

} // namespace

extern "C" {

int pthread_detach(pthread_t thread) noexcept {
    Refuse("pthread_detach");
    return SIM_REAL(pthread_detach)(thread);
}

int pthread_cancel(pthread_t thread) {
    Refuse("pthread_cancel");
    return SIM_REAL(pthread_cancel)(thread);
}

int pthread_timedjoin_np(pthread_t thread, void** result, const timespec* deadline) {
    Refuse("pthread_timedjoin_np");
    return SIM_REAL(pthread_timedjoin_np)(thread, result, deadline);
}

int pthread_mutex_timedlock(pthread_mutex_t* mutex, const timespec* deadline) noexcept {
    Refuse("pthread_mutex_timedlock");
    return SIM_REAL(pthread_mutex_timedlock)(mutex, deadline);
}

int pthread_mutex_clocklock(pthread_mutex_t* mutex, clockid_t clock,
                            const timespec* deadline) noexcept {
    Refuse("pthread_mutex_clocklock");
    return SIM_REAL(pthread_mutex_clocklock)(mutex, clock, deadline);
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    Refuse("pthread_cond_wait");
    return SIM_REAL(pthread_cond_wait)(condition, mutex);
}

int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                           const timespec* deadline) {
    Refuse("pthread_cond_timedwait");
    return SIM_REAL(pthread_cond_timedwait)(condition, mutex, deadline);
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                           const timespec* deadline) {
    Refuse("pthread_cond_clockwait");
    return SIM_REAL(pthread_cond_clockwait)(condition, mutex, clock, deadline);
}

int pthread_barrier_wait(pthread_barrier_t* barrier) noexcept {
    Refuse("pthread_barrier_wait");
    return SIM_REAL(pthread_barrier_wait)(barrier);
}

int sem_wait(sem_t* semaphore) {
    Refuse("sem_wait");
    return SIM_REAL(sem_wait)(semaphore);
}

int sem_timedwait(sem_t* semaphore, const timespec* deadline) {
    Refuse("sem_timedwait");
    return SIM_REAL(sem_timedwait)(semaphore, deadline);
}

} // extern "C"
