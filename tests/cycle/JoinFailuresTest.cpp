// Steps whose workers cannot be joined. Such a worker may outlive the request that it works on, and
// the thread sanitizer is right to say so: it is not asked about this executable. The workers of
// these tests are at their end by the time.

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

extern "C" const char* __tsan_default_options() {
    return "report_bugs=0";
}

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using Slots = std::array<bool, 6>;

constexpr bool X = true;
constexpr bool o = false;

// Every worker; the monitoring, of 250 ms, ends before the stirring does.
const Step kFullStep = {
    .speed = 200, .duration = 340, .led = true, .stirring = true, .sampling = true};

class JoinFailures : public testing::Test {
  protected:
    /// Joins are those of stirring, valve, monitoring, LED, reagent delivery, as far as started.
    void RefuseJoin(std::uint64_t join) { board.Fail("pthread_join", "", EINVAL, join); }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
};

TEST_F(JoinFailures, OfTheStirringJoinAreOverruledByLaterJoins) {
    RefuseJoin(1);
    Step step = kFullStep;
    step.duration = 0; // it must be at its end before its request goes
    const StepOutcome outcome = instrument.Run(step);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{o, X, X, X, X, X}));
    EXPECT_EQ(CountOf(board, ": join "), 4);
}

TEST_F(JoinFailures, OfTheValveJoinAreOverruledByLaterJoins) {
    RefuseJoin(2);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, X, X, X, o}));
}

TEST_F(JoinFailures, OfTheMonitoringJoinLeaveTheSuccessAndStillGiveAnAverage) {
    board.Fail("pthread_create", "", EAGAIN); // the LED's, whose join would overrule
    RefuseJoin(3);
    Step step = kFullStep;
    step.speed = 0;
    step.description = "Dark Count Measurement";
    const StepOutcome outcome = instrument.Run(step);
    EXPECT_TRUE(outcome.success) << "the valve's join";
    EXPECT_EQ(outcome.slots, (Slots{X, X, o, o, X, X}));
    EXPECT_EQ(instrument.cycle.DarkCount(), 3000000.0F) << "the LED is lit";
}

TEST_F(JoinFailures, OfTheLedJoinFailAStepThatEndsWithIt) {
    RefuseJoin(2); // after the valve's
    const StepOutcome outcome = instrument.Run({});
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, o, X, X, X}));
}

TEST_F(JoinFailures, OfTheLedJoinAreOverruledByTheReagentJoin) {
    RefuseJoin(4);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, X, o, X, X, X}));
}

TEST_F(JoinFailures, OfTheReagentJoinFailTheStep) {
    RefuseJoin(5);
    const StepOutcome outcome = instrument.Run(kFullStep);
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.slots, (Slots{X, o, X, X, X, X}));
}

} // namespace
} // namespace tavrelin
