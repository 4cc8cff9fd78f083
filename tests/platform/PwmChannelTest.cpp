#include "platform/PwmChannel.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kChannelCount = "/sys/class/pwm/pwmchip0/npwm";
constexpr const char* kExport = "/sys/class/pwm/pwmchip0/export";
constexpr const char* kUnexport = "/sys/class/pwm/pwmchip0/unexport";
constexpr const char* kEnable = "/sys/class/pwm/pwmchip0/pwm1/enable";

TEST(PwmChannelCount, IsTheCodeOfTheFirstCharacter) {
    SimulatedBoard board;
    EXPECT_EQ(ChannelCount(), 52); // "4"
    for (const auto& [text, count] :
         {std::pair{"16\n", 49}, std::pair{"  8", 56}, std::pair{"\n0", 48}, std::pair{"x4", 120},
          std::pair{"\xff", 255}}) {
        board.replaceText(kChannelCount, text);
        EXPECT_EQ(ChannelCount(), count) << text;
    }
}

TEST(PwmChannelCount, IsZeroWithoutAController) {
    SimulatedBoard board;
    board.takeAway(kChannelCount);
    EXPECT_EQ(ChannelCount(), 0);
    EXPECT_EQ(board.kernel().held(), 0U);
}

TEST(PwmChannelCount, IsZeroWhenNothingCanBeRead) {
    SimulatedBoard board;
    for (const char* text : {"", "\n", " \t "}) {
        board.replaceText(kChannelCount, text);
        EXPECT_EQ(ChannelCount(), 0);
    }
    board.restore(kChannelCount);
    board.fail("read", kChannelCount, EIO);
    EXPECT_EQ(ChannelCount(), 0);
}

TEST(PwmChannel, IsTakenAndGivenBack) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const PwmChannel channel(1);
        EXPECT_TRUE(channel.ok());
        EXPECT_EQ(channel.channel(), 1);
        EXPECT_TRUE(board.channel(1).exported);
    }
    EXPECT_FALSE(board.channel(1).exported);
    EXPECT_EQ(board.events(), (Texts{
                                  "read /sys/class/pwm/pwmchip0/npwm \"4\\n\"",
                                  "access /sys/class/pwm/pwmchip0/pwm1 ENOENT",
                                  "write /sys/class/pwm/pwmchip0/export \"1\"",
                                  "write /sys/class/pwm/pwmchip0/pwm1/enable \"0\" EINVAL",
                                  "write /sys/class/pwm/pwmchip0/unexport \"1\"",
                              }));
    EXPECT_EQ(console.output() + console.error(), "");
    EXPECT_EQ(board.kernel().held(), 0U);
}

TEST(PwmChannel, IsRefusedFromTheCodeOfTheCountOn) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel bare(52);
    EXPECT_FALSE(bare.ok());
    const PwmChannel running(52, 1000.0F, 30.0F);
    EXPECT_FALSE(running.ok());
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "wrong pwm channelwrong pwm channel");
    EXPECT_EQ(board.writesTo("pwmchip0"), Texts{});
}

TEST(PwmChannel, IsTakenForAnyNumberBelowTheCodeOfTheCount) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel channel(51);
    EXPECT_TRUE(channel.ok());
    EXPECT_EQ(channel.channel(), 51);
    EXPECT_EQ(board.writesTo("pwmchip0"), (Texts{"export c EINVAL"}));
}

TEST(PwmChannel, TenIsNamedByAColon) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const PwmChannel channel(10);
        EXPECT_TRUE(channel.ok());
    }
    EXPECT_EQ(board.events(), (Texts{
                                  "read /sys/class/pwm/pwmchip0/npwm \"4\\n\"",
                                  "access /sys/class/pwm/pwmchip0/pwm: ENOENT",
                                  "write /sys/class/pwm/pwmchip0/export \":\" EINVAL",
                                  "access /sys/class/pwm/pwmchip0/pwm: ENOENT",
                              }));
    EXPECT_EQ(console.output(), "not locked yet\n"); // cannot be switched off at the end
    EXPECT_EQ(console.error(), "");
}

TEST(PwmChannel, IsRefusedWithoutAController) {
    SimulatedBoard board;
    board.takeAway(kChannelCount);
    CapturedConsole console;
    const PwmChannel bare(0);
    const PwmChannel running(0, 1000.0F, 30.0F);
    EXPECT_FALSE(bare.ok());
    EXPECT_FALSE(running.ok());
    EXPECT_EQ(console.error(), "wrong pwm channelwrong pwm channel");
}

TEST(PwmChannel, StopsNobodysChannelAfterARefusal) {
    SimulatedBoard board;
    board.channel(0) = {.exported = true, .period = 1000, .duty = 500, .enabled = true};
    board.takeAway(kChannelCount);
    CapturedConsole console;
    { const PwmChannel refused(0); }
    EXPECT_TRUE(board.channel(0).exported);
    EXPECT_TRUE(board.channel(0).enabled);
    EXPECT_EQ(console.output(), "not locked yet\n");
}

TEST(PwmChannel, IsRefusedWhileItIsInUse) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel owner(1);
    board.forget();
    const PwmChannel bare(1);
    const PwmChannel running(1, 1000.0F, 30.0F);
    EXPECT_FALSE(bare.ok());
    EXPECT_FALSE(running.ok());
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "already used\nalready used\n");
    EXPECT_EQ(board.writesTo("pwmchip0"), Texts{});
    EXPECT_EQ(board.writesTo("pwm1"), Texts{});
}

TEST(PwmChannel, FailsWhenExportCannotBeOpened) {
    SimulatedBoard board;
    board.failForever("open", kExport, EACCES);
    CapturedConsole console;
    const PwmChannel bare(1);
    const PwmChannel running(1, 1000.0F, 30.0F);
    EXPECT_FALSE(bare.ok());
    EXPECT_FALSE(running.ok());
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "unable to lock a pwmunable to lock a pwm");
}

TEST(PwmChannel, DoesNotLookAtWhatAWriteCameTo) {
    SimulatedBoard board;
    board.fail("write", kExport, EIO);
    CapturedConsole console;
    PwmChannel channel(1);
    EXPECT_TRUE(channel.ok());
    EXPECT_TRUE(channel.Export());
    EXPECT_TRUE(channel.Enable(true)); // which the kernel refuses without a period
    EXPECT_EQ(board.writesTo("pwm1"), (Texts{"enable 1 EINVAL"}));
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST(PwmChannel, SwitchesOnAndOff) {
    SimulatedBoard board;
    PwmChannel channel(1, 1000.0F, 30.0F);
    board.forget();
    EXPECT_TRUE(channel.Enable(false));
    EXPECT_FALSE(board.channel(1).enabled);
    EXPECT_TRUE(channel.Enable(true));
    EXPECT_TRUE(board.channel(1).enabled);
    EXPECT_EQ(board.writesTo("pwm1"), (Texts{"enable 0", "enable 1"}));
}

TEST(PwmChannel, TellsOnStandardOutputThatItCannotBeSwitched) {
    SimulatedBoard board;
    CapturedConsole console;
    PwmChannel channel(1);
    board.channel(1).exported = false;
    EXPECT_FALSE(channel.Enable(true));
    EXPECT_EQ(console.output(), "not locked yet\n");
    EXPECT_EQ(console.error(), "");
}

TEST(PwmChannel, FailsWhenEnableCannotBeOpened) {
    SimulatedBoard board;
    PwmChannel channel(1);
    board.fail("open", kEnable, EACCES);
    CapturedConsole console;
    EXPECT_FALSE(channel.Enable(true));
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "unable to enable a pwm");
}

TEST(PwmChannel, IsEnabledOnlyForTheWordOne) {
    SimulatedBoard board;
    const PwmChannel channel(1);
    for (const char* on : {"1", "1\n", " 1 0"}) {
        board.replaceText(kEnable, on);
        EXPECT_TRUE(channel.IsEnabled()) << on;
    }
    for (const char* off : {"0\n", "", "\n", "01", "11", "on", "\xff"}) {
        board.replaceText(kEnable, off);
        EXPECT_FALSE(channel.IsEnabled()) << off;
    }
}

TEST(PwmChannel, CountsAsEnabledWhenItsStateCannotBeOpened) {
    SimulatedBoard board;
    const PwmChannel channel(1);
    CapturedConsole console;
    board.fail("open", kEnable, EACCES);
    EXPECT_TRUE(channel.IsEnabled());
    board.fail("read", kEnable, EIO);
    EXPECT_FALSE(channel.IsEnabled());
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST(PwmChannel, IsNotEnabledWhenItIsUnexported) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel channel(1);
    board.channel(1).exported = false;
    EXPECT_FALSE(channel.IsEnabled());
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "not locked yet\n");
}

TEST(PwmChannel, IsSwitchedOffBeforeItIsGivenBack) {
    SimulatedBoard board;
    {
        const PwmChannel channel(1, 1000.0F, 30.0F);
        board.forget();
    }
    EXPECT_EQ(board.events(), (Texts{
                                  "write /sys/class/pwm/pwmchip0/pwm1/enable \"0\"",
                                  "write /sys/class/pwm/pwmchip0/unexport \"1\"",
                              }));
}

TEST(PwmChannel, StaysExportedWhenItCannotBeSwitchedOff) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const PwmChannel channel(1, 1000.0F, 30.0F);
        board.takeAway(kEnable);
    }
    EXPECT_TRUE(board.channel(1).exported);
    EXPECT_EQ(board.writesTo("pwmchip0"), (Texts{"export 1"}));
    EXPECT_EQ(console.error(), "unable to enable a pwm");
}

TEST(PwmChannel, CanBeGivenBackOnce) {
    SimulatedBoard board;
    CapturedConsole console;
    PwmChannel channel(1);
    board.fail("open", kUnexport, EACCES);
    EXPECT_FALSE(channel.Unexport());
    EXPECT_TRUE(channel.Unexport());
    EXPECT_FALSE(channel.Unexport());
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "unable to release a pwmnot used yet\n");
    EXPECT_EQ(board.writesTo("pwmchip0"), (Texts{"export 1", "unexport 1"}));
    EXPECT_EQ(board.kernel().held(), 0U);
}

} // namespace
} // namespace tavrelin
