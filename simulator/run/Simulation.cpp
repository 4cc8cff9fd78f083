#include "simulator/run/Simulation.h"

#include "simulator/libc/Real.h"

#include <cstdlib>

namespace sim {
namespace {

Simulation* living = nullptr;

} // namespace

Simulation::Simulation(const RunOptions& options, EventBuffer* eventBuffer)
    : board(options.scenario.board, options.seed, options.startTime),
      scheduler(options.scenario.threadOrder, options.seed ^ 0x5EEDULL, end),
      timeline(board, scheduler, options.limits.boardTime, options.pace, end),
      kernel(options.scenario.kernel, options.root, options.ioCosts,
             {board, events, timeline, scheduler, end}),
      console(options.limits.steps, options.limits.measurements) {
    kernel.calls.limit = options.limits.calls;
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
    const ConsoleWatch::Verdict verdict = console.Read({static_cast<const char*>(data), size});
    real::fwrite(verdict.show.data(), 1, verdict.show.size(), stream);
    if (verdict.limit) {
        SIM_REAL(fflush)(stream);
        end(Ending::LimitReached, std::string(*verdict.limit));
    }
}

void Simulation::ShowHeld(FILE* stream) {
    const std::string held = console.Release();
    real::fwrite(held.data(), 1, held.size(), stream);
}

} // namespace sim
