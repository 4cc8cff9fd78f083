#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

Texts Sleeps(const SimulatedBoard& board) {
    Texts sleeps;
    for (const std::string& event : board.Events()) {
        if (event.substr(0, 6) == "sleep ") {
            sleeps.push_back(event.substr(8));
        }
    }
    return sleeps;
}

TEST(StepperDriverRun, StartsSleepsForItsDurationAndStops) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    CapturedConsole console;
    EXPECT_TRUE(stirrer.driver.Run(50.0F, 640.0F, 1500, false));
    EXPECT_EQ(TimedWrites(board),
              (Texts{"0 1 B15 value 0", "0 1 pwm2 duty_cycle 0 EINVAL", "0 1 pwm2 period 1562500",
                     "0 1 pwm2 duty_cycle 781250", "0 1 pwm2 enable 1", "1500 1 pwm2 enable 0",
                     "1500 1 B15 value 1"}));
    EXPECT_EQ(Sleeps(board), (Texts{"1500000 us"}));
    EXPECT_EQ(console.Output() + console.Error(), "");
}

// The first look at the processor's clock takes a microsecond of it, from which on it is counted.
TEST(StepperDriverRun, SpinsForItsDurationOnTheProcessorsClock) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    EXPECT_TRUE(stirrer.driver.Run(50.0F, 640.0F, 1500, true));
    EXPECT_EQ(TimedWrites(board),
              (Texts{"0 1 B15 value 0", "0 1 pwm2 duty_cycle 0 EINVAL", "0 1 pwm2 period 1562500",
                     "0 1 pwm2 duty_cycle 781250", "0 1 pwm2 enable 1", "1500.001 1 pwm2 enable 0",
                     "1500.001 1 B15 value 1"}));
    EXPECT_EQ(Sleeps(board), Texts{});
}

TEST(StepperDriverRun, SleepsWholeSecondsAndTheRestInOneSleep) {
    SimulatedBoard board;
    Stirrer stirrer;
    for (const std::uint32_t milliseconds : {1U, 999U, 1000U, 1001U, 4294967295U}) {
        board.Forget();
        const sim::Nanoseconds begin = board.Now();
        EXPECT_TRUE(stirrer.driver.Run(50.0F, 640.0F, milliseconds, false));
        EXPECT_EQ(board.Now() - begin, sim::Milliseconds(milliseconds));
        EXPECT_EQ(Sleeps(board), (Texts{std::to_string(milliseconds) + "000 us"}));
    }
}

TEST(StepperDriverRun, SleepsOnForWhatAnInterruptionLeft) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Fail("nanosleep", "", EINTR, 1);
    board.Fail("nanosleep", "", EINTR, 2);
    EXPECT_TRUE(stirrer.driver.Run(50.0F, 640.0F, 4000, false));
    EXPECT_EQ(Sleeps(board), (Texts{"2000000 us", "1000000 us", "1000000 us"}));
    EXPECT_EQ(board.Now(), sim::Milliseconds(4000));
}

TEST(StepperDriverRun, OfNoDurationSucceedsAndTouchesNothing) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    CapturedConsole console;
    for (const bool busyWait : {false, true}) {
        EXPECT_TRUE(stirrer.driver.Run(50.0F, 640.0F, 0, busyWait));
        EXPECT_TRUE(stirrer.driver.Run(0.0F, 0.0F, 0, busyWait));
    }
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Calls("pthread_mutex_lock") + board.Calls("pthread_mutex_unlock"), 0U);
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(StepperDriverRun, OfNoDurationSucceedsEvenOnADriverThatIsNotUsable) {
    const SimulatedBoard board;
    CapturedConsole console;
    StepperDriver driver(4);
    EXPECT_TRUE(driver.Run(50.0F, 640.0F, 0, false));
}

TEST(StepperDriverRun, DoesNotWaitWhenTheStartFails) {
    SimulatedBoard board;
    Stirrer stirrer;
    CapturedConsole console;
    EXPECT_FALSE(stirrer.driver.Run(0.0F, 640.0F, 1500, false));
    EXPECT_FALSE(stirrer.driver.Run(0.0F, 640.0F, 1500, true));
    board.Fail("open", "/sys/class/gpio/pioB15/value", EACCES);
    EXPECT_FALSE(stirrer.driver.Run(50.0F, 640.0F, 1500, false));
    EXPECT_EQ(board.Now(), 0);
    EXPECT_EQ(console.Output(), "Invalid PWM frequency or duty cycle in StepperDriver::Start\n"
                                "Invalid PWM frequency or duty cycle in StepperDriver::Start\n"
                                "Stepper Driver: PWM enable or chip enable failed\n");
}

TEST(StepperDriverRun, AnswersWhatTheStopAnswers) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Fail("open", "/sys/class/gpio/pioB15/value", EACCES, 2);
    CapturedConsole console;
    EXPECT_FALSE(stirrer.driver.Run(50.0F, 640.0F, 1500, false));
    EXPECT_EQ(board.Now(), sim::Milliseconds(1500));
    EXPECT_EQ(console.Output(), "Stepper Driver: PWM disable or chip disable failed\n");
}

TEST(StepperDriverRun, SwitchesOffARunningChannelBeforeItProgramsIt) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Channel(2) = {.exported = true, .period = 1000, .duty = 500, .enabled = true};
    board.Forget();
    EXPECT_TRUE(stirrer.driver.Run(50.0F, 640.0F, 10, false));
    EXPECT_EQ(Writes(board),
              (Texts{"B15 value 0", "pwm2 enable 0", "pwm2 duty_cycle 0", "pwm2 period 1562500",
                     "pwm2 duty_cycle 781250", "pwm2 enable 1", "pwm2 enable 0", "B15 value 1"}));
}

} // namespace
} // namespace tavrelin
