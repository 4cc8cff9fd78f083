#include "tests/devices/Drivers.h"

namespace tavrelin {
namespace {

using sim::Texts;

class StepperDriverRun : public StirrerTest {
  protected:
    bool Run(std::uint32_t milliseconds, bool busyWait = false, float dutyCycle = 50.0F) {
        return stirrer.Run(dutyCycle, 640.0F, milliseconds, busyWait);
    }

    [[nodiscard]] Texts Sleeps() const {
        Texts sleeps;
        for (const std::string& event : board.Events()) {
            if (event.rfind("sleep ", 0) == 0) {
                sleeps.push_back(event.substr(8));
            }
        }
        return sleeps;
    }

    /// A run from 0 to this moment in milliseconds.
    void ExpectRunUntil(const std::string& end) {
        EXPECT_EQ(TimedWrites(board),
                  (Texts{"0 1 B15 value 0", "0 1 pwm2 duty_cycle 0 EINVAL",
                         "0 1 pwm2 period 1562500", "0 1 pwm2 duty_cycle 781250",
                         "0 1 pwm2 enable 1", end + " 1 pwm2 enable 0", end + " 1 B15 value 1"}));
        EXPECT_EQ(Console(), kSilence);
    }
};

TEST_F(StepperDriverRun, StartsSleepsForItsDurationAndStops) {
    EXPECT_TRUE(Run(1500));
    ExpectRunUntil("1500");
    EXPECT_EQ(Sleeps(), (Texts{"1500000 us"}));
}

// The first look at the processor's clock takes a microsecond of it, from which on it is counted.
TEST_F(StepperDriverRun, SpinsForItsDurationOnTheProcessorsClock) {
    EXPECT_TRUE(Run(1500, true));
    ExpectRunUntil("1500.001");
    EXPECT_EQ(Sleeps(), Texts{});
}

TEST_F(StepperDriverRun, SleepsWholeSecondsAndTheRestInOneSleep) {
    for (const std::uint32_t milliseconds : {1U, 999U, 1000U, 1001U, 4294967295U}) {
        board.Forget();
        const sim::Nanoseconds begin = board.Now();
        EXPECT_TRUE(Run(milliseconds));
        EXPECT_EQ(board.Now() - begin, sim::Milliseconds(milliseconds));
        EXPECT_EQ(Sleeps(), (Texts{std::to_string(milliseconds) + "000 us"}));
    }
}

TEST_F(StepperDriverRun, SleepsOnForWhatAnInterruptionLeft) {
    board.Fail("nanosleep", "", EINTR, 1);
    board.Fail("nanosleep", "", EINTR, 2);
    EXPECT_TRUE(Run(4000));
    EXPECT_EQ(Sleeps(), (Texts{"2000000 us", "1000000 us", "1000000 us"}));
    EXPECT_EQ(board.Now(), sim::Milliseconds(4000));
}

TEST_F(StepperDriverRun, OfNoDurationSucceedsAndTouchesNothing) {
    for (const bool busyWait : {false, true}) {
        EXPECT_TRUE(Run(0, busyWait));
        EXPECT_TRUE(Run(0, busyWait, 0.0F));
    }
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(Locks() + Unlocks(), 0U);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(StepperDriverRun, DoesNotWaitWhenTheStartFails) {
    EXPECT_FALSE(Run(1500, false, 0.0F));
    EXPECT_FALSE(Run(1500, true, 0.0F));
    FailToOpen("B15/value");
    EXPECT_FALSE(Run(1500));
    EXPECT_EQ(board.Now(), 0);
    EXPECT_EQ(console.Output(), "Invalid PWM frequency or duty cycle in StepperDriver::Start\n"
                                "Invalid PWM frequency or duty cycle in StepperDriver::Start\n"
                                "Stepper Driver: PWM enable or chip enable failed\n");
}

TEST_F(StepperDriverRun, AnswersWhatTheStopAnswers) {
    FailToOpen("B15/value", 2);
    EXPECT_FALSE(Run(1500));
    EXPECT_EQ(board.Now(), sim::Milliseconds(1500));
    EXPECT_EQ(console.Output(), "Stepper Driver: PWM disable or chip disable failed\n");
}

TEST_F(StepperDriverRun, SwitchesOffARunningChannelBeforeItProgramsIt) {
    board.Channel(2) = {.exported = true, .period = 1000, .duty = 500, .enabled = true};
    EXPECT_TRUE(Run(10));
    EXPECT_EQ(Writes(board), InOrder({{"B15 value 0", "pwm2 enable 0"},
                                      PulsesAgain("pwm2", "1562500", "781250"),
                                      {"pwm2 enable 0", "B15 value 1"}}));
}

} // namespace
} // namespace tavrelin
