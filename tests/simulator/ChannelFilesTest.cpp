// The kernel's files of the PWM channels, met with bare system calls.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;

class ChannelFiles : public testing::Test {
  protected:
    ChannelFiles() { store(pwmExport, "1"); }

    /// Programs channel 1 and switches it on.
    static void run() {
        EXPECT_EQ(store(channelFile(1, "period"), "1000"), 0);
        EXPECT_EQ(store(channelFile(1, "duty_cycle"), "300"), 0);
        EXPECT_EQ(store(channelFile(1, "enable"), "1"), 0);
    }

    SimulatedBoard board;
};

TEST_F(ChannelFiles, AFreshChannelTakesNothingButAValidPeriod) {
    for (const char* attribute : {"duty_cycle", "enable", "period"}) {
        EXPECT_EQ(store(channelFile(1, attribute), "0"), EINVAL) << attribute;
    }
    EXPECT_EQ(store(channelFile(1, "enable"), "1"), EINVAL);
    EXPECT_EQ(store(channelFile(1, "duty_cycle"), "300"), EINVAL);
    EXPECT_EQ(show(channelFile(1, "period")), "0\n");
    EXPECT_EQ(store(channelFile(1, "period"), "1000"), 0);
    EXPECT_EQ(store(channelFile(1, "duty_cycle"), "0"), 0);
    EXPECT_EQ(store(channelFile(1, "enable"), "0"), 0);
}

TEST_F(ChannelFiles, DutyNeverExceedsThePeriod) {
    run();
    EXPECT_EQ(store(channelFile(1, "duty_cycle"), "1001"), EINVAL);
    EXPECT_EQ(store(channelFile(1, "duty_cycle"), "1000"), 0);
    EXPECT_EQ(store(channelFile(1, "period"), "999"), EINVAL);
    EXPECT_EQ(show(channelFile(1, "period")), "1000\n");
}

TEST_F(ChannelFiles, NumbersAreDecimalAndNotNegative) {
    run();
    for (const char* wrong : {"-1", "1e6", "12.5", "ten", ":", "1000ns"}) {
        EXPECT_EQ(store(channelFile(1, "period"), wrong), EINVAL) << wrong;
        EXPECT_EQ(store(channelFile(1, "duty_cycle"), wrong), EINVAL) << wrong;
    }
    EXPECT_EQ(store(channelFile(1, "period"), "2000\n"), 0);
}

TEST_F(ChannelFiles, EnableTakesZeroAndOne) {
    run();
    for (const char* wrong : {"2", "true", "-1"}) {
        EXPECT_EQ(store(channelFile(1, "enable"), wrong), EINVAL) << wrong;
    }
    EXPECT_EQ(show(channelFile(1, "enable")), "1\n");
    EXPECT_EQ(store(channelFile(1, "enable"), "0"), 0);
    EXPECT_EQ(show(channelFile(1, "enable")), "0\n");
}

TEST_F(ChannelFiles, ExportRefusesWhatIsNotFree) {
    EXPECT_EQ(store(pwmExport, "1"), EBUSY);
    EXPECT_EQ(store(pwmExport, "4"), ENODEV);
    EXPECT_EQ(store(pwmExport, ":"), EINVAL);
    EXPECT_EQ(store(pwmExport, "-1"), EINVAL);
    EXPECT_EQ(store(pwmExport, "3"), 0);
}

TEST_F(ChannelFiles, UnexportRefusesWhatIsNotExported) {
    EXPECT_EQ(store(pwmUnexport, "2"), ENODEV);
    EXPECT_EQ(store(pwmUnexport, "4"), ENODEV);
    EXPECT_EQ(store(pwmUnexport, "x"), EINVAL);
    EXPECT_EQ(store(pwmUnexport, "1"), 0);
    EXPECT_EQ(store(pwmUnexport, "1"), ENODEV);
}

TEST_F(ChannelFiles, AChannelThatIsGivenBackRunsOn) {
    run();
    store(pwmUnexport, "1");
    EXPECT_TRUE(board.channel(1).pulsing());
    EXPECT_EQ(openError(channelFile(1, "enable"), O_RDONLY), ENOENT);
    store(pwmExport, "1");
    EXPECT_EQ(show(channelFile(1, "period")), "1000\n");
    EXPECT_EQ(show(channelFile(1, "duty_cycle")), "300\n");
    EXPECT_EQ(show(channelFile(1, "enable")), "1\n");
}

TEST_F(ChannelFiles, AStaleDescriptorStaysStale) {
    run();
    const Descriptor enable(channelFile(1, "enable"), O_RDWR);
    store(pwmUnexport, "1");
    store(pwmExport, "1");
    EXPECT_EQ(enable.write("0"), -ENODEV);
    EXPECT_EQ(enable.readAgain(), "ENODEV");
    EXPECT_TRUE(board.channel(1).pulsing());
}

TEST_F(ChannelFiles, AMissingAttributeIsNeverCreated) {
    EXPECT_EQ(openError(channelFile(1, "polarity"), O_WRONLY | O_CREAT), EACCES);
    EXPECT_EQ(openError(channelFile(2, "enable"), O_WRONLY | O_CREAT), ENOENT);
    EXPECT_EQ(openError("/sys/class/pwm/pwmchip0/pwm:/enable", O_WRONLY | O_CREAT), ENOENT);
}

TEST_F(ChannelFiles, TheControllerTellsHowManyChannelsItHas) {
    EXPECT_EQ(show("/sys/class/pwm/pwmchip0/npwm"), "4\n");
}

TEST(ChannelsOfAnEarlierRun, AreStillExported) {
    sim::Scenario scenario;
    scenario.exportedChannels = {2};
    scenario.exportedLines = {"B15"};
    SimulatedBoard board(scenario);
    EXPECT_EQ(store(pwmExport, "2"), EBUSY);
    EXPECT_EQ(store(gpioExport, "47"), EBUSY);
}

} // namespace
} // namespace tavrelin
