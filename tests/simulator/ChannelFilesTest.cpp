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
    ChannelFiles() { Store(kPwmExport, "1"); }

    /// Programs channel 1 and switches it on.
    static void Run() {
        EXPECT_EQ(Store(ChannelFile(1, "period"), "1000"), 0);
        EXPECT_EQ(Store(ChannelFile(1, "duty_cycle"), "300"), 0);
        EXPECT_EQ(Store(ChannelFile(1, "enable"), "1"), 0);
    }

    SimulatedBoard board;
};

TEST_F(ChannelFiles, AFreshChannelTakesNothingButAValidPeriod) {
    for (const char* attribute : {"duty_cycle", "enable", "period"}) {
        EXPECT_EQ(Store(ChannelFile(1, attribute), "0"), EINVAL) << attribute;
    }
    EXPECT_EQ(Store(ChannelFile(1, "enable"), "1"), EINVAL);
    EXPECT_EQ(Store(ChannelFile(1, "duty_cycle"), "300"), EINVAL);
    EXPECT_EQ(Show(ChannelFile(1, "period")), "0\n");
    EXPECT_EQ(Store(ChannelFile(1, "period"), "1000"), 0);
    EXPECT_EQ(Store(ChannelFile(1, "duty_cycle"), "0"), 0);
    EXPECT_EQ(Store(ChannelFile(1, "enable"), "0"), 0);
}

TEST_F(ChannelFiles, DutyNeverExceedsThePeriod) {
    Run();
    EXPECT_EQ(Store(ChannelFile(1, "duty_cycle"), "1001"), EINVAL);
    EXPECT_EQ(Store(ChannelFile(1, "duty_cycle"), "1000"), 0);
    EXPECT_EQ(Store(ChannelFile(1, "period"), "999"), EINVAL);
    EXPECT_EQ(Show(ChannelFile(1, "period")), "1000\n");
}

TEST_F(ChannelFiles, NumbersAreDecimalAndNotNegative) {
    Run();
    for (const char* wrong : {"-1", "1e6", "12.5", "ten", ":", "1000ns"}) {
        EXPECT_EQ(Store(ChannelFile(1, "period"), wrong), EINVAL) << wrong;
        EXPECT_EQ(Store(ChannelFile(1, "duty_cycle"), wrong), EINVAL) << wrong;
    }
    EXPECT_EQ(Store(ChannelFile(1, "period"), "2000\n"), 0);
}

TEST_F(ChannelFiles, EnableTakesZeroAndOne) {
    Run();
    for (const char* wrong : {"2", "true", "-1"}) {
        EXPECT_EQ(Store(ChannelFile(1, "enable"), wrong), EINVAL) << wrong;
    }
    EXPECT_EQ(Show(ChannelFile(1, "enable")), "1\n");
    EXPECT_EQ(Store(ChannelFile(1, "enable"), "0"), 0);
    EXPECT_EQ(Show(ChannelFile(1, "enable")), "0\n");
}

TEST_F(ChannelFiles, ExportRefusesWhatIsNotFree) {
    EXPECT_EQ(Store(kPwmExport, "1"), EBUSY);
    EXPECT_EQ(Store(kPwmExport, "4"), ENODEV);
    EXPECT_EQ(Store(kPwmExport, ":"), EINVAL);
    EXPECT_EQ(Store(kPwmExport, "-1"), EINVAL);
    EXPECT_EQ(Store(kPwmExport, "3"), 0);
}

TEST_F(ChannelFiles, UnexportRefusesWhatIsNotExported) {
    EXPECT_EQ(Store(kPwmUnexport, "2"), ENODEV);
    EXPECT_EQ(Store(kPwmUnexport, "4"), ENODEV);
    EXPECT_EQ(Store(kPwmUnexport, "x"), EINVAL);
    EXPECT_EQ(Store(kPwmUnexport, "1"), 0);
    EXPECT_EQ(Store(kPwmUnexport, "1"), ENODEV);
}

TEST_F(ChannelFiles, AChannelThatIsGivenBackRunsOn) {
    Run();
    Store(kPwmUnexport, "1");
    EXPECT_TRUE(board.Channel(1).Pulsing());
    EXPECT_EQ(OpenError(ChannelFile(1, "enable"), O_RDONLY), ENOENT);
    Store(kPwmExport, "1");
    EXPECT_EQ(Show(ChannelFile(1, "period")), "1000\n");
    EXPECT_EQ(Show(ChannelFile(1, "duty_cycle")), "300\n");
    EXPECT_EQ(Show(ChannelFile(1, "enable")), "1\n");
}

TEST_F(ChannelFiles, AStaleDescriptorStaysStale) {
    Run();
    const Descriptor enable(ChannelFile(1, "enable"), O_RDWR);
    Store(kPwmUnexport, "1");
    Store(kPwmExport, "1");
    EXPECT_EQ(enable.Write("0"), -ENODEV);
    EXPECT_EQ(enable.ReadAgain(), "ENODEV");
    EXPECT_TRUE(board.Channel(1).Pulsing());
}

TEST_F(ChannelFiles, AMissingAttributeIsNeverCreated) {
    EXPECT_EQ(OpenError(ChannelFile(1, "phase"), O_WRONLY | O_CREAT), EACCES);
    EXPECT_EQ(OpenError(ChannelFile(2, "enable"), O_WRONLY | O_CREAT), ENOENT);
    EXPECT_EQ(OpenError("/sys/class/pwm/pwmchip0/pwm:/enable", O_WRONLY | O_CREAT), ENOENT);
}

TEST_F(ChannelFiles, TheControllerTellsHowManyChannelsItHas) {
    EXPECT_EQ(Show("/sys/class/pwm/pwmchip0/npwm"), "4\n");
}

TEST(ChannelsOfAnEarlierRun, AreStillExported) {
    sim::Scenario scenario;
    scenario.board.channels.exported = {2};
    scenario.board.lines.exported = {"B15"};
    SimulatedBoard board(scenario);
    EXPECT_EQ(Store(kPwmExport, "2"), EBUSY);
    EXPECT_EQ(Store(kGpioExport, "47"), EBUSY);
}

TEST(ChannelsOfAnEarlierRun, KeepPeriodDutyAndWhetherTheyAreOn) {
    sim::Scenario scenario;
    scenario.board.channels = {.exported = {0, 3}, .enabled = {3}};
    SimulatedBoard board(scenario);
    EXPECT_EQ(Show(ChannelFile(0, "period")), "1000000\n");
    EXPECT_EQ(Show(ChannelFile(0, "duty_cycle")), "300000\n");
    EXPECT_EQ(Show(ChannelFile(0, "enable")), "0\n");
    EXPECT_TRUE(board.Model().ValveOpen());
    EXPECT_EQ(Store(ChannelFile(0, "enable"), "1"), 0);
    EXPECT_DOUBLE_EQ(board.Model().Lamp(), 1.0);
}

} // namespace
} // namespace tavrelin
