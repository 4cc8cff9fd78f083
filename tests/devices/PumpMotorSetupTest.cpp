#include "tests/devices/Drivers.h"

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kNoOutputs = "Setting current limit GPIO pin(s) to outputs failed\n";
const std::string kNoValues = "Reagent Stepper Motor: Setting current limit pin values failed\n";
const std::string kNoChannel = "StepperDriverBase: Invalid PWM channel\n";

void SetUpLimitLines(StepperDriverMotor& motor) {
    motor.SetupCurrentLimitPins(0, 4, 0, 5, 0, 6, 7);
}

using PumpMotorSetup = BoardTest;

TEST_F(PumpMotorSetup, ClaimsTheThreeLinesThenMakesThemOutputsThenSetsTheLevel) {
    StepperDriverMotor motor(1);
    SetUpLimitLines(motor);
    EXPECT_TRUE(motor.Ok());
    EXPECT_EQ(Writes(board),
              InOrder({{"gpio export 4", "A4 direction in", "A4 edge none", "gpio export 5",
                        "A5 direction in", "A5 edge none", "gpio export 6", "A6 direction in",
                        "A6 edge none", "A4 direction out", "A4 edge none", "A5 direction out",
                        "A5 edge none", "A6 direction out", "A6 edge none"},
                       LimitWrites("111")}));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(PumpMotorSetup, GivesBackTheLimitLinesInTheirOrderThenTheDriver) {
    {
        const Pump pump;
        board.Forget();
    }
    EXPECT_EQ(Writes(board), (Texts{"gpio unexport 4", "gpio unexport 5", "gpio unexport 6",
                                    "pwm1 enable 0 EINVAL", "pwmchip0 unexport 1",
                                    "gpio unexport 2", "gpio unexport 3"}));
}

TEST_F(PumpMotorSetup, ThatCannotMakeALineAnOutputMakesAMotorThatIsNotUsable) {
    FailToOpen("A5/edge", 2);
    StepperDriverMotor motor(1);
    SetUpLimitLines(motor);
    EXPECT_FALSE(motor.Ok());
    EXPECT_EQ(Writes(board).back(), "A5 direction out");
    EXPECT_EQ(Console(), (Said{kNoOutputs, "unable to set the gpio trigger"}));
}

TEST_F(PumpMotorSetup, ThatCannotSetTheLevelMakesAMotorThatIsNotUsable) {
    FailToOpen("A6/value");
    StepperDriverMotor motor(1);
    SetUpLimitLines(motor);
    EXPECT_FALSE(motor.Ok());
    EXPECT_EQ(Writes(board).back(), "A5 value 1");
    EXPECT_EQ(Console(), (Said{kNoValues, "unable to set the gpio value"}));
}

TEST_F(PumpMotorSetup, ClaimsTheLimitLinesEvenForAMotorThatIsNotUsable) {
    StepperDriverMotor motor(4);
    SetUpLimitLines(motor);
    EXPECT_FALSE(motor.Ok());
    EXPECT_EQ(Writes(board).back(), "A6 edge none");
    EXPECT_EQ(Console(), (Said{kNoChannel, ""}));
}

TEST_F(PumpMotorSetup, MakesAMotorWithoutMutexUnusableInSilence) {
    board.Fail("pthread_mutex_init", "", ENOMEM);
    StepperDriverMotor motor(1);
    EXPECT_FALSE(motor.Ok());
    motor.SetupPins(0, 2, 0, 3);
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(PumpMotorSetup, OfAMotorThatIsNotUsableLeavesEveryOperationFailing) {
    StepperDriverMotor motor(4);
    EXPECT_FALSE(motor.SetCurrentLimit(7));
    EXPECT_EQ(Console(), (Said{kNoChannel, ""}));
    EXPECT_FALSE(motor.Start(50.0F, 1600.0F, 7));
    EXPECT_FALSE(motor.Brake());
    EXPECT_FALSE(motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(Console(), (Said{kNoChannel + "StepperDriverMotor: Start operation failed\n"
                                            "StepperDriverMotor: Brake operation failed\n"
                                            "StepperDriverMotor::MoveAngle failed!\n",
                               ""}));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Calls("pthread_mutex_lock") + board.Calls("pthread_mutex_unlock"), 0U);
}

// Ok, but without lines: the motor's mutex stays locked after the first, as after any failure.
TEST_F(PumpMotorSetup, ThatNeverCameLeavesEveryOperationFailingForWantOfLines) {
    StepperDriverMotor motor(1);
    EXPECT_TRUE(motor.Ok());
    EXPECT_FALSE(motor.SetCurrentLimit(0));
    EXPECT_FALSE(motor.Start(50.0F, 1600.0F, 7));
    EXPECT_FALSE(motor.Brake());
    EXPECT_FALSE(motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_EQ(Console(),
              (Said{kNoValues + kNoValues + "StepperDriverMotor: Start operation failed\n" +
                        kNoValues + "StepperDriverMotor: Brake operation failed\n" + kNoValues +
                        "StepperDriverMotor::MoveAngle failed!\n",
                    ""}));
    EXPECT_EQ(board.Events(), Texts{});
}

using PumpMotorCurrentLimit = PumpTest;

TEST_F(PumpMotorCurrentLimit, GoesOutAsANumberOfThreeBits) {
    for (const auto& [level, lines] :
         {std::pair{0U, "000"}, std::pair{1U, "100"}, std::pair{2U, "010"}, std::pair{3U, "110"},
          std::pair{4U, "001"}, std::pair{5U, "101"}, std::pair{6U, "011"}, std::pair{7U, "111"},
          std::pair{8U, "000"}, std::pair{15U, "000"}, std::pair{4294967295U, "000"}}) {
        board.Forget();
        EXPECT_TRUE(pump.SetCurrentLimit(level));
        EXPECT_EQ(Writes(board), LimitWrites(lines)) << level;
    }
}

TEST_F(PumpMotorCurrentLimit, StopsAtTheFirstLineThatFailsAndLeavesTheMotorUsable) {
    FailToOpen("A5/value");
    EXPECT_FALSE(pump.SetCurrentLimit(5));
    EXPECT_EQ(Writes(board), LimitWrites("1"));
    EXPECT_EQ(console.Output(), kNoValues);
    EXPECT_TRUE(pump.Ok());
    EXPECT_TRUE(pump.SetCurrentLimit(5));
}

} // namespace
} // namespace tavrelin
