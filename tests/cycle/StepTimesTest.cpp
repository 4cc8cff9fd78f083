#include "cycle/StateTable.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <array>
#include <iostream>

namespace tavrelin {
namespace {

using sim::Microseconds;
using sim::Milliseconds;
using sim::Nanoseconds;
using sim::SimulatedBoard;

Step CurrentStepOf(const StateTable& table) {
    return {.angle = table.MotorAngle(),
            .speed = table.MotorSpeed(),
            .findStart = table.FindStartPosition(),
            .duration = table.Duration(),
            .led = table.LEDStatus(),
            .stirring = table.StirringStatus(),
            .srvd = table.SRVDStatus(),
            .sampling = table.ADCMonitorStatus(),
            .valve = table.ValveStatus(),
            .description = table.Description()};
}

// What the waits of each step ask for, in ms: readings every 250 until less than 100 are left of
// the duration, and stirring for the duration. Step 11 turns the pump once from its start position
// to its start position, 1600 steps of 1125 us at 200 degrees per second. Step 17 waits for
// nothing.
constexpr std::array<int, 17> kStepTimes = {1000, 1000, 1000, 1000, 1000, 1000, 1000, 250, 250,
                                            1000, 1800, 1000, 1000, 1000, 1000, 250,  0};
constexpr std::array<int, 17> kReadings = {4, 4, 4, 4, 4, 4, 4, 1, 1, 4, 4, 4, 4, 4, 4, 1, 0};

/// An instrument that starts up as it does in service.
class StepTimes : public testing::Test {
  protected:
    StepTimes() {
        testing::internal::CaptureStdout();
        cycle.Init();
        cycle.Prime();
        primed = board.Now();
        cycle.doFindStartPosition(360);
        std::cout.flush();
        testing::internal::GetCapturedStdout();
    }

    SimulatedBoard board;
    MeasurementCycle cycle;
    Nanoseconds primed = 0;
    StateTable table;
};

// Priming is two turns of 1600 steps; the flag's trailing edge is step 1267 of the next.
TEST_F(StepTimes, BeginAfterTwoSecondsOfPrimingAndTheWayToTheFlag) {
    EXPECT_EQ(primed, Milliseconds(2000));
    EXPECT_EQ(board.Now(), Milliseconds(2000) + Microseconds(1267 * 625));
}

TEST_F(StepTimes, OfTwoMeasurementsAreExactlyWhatTheWaitsAskFor) {
    for (int measurement = 1; measurement <= 2; ++measurement) {
        for (std::size_t row = 0; row < kStepTimes.size(); ++row, table.Next()) {
            const StepOutcome outcome = RunStep(board, cycle, CurrentStepOf(table));
            EXPECT_EQ(outcome.boardTime, Milliseconds(kStepTimes[row]))
                << "step " << row + 1 << " of measurement " << measurement;
            EXPECT_TRUE(outcome.success);
        }
    }
}

TEST_F(StepTimes, LeaveRoomForTheirReadings) {
    for (std::size_t row = 0; row < kReadings.size(); ++row, table.Next()) {
        board.Forget();
        RunStep(board, cycle, CurrentStepOf(table));
        EXPECT_EQ(CountOf(board, "read spi"), kReadings[row]) << "step " << row + 1;
    }
}

} // namespace
} // namespace tavrelin
