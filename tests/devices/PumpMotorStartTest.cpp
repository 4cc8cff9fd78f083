#include "tests/devices/Drivers.h"

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kNotStarted = "StepperDriverMotor: Start operation failed\n";
const std::string kNotBraked = "StepperDriverMotor: Brake operation failed\n";
const std::string kNoValues = "Reagent Stepper Motor: Setting current limit pin values failed\n";

class PumpMotorStart : public PumpTest {
  protected:
    /// A start that fails, with what it locks of motor and channel and unlocks again.
    void ExpectFailure(const std::string& output, const Texts& writes, unsigned locks,
                       unsigned unlocks, float frequency = 1600.0F) {
        EXPECT_FALSE(pump.Start(50.0F, frequency, 7));
        EXPECT_EQ(console.Output(), output + kNotStarted);
        EXPECT_EQ(Writes(board), writes);
        EXPECT_EQ(Locks(), locks);
        EXPECT_EQ(Unlocks(), unlocks);
    }
};

TEST_F(PumpMotorStart, SetsTheCurrentAndThenRunsTheDriver) {
    EXPECT_TRUE(pump.Start(50.0F, 1600.0F, 3));
    EXPECT_EQ(Writes(board), InOrder({LimitWrites("110"), {"A2 value 0"}, kPumpPulses}));
    EXPECT_EQ(Locks(), 2U);
    EXPECT_EQ(Unlocks(), 0U);
    EXPECT_TRUE(pump.Stop());
    EXPECT_TRUE(pump.Brake());
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(PumpMotorStart, FailsWithoutTheMotorsMutex) {
    board.Fail("pthread_mutex_lock", "", EINVAL);
    ExpectFailure("", {}, 1, 0);
}

TEST_F(PumpMotorStart, FailsWithoutTheCurrentAndKeepsTheMotorsMutex) {
    FailToOpen("A5/value");
    ExpectFailure(kNoValues, LimitWrites("1"), 1, 0);
}

TEST_F(PumpMotorStart, FailsForAFrequencyOutOfRangeAndKeepsTheMotorsMutex) {
    ExpectFailure("Invalid PWM frequency or duty cycle in StepperDriver::Start\n",
                  LimitWrites("111"), 1, 0, 0.5F);
}

TEST_F(PumpMotorStart, FailsWithTheDriverWhichFreesTheChannelsMutexOnly) {
    FailToOpen("A2/value");
    ExpectFailure("Stepper Driver: PWM enable or chip enable failed\n",
                  InOrder({LimitWrites("111"), {"pwm1 enable 0 EINVAL", "A2 value 1"}}), 2, 1);
}

using PumpMotorBrake = PumpTest;

TEST_F(PumpMotorBrake, HoldsTheRotorWithTheLowestCurrentAndTheChipEnabled) {
    EXPECT_TRUE(pump.Brake());
    EXPECT_EQ(Writes(board), InOrder({LimitWrites("000"), {"A2 value 0"}}));
    EXPECT_EQ(Locks(), 0U);
    EXPECT_EQ(Unlocks(), 1U); // whether held or not
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(PumpMotorBrake, DoesNotStopThePulses) {
    EXPECT_TRUE(pump.Start(50.0F, 1600.0F, 7));
    EXPECT_TRUE(pump.Brake());
    EXPECT_TRUE(board.Channel(1).Pulsing());
    EXPECT_EQ(Unlocks(), 1U);
    EXPECT_TRUE(pump.Stop());
}

TEST_F(PumpMotorBrake, FailsWithoutTheCurrentButFreesTheMotor) {
    FailToOpen("A5/value");
    EXPECT_FALSE(pump.Brake());
    EXPECT_EQ(console.Output(), kNoValues + kNotBraked);
    EXPECT_EQ(Writes(board), LimitWrites("0"));
    EXPECT_EQ(Unlocks(), 1U);
}

TEST_F(PumpMotorBrake, FailsWithoutTheEnableLineButFreesTheMotor) {
    FailToOpen("A2/value");
    EXPECT_FALSE(pump.Brake());
    EXPECT_EQ(Console(), (Said{kNotBraked, "unable to set the gpio value"}));
    EXPECT_EQ(Unlocks(), 1U);
}

TEST_F(PumpMotorBrake, FailsWhenTheMotorsMutexCannotBeUnlocked) {
    board.Fail("pthread_mutex_unlock", "", EPERM);
    EXPECT_FALSE(pump.Brake());
    EXPECT_EQ(console.Output(), kNotBraked);
    EXPECT_EQ(Writes(board), InOrder({LimitWrites("000"), {"A2 value 0"}}));
}

TEST_F(PumpMotorBrake, IsNotPartOfTheDriversRunWhichLeavesTheMotorsMutexAlone) {
    EXPECT_TRUE(pump.Run(50.0F, 1600.0F, 1000, false));
    EXPECT_EQ(Writes(board),
              InOrder({{"A2 value 0"}, kPumpPulses, {"pwm1 enable 0", "A2 value 1"}}));
    EXPECT_EQ(board.Now(), sim::Milliseconds(1000));
    EXPECT_EQ(Locks(), 1U);
    EXPECT_EQ(Unlocks(), 1U);
}

} // namespace
} // namespace tavrelin
