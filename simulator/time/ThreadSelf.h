#pragma once

#include "simulator/time/Scheduler.h"

namespace sim {

/// The calling thread as the scheduler knows it; null for a thread that does not take part in a
/// simulation.
Scheduler::Thread* threadSelf();
void setThreadSelf(Scheduler::Thread* thread);

} // namespace sim
