#include "cycle/StepWorkers.h"

#include "tests/cycle/Instrument.h"

#include <cerrno>
#include <pthread.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kLedSwitch = "/sys/class/pwm/pwmchip0/pwm0/enable";

class StepWorkers : public testing::Test {
  protected:
    StepOutcome Run(const MeasurementState& step) {
        board.Forget();
        return instrument.Run(step);
    }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
};

TEST_F(StepWorkers, SwitchTheLedOnlyWhenItIsNotAsTheStepWantsIt) {
    EXPECT_TRUE(board.Channel(0).enabled) << "from the start";
    Run({.LEDStatus = true});
    EXPECT_EQ(board.WritesTo("pwm0"), Texts{});
    Run({.LEDStatus = false});
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"enable 0"}));
    Run({.LEDStatus = false});
    EXPECT_EQ(board.WritesTo("pwm0"), Texts{});
    Run({.LEDStatus = true});
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"enable 1"}));
}

TEST_F(StepWorkers, TakeALedThatCannotBeReadForLit) {
    board.FailForever("read", kLedSwitch, EIO); // an empty word: not lit
    Run({.LEDStatus = true});
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"enable 1"}));
    board.StopFailing();
    board.Fail("open", kLedSwitch, EACCES); // no word at all: lit
    Run({.LEDStatus = true});
    EXPECT_EQ(board.WritesTo("pwm0"), Texts{});
}

TEST_F(StepWorkers, OpenTheValveFullyAnewInEachStepAndLeaveAClosedOneClosed) {
    EXPECT_EQ(Run({.LEDStatus = true, .ValveStatus = true}).console,
              "MeasurementCycle.cpp, 451, Elements: 2\n"
              "MeasurementCycle.cpp, 1091, success: 1\n");
    EXPECT_EQ(board.WritesTo("pwm3"),
              (Texts{"duty_cycle 0 EINVAL", "period 1000000", "duty_cycle 1000000", "enable 1"}));
    Run({.LEDStatus = true, .ValveStatus = true});
    EXPECT_EQ(board.WritesTo("pwm3"), (Texts{"enable 0", "duty_cycle 0", "period 1000000",
                                             "duty_cycle 1000000", "enable 1"}));
    Run({.LEDStatus = true});
    const StepOutcome outcome = Run({.LEDStatus = true});
    EXPECT_EQ(board.WritesTo("pwm3"), (Texts{"enable 0"}));
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 2\n"
                               "MeasurementCycle.cpp, 1096, success: 1\n");
}

TEST_F(StepWorkers, LeaveLedAndValveAsTheyAreBetweenSteps) {
    Run({.LEDStatus = false, .ValveStatus = true});
    board.Elapse(sim::Seconds(3600));
    EXPECT_FALSE(board.Channel(0).enabled);
    EXPECT_TRUE(board.Model().ValveOpen());
}

TEST_F(StepWorkers, StirForTheDurationOfTheStep) {
    const StepOutcome outcome = Run({.Duration = 730, .LEDStatus = true, .StirringStatus = true});
    EXPECT_EQ(board.WritesTo("pwm2"), (Texts{"duty_cycle 0 EINVAL", "period 1562500",
                                             "duty_cycle 781250", "enable 1", "enable 0"}));
    EXPECT_EQ(board.WritesTo("B15"), (Texts{"value 0", "value 1"}));
    EXPECT_EQ(outcome.boardTime, sim::Milliseconds(730));
    EXPECT_EQ(CountOf(board, "sleep - 730000 us"), 1) << "asleep, not spinning";
}

TEST_F(StepWorkers, DoNotStirInAStepWithoutDuration) {
    const StepOutcome outcome = Run({.LEDStatus = true, .StirringStatus = true});
    EXPECT_EQ(board.WritesTo("pwm2"), Texts{});
    EXPECT_EQ(board.WritesTo("B15"), Texts{});
    EXPECT_EQ(outcome.boardTime, 0);
}

Texts HappeningsOfAStep(bool srvd) {
    Instrument instrument;
    instrument.Run({.Duration = 1000,
                    .LEDStatus = true,
                    .StirringStatus = true,
                    .SRVDStatus = srvd,
                    .ADCMonitorStatus = true,
                    .ValveStatus = true});
    return Happenings(instrument.board);
}

TEST(SrvdFlag, ChangesNothingInAStep) {
    EXPECT_EQ(HappeningsOfAStep(true), HappeningsOfAStep(false));
}

TEST(StepWorkersWithoutRequest, EndAtOnceWithAnAddress) {
    for (void* (*entry)(void*) : {doLEDThread, doValveThread, doStirringThread,
                                  doReagentDeliveryThread, doADCMonitorThread}) {
        SimulatedBoard board;
        pthread_t thread{};
        void* exitValue = nullptr;
        ASSERT_EQ(pthread_create(&thread, nullptr, entry, nullptr), 0);
        ASSERT_EQ(pthread_join(thread, &exitValue), 0);
        EXPECT_NE(exitValue, nullptr);
        EXPECT_EQ(board.Events(), (Texts{"thread-start - 2", "thread-end - -", "join - 2"}));
        EXPECT_EQ(board.Now(), 0);
    }
}

} // namespace
} // namespace tavrelin
