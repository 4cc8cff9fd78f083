#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;
using Slots = std::array<bool, 6>;

constexpr bool X = true;
constexpr bool o = false;

// Every worker, in the order in which they are started: reagent delivery, which has nothing to turn
// here, LED, valve, stirring, monitoring.
const Step kFullStep = {
    .speed = 200, .duration = 340, .led = true, .stirring = true, .sampling = true};
constexpr std::uint64_t kReagentStart = 1;
constexpr std::uint64_t kLedStart = 2;
constexpr std::uint64_t kValveStart = 3;
constexpr std::uint64_t kStirringStart = 4;
constexpr std::uint64_t kMonitoringStart = 5;

class StepFailures : public testing::Test {
  protected:
    void RefuseStart(std::uint64_t start) { board.Fail("pthread_create", "", EAGAIN, start); }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
};

TEST_F(StepFailures, WithoutReagentWorkerLeaveItsSlotFalse) {
    RefuseStart(kReagentStart);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success) << "the LED's join is the last";
    EXPECT_EQ(outcome.slots, (Slots{X, o, X, X, X, X}));
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 2\n"
                               "MeasurementCycle.cpp, 1096, success: 1\n");
    EXPECT_EQ(CountOf(board, ": join "), 4);
}

TEST_F(StepFailures, WithoutLedWorkerLeaveItsSlotFalse) {
    RefuseStart(kLedStart);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, o, X, X, X}));
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 2\n"
                               "MeasurementCycle.cpp, 1096, success: 1\n");
    EXPECT_EQ(CountOf(board, ": join "), 4);
}

TEST_F(StepFailures, WithoutValveWorkerSayNothingAndGoOnWhenStirringStarts) {
    RefuseStart(kValveStart);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, X, X, X, o}));
    EXPECT_EQ(outcome.console, "");
    EXPECT_EQ(CountOf(board, ": join "), 4);
}

TEST_F(StepFailures, WithoutValveAndStirringSampleNothing) {
    RefuseStart(2); // the valve's: the pump is at rest
    const StepOutcome outcome = instrument.Run({.led = true, .sampling = true});
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, X, X, X, o})) << "monitoring counts as not needed";
    EXPECT_EQ(CountOf(board, "thread-start"), 1);
    EXPECT_EQ(board.WritesTo("spi"), Texts{});
}

TEST_F(StepFailures, WithoutStirringWorkerSampleNothing) {
    RefuseStart(kStirringStart);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{o, X, X, X, X, X}));
    EXPECT_EQ(CountOf(board, ": join "), 3);
    EXPECT_EQ(board.WritesTo("spi"), Texts{});
}

TEST_F(StepFailures, WithoutMonitoringWorkerLeaveSlotAndAverageAlone) {
    instrument.cycle.SetDarkCount(-1.5F);
    RefuseStart(kMonitoringStart);
    Step step = kFullStep;
    step.description = "Dark Count Measurement";
    const StepOutcome outcome = instrument.Run(step);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, X, o, X, X}));
    EXPECT_EQ(instrument.cycle.DarkCount(), -1.5F);
    EXPECT_EQ(CountOf(board, ": join "), 4);
}

TEST_F(StepFailures, WithoutAnyWorkerJoinNone) {
    board.FailForever("pthread_create", "", EAGAIN);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{o, o, o, X, X, o}));
    EXPECT_EQ(outcome.console, "");
    EXPECT_EQ(board.Calls("pthread_join"), 0U);
    EXPECT_EQ(outcome.boardTime, 0);
}

TEST_F(StepFailures, AnswerForTheLastStartWhenNothingIsJoined) {
    board.FailForever("pthread_create", "", EAGAIN);
    EXPECT_FALSE(instrument.Run({}).success) << "the valve's";
}

TEST_F(StepFailures, AnswerForTheValveWithoutLedAndReagentWorkers) {
    RefuseStart(1); // the LED's: the pump is at rest
    const StepOutcome outcome = instrument.Run({.led = true, .sampling = true});
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, o, X, X, X}));
}

TEST_F(StepFailures, AnswerForTheValveAlsoWhenMonitoringIsNotStarted) {
    RefuseStart(1); // the LED's
    RefuseStart(3); // the monitoring's
    const StepOutcome outcome = instrument.Run({.led = true, .sampling = true});
    EXPECT_TRUE(outcome.success) << "its join overrides the failed start";
    EXPECT_EQ(outcome.slots, (Slots{X, X, o, o, X, X}));
}

} // namespace
} // namespace tavrelin
