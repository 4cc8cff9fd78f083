// Stands in for the C library's calls that start processes. What the program starts runs on this
// machine, in real time, without a simulated board; only the shell's `mount` shows the board's
// mount table.

#include "simulator/interpose/Gate.h"
#include "simulator/interpose/PathWalk.h"
#include "simulator/interpose/Processes.h"
#include "simulator/interpose/SystemCallGate.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

using sim::AsResult;
using sim::Gate;
using sim::system_calls::Through;

/// Puts a folder of the board's own tools first in the shell's search path while it lives.
class BoardTools {
  public:
    explicit BoardTools(sim::Simulation& simulation) {
        sim::RefuseToolsOnBoard(simulation);
        simulation.events.Flush();
        const std::string folder = simulation.kernel.paths.ToolFolder();
        simulation.kernel.mounts.WriteTools(folder);
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
    /// In the parent, of a child that there is or not: waits for the child's head start to end. One
    /// that goes on for long may itself wait for the parent.
    void Await() {
        constexpr int longest = 2'000; // ms
        Close(ends_[1]);
        pollfd ended{ends_[0], POLLIN, 0};
        while (SIM_REAL(poll)(&ended, 1, longest) < 0 && errno == EINTR) {
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

long sim::ForkOnBoard(Simulation& simulation, const std::function<pid_t()>& fork) {
    if (const long error = simulation.kernel.calls.Admit("fork", ""); error != 0) {
        return error;
    }
    simulation.events.Flush();
    HeadStart headStart;
    const pid_t child = fork();
    if (child == 0) {
        // A run that is stopped leaves nobody behind.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        headStart.Begin();
        simulation.Leave();
        system_calls::Arm();
    } else {
        headStart.Await();
        simulation.events.Add("fork", "-", child > 0 ? "ok" : "failed");
    }
    return child;
}

void sim::RefuseToolsOnBoard(Simulation& simulation) {
    if (!FolderOnBoard().empty()) {
        simulation.end(Ending::Unmodelled, "another program that is started in " + FolderOnBoard());
    }
}

extern "C" {

int system(const char* command) {
    const Through through;
    Gate gate;
    if (!gate || command == nullptr) {
        HeadStart::Over();
        return SIM_REAL(system)(command);
    }
    if (const long error = gate->kernel.calls.Admit("system", ""); error != 0) {
        return AsResult(error);
    }
    const BoardTools tools(*gate);
    const int status = SIM_REAL(system)(command);
    gate->events.Add("system", "-", sim::EventLog::Quoted(command) + " " + std::to_string(status));
    return status;
}

pid_t fork() noexcept {
    Gate gate;
    if (!gate) {
        return SIM_REAL(fork)();
    }
    return AsResult<pid_t>(sim::ForkOnBoard(*gate, [] {
        const pid_t child = SIM_REAL(fork)();
        return child < 0 ? -errno : child;
    }));
}

pid_t vfork() noexcept {
    return fork(); // the parent's memory is the simulation's
}

FILE* popen(const char* command, const char* mode) {
    const Through through;
    Gate gate;
    if (!gate) {
        return SIM_REAL(popen)(command, mode);
    }
    gate->kernel.OtherDescriptorsChange();
    const BoardTools tools(*gate);
    return SIM_REAL(popen)(command, mode);
}

int posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const arguments[],
                char* const environment[]) {
    const Through through;
    if (Gate gate; gate) {
        sim::RefuseToolsOnBoard(*gate);
    }
    return SIM_REAL(posix_spawn)(child, path, actions, attributes, arguments, environment);
}

int posix_spawnp(pid_t* child, const char* name, const posix_spawn_file_actions_t* actions,
                 const posix_spawnattr_t* attributes, char* const arguments[],
                 char* const environment[]) {
    const Through through;
    if (Gate gate; gate) {
        sim::RefuseToolsOnBoard(*gate);
    }
    return SIM_REAL(posix_spawnp)(child, name, actions, attributes, arguments, environment);
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
