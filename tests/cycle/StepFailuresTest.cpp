#include "tests/cycle/Instrument.h"

#include <algorithm>
#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

// Starts: reagent delivery, which has nothing to turn here, LED, valve, stirring, monitoring.
const MeasurementState kFullStep = {.Duration = 340,
                                    .LEDStatus = true,
                                    .StirringStatus = true,
                                    .ADCMonitorStatus = true,
                                    .MotorSpeed = 200};
// Starts: LED, valve, monitoring.
const MeasurementState kStillStep = {.LEDStatus = true, .ADCMonitorStatus = true};

/// A step in which some workers do not start, and what comes of it.
struct Refusal {
    const char* name;
    MeasurementState step;
    std::vector<std::uint64_t> starts; ///< those that are refused, counted from 1
    bool success;
    const char* slots;
    int joins;
    bool samples;
    const char* elements; ///< workers counted on the console; null: the line is missing
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
    *out << refusal.name;
}

class StepFailures : public testing::TestWithParam<Refusal> {};

TEST_P(StepFailures, OfStartsShowInTheirSlotsAndNotAlwaysInTheAnswer) {
    const Refusal& refusal = GetParam();
    Instrument instrument;
    for (const std::uint64_t start : refusal.starts) {
        instrument.board.Fail("pthread_create", "", EAGAIN, start);
    }
    const StepOutcome outcome = instrument.Run(refusal.step);
    EXPECT_EQ(outcome.success, refusal.success);
    EXPECT_EQ(outcome.slots, refusal.slots);
    EXPECT_EQ(CountOf(instrument.board, ": join "), refusal.joins);
    EXPECT_EQ(!instrument.board.WritesTo("spi").empty(), refusal.samples);
    EXPECT_EQ(outcome.console, refusal.elements == nullptr
                                   ? ""
                                   : std::string("MeasurementCycle.cpp, 451, Elements: ") +
                                         refusal.elements +
                                         "\nMeasurementCycle.cpp, 1096, success: 1\n");
}

MeasurementState WithoutPump(MeasurementState step) {
    step.MotorSpeed = 0;
    return step;
}

// The last join of stirring, valve, LED and reagent delivery answers; without any, the last start
// of valve, stirring and monitoring. Monitoring is asked for only after a good start before it, and
// counts as not needed else.
INSTANTIATE_TEST_SUITE_P(
    Without, StepFailures,
    testing::Values(
        Refusal{"ReagentDelivery", kFullStep, {1}, true, "XoXXXX", 4, true, "2"},
        Refusal{"Led", kFullStep, {2}, true, "XXoXXX", 4, true, "2"},
        Refusal{"Valve", kFullStep, {3}, true, "XXXXXo", 4, true, nullptr},
        Refusal{"Stirring", kFullStep, {4}, true, "oXXXXX", 3, false, "3"},
        Refusal{"Monitoring", kFullStep, {5}, true, "XXXoXX", 4, false, "3"},
        Refusal{"ValveAndStirring", kStillStep, {2}, true, "XXXXXo", 1, false, nullptr},
        Refusal{"LedAndReagentDelivery", kStillStep, {1}, true, "XXoXXX", 2, true, "1"},
        Refusal{"LedAndMonitoring", kStillStep, {1, 3}, true, "XXooXX", 1, false, "1"},
        Refusal{
            "AllButStirring", WithoutPump(kFullStep), {1, 2, 4}, true, "XXooXo", 1, false, nullptr},
        Refusal{"Any", kFullStep, {1, 2, 3, 4}, false, "oooXXo", 0, false, nullptr},
        Refusal{"AnyInARestingStep", {}, {1, 2}, false, "XXoXXo", 0, false, nullptr}),
    [](const auto& instance) { return instance.param.name; });

TEST(StepFailure, OfTheMonitoringStartLeavesTheAverageAlone) {
    Instrument instrument;
    instrument.cycle.SetDarkCount(-1.5F);
    instrument.board.Fail("pthread_create", "", EAGAIN, 3);
    MeasurementState step = kStillStep;
    step.Description = "Dark Count Measurement";
    instrument.Run(step);
    EXPECT_EQ(instrument.cycle.DarkCount(), -1.5F);
}

} // namespace
} // namespace tavrelin
