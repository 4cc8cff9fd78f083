#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/Worker.h"

#include "base/Sleep.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

/// Two drivers on channel 2, with enable lines of their own, B15 and B16. The second cannot claim
/// the channel, and uses it all the same; the console tells so.
struct TwoDriversOnOneChannel {
    TwoDriversOnOneChannel() {
        one.SetupEnablePin(1, 15);
        other.SetupEnablePin(1, 16);
        board.Forget();
    }

    CapturedConsole console;
    SimulatedBoard board;
    StepperDriver one{2};
    StepperDriver other{2};
};

TEST(ChannelMutex, IsHeldFromStartToStop) {
    TwoDriversOnOneChannel drivers;
    ASSERT_TRUE(drivers.one.Start(50.0F, 640.0F));
    Worker second([&] {
        EXPECT_TRUE(drivers.other.Start(50.0F, 1000.0F));
        EXPECT_TRUE(drivers.other.Stop());
    });
    SleepMilliseconds(3000);
    EXPECT_EQ(TimedWritesOfThread(drivers.board, 2), Texts{});
    EXPECT_TRUE(drivers.one.Stop());
    second.Join();
    EXPECT_EQ(TimedWritesOfThread(drivers.board, 2),
              (Texts{"3000 B16 value 0", "3000 pwm2 duty_cycle 0", "3000 pwm2 period 1000000",
                     "3000 pwm2 duty_cycle 500000", "3000 pwm2 enable 1", "3000 pwm2 enable 0",
                     "3000 B16 value 1"}));
}

TEST(ChannelMutex, KeepsTwoRunsOnOneChannelApart) {
    TwoDriversOnOneChannel drivers;
    Worker first([&] { EXPECT_TRUE(drivers.one.Run(50.0F, 640.0F, 1500, false)); });
    Worker second([&] { EXPECT_TRUE(drivers.other.Run(50.0F, 1000.0F, 2000, false)); });
    first.Join();
    second.Join();
    EXPECT_EQ(TimedWrites(drivers.board),
              (Texts{"0 2 B15 value 0", "0 2 pwm2 duty_cycle 0 EINVAL", "0 2 pwm2 period 1562500",
                     "0 2 pwm2 duty_cycle 781250", "0 2 pwm2 enable 1", "1500 2 pwm2 enable 0",
                     "1500 2 B15 value 1", "1500 3 B16 value 0", "1500 3 pwm2 duty_cycle 0",
                     "1500 3 pwm2 period 1000000", "1500 3 pwm2 duty_cycle 500000",
                     "1500 3 pwm2 enable 1", "3500 3 pwm2 enable 0", "3500 3 B16 value 1"}));
}

TEST(ChannelMutex, LetsDriversOnDifferentChannelsRunTogether) {
    const SimulatedBoard board;
    Stirrer stirrer;
    StepperDriver pump(1);
    pump.SetupPins(0, 2, 0, 3);
    Worker first([&] { EXPECT_TRUE(stirrer.driver.Run(50.0F, 640.0F, 1500, false)); });
    Worker second([&] { EXPECT_TRUE(pump.Run(50.0F, 1000.0F, 2000, false)); });
    first.Join();
    second.Join();
    EXPECT_EQ(board.Now(), sim::Milliseconds(2000));
}

TEST(ChannelMutex, IsFreeAgainAfterARunThatFailed) {
    TwoDriversOnOneChannel drivers;
    drivers.board.Fail("open", "/sys/class/pwm/pwmchip0/pwm2/duty_cycle", EACCES);
    EXPECT_FALSE(drivers.one.Run(50.0F, 640.0F, 1500, false));
    Worker second([&] { EXPECT_TRUE(drivers.other.Run(50.0F, 1000.0F, 2000, false)); });
    second.Join();
    EXPECT_EQ(drivers.board.Now(), sim::Milliseconds(2000));
}

TEST(ChannelMutex, IsFreedByTheStopOfADriverThatNeverStarted) {
    TwoDriversOnOneChannel drivers;
    ASSERT_TRUE(drivers.one.Start(50.0F, 640.0F));
    EXPECT_TRUE(drivers.other.Stop());
    EXPECT_TRUE(drivers.other.Start(50.0F, 640.0F)); // would wait for ever on a held mutex
    EXPECT_TRUE(drivers.other.Stop());
}

} // namespace
} // namespace tavrelin
