// simulate: runs a program on the simulated instrument board.

#include "simulator/launcher/BoardLibrary.h"
#include "simulator/launcher/ChildProcess.h"
#include "simulator/launcher/Options.h"
#include "simulator/launcher/ProgramFile.h"
#include "simulator/launcher/RepeatingCommand.h"
#include "simulator/launcher/Summary.h"
#include "simulator/live/Bench.h"
#include "simulator/run/RunReport.h"
#include "simulator/run/RunRequest.h"
#include "simulator/run/RunRoot.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
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
    if (!options.run.eventsFile.empty()) {
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

/// Appends what a program that was stopped could not write itself. False, with a line that says
/// where the file ends, when it does not hold the whole run.
bool SaveRest(const std::string& option, const std::string& path, const sim::FileBuffer& rest) {
    int error = rest.error;
    const int file = rest.used == 0 || error != 0 ? -1 : open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file >= 0) {
        const auto end = static_cast<off_t>(rest.offset);
        if (pwrite(file, rest.text.data(), rest.used, end) != static_cast<ssize_t>(rest.used)) {
            error = ftruncate(file, end) == 0 ? ENOSPC : errno;
        }
        close(file);
    }
    if (error != 0) {
        std::cerr << "simulate: " << option << " " << path << ": " << std::strerror(error)
                  << " after " << rest.offset << " bytes; the rest of the run is not in it\n";
    }
    return error == 0;
}

/// What is wrong with the files that the run is to write; empty when nothing is.
std::string OutputProblem(const LauncherOptions& options) {
    struct Output {
        std::string option;
        std::string path;
        std::string holds;
    };
    const std::array outputs{Output{"--events", options.run.eventsFile, "the events"},
                             Output{"--vcd", options.run.vcdFile, "the waveforms"},
                             Output{"--board", options.run.boardFile, "the board"},
                             Output{"--summary", options.summaryFile, "the summary"}};
    for (const Output& output : outputs) {
        if (!Writable(output.path)) {
            return output.option + " " + output.path +
                   ": cannot be written to; takes a file in a folder that is there";
        }
        for (const Output* other = outputs.data(); other != &output; ++other) {
            std::error_code ignored;
            if (fs::equivalent(other->path, output.path, ignored)) {
                return output.option + " " + output.path + ": holds " + other->holds +
                       " already; takes another file";
            }
        }
    }
    return "";
}

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
    const sigset_t awaited = sim::AwaitedSignals();
    for (int signal = 0; signal != SIGINT && signal != SIGTERM;) {
        signal = sigwaitinfo(&awaited, nullptr);
    }
}

int Run(const LauncherOptions& options, const std::string& program) {
    const sim::BoardLibrary library;
    if (const std::string problem = library.Problem(); !problem.empty()) {
        return Refuse(ExitStatus::NotArmed, problem);
    }
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
    sim::ChildEnd end;
    {
        ProgressLine progress(options.run.pace == 0.0);
        sim::ChildCommand command =
            CommandFor(options, program, root.Path(), shared.descriptor, bench.get(), library);
        if (bench) {
            command.onStart = [&] { bench->Start(); };
        }
        end = RunChild(command, [&] { progress.Update(*shared.report); });
    }
    const sim::RunBuffers& files = shared.report->files;
    bool whole = SaveRest("--events", options.run.eventsFile, files.events);
    whole = SaveRest("--vcd", options.run.vcdFile, files.waves) && whole;
    sim::Outcome outcome = Judge(end, *shared.report, options);
    if (!whole && outcome.status == ExitStatus::AsAsked) {
        outcome.status = ExitStatus::CannotStart;
    }
    if (!options.summaryFile.empty() && outcome.status != ExitStatus::BadScenario) {
        std::ofstream(options.summaryFile, std::ios::trunc) << SummaryText(outcome, *shared.report);
    }
    if (!options.run.boardFile.empty() && shared.report->board[0] != '\0') {
        std::ofstream(options.run.boardFile, std::ios::trunc) << shared.report->board;
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
