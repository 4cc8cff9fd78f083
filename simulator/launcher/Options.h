#pragma once

#include "simulator/run/RunOptions.h"

#include <optional>
#include <string>
#include <vector>

namespace sim {

/// Exit statuses of `simulate`; a run that ended as asked is 0.
enum class ExitStatus {
    AsAsked = 0,
    WrongUse = 2, ///< option or value
    BadScenario = 3,
    ProgramFailed = 4, ///< the program ended by itself with a status other than 0
    Crashed = 10,
    Deadlock = 11,
    RealTimeLimit = 12,
    Unmodelled = 13,
    NotArmed = 14,
    CannotStart = 15 ///< program, root folder or file cannot be used, or a file took no more
};

/// The command line of `simulate`.
struct LauncherOptions {
    RunOptions run;
    std::string scenarioFile;
    std::string root;                 ///< empty: a temporary folder that goes with the run
    bool debugger = false;            ///< the program is started under gdb
    bool resume = false;              ///< begins with what an earlier run left in root
    std::string summaryFile;          ///< empty: none
    double realTime = 0.0;            ///< limit in seconds; 0: none
    std::optional<int> servePort;     ///< of the live bench; 0: any free one
    std::vector<std::string> program; ///< with its arguments
};

/// Reads the command line. Nothing when the launcher is to end at once, with the status in
/// exitStatus.
std::optional<LauncherOptions> ParseCommandLine(int argc, char** argv, int& exitStatus);

} // namespace sim
