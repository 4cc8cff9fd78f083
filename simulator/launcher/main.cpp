// simulate: runs a program on the simulated instrument board.

#include "simulator/launcher/ChildProcess.h"
#include "simulator/launcher/Options.h"
#include "simulator/launcher/ProgramFile.h"
#include "simulator/launcher/Summary.h"
#include "simulator/run/RunReport.h"
#include "simulator/run/RunRequest.h"
#include "simulator/run/RunRoot.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
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

std::string LibraryPath() {
    std::error_code error;
    const fs::path own = fs::canonical("/proc/self/exe", error);
    return (own.parent_path().parent_path() / "lib" / "libsimulated-board.so").string();
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
                             const std::string& root, int report) {
    sim::RunRequest request;
    request.program = program;
    request.reportDescriptor = report;
    request.scenarioFile = options.scenarioFile;
    std::error_code error;
    request.options = options.run;
    request.options.root = root;
    if (!options.run.eventsFile.empty()) {
        request.options.eventsFile = fs::absolute(options.run.eventsFile, error);
    }
    if (!options.run.boardFile.empty()) {
        request.options.boardFile = fs::absolute(options.run.boardFile, error);
    }
    sim::ChildCommand command;
    command.path = program;
    command.arguments = options.program;
    command.realTimeLimit = options.realTime;
    command.environment = {{"LD_PRELOAD", LibraryPath()},
                           {sim::kRunVariable, Encode(request)},
                           {"TZ", "UTC"},
                           SanitizerOptions("ASAN_OPTIONS", "verify_asan_link_order=0"),
                           // Threads that a limit stops in their work are no leak.
                           SanitizerOptions("TSAN_OPTIONS", "ignore_noninstrumented_modules=1:"
                                                            "report_thread_leaks=0")};
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

bool Writable(const std::string& path) {
    return path.empty() || std::ofstream(path, std::ios::app).is_open();
}

/// Appends the events that a program which was stopped could not write itself.
void SaveEvents(const std::string& path, const sim::EventBuffer& rest) {
    const int file = rest.used == 0 ? -1 : open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file >= 0) {
        static_cast<void>(
            pwrite(file, rest.text.data(), rest.used, static_cast<off_t>(rest.offset)) == 0);
        close(file);
    }
}

/// What is wrong with the files that the run is to write; empty when nothing is.
std::string OutputProblem(const LauncherOptions& options) {
    std::error_code ignored;
    for (const auto& [option, path] : {std::pair{"--events", options.run.eventsFile},
                                       std::pair{"--board", options.run.boardFile},
                                       std::pair{"--summary", options.summaryFile}}) {
        if (!Writable(path)) {
            return std::string(option) + " " + path +
                   ": cannot be written to; takes a file in a folder that is there";
        }
    }
    return fs::equivalent(options.run.eventsFile, options.summaryFile, ignored)
               ? "--summary " + options.summaryFile +
                     ": holds the events already; takes another file"
               : "";
}

int Run(const LauncherOptions& options, const std::string& program) {
    const sim::RunRoot root(options.root);
    if (!root.Problem().empty()) {
        return Refuse(ExitStatus::CannotStart, root.Problem());
    }
    if (const std::string problem = OutputProblem(options); !problem.empty()) {
        return Refuse(ExitStatus::CannotStart, problem);
    }
    const SharedReport shared;
    if (shared.report == nullptr) {
        return Refuse(ExitStatus::CannotStart, "no memory to share with the program");
    }
    sim::ChildEnd end;
    {
        ProgressLine progress(options.run.pace == 0.0);
        end = RunChild(CommandFor(options, program, root.Path(), shared.descriptor),
                       [&] { progress.Update(*shared.report); });
    }
    SaveEvents(options.run.eventsFile, shared.report->events);
    const sim::Outcome outcome = Judge(end, *shared.report, options);
    if (!options.summaryFile.empty() && outcome.status != ExitStatus::BadScenario) {
        std::ofstream(options.summaryFile, std::ios::trunc) << SummaryText(outcome, *shared.report);
    }
    if (!options.run.boardFile.empty() && shared.report->board[0] != '\0') {
        std::ofstream(options.run.boardFile, std::ios::trunc) << shared.report->board;
    }
    if (!outcome.line.empty()) {
        std::cerr << outcome.line << "\n";
    }
    return static_cast<int>(outcome.status);
}

} // namespace

int main(int argc, char** argv) {
    int status = 0;
    const auto options = sim::ParseCommandLine(argc, argv, status);
    if (!options) {
        return status;
    }
    if (!fs::exists(LibraryPath())) {
        return Refuse(ExitStatus::CannotStart,
                      LibraryPath() + " is missing; build the whole project");
    }
    const sim::ProgramFile program = sim::FindProgram(options->program.front());
    if (!program.problem.empty()) {
        return Refuse(program.path.empty() ? ExitStatus::CannotStart : ExitStatus::NotArmed,
                      program.problem);
    }
    return Run(*options, program.path);
}
