// Runs the instrument and counts what it costs, with the processor's own counters: instructions of the
// program and of the kernel on its behalf, context switches, memory. Board time stands still for the
// counting, and what this program itself does is not counted.

#include <fcntl.h>
#include <linux/perf_event.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <string>

namespace {

enum { kProgram, kKernel, kSwitches, kCounters, kReads = kCounters, kFigures };
using Counts = std::array<std::uint64_t, kFigures>;

constexpr int kQuietMilliseconds = 200;
constexpr int kSearchStep = 11;
constexpr int kMeasured = 2; // the first one mounts the card and makes the log

Counts operator-(const Counts& a, const Counts& b) {
    Counts difference{};
    std::transform(a.begin(), a.end(), b.begin(), difference.begin(), std::minus<>());
    return difference;
}

Counts& operator+=(Counts& a, const Counts& b) {
    std::transform(a.begin(), a.end(), b.begin(), a.begin(), std::plus<>());
    return a;
}

// A counter of a process and all its threads, from its exec on; -1 when there is none.
int OpenCounter(pid_t pid, std::uint32_t type, std::uint64_t event, bool program, bool kernel) {
    perf_event_attr wanted{};
    wanted.size = sizeof wanted;
    wanted.type = type;
    wanted.config = event;
    wanted.disabled = 1;
    wanted.inherit = 1;
    wanted.enable_on_exec = 1;
    wanted.exclude_user = program ? 0 : 1;
    wanted.exclude_kernel = kernel ? 0 : 1;
    wanted.exclude_hv = 1;
    return static_cast<int>(syscall(SYS_perf_event_open, &wanted, pid, -1, -1, 0));
}

class Meter {
  public:
    explicit Meter(pid_t pid) : calls_("/proc/" + std::to_string(pid) + "/io") {
        constexpr std::uint64_t instructions = PERF_COUNT_HW_INSTRUCTIONS;
        files_ = {OpenCounter(pid, PERF_TYPE_HARDWARE, instructions, true, false),
                  OpenCounter(pid, PERF_TYPE_HARDWARE, instructions, false, true),
                  OpenCounter(pid, PERF_TYPE_SOFTWARE, PERF_COUNT_SW_CONTEXT_SWITCHES, true, true)};
    }

    bool Counts() const {
        return *std::min_element(files_.begin(), files_.end()) >= 0;
    }

    // What was counted since the last call.
    ::Counts Take() {
        ::Counts now{};
        for (int i = 0; i < kCounters; ++i) {
            if (read(files_[i], &now[i], sizeof now[i]) != sizeof now[i]) {
                std::cout << "a counter cannot be read\n";
            }
        }
        std::ifstream calls(calls_);
        for (std::string word; calls >> word && word != "syscr:";) {
        }
        calls >> now[kReads];
        const ::Counts passed = now - last_;
        last_ = now;
        return passed;
    }

  private:
    std::string calls_;
    std::array<int, kCounters> files_{};
    ::Counts last_{};
};

void Print(const std::string& what, const Counts& counts) {
    std::cout << what << ": program " << counts[kProgram] << " kernel " << counts[kKernel]
              << " switches " << counts[kSwitches] << '\n';
}

void PrintMemory(pid_t pid) {
    const std::string folder = "/proc/" + std::to_string(pid);
    std::ifstream status(folder + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM")) {
            std::cout << line << '\n';
        }
    }
    const std::filesystem::directory_iterator files(folder + "/fd");
    std::cout << "descriptors: " << std::distance(begin(files), end(files)) << '\n';
}

// Follows the console, and books what was counted to the step that its lines announce.
class Account {
  public:
    explicit Account(Meter& meter) : meter_(meter) {}

    bool Done() const { return measurement_ > kMeasured; }

    void Quiet() {
        const Counts passed = meter_.Take();
        if (quiet_) {
            rest_ = std::min(rest_, passed);
        }
        quiet_ = true;
        span_ += passed;
    }

    void Line(const std::string& line) {
        span_ += meter_.Take();
        quiet_ = false;
        if (!started_) {
            started_ = true;
            Book("start-up until the first line");
        }
        int step = 0;
        if (std::sscanf(line.c_str(), "main.cpp, 889: %d,", &step) == 1) {
            EndStep(step);
        }
    }

    void PrintSums() const {
        Print("a measurement outside step 11", others_);
        Print("a measurement in step 11", search_);
        // All but four or so of them are looks at the home sensor.
        Print("of it for each read", {search_[kProgram] / search_[kReads],
                                      search_[kKernel] / search_[kReads],
                                      search_[kSwitches] / search_[kReads]});
        Print("at rest, 200 ms", rest_);
    }

  private:
    void Book(const std::string& what) {
        Print(what, span_);
        span_ = {};
    }

    void EndStep(int next) {
        if (step_ == 0) {
            Book("from there to step 1");
        }
        if (measurement_ == kMeasured) {
            (step_ == kSearchStep ? search_ : others_) += span_;
            Book("step " + std::to_string(step_));
        }
        span_ = {};
        measurement_ += next == 1 ? 1 : 0;
        step_ = next;
    }

    Meter& meter_;
    bool started_ = false;
    bool quiet_ = false;
    int step_ = 0;
    int measurement_ = 0;
    Counts span_{};
    Counts others_{};
    Counts search_{};
    Counts rest_{~0ULL, ~0ULL, ~0ULL, ~0ULL};
};

pid_t Start(const char* program, int console, int go) {
    const pid_t pid = fork();
    if (pid == 0) {
        char byte = 0;
        dup2(console, STDOUT_FILENO);
        if (read(go, &byte, 1) == 1) {
            execlp(program, program, nullptr);
        }
        _exit(1);
    }
    return pid;
}

void Follow(int console, Account& account) {
    std::string text;
    while (!account.Done()) {
        pollfd waited{console, POLLIN, 0};
        char piece[512];
        if (poll(&waited, 1, kQuietMilliseconds) == 0) {
            account.Quiet();
            continue;
        }
        const ssize_t size = read(console, piece, sizeof piece);
        if (size <= 0) {
            return;
        }
        text.append(piece, static_cast<std::size_t>(size));
        for (std::size_t end; (end = text.find('\n')) != std::string::npos;) {
            account.Line(text.substr(0, end));
            text.erase(0, end + 1);
        }
    }
}

} // namespace

int main(int argc, char* argv[]) {
    int console[2];
    int go[2];
    if (argc != 2 || pipe2(console, O_CLOEXEC) != 0 || pipe2(go, O_CLOEXEC) != 0) {
        return 2;
    }
    const pid_t pid = Start(argv[1], console[1], go[0]);
    close(console[1]);
    // Ahead of the instrument, so that a line is booked when it is written.
    const sched_param first{1};
    sched_setscheduler(0, SCHED_FIFO, &first);
    Meter meter(pid);
    if (!meter.Counts()) {
        std::perror("no counters");
        kill(pid, SIGKILL);
        return 1;
    }
    Account account(meter);
    if (write(go[1], "", 1) == 1) {
        Follow(console[0], account);
    }
    account.PrintSums();
    PrintMemory(pid);
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return 0;
}
