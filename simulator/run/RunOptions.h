#pragma once

#include "simulator/board/Board.h"
#include "simulator/kernel/Kernel.h"
#include "simulator/time/Scheduler.h"

#include <cstdint>
#include <optional>
#include <string>

namespace sim {

/// What the board of a run is like, and what befalls it.
struct Scenario {
    BoardSetup board;
    KernelSetup kernel;
    ThreadSetup threads;
    bool measureStacks = false; ///< of the program's threads
    std::string zone;           ///< of its local times; empty: UTC
};

inline constexpr Nanoseconds kDefaultStall = Seconds(86'400);

/// When a run ends, if the program does not end it: at the first limit that is reached.
struct RunLimits {
    std::optional<std::uint64_t> measurements;
    std::optional<std::uint64_t> steps;
    std::optional<std::uint64_t> calls;
    Nanoseconds boardTime = kNever;
    Nanoseconds stall = kNever; ///< without a step, once the instrument has shown anything
};

/// All that makes one run; the same options give the same run.
struct RunOptions {
    Scenario scenario;
    std::uint64_t seed = 1;
    std::int64_t startTime = WallClock::kDefaultStart; ///< seconds since 1970
    std::string root;       ///< folder on this machine for the card's and the mount point's files
    std::string eventsFile; ///< empty: none
    bool everyCall = false; ///< the events tell each call, those that succeed unseen too
    std::string vcdFile;    ///< the waveforms; empty: none
    std::string boardFile;  ///< what the programs before left on the board; empty: none was before
    bool keepWorld = false; ///< card, shaft, cell and clock go into boardFile too
    bool ioCosts = false;   ///< calls take board time (kernel/Calls.h)
    double pace = 0.0;      ///< board seconds per real second; 0: as fast as it goes
    RunLimits limits;
};

} // namespace sim
