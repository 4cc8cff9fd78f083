#include "simulator/run/Simulation.h"

#include "simulator/libc/Real.h"
#include "simulator/time/ThreadSelf.h"

#include <cerrno>
#include <cstdlib>

namespace sim {
namespace {

Simulation* living = nullptr;
thread_local int depth = 0;

} // namespace

Simulation::Simulation(const RunOptions& options, EventBuffer* eventBuffer)
    : faults(options.scenario.faults), board(options.scenario, options.seed, options.startTime),
      scheduler(options.scenario.threadOrder, options.seed ^ 0x5EEDULL),
      timeline(board, scheduler, options.limits.boardTime, options.pace),
      kernel(options, board, events, faults, timeline, scheduler),
      console(options.limits.steps, options.limits.measurements) {
    events.now = [this] { return board.now(); };
    events.thread = [this] { return scheduler.current(); };
    if (!options.eventsFile.empty()) {
        if (eventBuffer == nullptr) {
            ownBuffer_ = std::make_unique<EventBuffer>();
        }
        if (!events.writeTo(options.eventsFile,
                            eventBuffer != nullptr ? *eventBuffer : *ownBuffer_)) {
            std::abort(); // the launcher has opened it before
        }
    }
    board.onEvent = [this](const std::string& what, const std::string& data) {
        events.addWorld(what, "-", data);
    };
    scheduler.deadlock = [this](const std::string& text) { end(Ending::deadlock, text); };
    kernel.unmodelled = [this](const std::string& text) { end(Ending::unmodelled, text); };
    timeline.onLimit = [this] { end(Ending::limitReached, "board time"); };
    console.onStep = [this](std::uint64_t step) {
        if (onStep) {
            onStep(step);
        }
    };
    setThreadSelf(&scheduler.adoptMainThread());
    living = this;
}

Simulation::~Simulation() {
    living = nullptr;
    setThreadSelf(nullptr);
}

Simulation* Simulation::ofThisThread() {
    return threadSelf() != nullptr ? living : nullptr;
}

void Simulation::leave() {
    events.abandon();
    setThreadSelf(nullptr);
    living = nullptr;
}

void Simulation::show(const void* data, std::size_t size, FILE* stream) {
    const ConsoleWatch::Verdict verdict = console.take({static_cast<const char*>(data), size});
    real::fwrite(verdict.show.data(), 1, verdict.show.size(), stream);
    if (verdict.limit) {
        real::fflush(stream);
        end(Ending::limitReached, std::string(*verdict.limit));
    }
}

void Simulation::showHeld(FILE* stream) {
    const std::string held = console.release();
    real::fwrite(held.data(), 1, held.size(), stream);
}

Gate::Gate() : simulation_(depth == 0 ? Simulation::ofThisThread() : nullptr) {
    if (simulation_ != nullptr) {
        ++depth;
    }
}

Gate::~Gate() {
    if (simulation_ != nullptr) {
        --depth;
    }
}

Scheduler::Thread& Gate::self() const {
    return *threadSelf();
}

long asResult(long result) {
    if (result < 0) {
        errno = static_cast<int>(-result);
        return -1;
    }
    return result;
}

} // namespace sim
