#pragma once

#include <csignal>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace sim {

/// Holds back, from the first call on, the signals that end a run unless whoever started this
/// process ignores them, and the one of the program's end: they are waited for.
const sigset_t& AwaitedSignals();

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
    bool interactive = false;      ///< an interrupt from the terminal is the program's own affair
    std::function<void()> onStop;  ///< asks the program to end by itself
    std::function<void()> onStart; ///< called once the program runs, if set
};

/// Starts the program on one processor, waits for its end and calls onTick some times a second
/// meanwhile. A program that outlives its limit, or the run, is asked to end, and killed when it
/// does not at once; one that outlives the launcher is killed.
ChildEnd RunChild(const ChildCommand& command, const std::function<void()>& onTick);

} // namespace sim
