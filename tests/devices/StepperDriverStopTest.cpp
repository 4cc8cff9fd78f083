#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kNotStopped = "Stepper Driver: PWM disable or chip disable failed\n";
constexpr const char* kNotUnlocked = "Stepper Driver: PWM mutex unlock failed\n";
constexpr const char* kEnableLine = "/sys/class/gpio/pioB15/value";
constexpr const char* kPulses = "/sys/class/pwm/pwmchip0/pwm2/enable";

/// A stirrer that runs, what was written until then forgotten.
struct RunningStirrer {
    RunningStirrer() {
        EXPECT_TRUE(stirrer.driver.Start(50.0F, 640.0F));
        board.Forget();
    }

    bool Stop() { return stirrer.driver.Stop(); }
    /// Starting again would wait for ever on a mutex that is still held.
    void ExpectMutexFree() {
        EXPECT_TRUE(stirrer.driver.Start(50.0F, 640.0F));
        EXPECT_TRUE(stirrer.driver.Stop());
    }

    SimulatedBoard board;
    Stirrer stirrer;
};

TEST(StepperDriverStop, StopsThePulsesBeforeItDisablesTheChip) {
    RunningStirrer running;
    CapturedConsole console;
    EXPECT_TRUE(running.Stop());
    EXPECT_EQ(Writes(running.board), (Texts{"pwm2 enable 0", "B15 value 1"}));
    EXPECT_FALSE(running.board.Model().Stirring());
    EXPECT_EQ(console.Output() + console.Error(), "");
    running.ExpectMutexFree();
}

TEST(StepperDriverStop, LeavesTheChipEnabledWhenThePulsesCannotBeStopped) {
    RunningStirrer running;
    running.board.Fail("open", kPulses, EACCES);
    CapturedConsole console;
    EXPECT_FALSE(running.Stop());
    EXPECT_EQ(Writes(running.board), Texts{});
    EXPECT_TRUE(running.board.Model().Stirring());
    EXPECT_EQ(console.Output(), kNotStopped);
    EXPECT_EQ(console.Error(), "unable to enable a pwm");
    running.ExpectMutexFree();
}

TEST(StepperDriverStop, TellsThatTheChipCouldNotBeDisabled) {
    RunningStirrer running;
    running.board.Fail("open", kEnableLine, EACCES);
    CapturedConsole console;
    EXPECT_FALSE(running.Stop());
    EXPECT_EQ(Writes(running.board), (Texts{"pwm2 enable 0"}));
    EXPECT_EQ(console.Output(), kNotStopped);
    EXPECT_EQ(console.Error(), "unable to set the gpio value");
    running.ExpectMutexFree();
}

TEST(StepperDriverStop, TellsThatTheMutexCouldNotBeUnlocked) {
    RunningStirrer running;
    running.board.Fail("pthread_mutex_unlock", "", EPERM);
    CapturedConsole console;
    EXPECT_FALSE(running.Stop());
    EXPECT_EQ(Writes(running.board), (Texts{"pwm2 enable 0", "B15 value 1"}));
    EXPECT_EQ(console.Output(), kNotUnlocked);
}

TEST(StepperDriverStop, TellsBothWhenPulsesAndMutexFail) {
    RunningStirrer running;
    running.board.Fail("open", kPulses, EACCES);
    running.board.Fail("pthread_mutex_unlock", "", EPERM);
    CapturedConsole console;
    EXPECT_FALSE(running.Stop());
    EXPECT_EQ(console.Output(), std::string(kNotStopped) + kNotUnlocked);
}

TEST(StepperDriverStop, WithoutAStartUnlocksWhatItDoesNotHold) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    CapturedConsole console;
    EXPECT_TRUE(stirrer.driver.Stop());
    EXPECT_EQ(Writes(board), (Texts{"pwm2 enable 0 EINVAL", "B15 value 1"}));
    EXPECT_EQ(board.Calls("pthread_mutex_lock"), 0U);
    EXPECT_EQ(board.Calls("pthread_mutex_unlock"), 1U);
    EXPECT_EQ(console.Output() + console.Error(), "");
}

} // namespace
} // namespace tavrelin
