// simulate: runs a program on the simulated instrument board.

#include "simulator/launcher/BoardLibrary.h"
#include "simulator/launcher/ChildProcess.h"
#include "simulator/launcher/Options.h"
#include "simulator/launcher/OutputFiles.h"
#include "simulator/launcher/ProgramFile.h"
#include "simulator/launcher/RepeatingCommand.h"
#include "simulator/launcher/Summary.h"
#include "simulator/live/Bench.h"
#include "simulator/run/RunReport.h"
#include "simulator/run/RunRequest.h"
#include "simulator/run/RunRoot.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using sim::ExitStatus;
using sim::LauncherOptions;
using sim::RunReport;

int Refuse(ExitStatus status, const std::string& line) {
    std::cerr << "simulate: " << line << "\n";
    return static_cast<int>(status);
}

/// The page shared with the program, behind a descriptor that the program inherits.
struct SharedReport {
    SharedReport() : descriptor(memfd_create("run-report", 0)) {
        if (descriptor < 0 || ftruncate(descriptor, sizeof(RunReport)) != 0) {
            return;
        }
        void* page =
            mmap(nullptr, sizeof(RunReport), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        if (page != MAP_FAILED) {
            report = new (page) RunReport;
        }
    }

    int descriptor;
    RunReport* report = nullptr;
};

/// Adds to a variable of options in the form that the sanitizers read, after what the user set.
std::pair<std::string, std::string> SanitizerOptions(const char* name, const std::string& added) {
    const char* present = std::getenv(name);
    return {name, (present != nullptr ? std::string(present) + ":" : std::string()) + added};
}

sim::ChildCommand CommandFor(const LauncherOptions& options, const std::string& program,
                             const std::string& root, int report, const sim::Bench* bench,
                             const sim::BoardLibrary& library) {
    sim::RunRequest request;
    request.program = program;
    request.reportDescriptor = report;
    request.liveDescriptor = bench != nullptr ? bench->Descriptor() : -1;
    request.libraryDescriptor = library.Descriptor();
    request.scenarioFile = options.scenarioFile;
    std::error_code error;
    request.options = options.run;
    request.options.root = root;
    if (!options.run.eventsFile.empty() && options.run.eventsFile != sim::kStandardOutput) {
        request.options.eventsFile = fs::absolute(options.run.eventsFile, error);
    }
    if (!options.run.vcdFile.empty()) {
        request.options.vcdFile = fs::absolute(options.run.vcdFile, error);
    }
    if (!options.run.boardFile.empty()) {
        request.options.boardFile = fs::absolute(options.run.boardFile, error);
    }
    sim::ChildCommand command;
    command.path = program;
    command.arguments = options.program;
    command.realTimeLimit = options.realTime;
    command.environment = {{"LD_PRELOAD", library.LoaderName()},
                           {sim::kRunVariable, Encode(request)},
                           {"TZ", "UTC"},
                           SanitizerOptions("ASAN_OPTIONS", "verify_asan_link_order=0"),
                           // Threads that a limit stops in their work are no leak.
                           SanitizerOptions("TSAN_OPTIONS", "ignore_noninstrumented_modules=1:"
                                                            "report_thread_leaks=0")};
    return command;
}

/// The same program under gdb, which is not to meet the board itself.
sim::ChildCommand UnderDebugger(const sim::ChildCommand& program, const std::string& debugger) {
    sim::ChildCommand command = program;
    const auto [preload, library] = command.environment.front();
    command.environment.erase(command.environment.begin());
    command.path = debugger;
    command.interactive = true;
    command.arguments = {
        "gdb",    "-q",
        "-ex",    "set startup-with-shell off",
        "-ex",    "set environment " + preload + " " + library,
        "-ex",    "handle SIGSYS nostop noprint pass",
        "-ex",    "handle SIG" + std::to_string(sim::kWatchdogSignal) + " nostop noprint pass",
        "--args", program.path};
    command.arguments.insert(command.arguments.end(), program.arguments.begin() + 1,
                             program.arguments.end());
    return command;
}

/// One line on a terminal that shows nothing else: how far a long run has come.
class ProgressLine {
  public:
    explicit ProgressLine(bool wanted)
        : shown_(wanted && isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0) {}
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() {
        if (used_) {
            std::cerr << "\r\033[K";
        }
    }

    void Update(const RunReport& report) {
        if (shown_) {
            std::cerr << "\rstep " << report.steps << ", " << report.measurements
                      << " measurements, " << report.boardTime / 1'000'000'000
                      << " s of board time\033[K" << std::flush;
            used_ = true;
        }
    }

  private:
    bool shown_;
    bool used_ = false;
};

std::unique_ptr<sim::Bench> MakeBench(const LauncherOptions& options, const std::string& root) {
    std::ifstream scenario(options.scenarioFile);
    return std::make_unique<sim::Bench>(
        sim::BenchSetup{*options.servePort,
                        sim::Beside("share/tavrelin/bench"),
                        root + "/card",
                        {std::istreambuf_iterator<char>(scenario), {}},
                        sim::RepeatingCommand(options)});
}

/// The bench stays when the program is gone, to show why.
void AwaitInterruption() {
    while (sigwaitinfo(&sim::AwaitedSignals(), nullptr) == SIGCHLD) {
    }
}

int Run(const LauncherOptions& options, const std::string& program) {
    const sim::BoardLibrary library;
    if (const std::string problem = library.Problem(); !problem.empty()) {
        return Refuse(ExitStatus::NotArmed, problem);
    }
    sim::AwaitedSignals(); // from here on there is something to tidy up
    const sim::RunRoot root(options.root, options.resume);
    if (!root.Problem().empty()) {
        return Refuse(ExitStatus::CannotStart, root.Problem());
    }
    if (const std::string problem = OutputProblem(options, program); !problem.empty()) {
        return Refuse(ExitStatus::CannotStart, problem);
    }
    const SharedReport shared;
    if (shared.report == nullptr) {
        return Refuse(ExitStatus::CannotStart, "no memory to share with the program");
    }
    std::unique_ptr<sim::Bench> bench;
    if (options.servePort) {
        if (std::error_code error; fs::exists(options.scenarioFile, error) &&
                                   !fs::is_regular_file(options.scenarioFile, error)) {
            return Refuse(ExitStatus::CannotStart,
                          "--scenario " + options.scenarioFile +
                              ": --serve takes a file that can be read twice");
        }
        bench = MakeBench(options, root.Path());
        if (!bench->Problem().empty()) {
            return Refuse(ExitStatus::CannotStart, bench->Problem());
        }
        std::cerr << "simulate: the bench is at " << bench->Address() << std::endl;
    }
    const sim::ProgramFile debugger = sim::FindProgram("gdb");
    if (options.debugger && debugger.path.empty()) {
        return Refuse(ExitStatus::CannotStart, "--gdb: " + debugger.problem + " (package gdb)");
    }
    sim::ChildEnd end;
    {
        ProgressLine progress(options.run.pace == 0.0);
        sim::ChildCommand command =
            CommandFor(options, program, root.Path(), shared.descriptor, bench.get(), library);
        if (options.debugger) {
            command = UnderDebugger(command, debugger.path);
        }
        if (bench) {
            command.onStart = [&] { bench->Start(); };
        }
        command.onStop = [&] { shared.report->wish = sim::Wish::Stop; };
        end = RunChild(command, [&] {
            shared.report->wish = sim::Wish::Flush;
            progress.Update(*shared.report);
        });
    }
    const sim::RunBuffers& files = shared.report->files;
    bool whole = SaveRest("--events", options.run.eventsFile, files.events);
    whole = SaveRest("--vcd", options.run.vcdFile, files.waves) && whole;
    if (shared.report->board[0] != '\0') {
        whole = sim::Save("--board", options.run.boardFile, shared.report->board) && whole;
    }
    sim::Outcome outcome = Judge(end, *shared.report, options);
    const auto blame = [&] {
        if (!whole && outcome.status == ExitStatus::AsAsked) {
            outcome.status = ExitStatus::CannotStart;
        }
    };
    blame();
    if (outcome.status != ExitStatus::BadScenario) {
        whole = sim::Save("--summary", options.summaryFile, SummaryText(outcome, *shared.report));
        blame();
    }
    if (const std::string missing = Missing(*shared.report); !missing.empty()) {
        std::cerr << "simulate: never came: " << missing << "\n";
    }
    if (!outcome.line.empty()) {
        std::cerr << outcome.line << "\n";
    }
    if (bench && shared.report->armed != 0 && outcome.status != ExitStatus::BadScenario &&
        end.kind != sim::ChildEnd::Kind::Interrupted) {
        bench->End(outcome.line.empty() ? outcome.word : outcome.line);
        AwaitInterruption();
    }
    return static_cast<int>(outcome.status);
}

} // namespace

int main(int argc, char** argv) {
    sim::FillStandardDescriptors();
    int status = 0;
    const auto options = sim::ParseCommandLine(argc, argv, status);
    if (!options) {
        return status;
    }
    const sim::ProgramFile program = sim::FindProgram(options->program.front());
    if (!program.problem.empty()) {
        return Refuse(program.path.empty() ? ExitStatus::CannotStart : ExitStatus::NotArmed,
                      program.problem);
    }
    return Run(*options, program.path);
}
