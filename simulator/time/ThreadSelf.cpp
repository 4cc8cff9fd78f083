#include "simulator/time/ThreadSelf.h"

namespace sim {
namespace {

thread_local Scheduler::Thread* self = nullptr;

} // namespace

Scheduler::Thread* threadSelf() {
    return self;
}
void setThreadSelf(Scheduler::Thread* thread) {
    self = thread;
}

} // namespace sim
