#include "cycle/StateTable.h"
#include "cycle/StepExecution.h"

#include "tests/cycle/Instrument.h"

#include <array>
#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

// Uses every worker: stirring, reagent delivery that has nothing to turn, LED, monitoring, valve.
const MeasurementState kFullStep = {.LEDStatus = true,
                                    .StirringStatus = true,
                                    .ADCMonitorStatus = true,
                                    .MotorSpeed = 200,
                                    .ValveStatus = true};
const MeasurementState kRestingStep = {}; // as the table's last: all false and the pump at rest

TEST(StepResults, AreAllTrueAfterAFullStep) {
    Instrument instrument;
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, "XXXXXX");
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 3\n"
                               "MeasurementCycle.cpp, 1091, success: 1\n");
}

TEST(StepResults, OfARestingStepNeedOnlyLedAndValve) {
    Instrument instrument;
    const StepOutcome outcome = instrument.Run(kRestingStep);
    EXPECT_TRUE(outcome.success) << "that of the LED's join, the last";
    EXPECT_EQ(outcome.slots, "XXXXXX");
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 2\n"
                               "MeasurementCycle.cpp, 1096, success: 1\n");
}

/// What a step sets of six flags when it is told of only so many.
struct LengthCase {
    std::uint32_t length;
    const char* full;
    const char* resting;
    bool restingSuccess;
};

void PrintTo(const LengthCase& flags, std::ostream* out) {
    *out << flags.length << " flags";
}

class ResultsOfLength : public testing::TestWithParam<LengthCase> {};

TEST_P(ResultsOfLength, SetFlagsInAFullAndInARestingStep) {
    const LengthCase& flags = GetParam();
    Instrument instrument;
    const StepOutcome full =
        RunStep(instrument.board, instrument.cycle, kFullStep, true, flags.length);
    EXPECT_EQ(full.slots, flags.full);
    EXPECT_TRUE(full.success) << "the reagent's join";
    const StepOutcome resting =
        RunStep(instrument.board, instrument.cycle, kRestingStep, true, flags.length);
    EXPECT_EQ(resting.slots, flags.resting);
    EXPECT_EQ(resting.success, flags.restingSuccess) << "the LED's join";
}

// Slots: stirring, reagent, LED, monitoring, reserved, valve. A resting step sets the first two
// whatever the length. The LED's join fails the step up to length 2.
INSTANTIATE_TEST_SUITE_P(Flags, ResultsOfLength,
                         testing::Values(LengthCase{0, "oooooo", "XXoooo", false},
                                         LengthCase{1, "Xooooo", "XXoooo", false},
                                         LengthCase{2, "XXoooo", "XXoooo", false},
                                         LengthCase{3, "XXXXoo", "XXXXoo", true},
                                         LengthCase{4, "XXXXXo", "XXXXXo", true},
                                         LengthCase{5, "XXXXXo", "XXXXXo", true},
                                         LengthCase{6, "XXXXXX", "XXXXXX", true}));

TEST(StepResults, MayBeAbsentAltogether) {
    Instrument instrument;
    EXPECT_TRUE(RunStep(instrument.board, instrument.cycle, kFullStep, false, 0).success);
    EXPECT_FALSE(RunStep(instrument.board, instrument.cycle, kRestingStep, false, 0).success);
}

TEST(StepResults, AreTrueForWorkersThatFailInTheirOwnAction) {
    Instrument instrument;
    SimulatedBoard& board = instrument.board;
    board.TakeAway("/sys/class/pwm/pwmchip0/pwm0");
    board.TakeAway("/sys/class/pwm/pwmchip0/pwm3");
    board.Fail("pthread_mutex_lock", "", EINVAL, 1); // the pump's
    board.Fail("pthread_mutex_lock", "", EINVAL, 2); // the stirrer's
    const StepOutcome outcome = instrument.Run({.Duration = 1000,
                                                .LEDStatus = true,
                                                .StirringStatus = true,
                                                .MotorAngle = 200.0F,
                                                .MotorSpeed = 200,
                                                .ValveStatus = true});
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, "XXXXXX");
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 3\n"
                               "StepperDriverMotor::MoveAngle failed!\n"
                               "not locked yet\n"
                               "ValvePWM::ValveOn: valve did not successfully turn on\n"
                               "MeasurementCycle.cpp, 1091, success: 0\n"
                               "Stepper Driver: PWM mutex lock failed\n");
    board.Restore("/sys/class/pwm/pwmchip0/pwm0");
    board.Restore("/sys/class/pwm/pwmchip0/pwm3");
}

TEST(StepResults, AreTrueWithoutAnyDevice) {
    SimulatedBoard board;
    MeasurementCycle cycle;
    const StepOutcome outcome = RunStep(board, cycle, kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, "XXXXXX");
    EXPECT_EQ(outcome.boardTime, 0);
    EXPECT_EQ(Writes(board), Texts{});
}

// What a step makes happen, asked for by its row or by the row's fields one by one.
Texts HappeningsOf(const MeasurementState& row, bool byRow) {
    Instrument instrument;
    instrument.SetLastPumpAngle(90.0F);
    std::array<bool, 6> slots{};
    ConsoleOf([&] {
        EXPECT_TRUE(byRow ? doStepRequest(instrument.cycle, row, slots.data(), 6)
                          : doStepRequest(instrument.cycle, row.MotorAngle, row.MotorSpeed,
                                          row.FindStartPosition, row.Duration, row.LEDStatus,
                                          row.StirringStatus, row.SRVDStatus, row.ADCMonitorStatus,
                                          row.ValveStatus, row.Description, slots.data(), 6));
    });
    return Happenings(instrument.board);
}

TEST(StepRequest, MayBeMadeFieldByField) {
    StateTable table;
    for (std::uint32_t row = 0; row < table.Count(); ++row, table.Next()) {
        EXPECT_EQ(HappeningsOf(table.Current(), false), HappeningsOf(table.Current(), true))
            << table.Description();
    }
}

} // namespace
} // namespace tavrelin
