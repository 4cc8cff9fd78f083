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
    events.now = [this] { return board.Now(); };
    events.thread = [this] { return scheduler.Current(); };
    if (!options.eventsFile.empty()) {
        if (eventBuffer == nullptr) {
            ownBuffer_ = std::make_unique<EventBuffer>();
        }
        if (!events.WriteTo(options.eventsFile,
                            eventBuffer != nullptr ? *eventBuffer : *ownBuffer_)) {
            std::abort(); // the launcher has opened it before
        }
    }
    board.onEvent = [this](const std::string& what, const std::string& data) {
        events.AddWorld(what, "-", data);
    };
    scheduler.deadlock = [this](const std::string& text) { end(Ending::Deadlock, text); };
    kernel.unmodelled = [this](const std::string& text) { end(Ending::Unmodelled, text); };
    timeline.onLimit = [this] { end(Ending::LimitReached, "board time"); };
    console.onStep = [this](std::uint64_t step) {
        if (onStep) {
            onStep(step);
        }
    };
    SetThreadSelf(&scheduler.AdoptMainThread());
    living = this;
}

Simulation::~Simulation() {
    living = nullptr;
    SetThreadSelf(nullptr);
}

Simulation* Simulation::OfThisThread() {
    return ThreadSelf() != nullptr ? living : nullptr;
}

void Simulation::Leave() {
    events.Abandon();
    SetThreadSelf(nullptr);
    living = nullptr;
}

void Simulation::Show(const void* data, std::size_t size, FILE* stream) {
    const ConsoleWatch::Verdict verdict = console.Take({static_cast<const char*>(data), size});
    real::fwrite(verdict.show.data(), 1, verdict.show.size(), stream);
    if (verdict.limit) {
        real::fflush(stream);
        end(Ending::LimitReached, std::string(*verdict.limit));
    }
}

void Simulation::ShowHeld(FILE* stream) {
    const std::string held = console.Release();
    real::fwrite(held.data(), 1, held.size(), stream);
}

Gate::Gate() : simulation_(depth == 0 ? Simulation::OfThisThread() : nullptr) {
    if (simulation_ != nullptr) {
        ++depth;
    }
}

Gate::~Gate() {
    if (simulation_ != nullptr) {
        --depth;
    }
}

Scheduler::Thread& Gate::Self() const {
    return *ThreadSelf();
}

long AsResult(long result) {
    if (result < 0) {
        errno = static_cast<int>(-result);
        return -1;
    }
    return result;
}

} // namespace sim
