#include "cycle/StepWorkers.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ostream>
#include <pthread.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kLedSwitch = "/sys/class/pwm/pwmchip0/pwm0/enable";

class StepWorkers : public testing::Test {
  protected:
    StepOutcome Run(const Step& step) {
        board.Forget();
        return instrument.Run(step);
    }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
};

TEST_F(StepWorkers, SwitchTheLedOnlyWhenItIsNotAsTheStepWantsIt) {
    EXPECT_TRUE(board.Channel(0).enabled) << "from the start";
    Run({.led = true});
    EXPECT_EQ(board.WritesTo("pwm0"), Texts{});
    Run({.led = false});
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"enable 0"}));
    Run({.led = false});
    EXPECT_EQ(board.WritesTo("pwm0"), Texts{});
    Run({.led = true});
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"enable 1"}));
}

TEST_F(StepWorkers, TakeALedThatCannotBeReadForLit) {
    board.FailForever("read", kLedSwitch, EIO); // an empty word: not lit
    Run({.led = true});
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"enable 1"}));
    board.StopFailing();
    board.Fail("open", kLedSwitch, EACCES); // no word at all: lit
    Run({.led = true});
    EXPECT_EQ(board.WritesTo("pwm0"), Texts{});
}

TEST_F(StepWorkers, OpenTheValveFullyAndSaySo) {
    const StepOutcome outcome = Run({.led = true, .valve = true});
    EXPECT_EQ(board.WritesTo("pwm3"),
              (Texts{"duty_cycle 0 EINVAL", "period 1000000", "duty_cycle 1000000", "enable 1"}));
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 2\n"
                               "MeasurementCycle.cpp, 1091, success: 1\n");
}

TEST_F(StepWorkers, OpenAnOpenValveAnewAndLeaveAClosedOneClosed) {
    Run({.led = true, .valve = true});
    Run({.led = true, .valve = true});
    EXPECT_EQ(board.WritesTo("pwm3"), (Texts{"enable 0", "duty_cycle 0", "period 1000000",
                                             "duty_cycle 1000000", "enable 1"}));
    Run({.led = true});
    const StepOutcome outcome = Run({.led = true});
    EXPECT_EQ(board.WritesTo("pwm3"), (Texts{"enable 0"}));
    EXPECT_EQ(outcome.console, "MeasurementCycle.cpp, 451, Elements: 2\n"
                               "MeasurementCycle.cpp, 1096, success: 1\n");
}

TEST_F(StepWorkers, LeaveLedAndValveAsTheyAreBetweenSteps) {
    Run({.led = false, .valve = true});
    board.Elapse(sim::Seconds(3600));
    EXPECT_FALSE(board.Channel(0).enabled);
    EXPECT_TRUE(board.Model().ValveOpen());
}

TEST_F(StepWorkers, StirForTheDurationOfTheStep) {
    const StepOutcome outcome = Run({.duration = 730, .led = true, .stirring = true});
    EXPECT_EQ(board.WritesTo("pwm2"), (Texts{"duty_cycle 0 EINVAL", "period 1562500",
                                             "duty_cycle 781250", "enable 1", "enable 0"}));
    EXPECT_EQ(board.WritesTo("B15"), (Texts{"value 0", "value 1"}));
    EXPECT_EQ(outcome.boardTime, sim::Milliseconds(730));
    EXPECT_EQ(CountOf(board, "sleep - 730000 us"), 1) << "asleep, not spinning";
}

TEST_F(StepWorkers, DoNotStirInAStepWithoutDuration) {
    const StepOutcome outcome = Run({.led = true, .stirring = true});
    EXPECT_EQ(board.WritesTo("pwm2"), Texts{});
    EXPECT_EQ(board.WritesTo("B15"), Texts{});
    EXPECT_EQ(outcome.boardTime, 0);
}

Texts HappeningsOfAStep(bool srvd) {
    Instrument instrument;
    instrument.Run({.duration = 1000,
                    .led = true,
                    .stirring = true,
                    .srvd = srvd,
                    .sampling = true,
                    .valve = true});
    return Happenings(instrument.board);
}

TEST(SrvdFlag, ChangesNothingInAStep) {
    EXPECT_EQ(HappeningsOfAStep(true), HappeningsOfAStep(false));
}

struct Worker {
    const char* name;
    void* (*entry)(void*);
};

void PrintTo(const Worker& worker, std::ostream* out) {
    *out << worker.name;
}

class WorkerWithoutRequest : public testing::TestWithParam<Worker> {};

TEST_P(WorkerWithoutRequest, EndsAtOnceWithAnAddress) {
    SimulatedBoard board;
    pthread_t thread{};
    void* exitValue = nullptr;
    ASSERT_EQ(pthread_create(&thread, nullptr, GetParam().entry, nullptr), 0);
    ASSERT_EQ(pthread_join(thread, &exitValue), 0);
    EXPECT_NE(exitValue, nullptr);
    EXPECT_EQ(Happenings(board), (Texts{"thread 1: thread-start - 2", "thread 2: thread-end - -",
                                        "thread 1: join - 2"}));
    EXPECT_EQ(board.Now(), 0);
}

INSTANTIATE_TEST_SUITE_P(AllFive, WorkerWithoutRequest,
                         testing::Values(Worker{"LED", doLEDThread}, Worker{"valve", doValveThread},
                                         Worker{"stirring", doStirringThread},
                                         Worker{"reagent delivery", doReagentDeliveryThread},
                                         Worker{"monitoring", doADCMonitorThread}));

} // namespace
} // namespace tavrelin
