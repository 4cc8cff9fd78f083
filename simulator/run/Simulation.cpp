#include "simulator/run/Simulation.h"

#include "simulator/libc/Real.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace sim {
namespace {

Simulation* living = nullptr;

} // namespace

Simulation::Simulation(const RunOptions& options, RunBuffers* buffers)
    : ownBuffers_(buffers == nullptr ? std::make_unique<RunBuffers>() : nullptr),
      board(options.scenario.board, options.seed, options.startTime),
      scheduler(options.scenario.threads, options.seed ^ 0x5EEDULL, end),
      timeline(board, scheduler, options.limits.boardTime, options.pace, end),
      kernel(options.scenario.kernel, options.root, options.ioCosts,
             {board, events, timeline, scheduler, end}),
      console(options.limits.steps, options.limits.measurements),
      tellsShown_(options.scenario.threads.console) {
    timeline.parallel = options.scenario.threads.ioParallel;
    kernel.calls.limit = options.limits.calls;
    kernel.calls.tellEach = options.everyCall;
    events.now = [this] { return board.Now(); };
    events.thread = [this] { return scheduler.Current(); };
    RunBuffers& files = buffers != nullptr ? *buffers : *ownBuffers_;
    const bool writable =
        (options.eventsFile.empty() || events.WriteTo(options.eventsFile, files.events)) &&
        (options.vcdFile.empty() || waves.WriteTo(options.vcdFile, files.waves));
    if (!writable) {
        std::abort(); // the launcher has opened them before
    }
    if (!options.vcdFile.empty()) {
        kernel.calls.onFault = [this](std::string_view call, std::string_view path,
                                      const std::string& what) {
            waves.ShowFault(call, path, what);
        };
    }
    board.onEvent = [this](const std::string& what, const std::string& data) {
        events.AddWorld(what, "-", data);
    };
    board.onPowerCut = [this] { end(Ending::PowerCut, ""); };
    kernel.calls.faults.Draw(options.seed ^ 0xFA17ULL);
    AwaitOccasions(options.scenario);
    SetThreadSelf(&scheduler.AdoptMainThread());
    living = this;
}

void Simulation::AwaitOccasions(const Scenario& scenario) {
    Occasions& occasions = kernel.calls.occasions;
    for (const WorldEvent& event : scenario.board.events) {
        if (event.when.Set()) {
            occasions.Await(event.when, [this, event] {
                board.Plan(event); // a moment that is past: now
                scheduler.WakeForBoard(board.Now());
                board.Settle();
            });
        }
    }
    for (std::size_t i = 0; i < scenario.kernel.faults.size(); ++i) {
        const Occasion& since = scenario.kernel.faults[i].since;
        if (since.Set()) {
            occasions.Await(since, [this, i] { kernel.calls.faults.Begin(i, board.Now()); });
        }
    }
}

Simulation::~Simulation() {
    living = nullptr;
    SetThreadSelf(nullptr);
}

Simulation* Simulation::OfThisThread() {
    return ThreadSelf() != nullptr ? living : nullptr;
}

Simulation* Simulation::Living() {
    return living;
}

void Simulation::Leave() {
    events.Abandon();
    waves.Abandon();
    SetThreadSelf(nullptr);
}

void Simulation::AboutToShow(std::string_view text, const char* stream) {
    scheduler.Chance(*ThreadSelf());
    if (tellsShown_) {
        events.Add("show", stream, [&] { return EventLog::Quoted(text); });
    }
}

void Simulation::Show(const void* data, std::size_t size, FILE* stream) {
    AboutToShow({static_cast<const char*>(data), size}, "stdout");
    const ConsoleWatch::Verdict verdict = console.Read({static_cast<const char*>(data), size});
    HandOn(verdict.show, stream);
    scheduler.StepBegan(console.Steps());
    kernel.calls.occasions.Counted(console.Steps(), console.Measurements());
    if (verdict.limit) {
        SIM_REAL(fflush)(stream);
        end(Ending::LimitReached, std::string(*verdict.limit));
    }
}

void Simulation::ShowHeld(FILE* stream) {
    HandOn(console.Release(), stream);
}

int Simulation::Flush(FILE* stream) {
    const int result = SIM_REAL(fflush)(stream);
    CheckOutput();
    return result;
}

void Simulation::CheckOutput() {
    if (std::ferror(stdout) != 0 && !outputLost_) {
        outputLost_ = true;
        end(Ending::OutputLost, std::strerror(errno));
    }
}

void Simulation::HandOn(std::string_view text, FILE* stream) {
    events.MakeWay();
    real::fwrite(text.data(), 1, text.size(), stream);
    CheckOutput();
    waves.Show(text);
    if (onShow) {
        onShow(text);
    }
}

} // namespace sim
