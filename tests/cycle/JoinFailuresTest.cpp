// Steps whose workers cannot be joined. Such a worker may outlive the request that it works on, and
// the thread sanitizer is right to say so: it is not asked about this executable. The workers of
// these tests are at their end by the time.

#include "tests/cycle/Instrument.h"

#include <cerrno>

extern "C" const char* __tsan_default_options() {
    return "report_bugs=0";
}

namespace tavrelin {
namespace {

// Every worker; the monitoring, of 250 ms, ends before the stirring does.
const MeasurementState kFullStep = {.Duration = 340,
                                    .LEDStatus = true,
                                    .StirringStatus = true,
                                    .ADCMonitorStatus = true,
                                    .MotorSpeed = 200};

class JoinFailures : public testing::Test {
  protected:
    /// Joins are those of stirring, valve, monitoring, LED, reagent delivery, as far as started.
    void RefuseJoin(std::uint64_t join) { instrument.board.Fail("pthread_join", "", EINVAL, join); }
    void RefuseStart(std::uint64_t start) {
        instrument.board.Fail("pthread_create", "", EAGAIN, start);
    }

    void ExpectOutcome(const MeasurementState& step, bool success, const std::string& slots) {
        const StepOutcome outcome = instrument.Run(step);
        EXPECT_EQ(outcome.success, success);
        EXPECT_EQ(outcome.slots, slots);
    }

    Instrument instrument;
};

TEST_F(JoinFailures, OfTheStirringJoinAreOverruledByLaterJoins) {
    RefuseJoin(1);
    MeasurementState step = kFullStep;
    step.Duration = 0; // it must be at its end before its request goes
    ExpectOutcome(step, true, "oXXXXX");
    EXPECT_EQ(CountOf(instrument.board, ": join "), 4);
}

TEST_F(JoinFailures, OfTheStirringJoinFailAStepWhoseOnlyOtherOneIsTheMonitoringJoin) {
    RefuseStart(1); // the LED's
    RefuseStart(2); // the valve's
    RefuseJoin(1);
    ExpectOutcome({.StirringStatus = true, .ADCMonitorStatus = true}, false, "oXoXXo");
}

TEST_F(JoinFailures, OfTheValveJoinAreOverruledByLaterJoins) {
    RefuseJoin(2);
    ExpectOutcome(kFullStep, true, "XXXXXo");
}

TEST_F(JoinFailures, OfTheMonitoringJoinLeaveTheSuccessAndStillGiveAnAverage) {
    RefuseStart(1); // the LED's, whose join would overrule
    RefuseJoin(3);
    MeasurementState step = kFullStep;
    step.MotorSpeed = 0;
    step.Description = "Dark Count Measurement";
    ExpectOutcome(step, true, "XXooXX"); // the valve's join
    EXPECT_EQ(instrument.cycle.DarkCount(), 3000000.0F) << "the LED is lit";
}

TEST_F(JoinFailures, OfTheLedJoinFailAStepThatEndsWithIt) {
    RefuseJoin(2); // after the valve's
    ExpectOutcome({}, false, "XXoXXX");
}

TEST_F(JoinFailures, OfTheLedJoinAreOverruledByTheReagentJoin) {
    RefuseJoin(4);
    ExpectOutcome(kFullStep, true, "XXoXXX");
}

TEST_F(JoinFailures, OfTheReagentJoinFailTheStep) {
    RefuseJoin(5);
    ExpectOutcome(kFullStep, false, "XoXXXX");
}

} // namespace
} // namespace tavrelin
