// Runs the instrument and counts what it costs, with the processor's own counters: instructions of
// the program and of the kernel on its behalf, context switches, memory. Board time stands still
// for the counting, and what this program itself does is not counted.

#include <fcntl.h>
#include <linux/perf_event.h>
#include <poll.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>

namespace {

struct Counts {
    std::uint64_t program = 0;  // instructions
    std::uint64_t kernel = 0;   // instructions
    std::uint64_t switches = 0; // of context
    std::uint64_t reads = 0;    // calls of read
};

constexpr int kQuietMilliseconds = 200;
constexpr int kSearchStep = 11;
constexpr int kMeasured = 2; // the first one mounts the card and makes the log

Counts operator-(const Counts& a, const Counts& b) {
    return {a.program - b.program, a.kernel - b.kernel, a.switches - b.switches, a.reads - b.reads};
}

Counts operator+(const Counts& a, const Counts& b) {
    return {a.program + b.program, a.kernel + b.kernel, a.switches + b.switches, a.reads + b.reads};
}

// A counter of a process and all its threads, from its exec on; negative when there is none.
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
    explicit Meter(pid_t pid)
        : program_(OpenCounter(pid, PERF_TYPE_HARDWARE, PERF_COUNT_HW_INSTRUCTIONS, true, false)),
          kernel_(OpenCounter(pid, PERF_TYPE_HARDWARE, PERF_COUNT_HW_INSTRUCTIONS, false, true)),
          switches_(
              OpenCounter(pid, PERF_TYPE_SOFTWARE, PERF_COUNT_SW_CONTEXT_SWITCHES, true, true)),
          calls_("/proc/" + std::to_string(pid) + "/io") {}

    [[nodiscard]] bool Works() const { return program_ >= 0 && kernel_ >= 0 && switches_ >= 0; }

    // What was counted since the last call.
    Counts Take() {
        const Counts now{Value(program_), Value(kernel_), Value(switches_), Reads()};
        const Counts passed = now - last_;
        last_ = now;
        return passed;
    }

  private:
    static std::uint64_t Value(int counter) {
        std::uint64_t value = 0;
        if (read(counter, &value, sizeof value) != sizeof value) {
            std::cout << "a counter cannot be read\n";
        }
        return value;
    }

    [[nodiscard]] std::uint64_t Reads() const {
        std::ifstream calls(calls_);
        std::uint64_t reads = 0;
        for (std::string word; calls >> word && word != "syscr:";) {
        }
        calls >> reads;
        return reads;
    }

    int program_;
    int kernel_;
    int switches_;
    std::string calls_;
    Counts last_;
};

void Print(const std::string& what, const Counts& counts) {
    std::cout << what << ": program " << counts.program << " kernel " << counts.kernel
              << " switches " << counts.switches << '\n';
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

    [[nodiscard]] bool Done() const { return measurement_ > kMeasured; }

    void Quiet() {
        const Counts passed = meter_.Take();
        // The first one may still hold what the last line's step did.
        if (quiet_ && (!rest_ || passed.kernel < rest_->kernel)) {
            rest_ = passed;
        }
        quiet_ = true;
        span_ = span_ + passed;
    }

    void Line(const std::string& line) {
        span_ = span_ + meter_.Take();
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
        Print("of it for each read",
              {search_.program / search_.reads, search_.kernel / search_.reads});
        Print("at rest, 200 ms", rest_.value_or(Counts{}));
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
            Counts& sum = step_ == kSearchStep ? search_ : others_;
            sum = sum + span_;
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
    Counts span_;
    Counts others_;
    Counts search_;
    std::optional<Counts> rest_;
};

using Pipe = std::array<int, 2>;

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
        std::array<char, 512> piece{};
        if (poll(&waited, 1, kQuietMilliseconds) == 0) {
            account.Quiet();
            continue;
        }
        const ssize_t size = read(console, piece.data(), piece.size());
        if (size <= 0) {
            return;
        }
        text.append(piece.data(), static_cast<std::size_t>(size));
        for (std::size_t end = 0; (end = text.find('\n')) != std::string::npos;) {
            account.Line(text.substr(0, end));
            text.erase(0, end + 1);
        }
    }
}

} // namespace

int main(int argc, char* argv[]) {
    Pipe console{};
    Pipe go{};
    if (argc != 2 || pipe2(console.data(), O_CLOEXEC) != 0 || pipe2(go.data(), O_CLOEXEC) != 0) {
        return 2;
    }
    const pid_t pid = Start(argv[1], console[1], go[0]);
    close(console[1]);
    // Ahead of the instrument, so that a line is booked when it is written.
    const sched_param first{1};
    sched_setscheduler(0, SCHED_FIFO, &first);
    Meter meter(pid);
    if (!meter.Works()) {
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
