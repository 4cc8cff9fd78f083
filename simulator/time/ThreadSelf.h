#pragma once

#include "simulator/time/Scheduler.h"

namespace sim {

/// The calling thread as the scheduler knows it; null for a thread that does not take part in a
/// simulation.
Scheduler::Thread* ThreadSelf();
void SetThreadSelf(Scheduler::Thread* thread);

} // namespace sim
