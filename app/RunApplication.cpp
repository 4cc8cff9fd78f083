#include "app/RunApplication.h"

#include "app/RunCycleStep.h"
#include "app/StatusReport.h"

#include <cstdint>
#include <cstdlib>

namespace tavrelin {

namespace {

constexpr std::uint32_t kSteps = 200000;         // 11764 measurements and 12 steps
constexpr std::uint32_t kStartSearchSpeed = 360; // degrees per second

// A value of events that belong to no measurement; the console shows its sign.
constexpr float kNoValue = -0.0F;

// A priming that fails stops nothing, it only leaves the start position unknown. After exit the
// devices are as they were: the cycle is not destroyed.
void PrimeAndFindStart(MeasurementCycle& cycle) {
    ReportStatus(kNoValue, "Priming");
    if (cycle.Prime() && !cycle.doFindStartPosition(kStartSearchSpeed)) {
        ReportStatus(kNoValue, "!!!Error: Motor Find Start!!!");
        std::exit(0);
    }
}

} // namespace

void RunApplication() {
    MeasurementCycle cycle;
    if (!cycle.Init()) {
        return; // out of memory, and nobody to tell
    }
    PrimeAndFindStart(cycle);
    for (std::uint32_t steps = kSteps; steps > 0; --steps) {
        // Made when the first step needs it, and kept for the process: its cursor goes on from pass
        // to pass, and an exit in the middle of a step destroys it, unlike the cycle.
        static StateTable table;
        RunCycleStep(&table, &cycle);
    }
}

} // namespace tavrelin
