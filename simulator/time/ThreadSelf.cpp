#include "simulator/time/ThreadSelf.h"

namespace sim {
namespace {

thread_local Scheduler::Thread* self = nullptr;

} // namespace

Scheduler::Thread* ThreadSelf() {
    return self;
}
void SetThreadSelf(Scheduler::Thread* thread) {
    self = thread;
}

} // namespace sim
