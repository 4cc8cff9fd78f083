#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;
using Slots = std::array<bool, 6>;

// Uses every worker: stirring, reagent delivery that has nothing to turn, LED, monitoring, valve.
const Step kFullStep = {
    .speed = 200, .duration = 0, .led = true, .stirring = true, .sampling = true, .valve = true};
const Step kRestingStep = {}; // as the table's last: every flag false and the pump at rest

TEST(StepResults, AreAllTrueAfterAFullStep) {
    Instrument instrument;
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{true, true, true, true, true, true}));
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 3\n"
                               "MeasurementCycle.cpp, 1091, success: 1\n");
}

TEST(StepResults, OfARestingStepNeedOnlyLedAndValve) {
    Instrument instrument;
    const StepOutcome outcome = instrument.Run(kRestingStep);
    EXPECT_TRUE(outcome.success) << "that of the LED's join, the last";
    EXPECT_EQ(outcome.slots, (Slots{true, true, true, true, true, true}));
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 2\n"
                               "MeasurementCycle.cpp, 1096, success: 1\n");
    EXPECT_EQ(CountOf(instrument.board, "thread-start"), 2);
    EXPECT_EQ(CountOf(instrument.board, ": join "), 2);
    EXPECT_EQ(outcome.boardTime, 0);
}

/// What a step sets of six flags when it is told of only so many.
struct LengthCase {
    std::uint32_t length;
    Slots full;
    bool fullSuccess;
    Slots resting;
    bool restingSuccess;
};

void PrintTo(const LengthCase& flags, std::ostream* out) {
    *out << flags.length << " flags";
}

constexpr bool X = true;
constexpr bool o = false;

class ResultsOfLength : public testing::TestWithParam<LengthCase> {};

TEST_P(ResultsOfLength, SetFlagsInAFullStep) {
    Instrument instrument;
    const StepOutcome outcome =
        RunStep(instrument.board, instrument.cycle, kFullStep, true, GetParam().length);
    EXPECT_EQ(outcome.slots, GetParam().full);
    EXPECT_EQ(outcome.success, GetParam().fullSuccess);
}

TEST_P(ResultsOfLength, SetFlagsInARestingStep) {
    Instrument instrument;
    const StepOutcome outcome =
        RunStep(instrument.board, instrument.cycle, kRestingStep, true, GetParam().length);
    EXPECT_EQ(outcome.slots, GetParam().resting);
    EXPECT_EQ(outcome.success, GetParam().restingSuccess);
}

// Slots: stirring, reagent, LED, monitoring, reserved, valve. A resting step sets the first two
// whatever the length. The LED's join fails the step up to length 2, and the reagent's, which comes
// after it, answers for itself.
INSTANTIATE_TEST_SUITE_P(
    Flags, ResultsOfLength,
    testing::Values(LengthCase{0, {o, o, o, o, o, o}, X, {X, X, o, o, o, o}, o},
                    LengthCase{1, {X, o, o, o, o, o}, X, {X, X, o, o, o, o}, o},
                    LengthCase{2, {X, X, o, o, o, o}, X, {X, X, o, o, o, o}, o},
                    LengthCase{3, {X, X, X, X, o, o}, X, {X, X, X, X, o, o}, X},
                    LengthCase{4, {X, X, X, X, X, o}, X, {X, X, X, X, X, o}, X},
                    LengthCase{5, {X, X, X, X, X, o}, X, {X, X, X, X, X, o}, X},
                    LengthCase{6, {X, X, X, X, X, X}, X, {X, X, X, X, X, X}, X}));

TEST(StepResults, OfLengthTwoFailAStepThatEndsWithTheLed) {
    Instrument instrument;
    Step step = kFullStep;
    step.speed = 0;
    EXPECT_FALSE(RunStep(instrument.board, instrument.cycle, step, true, 2).success);
    EXPECT_TRUE(RunStep(instrument.board, instrument.cycle, step, true, 3).success);
}

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
    testing::internal::CaptureStderr();
    const StepOutcome outcome = instrument.Run({.angle = 200.0F,
                                                .speed = 200,
                                                .duration = 1000,
                                                .led = true,
                                                .stirring = true,
                                                .valve = true});
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, X, X, X, X}));
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
    EXPECT_EQ(outcome.slots, (Slots{X, X, X, X, X, X}));
    EXPECT_EQ(outcome.boardTime, 0);
    EXPECT_EQ(Writes(board), Texts{});
}

} // namespace
} // namespace tavrelin
