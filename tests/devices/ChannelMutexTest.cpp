#include "tests/devices/Drivers.h"
#include "tests/support/Worker.h"

#include "base/Sleep.h"

namespace tavrelin {
namespace {

using sim::Texts;

/// Two drivers on channel 2, with enable lines of their own, B15 and B16. The second cannot claim
/// the channel, and uses it all the same.
class ChannelMutex : public StirrerTest {
  protected:
    ChannelMutex() {
        other.SetupEnablePin(1, 16);
        board.Forget();
    }

    bool RunOther() { return other.Run(50.0F, 1000.0F, 2000, false); }

    StepperDriver other{2};
};

TEST_F(ChannelMutex, IsHeldFromStartToStop) {
    ASSERT_TRUE(stirrer.Start(50.0F, 640.0F));
    Worker second([&] { EXPECT_TRUE(RunOther()); });
    SleepMilliseconds(3000);
    EXPECT_EQ(TimedWritesOfThread(board, 2), Texts{});
    EXPECT_TRUE(stirrer.Stop());
    second.Join();
    EXPECT_EQ(TimedWritesOfThread(board, 2),
              (Texts{"3000 B16 value 0", "3000 pwm2 duty_cycle 0", "3000 pwm2 period 1000000",
                     "3000 pwm2 duty_cycle 500000", "3000 pwm2 enable 1", "5000 pwm2 enable 0",
                     "5000 B16 value 1"}));
}

TEST_F(ChannelMutex, KeepsTwoRunsOnOneChannelApart) {
    Worker first([&] { EXPECT_TRUE(stirrer.Run(50.0F, 640.0F, 1500, false)); });
    Worker second([&] { EXPECT_TRUE(RunOther()); });
    first.Join();
    second.Join();
    EXPECT_EQ(Writes(board), InOrder({{"B15 value 0"},
                                      kStirrerPulses,
                                      {"pwm2 enable 0", "B15 value 1", "B16 value 0"},
                                      PulsesAgain("pwm2", "1000000", "500000"),
                                      {"pwm2 enable 0", "B16 value 1"}}));
    EXPECT_EQ(board.Now(), sim::Milliseconds(3500));
}

TEST_F(ChannelMutex, LetsDriversOnDifferentChannelsRunTogether) {
    Pump pump;
    Worker first([&] { EXPECT_TRUE(stirrer.Run(50.0F, 640.0F, 1500, false)); });
    Worker second([&] { EXPECT_TRUE(pump.motor.Run(50.0F, 1000.0F, 2000, false)); });
    first.Join();
    second.Join();
    EXPECT_EQ(board.Now(), sim::Milliseconds(2000));
}

TEST_F(ChannelMutex, IsFreeAgainAfterARunThatFailed) {
    FailToOpen("pwm2/duty_cycle");
    EXPECT_FALSE(stirrer.Run(50.0F, 640.0F, 1500, false));
    Worker second([&] { EXPECT_TRUE(RunOther()); });
    second.Join();
    EXPECT_EQ(board.Now(), sim::Milliseconds(2000));
}

TEST_F(ChannelMutex, IsFreedByTheStopOfADriverThatNeverStarted) {
    ASSERT_TRUE(stirrer.Start(50.0F, 640.0F));
    EXPECT_TRUE(other.Stop());
    EXPECT_TRUE(RunOther()); // would wait for ever on a held mutex
}

} // namespace
} // namespace tavrelin
