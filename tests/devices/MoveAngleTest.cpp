#include "tests/devices/Drivers.h"

#include <limits>

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kNotMoved = "StepperDriverMotor::MoveAngle failed!\n";
const std::string kNotBraked = "StepperDriverMotor: Brake operation failed\n";
const std::string kNoValues = "Reagent Stepper Motor: Setting current limit pin values failed\n";
constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
constexpr float kEndless = std::numeric_limits<float>::infinity();

struct Move {
    float angle = 360.0F;
    float dutyCycle = 50.0F;
    std::uint32_t milliseconds = 1000;
};

class MoveAngle : public PumpTest {
  protected:
    bool Turn(const Move& move = {}) {
        return pump.MoveAngle(move.angle, move.dutyCycle, move.milliseconds, false);
    }
    /// A turn that fails, and what it locks of motor and channel and unlocks again.
    void ExpectFailure(const std::string& output, unsigned locks, unsigned unlocks,
                       const Move& move = {}) {
        EXPECT_FALSE(Turn(move)) << move.angle << " " << move.dutyCycle;
        EXPECT_EQ(console.Output(), output + kNotMoved);
        EXPECT_EQ(Locks(), locks);
        EXPECT_EQ(Unlocks(), unlocks);
    }
};

TEST_F(MoveAngle, TurnsAtFullCurrentAndBrakesAtTheLowestWithTheChipEnabled) {
    EXPECT_TRUE(Turn());
    EXPECT_EQ(TimedWrites(board),
              (Texts{"0 1 A4 value 1", "0 1 A5 value 1", "0 1 A6 value 1", "0 1 A2 value 0",
                     "0 1 pwm1 duty_cycle 0 EINVAL", "0 1 pwm1 period 625000",
                     "0 1 pwm1 duty_cycle 312500", "0 1 pwm1 enable 1", "1000 1 pwm1 enable 0",
                     "1000 1 A2 value 1", "1000 1 A4 value 0", "1000 1 A5 value 0",
                     "1000 1 A6 value 0", "1000 1 A2 value 0"}));
    EXPECT_EQ(Locks(), 2U);
    EXPECT_EQ(Unlocks(), 2U);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(MoveAngle, Of720DegreesIn2000MillisecondsIs3200Steps) {
    EXPECT_TRUE(Turn({.angle = 720.0F, .milliseconds = 2000}));
    EXPECT_EQ(board.Channel(1).period, 625000U); // 1600 Hz
    EXPECT_EQ(board.Model().shaft.StepsTurned(board.Now()), 3200);
}

TEST_F(MoveAngle, SpinsWhereItIsAskedTo) {
    board.FailForever("nanosleep", "", EINVAL);
    EXPECT_TRUE(pump.MoveAngle(360.0F, 50.0F, 1000, true));
    EXPECT_EQ(board.Now(), sim::Microseconds(1000001)); // the first look takes the one
}

// Degrees and milliseconds, and the nanoseconds that come of them in single precision, in the order
// seconds, degrees / 360 * 1600, 1 / (seconds / steps). Steps / seconds, degrees * (1600 / 360),
// degrees * 1600 / 360, degrees / 0.225, milliseconds * 0.001 and double precision each miss one.
TEST_F(MoveAngle, KeepsTheOrderOfItsSinglePrecisionFigures) {
    struct Case {
        float angle;
        std::uint32_t milliseconds, period, duty;
    };
    for (const Case& turn :
         {Case{315.0F, 1000, 714285, 357142}, Case{97.0F, 1000, 2319588, 1159794},
          Case{181.0F, 60000, 74585640, 37292820}, Case{303.0F, 60000, 44554460, 22277230}}) {
        EXPECT_TRUE(Turn({.angle = turn.angle, .milliseconds = turn.milliseconds}));
        EXPECT_EQ(board.Channel(1).period, turn.period) << turn.angle;
        EXPECT_EQ(board.Channel(1).duty, turn.duty) << turn.angle;
    }
}

TEST_F(MoveAngle, OfNothingIsRefusedWithoutTouchingHardwareAndMutex) {
    for (const Move& move :
         {Move{.angle = 0.0F}, Move{.angle = -0.0F}, Move{.angle = -360.0F},
          Move{.angle = kNothing}, Move{.dutyCycle = 0.0F}, Move{.dutyCycle = -1.0F},
          Move{.dutyCycle = 101.0F}, Move{.dutyCycle = 100.1F}, Move{.dutyCycle = kNothing},
          Move{.milliseconds = 0}}) {
        Renew();
        ExpectFailure("", 0, 0, move);
        EXPECT_EQ(board.Events(), Texts{});
    }
}

TEST_F(MoveAngle, TakesADutyOfAHundredPercent) {
    EXPECT_TRUE(Turn({.dutyCycle = 100.0F}));
    EXPECT_EQ(board.Channel(1).duty, 625000U);
}

TEST_F(MoveAngle, FailsWithoutTheMotorsMutex) {
    board.Fail("pthread_mutex_lock", "", EINVAL);
    ExpectFailure("", 1, 0);
    EXPECT_EQ(Writes(board), Texts{});
}

TEST_F(MoveAngle, FailsWithoutTheCurrentAndKeepsTheMotorsMutex) {
    FailToOpen("A6/value");
    ExpectFailure(kNoValues, 1, 0);
    EXPECT_EQ(Writes(board), LimitWrites("11"));
}

TEST_F(MoveAngle, TooSlowOrTooFastIsRefusedByTheDriverAndKeepsTheMotorsMutex) {
    for (const Move& move : {Move{.angle = 0.2F}, Move{.milliseconds = 4294967295U},
                             Move{.angle = 30000.0F, .milliseconds = 1}, Move{.angle = kEndless}}) {
        Renew();
        ExpectFailure("Invalid PWM frequency or duty cycle in StepperDriver::Start\n", 1, 0, move);
        EXPECT_EQ(Writes(board), LimitWrites("111"));
        EXPECT_EQ(board.Now(), 0);
    }
}

TEST_F(MoveAngle, FailsWhenTheStopFailsAndDoesNotBrake) {
    FailToOpen("A2/value", 2);
    ExpectFailure("Stepper Driver: PWM disable or chip disable failed\n", 2, 1);
    EXPECT_EQ(Writes(board).back(), "pwm1 enable 0");
    EXPECT_EQ(board.Now(), sim::Milliseconds(1000));
}

TEST_F(MoveAngle, FailsWhenTheBrakeFails) {
    FailToOpen("A4/value", 2);
    ExpectFailure(kNoValues + kNotBraked, 2, 2);
    EXPECT_EQ(Writes(board).back(), "A2 value 1");
}

} // namespace
} // namespace tavrelin
