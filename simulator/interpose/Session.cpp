// The preloaded library's life in a program: it arms itself before main in the one program that the
// launcher names, stays inert in every other, and tells the launcher how the run went.

#include "simulator/board/KeptState.h"
#include "simulator/interpose/FootprintNow.h"
#include "simulator/interpose/Gate.h"
#include "simulator/interpose/SystemCallGate.h"
#include "simulator/interpose/ThreadStacks.h"
#include "simulator/interpose/Watchdog.h"
#include "simulator/libc/Real.h"
#include "simulator/live/LiveRun.h"
#include "simulator/run/RunReport.h"
#include "simulator/run/RunRequest.h"
#include "simulator/run/Simulation.h"
#include "simulator/scenario/ScenarioFile.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace sim {
namespace {

class Session {
  public:
    Session(const RunOptions& options, RunReport& report)
        : report_(report), stall_(options.limits.stall), keepWorld_(options.keepWorld),
          simulation_(options, &report.files) {
        simulation_.end.how = [this](Ending ending, const std::string& text) {
            EndEarly(ending, text);
        };
        simulation_.onExit = [this] { ProgramExits(); };
        simulation_.console.onStep = [this](std::uint64_t step) { NoteStep(step); };
        simulation_.timeline.onAdvance = [this](Nanoseconds now) { TimePassed(now); };
        simulation_.timeline.SetPace(options.pace); // in pieces: a wish is never far
    }

    /// The run is served: shows it, and takes what is done by hand.
    void Serve(LiveLink& link, const std::string& scenario, double pace) {
        live_ = std::make_unique<LiveRun>(link, simulation_, scenario, pace);
    }

    bool BeginWith(const std::string& state) { return RestoreState(simulation_.board, state); }

    void ProgramExits() {
        if (ended_) {
            return;
        }
        ended_ = true;
        simulation_.ShowHeld(stdout);
        simulation_.Flush(stdout);
        Finish(Ending::Exited, "");
    }

  private:
    void TimePassed(Nanoseconds now) {
        report_.boardTime = now;
        if (report_.wish.load(std::memory_order_relaxed) != Wish::None) {
            Heed();
        }
        if (live_) {
            live_->Look();
        }
        if (now - lastStepAt_ > stall_ && !simulation_.console.StepText().empty()) {
            EndEarly(Ending::Stalled, simulation_.scheduler.WhoWaitsForWhat());
        }
    }

    void Heed() {
        Wish wish = Wish::Flush;
        if (report_.wish.compare_exchange_strong(wish, Wish::None)) {
            simulation_.events.Flush();
        } else {
            EndEarly(Ending::Exited, "");
        }
    }

    void NoteStep(std::uint64_t step) {
        lastStepAt_ = simulation_.board.Now();
        report_.steps = step;
        report_.measurements = simulation_.console.Measurements();
        if (live_) {
            live_->StepBegan(step);
        }
        if (step % RunReport::kFootprintEvery == RunReport::kFootprintStep) {
            NoteFootprint(static_cast<std::size_t>(step / RunReport::kFootprintEvery));
        }
    }

    void NoteFootprint(std::size_t number) {
        if (number < report_.footprints.size()) {
            report_.footprints[number] = FootprintNow(simulation_.kernel);
            report_.footprintsTaken = number + 1;
        }
    }

    void Finish(Ending ending, const std::string& text) {
        if (live_) {
            live_->End();
        }
        simulation_.events.Finish();
        simulation_.waves.Finish();
        report_.boardTime = simulation_.board.Now();
        report_.steps = simulation_.console.Steps();
        report_.measurements = simulation_.console.Measurements();
        std::string choices;
        for (const std::uint64_t count : simulation_.scheduler.Choices()) {
            choices += std::to_string(count) + ", ";
        }
        std::snprintf(report_.choices, sizeof report_.choices, "%s", choices.c_str());
        report_.stepsPreempted = simulation_.scheduler.StepsPreempted();
        std::snprintf(report_.text, sizeof report_.text, "%s", text.c_str());
        std::string calls;
        for (const auto& [name, count] : simulation_.kernel.calls.Made()) {
            calls += name + " " + std::to_string(count) + "\n";
        }
        std::snprintf(report_.calls, sizeof report_.calls, "%s", calls.c_str());
        std::snprintf(report_.stacks, sizeof report_.stacks, "%s", stacks::Table().c_str());
        const Calls& made = simulation_.kernel.calls;
        std::snprintf(report_.faults, sizeof report_.faults, "%s", made.faults.Tables().c_str());
        std::snprintf(report_.missing, sizeof report_.missing, "%s",
                      (made.faults.Missing() + made.occasions.Missing()).c_str());
        std::snprintf(
            report_.board, sizeof report_.board, "%s",
            (WhatStays(ending) + (keepWorld_ ? KeptWorld(simulation_.board) : "")).c_str());
        report_.ending = ending;
    }

    /// What the kernel keeps beyond the program: with the power goes all of it, and what it has not
    /// put on the card.
    std::string WhatStays(Ending ending) {
        const Board& board = simulation_.board;
        CardCache& cache = simulation_.kernel.cache;
        const bool lost = ending == Ending::PowerCut || !board.card.Healthy();
        lost ? cache.Lose() : cache.SaveAll();
        return ending == Ending::PowerCut ? KeptState(Board({}, 0, 0)) : KeptState(board);
    }

    [[noreturn]] void EndEarly(Ending ending, const std::string& text) {
        if (Simulation::OfThisThread() == nullptr) {
            EndFromOutside(ending, text);
        }
        simulation_.ShowHeld(stdout);
        SIM_REAL(fflush)(stdout);
        Finish(ending, text);
        // A program built for coverage writes its counts only at an orderly exit.
        if (auto* dump = reinterpret_cast<void (*)()>(dlsym(RTLD_DEFAULT, "__gcov_dump"))) {
            dump();
        }
        _exit(0);
    }

    /// A process that was forked off, or a thread after its end, ends the run: the program is
    /// killed, and the launcher finds why.
    [[noreturn]] void EndFromOutside(Ending ending, const std::string& text) {
        std::snprintf(report_.text, sizeof report_.text, "%s", text.c_str());
        report_.ending = ending;
        SIM_REAL(kill)(program_, SIGKILL);
        _exit(EXIT_FAILURE);
    }

    const pid_t program_ = getpid();
    bool ended_ = false;
    RunReport& report_;
    const Nanoseconds stall_;
    const bool keepWorld_;
    Nanoseconds lastStepAt_ = 0;
    Simulation simulation_;
    std::unique_ptr<LiveRun> live_;
};

// Never destroyed: the program's threads and exit handlers may call in until the process is gone.
Session* session = nullptr;

std::string OwnProgram() {
    char path[4096];
    const ssize_t length = SIM_REAL(readlink)("/proc/self/exe", path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

/// Empty for a file that is not there, and for no file.
std::string TextOfFile(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What the launcher shares behind a descriptor; null when it cannot be had.
template <typename Shared>
Shared* MapShared(int descriptor) {
    void* page = SIM_REAL(mmap64)(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED,
                                  descriptor, 0);
    real::close(descriptor);
    return page == MAP_FAILED ? nullptr : static_cast<Shared*>(page);
}

/// Ends the program before it begins: there is no board that it could run on.
[[noreturn]] void Refuse(RunReport& report, const ScenarioError& error) {
    std::snprintf(report.text, sizeof report.text, "%s", error.text.c_str());
    report.ending = Ending::BadScenario;
    _exit(EXIT_FAILURE);
}

/// Comes before the C library's own constructor, which would set its environment.
__attribute__((constructor)) void ArmInTheNamedProgram(int, char**, char** environment) {
    environ = environment;
    const char* text = std::getenv(kRunVariable);
    if (text == nullptr) {
        return;
    }
    auto request = DecodeRunRequest(text);
    if (!request || request->program != OwnProgram()) {
        return;
    }
    // What the program starts in turn is none of ours.
    unsetenv(kRunVariable);
    unsetenv("LD_PRELOAD");
    if (request->libraryDescriptor >= 0) {
        real::close(request->libraryDescriptor);
    }
    auto* report = MapShared<RunReport>(request->reportDescriptor);
    const bool served = request->liveDescriptor >= 0;
    auto* live = served ? MapShared<LiveLink>(request->liveDescriptor) : nullptr;
    if (report == nullptr || (served && live == nullptr)) {
        _exit(EXIT_FAILURE); // rather than touch this machine's own devices
    }
    report->armed = 1;
    if (!request->scenarioFile.empty()) {
        auto read = ReadScenarioFile(request->scenarioFile);
        if (const auto* error = std::get_if<ScenarioError>(&read)) {
            Refuse(*report, *error);
        }
        request->options.scenario = std::move(std::get<Scenario>(read));
        if (const std::string& zone = request->options.scenario.zone; !zone.empty()) {
            setenv("TZ", zone.c_str(), 1);
        }
        stacks::wanted = request->options.scenario.measureStacks;
    }
    const std::string& boardFile = request->options.boardFile;
    const std::string state = TextOfFile(boardFile);
    session = new Session(request->options, *report);
    if (!session->BeginWith(state)) {
        Refuse(*report, {boardFile + ": is not what --board has written"});
    }
    if (served) {
        session->Serve(*live, TextOfFile(request->scenarioFile), request->options.pace);
    }
    watchdog::Begin();
    stacks::Begin(nullptr);
    report->gated = system_calls::Arm() ? 1 : 0;
}

__attribute__((destructor)) void TellTheEnd() {
    if (const Gate gate; gate && session != nullptr) {
        session->ProgramExits();
    }
}

} // namespace
} // namespace sim
