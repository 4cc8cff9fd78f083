#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <cerrno>
#include <limits>
#include <vector>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

const std::string kNotMoved = "StepperDriverMotor::MoveAngle failed!\n";
const std::string kNotBraked = "StepperDriverMotor: Brake operation failed\n";
const std::string kNoValues = "Reagent Stepper Motor: Setting current limit pin values failed\n";
constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
constexpr float kEndless = std::numeric_limits<float>::infinity();

TEST(MoveAngle, TurnsAtFullCurrentAndBrakesAtTheLowestWithTheChipEnabled) {
    PumpOnBoard pump;
    CapturedConsole console;
    EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(TimedWrites(pump.board),
              (Texts{"0 1 A4 value 1", "0 1 A5 value 1", "0 1 A6 value 1", "0 1 A2 value 0",
                     "0 1 pwm1 duty_cycle 0 EINVAL", "0 1 pwm1 period 625000",
                     "0 1 pwm1 duty_cycle 312500", "0 1 pwm1 enable 1", "1000 1 pwm1 enable 0",
                     "1000 1 A2 value 1", "1000 1 A4 value 0", "1000 1 A5 value 0",
                     "1000 1 A6 value 0", "1000 1 A2 value 0"}));
    EXPECT_EQ(pump.Locks(), 2U);
    EXPECT_EQ(pump.Unlocks(), 2U);
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(MoveAngle, Of720DegreesIn2000MillisecondsIs3200Steps) {
    PumpOnBoard pump;
    EXPECT_TRUE(pump.motor.MoveAngle(720.0F, 50.0F, 2000, false));
    EXPECT_EQ(pump.board.Channel(1).period, 625000U); // 1600 Hz
    EXPECT_EQ(pump.board.Model().shaft.StepsTurned(pump.board.Now()), 3200);
}

TEST(MoveAngle, SpinsWhereItIsAskedTo) {
    PumpOnBoard pump;
    pump.board.FailForever("nanosleep", "", EINVAL);
    EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, true));
    EXPECT_EQ(pump.board.Now(), sim::Microseconds(1000001)); // the first look takes the one
}

// Degrees and milliseconds, and the nanoseconds that come of them in single precision, in the order
// seconds, degrees / 360 * 1600, 1 / (seconds / steps). Steps / seconds, degrees * (1600 / 360),
// degrees * 1600 / 360, degrees / 0.225, milliseconds * 0.001 and double precision each miss one.
struct Turn {
    float angle;
    std::uint32_t milliseconds;
    Texts nanoseconds;
};

TEST(MoveAngle, KeepsTheOrderOfItsSinglePrecisionFigures) {
    const std::vector<Turn> turns = {
        {315.0F, 1000, {"period 714285", "duty_cycle 357142"}},
        {97.0F, 1000, {"period 2319588", "duty_cycle 1159794"}},
        {181.0F, 60000, {"period 74585640", "duty_cycle 37292820"}},
        {303.0F, 60000, {"period 44554460", "duty_cycle 22277230"}},
    };
    for (const Turn& turn : turns) {
        PumpOnBoard pump;
        EXPECT_TRUE(pump.motor.MoveAngle(turn.angle, 50.0F, turn.milliseconds, false));
        const Texts writes = pump.board.WritesTo("pwm1");
        EXPECT_EQ(Texts(writes.begin() + 1, writes.begin() + 3), turn.nanoseconds) << turn.angle;
    }
}

struct Refusal {
    float angle;
    float dutyCycle;
    std::uint32_t milliseconds;
};

TEST(MoveAngle, OfNothingIsRefusedWithoutTouchingHardwareAndMutex) {
    const std::vector<Refusal> refusals = {
        {0.0F, 50.0F, 1000},     {-0.0F, 50.0F, 1000},   {-360.0F, 50.0F, 1000},
        {kNothing, 50.0F, 1000}, {360.0F, 0.0F, 1000},   {360.0F, -1.0F, 1000},
        {360.0F, 101.0F, 1000},  {360.0F, 100.1F, 1000}, {360.0F, kNothing, 1000},
        {360.0F, 50.0F, 0},
    };
    for (const Refusal& refusal : refusals) {
        PumpOnBoard pump;
        CapturedConsole console;
        EXPECT_FALSE(
            pump.motor.MoveAngle(refusal.angle, refusal.dutyCycle, refusal.milliseconds, false));
        EXPECT_EQ(console.Output(), kNotMoved) << refusal.angle << " " << refusal.dutyCycle;
        EXPECT_EQ(console.Error(), "");
        EXPECT_EQ(pump.board.Events(), Texts{});
        EXPECT_EQ(pump.Locks() + pump.Unlocks(), 0U);
    }
}

TEST(MoveAngle, TakesADutyOfAHundredPercent) {
    PumpOnBoard pump;
    EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 100.0F, 1000, false));
    EXPECT_EQ(pump.board.Channel(1).duty, 625000U);
}

TEST(MoveAngle, OfAMotorThatIsNotUsableFailsAtOnce) {
    const SimulatedBoard board;
    CapturedConsole console;
    StepperDriverMotor motor(4);
    EXPECT_FALSE(motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(console.Output(), "StepperDriverBase: Invalid PWM channel\n" + kNotMoved);
    EXPECT_EQ(board.Calls("pthread_mutex_lock"), 0U);
}

TEST(MoveAngle, FailsWithoutTheMotorsMutex) {
    PumpOnBoard pump;
    pump.board.Fail("pthread_mutex_lock", "", EINVAL);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(console.Output(), kNotMoved);
    EXPECT_EQ(Writes(pump.board), Texts{});
    EXPECT_EQ(pump.Unlocks(), 0U);
}

TEST(MoveAngle, FailsWithoutTheCurrentAndKeepsTheMotorsMutex) {
    PumpOnBoard pump;
    pump.board.Fail("open", "/sys/class/gpio/pioA6/value", EACCES);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(console.Output(), kNoValues + kNotMoved);
    EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 1", "A5 value 1"}));
    EXPECT_EQ(pump.Locks(), 1U);
    EXPECT_EQ(pump.Unlocks(), 0U);
}

TEST(MoveAngle, TooSlowOrTooFastIsRefusedByTheDriverAndKeepsTheMotorsMutex) {
    const std::vector<Refusal> refusals = {{0.2F, 50.0F, 1000},
                                           {360.0F, 50.0F, 4294967295U},
                                           {30000.0F, 50.0F, 1},
                                           {kEndless, 50.0F, 1000}};
    for (const Refusal& refusal : refusals) {
        PumpOnBoard pump;
        CapturedConsole console;
        EXPECT_FALSE(
            pump.motor.MoveAngle(refusal.angle, refusal.dutyCycle, refusal.milliseconds, false));
        EXPECT_EQ(console.Output(),
                  "Invalid PWM frequency or duty cycle in StepperDriver::Start\n" + kNotMoved);
        EXPECT_EQ(Writes(pump.board), (Texts{"A4 value 1", "A5 value 1", "A6 value 1"}));
        EXPECT_EQ(pump.Locks(), 1U);
        EXPECT_EQ(pump.Unlocks(), 0U);
        EXPECT_EQ(pump.board.Now(), 0);
    }
}

TEST(MoveAngle, FailsWhenTheStopFailsAndDoesNotBrake) {
    PumpOnBoard pump;
    pump.board.Fail("open", "/sys/class/gpio/pioA2/value", EACCES, 2);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(console.Output(), "Stepper Driver: PWM disable or chip disable failed\n" + kNotMoved);
    EXPECT_EQ(Writes(pump.board).back(), "pwm1 enable 0");
    EXPECT_EQ(pump.board.Now(), sim::Milliseconds(1000));
    EXPECT_EQ(pump.Locks(), 2U);
    EXPECT_EQ(pump.Unlocks(), 1U);
}

TEST(MoveAngle, FailsWhenTheBrakeFails) {
    PumpOnBoard pump;
    pump.board.Fail("open", "/sys/class/gpio/pioA4/value", EACCES, 2);
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(console.Output(), kNoValues + kNotBraked + kNotMoved);
    EXPECT_EQ(Writes(pump.board).back(), "A2 value 1");
    EXPECT_EQ(pump.Unlocks(), 2U);
}

} // namespace
} // namespace tavrelin
