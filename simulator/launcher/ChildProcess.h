#pragma once

#include <csignal>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace sim {

/// The signals that end a run, and its program's end: blocked from RunChild on, and waited for.
sigset_t AwaitedSignals();

/// How the program's process ended.
struct ChildEnd {
    enum class Kind { Exited, Signalled, TimedOut, Interrupted, NotStarted };

    Kind kind = Kind::Exited;
    int value = 0; ///< exit status, signal or errno
};

/// What to start, and with which additions to the environment.
struct ChildCommand {
    std::string path;
    std::vector<std::string> arguments; ///< with the program's name as first
    std::vector<std::pair<std::string, std::string>> environment;
    double realTimeLimit = 0.0;    ///< seconds; 0: none
    std::function<void()> onStart; ///< called once the program runs, if set
};

/// Starts the program on one processor, waits for its end and calls onTick some times a second
/// meanwhile. A program that outlives its limit, or the launcher, is killed.
ChildEnd RunChild(const ChildCommand& command, const std::function<void()>& onTick);

} // namespace sim
