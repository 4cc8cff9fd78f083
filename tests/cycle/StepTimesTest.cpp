#include "cycle/StateTable.h"

#include "tests/cycle/Instrument.h"

#include <array>

namespace tavrelin {
namespace {

using sim::Microseconds;
using sim::Milliseconds;
using sim::Nanoseconds;
using sim::SimulatedBoard;

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
        ConsoleOf([&] {
            cycle.Init();
            cycle.Prime();
            primed = board.Now();
            cycle.doFindStartPosition(360);
        });
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

TEST_F(StepTimes, OfTwoMeasurementsAreExactlyWhatTheWaitsAskForWithRoomForTheirReadings) {
    for (int measurement = 1; measurement <= 2; ++measurement) {
        for (std::size_t row = 0; row < kStepTimes.size(); ++row, table.Next()) {
            SCOPED_TRACE(table.Description() + ", measurement " + std::to_string(measurement));
            board.Forget();
            const StepOutcome outcome = RunStep(board, cycle, table.Current());
            EXPECT_EQ(outcome.boardTime, Milliseconds(kStepTimes[row]));
            EXPECT_EQ(CountOf(board, "read spi"), kReadings[row]);
            EXPECT_TRUE(outcome.success);
        }
    }
}

} // namespace
} // namespace tavrelin
