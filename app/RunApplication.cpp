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

// A priming that fails stops nothing, it only leaves the start position unknown.
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
        return;
    }
    PrimeAndFindStart(cycle);
    for (std::uint32_t steps = kSteps; steps > 0; --steps) {
        static StateTable table;
        RunCycleStep(&table, &cycle);
    }
}

} // namespace tavrelin
