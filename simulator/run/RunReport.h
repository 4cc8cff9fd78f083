#pragma once

#include "simulator/kernel/BufferedFile.h"
#include "simulator/time/RunEnd.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace sim {

/// What the memory and the descriptors of the program come to at a moment. The simulated board
/// lives in the same process and is counted with it.
struct Footprint {
    std::uint64_t heapBytes = 0;     ///< in use, as the allocator counts
    std::uint64_t residentBytes = 0; ///< of the process
    std::uint32_t boardHandles = 0;  ///< descriptors, mappings and mount tables on board paths
    std::uint32_t hostDescriptors = 0;
    std::uint32_t threads = 0;
    std::uint32_t mappings = 0;
};

/// What is on its way to the files of a run.
struct RunBuffers {
    FileBuffer events;
    FileBuffer waves;
};

/// What the launcher asks of the program, which looks whenever board time has passed.
enum class Wish : std::uint32_t {
    None,
    Flush, ///< so that whoever follows the events sees them
    Stop
};

/// The page that launcher and program share: the program tells how its run goes.
struct RunReport {
    /// Footprints are taken at step 200 and every 1700 steps (100 measurements) later, in the same
    /// row of the program's table, so that equal use of memory gives equal figures.
    static constexpr std::uint64_t kFootprintStep = 200;
    static constexpr std::uint64_t kFootprintEvery = 1700;
    static constexpr std::size_t kFootprints = 118; ///< of a whole life, 200000 steps

    std::atomic<Wish> wish{Wish::None};
    std::atomic<std::uint32_t> armed{0};
    std::atomic<std::uint32_t> gated{0}; ///< every system call passes the gate
    std::atomic<Ending> ending{Ending::Running};
    std::atomic<std::int64_t> boardTime{0};
    std::atomic<std::uint64_t> steps{0};
    std::atomic<std::uint64_t> measurements{0};
    std::uint64_t stepsPreempted = 0; ///< that came to every choice given
    std::array<Footprint, kFootprints> footprints{};
    std::size_t footprintsTaken = 0;
    RunBuffers files; ///< what is not yet in them
    char text[8192]{};
    char calls[2048]{};   ///< "name count" lines
    char choices[2048]{}; ///< "count, " for each step (time/Scheduler.h), where choices are given
    char faults[8192]{};  ///< tables of the summary
    char stacks[2048]{};  ///< "function bytes" lines, if they were asked for
    char missing[8192]{}; ///< faults and events that never came, in words
    char board[8192]{};   ///< what outlives the program (board/KeptState.h)
};

/// The signal by which the program is watched for work without a call: the C library's last but
/// two.
inline constexpr int kWatchdogSignal = 62;

/// Names the variable that tells the preloaded library about its run.
inline constexpr const char* kRunVariable = "TAVRELIN_SIMULATION";

} // namespace sim
