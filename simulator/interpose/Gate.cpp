#include "simulator/interpose/Gate.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/interpose/PathWalk.h"
#include "simulator/interpose/SystemCallGate.h"
#include "simulator/interpose/Watchdog.h"

namespace sim {
namespace {

thread_local int depth = 0;

/// The simulation that the calling thread takes part in, unless it makes the call itself.
Simulation* Called() {
    return depth == 0 ? Simulation::OfThisThread() : nullptr;
}

/// The same, when it has the descriptor.
Simulation* Called(int descriptor) {
    Simulation* simulation = Called();
    return simulation != nullptr && simulation->kernel.Owns(descriptor) ? simulation : nullptr;
}

} // namespace

Gate::Gate(Simulation* simulation) : simulation_(simulation) {
    if (simulation_ != nullptr) {
        ++depth;
        before_ = system_calls::Open();
        watchdog::CallMade();
    }
}

Gate::Gate() : Gate(Called()) {}
Gate::Gate(const char* path)
    : Gate(path != nullptr && IsPlainPath(path) && IsBoardPath(path) ? Called() : nullptr) {}
Gate::Gate(int descriptor) : Gate(Called(descriptor)) {}

Gate::~Gate() {
    if (simulation_ != nullptr) {
        --depth;
        system_calls::Restore(before_);
    }
}

std::string& FolderOnBoard() {
    static std::string folder;
    return folder;
}

Scheduler::Thread& Gate::Self() const {
    return *ThreadSelf();
}

} // namespace sim
