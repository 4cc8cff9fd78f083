#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/Worker.h"

#include "base/Sleep.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::RunOptions;
using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

// What one MoveAngle at 50 percent writes, from one millisecond to another.
Texts Move(const std::string& from, const std::string& to, const std::string& reset,
           const std::string& period, const std::string& duty) {
    return {from + " A4 value 1",
            from + " A5 value 1",
            from + " A6 value 1",
            from + " A2 value 0",
            from + " pwm1 duty_cycle " + reset,
            from + " pwm1 period " + period,
            from + " pwm1 duty_cycle " + duty,
            from + " pwm1 enable 1",
            to + " pwm1 enable 0",
            to + " A2 value 1",
            to + " A4 value 0",
            to + " A5 value 0",
            to + " A6 value 0",
            to + " A2 value 0"};
}

TEST(MotorMutex, MakesTheSecondMoverWaitUntilTheFirstHasBraked) {
    SimulatedBoard board;
    Pump pump;
    board.Forget();
    Worker first([&] { EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false)); });
    Worker second([&] { EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 2000, false)); });
    first.Join();
    second.Join();
    EXPECT_EQ(TimedWritesOfThread(board, 2), Move("0", "1000", "0 EINVAL", "625000", "312500"));
    EXPECT_EQ(TimedWritesOfThread(board, 3), Move("1000", "3000", "0", "1250000", "625000"));
    EXPECT_EQ(board.Now(), sim::Milliseconds(3000));
}

TEST(MotorMutex, KeepsTwoMoversApartWhoeverComesFirst) {
    Scenario scenario;
    scenario.threadOrder = sim::ThreadOrder::Seeded;
    RunOptions options;
    for (options.seed = 1; options.seed <= 20; ++options.seed) {
        SimulatedBoard board(scenario, options);
        Pump pump;
        board.Forget();
        Worker first([&] { EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false)); });
        Worker second([&] { EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false)); });
        first.Join();
        second.Join();
        const bool inOrder = TimedWritesOfThread(board, 2).front().substr(0, 2) == "0 ";
        EXPECT_EQ(TimedWritesOfThread(board, inOrder ? 2 : 3),
                  Move("0", "1000", "0 EINVAL", "625000", "312500"));
        EXPECT_EQ(TimedWritesOfThread(board, inOrder ? 3 : 2),
                  Move("1000", "2000", "0", "625000", "312500"));
    }
}

TEST(MotorMutex, IsHeldFromStartThroughStopToBrake) {
    SimulatedBoard board;
    Pump pump;
    board.Forget();
    ASSERT_TRUE(pump.motor.Start(50.0F, 1600.0F, 7));
    Worker second([&] { EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false)); });
    SleepMilliseconds(1000);
    EXPECT_TRUE(pump.motor.Stop());
    SleepMilliseconds(1000);
    EXPECT_EQ(TimedWritesOfThread(board, 2), Texts{});
    EXPECT_TRUE(pump.motor.Brake());
    second.Join();
    EXPECT_EQ(TimedWritesOfThread(board, 2), Move("2000", "3000", "0", "625000", "312500"));
}

/// Whether another thread's move of one second can begin only when this one has braked, two seconds
/// from now.
bool OtherMoverWaitsForTheBrake(const SimulatedBoard& board, StepperDriverMotor& motor) {
    const sim::Nanoseconds begin = board.Now();
    Worker other([&] { EXPECT_TRUE(motor.MoveAngle(360.0F, 50.0F, 1000, false)); });
    SleepMilliseconds(2000);
    EXPECT_TRUE(motor.Brake());
    other.Join();
    return board.Now() - begin == sim::Milliseconds(3000);
}

TEST(MotorMutex, IsFreeAfterAMove) {
    SimulatedBoard board;
    Pump pump;
    EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_FALSE(OtherMoverWaitsForTheBrake(board, pump.motor));
}

TEST(MotorMutex, StaysLockedAfterAMoveThatCouldNotSetTheCurrent) {
    SimulatedBoard board;
    Pump pump;
    CapturedConsole console;
    board.Fail("open", "/sys/class/gpio/pioA4/value", EACCES);
    EXPECT_FALSE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_TRUE(OtherMoverWaitsForTheBrake(board, pump.motor));
}

TEST(MotorMutex, StaysLockedAfterAMoveThatCouldNotRun) {
    SimulatedBoard board;
    Pump pump;
    CapturedConsole console;
    board.Fail("open", "/sys/class/pwm/pwmchip0/pwm1/duty_cycle", EACCES);
    EXPECT_FALSE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false));
    EXPECT_TRUE(OtherMoverWaitsForTheBrake(board, pump.motor));
}

TEST(MotorMutex, StaysLockedAfterAStartThatCouldNotSetTheCurrent) {
    SimulatedBoard board;
    Pump pump;
    CapturedConsole console;
    board.Fail("open", "/sys/class/gpio/pioA4/value", EACCES);
    EXPECT_FALSE(pump.motor.Start(50.0F, 1600.0F, 7));
    EXPECT_TRUE(OtherMoverWaitsForTheBrake(board, pump.motor));
}

TEST(MotorMutex, StaysLockedAfterAStartThatTheDriverRefused) {
    SimulatedBoard board;
    Pump pump;
    CapturedConsole console;
    EXPECT_FALSE(pump.motor.Start(0.0F, 1600.0F, 7));
    EXPECT_TRUE(OtherMoverWaitsForTheBrake(board, pump.motor));
}

TEST(MotorMutex, IsFreeAfterABrakeThatCouldNotSetTheCurrent) {
    SimulatedBoard board;
    Pump pump;
    CapturedConsole console;
    ASSERT_TRUE(pump.motor.Start(50.0F, 1600.0F, 7));
    ASSERT_TRUE(pump.motor.Stop());
    board.Fail("open", "/sys/class/gpio/pioA4/value", EACCES);
    EXPECT_FALSE(pump.motor.Brake());
    EXPECT_FALSE(OtherMoverWaitsForTheBrake(board, pump.motor));
}

TEST(MotorMutex, BelongsToOneMotorOnly) {
    const SimulatedBoard board;
    Pump pump;
    StepperDriverMotor other(2);
    other.SetupPins(2, 2, 2, 3);
    other.SetupCurrentLimitPins(2, 4, 2, 5, 2, 6, 7);
    Worker first([&] { EXPECT_TRUE(pump.motor.MoveAngle(360.0F, 50.0F, 1000, false)); });
    Worker second([&] { EXPECT_TRUE(other.MoveAngle(360.0F, 50.0F, 1000, false)); });
    first.Join();
    second.Join();
    EXPECT_EQ(board.Now(), sim::Milliseconds(1000));
}

} // namespace
} // namespace tavrelin
