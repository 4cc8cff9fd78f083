#include "tests/devices/Drivers.h"

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kNotStopped = "Stepper Driver: PWM disable or chip disable failed\n";
const std::string kNotUnlocked = "Stepper Driver: PWM mutex unlock failed\n";

/// A stirrer that runs, what was written until then forgotten.
class StepperDriverStop : public StirrerTest {
  protected:
    StepperDriverStop() {
        EXPECT_TRUE(stirrer.Start(50.0F, 640.0F));
        board.Forget();
    }

    /// Starting again would wait for ever on a mutex that is still held.
    void ExpectMutexFree() {
        EXPECT_TRUE(stirrer.Start(50.0F, 640.0F));
        EXPECT_TRUE(stirrer.Stop());
    }
};

TEST_F(StepperDriverStop, StopsThePulsesBeforeItDisablesTheChip) {
    EXPECT_TRUE(stirrer.Stop());
    EXPECT_EQ(Writes(board), (Texts{"pwm2 enable 0", "B15 value 1"}));
    EXPECT_FALSE(board.Model().Stirring());
    EXPECT_EQ(Console(), kSilence);
    ExpectMutexFree();
}

TEST_F(StepperDriverStop, LeavesTheChipEnabledWhenThePulsesCannotBeStopped) {
    FailToOpen("pwm2/enable");
    EXPECT_FALSE(stirrer.Stop());
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_TRUE(board.Model().Stirring());
    EXPECT_EQ(Console(), (Said{kNotStopped, "unable to enable a pwm"}));
    ExpectMutexFree();
}

TEST_F(StepperDriverStop, TellsThatTheChipCouldNotBeDisabled) {
    FailToOpen("B15/value");
    EXPECT_FALSE(stirrer.Stop());
    EXPECT_EQ(Writes(board), (Texts{"pwm2 enable 0"}));
    EXPECT_EQ(Console(), (Said{kNotStopped, "unable to set the gpio value"}));
    ExpectMutexFree();
}

TEST_F(StepperDriverStop, TellsThatTheMutexCouldNotBeUnlocked) {
    board.Fail("pthread_mutex_unlock", "", EPERM);
    EXPECT_FALSE(stirrer.Stop());
    EXPECT_EQ(Writes(board), (Texts{"pwm2 enable 0", "B15 value 1"}));
    EXPECT_EQ(console.Output(), kNotUnlocked);
}

TEST_F(StepperDriverStop, TellsBothWhenPulsesAndMutexFail) {
    FailToOpen("pwm2/enable");
    board.Fail("pthread_mutex_unlock", "", EPERM);
    EXPECT_FALSE(stirrer.Stop());
    EXPECT_EQ(console.Output(), kNotStopped + kNotUnlocked);
}

TEST_F(StepperDriverStop, WithoutAStartUnlocksWhatItDoesNotHold) {
    Renew();
    EXPECT_TRUE(stirrer.Stop());
    EXPECT_EQ(Writes(board), (Texts{"pwm2 enable 0 EINVAL", "B15 value 1"}));
    EXPECT_EQ(Locks(), 0U);
    EXPECT_EQ(Unlocks(), 1U);
    EXPECT_EQ(Console(), kSilence);
}

} // namespace
} // namespace tavrelin
