#pragma once

#include <cstdlib>
#include <functional>
#include <string>

namespace sim {

/// How a run ended.
enum class Ending {
    Running,
    Exited,
    LimitReached,
    PowerCut,
    Deadlock,
    Stalled,
    Spinning, ///< the program works on and on without a call
    Unmodelled,
    OutputLost,
    BadScenario
};

/// Ends the run before the program does, in the way that whoever made the run has set.
struct RunEnd {
    /// Ends the process, or leaves by an exception.
    std::function<void(Ending, const std::string&)> how;

    [[noreturn]] void operator()(Ending ending, const std::string& text) const {
        how(ending, text);
        std::abort();
    }
};

} // namespace sim
