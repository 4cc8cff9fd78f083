// Stands in for the C library's calls that start processes. What the program starts runs on this
// machine, in real time, without a simulated board; only the shell's `mount` shows the board's
// mount table.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

using sim::AsResult;
using sim::Gate;

/// Puts a folder of the board's own tools first in the shell's search path while it lives.
class BoardTools {
  public:
    explicit BoardTools(const std::string& folder) {
        const char* path = std::getenv("PATH");
        had_ = path != nullptr;
        before_ = had_ ? path : "";
        setenv("PATH", (folder + (had_ ? ":" + before_ : std::string())).c_str(), 1);
    }
    BoardTools(const BoardTools&) = delete;
    BoardTools& operator=(const BoardTools&) = delete;
    ~BoardTools() {
        if (had_) {
            setenv("PATH", before_.c_str(), 1);
        } else {
            unsetenv("PATH");
        }
    }

  private:
    bool had_;
    std::string before_;
};

/// A forked process goes first: its parent waits until it starts a tool or ends, so that what both
/// print always comes in the same order. Both ends of a pipe; the child's end stands for its start.
class HeadStart {
  public:
    HeadStart() {
        if (pipe2(ends_, O_CLOEXEC) != 0) {
            ends_[0] = ends_[1] = -1;
        }
    }

    /// In the child: lasts until over() or the process's end.
    void Begin() {
        Close(ends_[0]);
        own = ends_[1];
    }
    /// In the parent, of a child that there is or not: waits for the child's head start to end.
    void Await() {
        Close(ends_[1]);
        char nothing = 0;
        while (sim::real::read(ends_[0], &nothing, 1) < 0 && errno == EINTR) {
        }
        Close(ends_[0]);
    }
    /// In whatever process: ends its head start, if it has one.
    static void Over() {
        Close(own);
        own = -1;
    }

  private:
    static void Close(int descriptor) {
        if (descriptor >= 0) {
            sim::real::close(descriptor);
        }
    }

    inline static int own = -1;
    int ends_[2] = {-1, -1};
};

} // namespace

extern "C" {

int system(const char* command) {
    Gate gate;
    if (!gate || command == nullptr) {
        HeadStart::Over();
        return SIM_REAL(system)(command);
    }
    if (const long error = gate->kernel.calls.Admit("system", ""); error != 0) {
        return AsResult(error);
    }
    gate->events.Flush();
    const std::string folder = gate->kernel.paths.ToolFolder();
    gate->kernel.mounts.WriteTools(folder);
    const BoardTools tools(folder);
    const int status = SIM_REAL(system)(command);
    gate->events.Add("system", "-", sim::EventLog::Quoted(command) + " " + std::to_string(status));
    return status;
}

pid_t fork() noexcept {
    Gate gate;
    if (!gate) {
        return SIM_REAL(fork)();
    }
    if (const long error = gate->kernel.calls.Admit("fork", ""); error != 0) {
        return AsResult(error);
    }
    gate->events.Flush();
    HeadStart headStart;
    const pid_t child = SIM_REAL(fork)();
    if (child == 0) {
        // A run that is stopped leaves nobody behind.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        headStart.Begin();
        gate->Leave();
    } else {
        headStart.Await();
        gate->events.Add("fork", "-", child > 0 ? "ok" : "failed");
    }
    return child;
}

int kill(pid_t process, int signal) noexcept {
    if (Gate gate; gate) {
        if (const long error = gate->kernel.calls.Admit("kill", ""); error != 0) {
            return AsResult(error);
        }
        gate->events.Add("kill", "-", "signal " + std::to_string(signal));
    }
    return SIM_REAL(kill)(process, signal);
}

} // extern "C"
