#include "tests/devices/Drivers.h"
#include "tests/support/Worker.h"

#include "base/Sleep.h"

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

bool Turn(StepperDriverMotor& motor, std::uint32_t milliseconds = 1000) {
    return motor.MoveAngle(360.0F, 50.0F, milliseconds, false);
}

// What one Turn writes, from one millisecond to another.
Texts Writes(const std::string& from, const std::string& to, const Texts& pulses) {
    Texts writes;
    for (const std::string& write : InOrder({LimitWrites("111"), {"A2 value 0"}, pulses})) {
        writes.push_back(from + " " + write);
    }
    for (const std::string& write :
         InOrder({{"pwm1 enable 0", "A2 value 1"}, LimitWrites("000"), {"A2 value 0"}})) {
        writes.push_back(to + " " + write);
    }
    return writes;
}

const Texts kPumpPulsesAgain = PulsesAgain("pwm1", "625000", "312500");

using MotorMutex = PumpTest;

TEST_F(MotorMutex, MakesTheSecondMoverWaitUntilTheFirstHasBraked) {
    Worker first([&] { EXPECT_TRUE(Turn(pump)); });
    Worker second([&] { EXPECT_TRUE(Turn(pump, 2000)); });
    first.Join();
    second.Join();
    EXPECT_EQ(TimedWritesOfThread(board, 2), Writes("0", "1000", kPumpPulses));
    EXPECT_EQ(TimedWritesOfThread(board, 3),
              Writes("1000", "3000", PulsesAgain("pwm1", "1250000", "625000")));
    EXPECT_EQ(board.Now(), sim::Milliseconds(3000));
}

TEST(MotorMutexOfSeededThreads, KeepsTwoMoversApartWhoeverComesFirst) {
    sim::Scenario scenario;
    scenario.threads.order = sim::ThreadOrder::Seeded;
    sim::RunOptions options;
    for (options.seed = 1; options.seed <= 20; ++options.seed) {
        SimulatedBoard board(scenario, options);
        Pump pump;
        board.Forget();
        Worker first([&] { EXPECT_TRUE(Turn(pump.motor)); });
        Worker second([&] { EXPECT_TRUE(Turn(pump.motor)); });
        first.Join();
        second.Join();
        const bool inOrder = TimedWritesOfThread(board, 2).front().substr(0, 2) == "0 ";
        EXPECT_EQ(TimedWritesOfThread(board, inOrder ? 2 : 3), Writes("0", "1000", kPumpPulses));
        EXPECT_EQ(TimedWritesOfThread(board, inOrder ? 3 : 2),
                  Writes("1000", "2000", kPumpPulsesAgain));
    }
}

TEST_F(MotorMutex, IsHeldFromStartThroughStopToBrake) {
    ASSERT_TRUE(pump.Start(50.0F, 1600.0F, 7));
    Worker second([&] { EXPECT_TRUE(Turn(pump)); });
    SleepMilliseconds(1000);
    EXPECT_TRUE(pump.Stop());
    SleepMilliseconds(1000);
    EXPECT_EQ(TimedWritesOfThread(board, 2), Texts{});
    EXPECT_TRUE(pump.Brake());
    second.Join();
    EXPECT_EQ(TimedWritesOfThread(board, 2), Writes("2000", "3000", kPumpPulsesAgain));
}

TEST_F(MotorMutex, BelongsToOneMotorOnly) {
    StepperDriverMotor other(2);
    other.SetupPins(2, 2, 2, 3);
    other.SetupCurrentLimitPins(2, 4, 2, 5, 2, 6, 7);
    Worker first([&] { EXPECT_TRUE(Turn(pump)); });
    Worker second([&] { EXPECT_TRUE(Turn(other)); });
    first.Join();
    second.Join();
    EXPECT_EQ(board.Now(), sim::Milliseconds(1000));
}

/// What a move, a start or a brake leaves behind.
class MotorMutexAfter : public PumpTest {
  protected:
    /// Whether another thread's turn of one second can begin only when this one has braked, two
    /// seconds from now.
    bool OtherMoverWaitsForTheBrake() {
        const sim::Nanoseconds begin = board.Now();
        Worker other([&] { EXPECT_TRUE(Turn(pump)); });
        SleepMilliseconds(2000);
        EXPECT_TRUE(pump.Brake());
        other.Join();
        return board.Now() - begin == sim::Milliseconds(3000);
    }
};

TEST_F(MotorMutexAfter, AMoveIsFree) {
    EXPECT_TRUE(Turn(pump));
    EXPECT_FALSE(OtherMoverWaitsForTheBrake());
}

TEST_F(MotorMutexAfter, AMoveThatCouldNotSetTheCurrentOrRunStaysLocked) {
    for (const char* attribute : {"A4/value", "pwm1/duty_cycle"}) {
        FailToOpen(attribute);
        EXPECT_FALSE(Turn(pump));
        EXPECT_TRUE(OtherMoverWaitsForTheBrake());
    }
}

TEST_F(MotorMutexAfter, AStartThatCouldNotSetTheCurrentOrWasRefusedStaysLocked) {
    FailToOpen("A4/value");
    EXPECT_FALSE(pump.Start(50.0F, 1600.0F, 7));
    EXPECT_TRUE(OtherMoverWaitsForTheBrake());
    EXPECT_FALSE(pump.Start(0.0F, 1600.0F, 7));
    EXPECT_TRUE(OtherMoverWaitsForTheBrake());
}

TEST_F(MotorMutexAfter, ABrakeThatCouldNotSetTheCurrentIsFree) {
    ASSERT_TRUE(pump.Start(50.0F, 1600.0F, 7));
    ASSERT_TRUE(pump.Stop());
    FailToOpen("A4/value");
    EXPECT_FALSE(pump.Brake());
    EXPECT_FALSE(OtherMoverWaitsForTheBrake());
}

} // namespace
} // namespace tavrelin
