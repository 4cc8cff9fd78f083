// Threads and waits that the scheduler does not know: in a simulated program such a call stops the
// run.

#include "simulator/interpose/Refuse.h"
#include "simulator/libc/Real.h"

#include <pthread.h>
#include <semaphore.h>

constexpr sim::NotScheduled kWait;

extern "C" {

SIM_REFUSE(int, pthread_detach, "pthread_detach", (pthread_t thread), kWait, thread)
SIM_REFUSE(int, pthread_cancel, "pthread_cancel", (pthread_t thread), kWait, thread)
SIM_REFUSE(int, pthread_timedjoin_np, "pthread_timedjoin_np",
           (pthread_t thread, void** result, const timespec* deadline), kWait, thread, result,
           deadline)
SIM_REFUSE(int, pthread_mutex_timedlock, "pthread_mutex_timedlock",
           (pthread_mutex_t * mutex, const timespec* deadline), kWait, mutex, deadline)
SIM_REFUSE(int, pthread_mutex_clocklock, "pthread_mutex_clocklock",
           (pthread_mutex_t * mutex, clockid_t clock, const timespec* deadline), kWait, mutex,
           clock, deadline)
SIM_REFUSE(int, pthread_cond_wait, "pthread_cond_wait",
           (pthread_cond_t * condition, pthread_mutex_t* mutex), kWait, condition, mutex)
SIM_REFUSE(int, pthread_cond_timedwait, "pthread_cond_timedwait",
           (pthread_cond_t * condition, pthread_mutex_t* mutex, const timespec* deadline), kWait,
           condition, mutex, deadline)
SIM_REFUSE(int, pthread_cond_clockwait, "pthread_cond_clockwait",
           (pthread_cond_t * condition, pthread_mutex_t* mutex, clockid_t clock,
            const timespec* deadline),
           kWait, condition, mutex, clock, deadline)
SIM_REFUSE(int, pthread_barrier_wait, "pthread_barrier_wait", (pthread_barrier_t * barrier), kWait,
           barrier)
SIM_REFUSE(int, sem_wait, "sem_wait", (sem_t * semaphore), kWait, semaphore)
SIM_REFUSE(int, sem_timedwait, "sem_timedwait", (sem_t * semaphore, const timespec* deadline),
           kWait, semaphore, deadline)

} // extern "C"
