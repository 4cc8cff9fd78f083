#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <cerrno>
#include <vector>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

const std::string kNotStarted = "StepperDriverMotor: Start operation failed\n";
const std::string kNotBraked = "StepperDriverMotor: Brake operation failed\n";
const std::string kNoValues = "Reagent Stepper Motor: Setting current limit pin values failed\n";

TEST(PumpMotorStart, SetsTheCurrentAndThenRunsTheDriver) {
    PumpOnBoard pump;
    CapturedConsole console;
    EXPECT_TRUE(pump.motor.Start(50.0F, 1600.0F, 3));
    EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 1", "A5 value 1", "A6 value 0", "A2 value 0",
                                         "pwm1 duty_cycle 0 EINVAL", "pwm1 period 625000",
                                         "pwm1 duty_cycle 312500", "pwm1 enable 1"}));
    EXPECT_EQ(pump.Locks(), 2U);
    EXPECT_EQ(pump.Unlocks(), 0U);
    EXPECT_TRUE(pump.motor.Stop());
    EXPECT_TRUE(pump.motor.Brake());
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(PumpMotorStart, OfAMotorThatIsNotUsableFailsAtOnce) {
    const SimulatedBoard board;
    CapturedConsole console;
    StepperDriverMotor motor(4);
    EXPECT_FALSE(motor.Start(50.0F, 1600.0F, 7));
    EXPECT_EQ(console.Output(), "StepperDriverBase: Invalid PWM channel\n" + kNotStarted);
    EXPECT_EQ(board.Calls("pthread_mutex_lock"), 0U);
}

TEST(PumpMotorStart, FailsWithoutTheMotorsMutex) {
    PumpOnBoard pump;
    pump.board.Fail("pthread_mutex_lock", "", EINVAL);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.Start(50.0F, 1600.0F, 7));
    EXPECT_EQ(console.Output(), kNotStarted);
    EXPECT_EQ(Writes(pump.board), Texts{});
}

TEST(PumpMotorStart, FailsWithoutTheCurrentAndKeepsTheMotorsMutex) {
    PumpOnBoard pump;
    pump.board.Fail("open", "/sys/class/gpio/pioA5/value", EACCES);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.Start(50.0F, 1600.0F, 7));
    EXPECT_EQ(console.Output(), kNoValues + kNotStarted);
    EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 1"}));
    EXPECT_EQ(pump.Locks(), 1U);
    EXPECT_EQ(pump.Unlocks(), 0U);
}

TEST(PumpMotorStart, FailsForAFrequencyOutOfRangeAndKeepsTheMotorsMutex) {
    PumpOnBoard pump;
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.Start(50.0F, 0.5F, 7));
    EXPECT_EQ(console.Output(),
              "Invalid PWM frequency or duty cycle in StepperDriver::Start\n" + kNotStarted);
    EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 1", "A5 value 1", "A6 value 1"}));
    EXPECT_EQ(pump.Locks(), 1U);
    EXPECT_EQ(pump.Unlocks(), 0U);
}

TEST(PumpMotorStart, FailsWithTheDriverWhichFreesTheChannelsMutexOnly) {
    PumpOnBoard pump;
    pump.board.Fail("open", "/sys/class/gpio/pioA2/value", EACCES);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.Start(50.0F, 1600.0F, 7));
    EXPECT_EQ(console.Output(), "Stepper Driver: PWM enable or chip enable failed\n" + kNotStarted);
    EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 1", "A5 value 1", "A6 value 1",
                                         "pwm1 enable 0 EINVAL", "A2 value 1"}));
    EXPECT_EQ(pump.Locks(), 2U);
    EXPECT_EQ(pump.Unlocks(), 1U);
}

TEST(PumpMotorBrake, HoldsTheRotorWithTheLowestCurrentAndTheChipEnabled) {
    PumpOnBoard pump;
    CapturedConsole console;
    EXPECT_TRUE(pump.motor.Brake());
    EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 0", "A5 value 0", "A6 value 0", "A2 value 0"}));
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(PumpMotorBrake, DoesNotStopThePulses) {
    PumpOnBoard pump;
    EXPECT_TRUE(pump.motor.Start(50.0F, 1600.0F, 7));
    EXPECT_TRUE(pump.motor.Brake());
    EXPECT_TRUE(pump.board.Channel(1).Pulsing());
    EXPECT_EQ(pump.Unlocks(), 1U);
    EXPECT_TRUE(pump.motor.Stop());
}

TEST(PumpMotorBrake, WithoutAStartUnlocksWhatItDoesNotHold) {
    PumpOnBoard pump;
    EXPECT_TRUE(pump.motor.Brake());
    EXPECT_EQ(pump.Locks(), 0U);
    EXPECT_EQ(pump.Unlocks(), 1U);
}

TEST(PumpMotorBrake, OfAMotorThatIsNotUsableFailsAtOnce) {
    const SimulatedBoard board;
    CapturedConsole console;
    StepperDriverMotor motor(4);
    EXPECT_FALSE(motor.Brake());
    EXPECT_EQ(console.Output(), "StepperDriverBase: Invalid PWM channel\n" + kNotBraked);
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Calls("pthread_mutex_unlock"), 0U);
}

TEST(PumpMotorBrake, FailsWithoutTheCurrentButFreesTheMotor) {
    const Texts levels = {"A4 value 0", "A5 value 0"};
    for (const std::ptrdiff_t before : {0, 1, 2}) {
        PumpOnBoard pump;
        pump.board.Fail("open", "/sys/class/gpio/pioA" + std::to_string(4 + before) + "/value",
                        EACCES);
        CapturedConsole console;
        EXPECT_FALSE(pump.motor.Brake());
        EXPECT_EQ(console.Output(), kNoValues + kNotBraked);
        EXPECT_EQ(Writes(pump.board), Texts(levels.begin(), levels.begin() + before));
        EXPECT_EQ(pump.Unlocks(), 1U);
    }
}

TEST(PumpMotorBrake, FailsWithoutTheEnableLineButFreesTheMotor) {
    PumpOnBoard pump;
    pump.board.Fail("open", "/sys/class/gpio/pioA2/value", EACCES);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.Brake());
    EXPECT_EQ(console.Output(), kNotBraked);
    EXPECT_EQ(console.Error(), "unable to set the gpio value");
    EXPECT_EQ(pump.Unlocks(), 1U);
}

TEST(PumpMotorBrake, FailsWhenTheMotorsMutexCannotBeUnlocked) {
    PumpOnBoard pump;
    pump.board.Fail("pthread_mutex_unlock", "", EPERM);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.Brake());
    EXPECT_EQ(console.Output(), kNotBraked);
    EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 0", "A5 value 0", "A6 value 0", "A2 value 0"}));
}

TEST(PumpMotorRun, IsTheDriversRunAndLeavesTheMotorsMutexAlone) {
    PumpOnBoard pump;
    EXPECT_TRUE(pump.motor.Run(50.0F, 1600.0F, 1000, false));
    EXPECT_EQ(TimedWrites(pump.board),
              (Texts{"0 1 A2 value 0", "0 1 pwm1 duty_cycle 0 EINVAL", "0 1 pwm1 period 625000",
                     "0 1 pwm1 duty_cycle 312500", "0 1 pwm1 enable 1", "1000 1 pwm1 enable 0",
                     "1000 1 A2 value 1"}));
    EXPECT_EQ(pump.Locks(), 1U);
    EXPECT_EQ(pump.Unlocks(), 1U);
}

} // namespace
} // namespace tavrelin
