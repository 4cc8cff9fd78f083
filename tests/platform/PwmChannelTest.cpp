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
        board.ReplaceText(kChannelCount, text);
        EXPECT_EQ(ChannelCount(), count) << text;
    }
}

TEST(PwmChannelCount, IsZeroWithoutAController) {
    SimulatedBoard board;
    board.TakeAway(kChannelCount);
    EXPECT_EQ(ChannelCount(), 0);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(PwmChannelCount, IsZeroWhenNothingCanBeRead) {
    SimulatedBoard board;
    for (const char* text : {"", "\n", " \t "}) {
        board.ReplaceText(kChannelCount, text);
        EXPECT_EQ(ChannelCount(), 0);
    }
    board.Restore(kChannelCount);
    board.Fail("read", kChannelCount, EIO);
    EXPECT_EQ(ChannelCount(), 0);
}

TEST(PwmChannel, IsTakenAndGivenBack) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const PwmChannel channel(1);
        EXPECT_TRUE(channel.Ok());
        EXPECT_EQ(channel.Channel(), 1);
        EXPECT_TRUE(board.Channel(1).exported);
    }
    EXPECT_FALSE(board.Channel(1).exported);
    EXPECT_EQ(board.Events(), (Texts{
                                  "read /sys/class/pwm/pwmchip0/npwm \"4\\n\"",
                                  "access /sys/class/pwm/pwmchip0/pwm1 ENOENT",
                                  "write /sys/class/pwm/pwmchip0/export \"1\"",
                                  "write /sys/class/pwm/pwmchip0/pwm1/enable \"0\" EINVAL",
                                  "write /sys/class/pwm/pwmchip0/unexport \"1\"",
                              }));
    EXPECT_EQ(console.Output() + console.Error(), "");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(PwmChannel, IsRefusedFromTheCodeOfTheCountOn) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel bare(52);
    EXPECT_FALSE(bare.Ok());
    const PwmChannel running(52, 1000.0F, 30.0F);
    EXPECT_FALSE(running.Ok());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "wrong pwm channelwrong pwm channel");
    EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
}

TEST(PwmChannel, IsTakenForAnyNumberBelowTheCodeOfTheCount) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel channel(51);
    EXPECT_TRUE(channel.Ok());
    EXPECT_EQ(channel.Channel(), 51);
    EXPECT_EQ(board.WritesTo("pwmchip0"), (Texts{"export c EINVAL"}));
}

TEST(PwmChannel, TenIsNamedByAColon) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const PwmChannel channel(10);
        EXPECT_TRUE(channel.Ok());
    }
    EXPECT_EQ(board.Events(), (Texts{
                                  "read /sys/class/pwm/pwmchip0/npwm \"4\\n\"",
                                  "access /sys/class/pwm/pwmchip0/pwm: ENOENT",
                                  "write /sys/class/pwm/pwmchip0/export \":\" EINVAL",
                                  "access /sys/class/pwm/pwmchip0/pwm: ENOENT",
                              }));
    EXPECT_EQ(console.Output(), "not locked yet\n"); // cannot be switched off at the end
    EXPECT_EQ(console.Error(), "");
}

TEST(PwmChannel, IsRefusedWithoutAController) {
    SimulatedBoard board;
    board.TakeAway(kChannelCount);
    CapturedConsole console;
    const PwmChannel bare(0);
    const PwmChannel running(0, 1000.0F, 30.0F);
    EXPECT_FALSE(bare.Ok());
    EXPECT_FALSE(running.Ok());
    EXPECT_EQ(console.Error(), "wrong pwm channelwrong pwm channel");
}

TEST(PwmChannel, StopsNobodysChannelAfterARefusal) {
    SimulatedBoard board;
    board.Channel(0) = {.exported = true, .period = 1000, .duty = 500, .enabled = true};
    board.TakeAway(kChannelCount);
    CapturedConsole console;
    { const PwmChannel refused(0); }
    EXPECT_TRUE(board.Channel(0).exported);
    EXPECT_TRUE(board.Channel(0).enabled);
    EXPECT_EQ(console.Output(), "not locked yet\n");
}

TEST(PwmChannel, IsRefusedWhileItIsInUse) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel owner(1);
    board.Forget();
    const PwmChannel bare(1);
    const PwmChannel running(1, 1000.0F, 30.0F);
    EXPECT_FALSE(bare.Ok());
    EXPECT_FALSE(running.Ok());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "already used\nalready used\n");
    EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
    EXPECT_EQ(board.WritesTo("pwm1"), Texts{});
}

TEST(PwmChannel, FailsWhenExportCannotBeOpened) {
    SimulatedBoard board;
    board.FailForever("open", kExport, EACCES);
    CapturedConsole console;
    const PwmChannel bare(1);
    const PwmChannel running(1, 1000.0F, 30.0F);
    EXPECT_FALSE(bare.Ok());
    EXPECT_FALSE(running.Ok());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "unable to lock a pwmunable to lock a pwm");
}

TEST(PwmChannel, DoesNotLookAtWhatAWriteCameTo) {
    SimulatedBoard board;
    board.Fail("write", kExport, EIO);
    CapturedConsole console;
    PwmChannel channel(1);
    EXPECT_TRUE(channel.Ok());
    EXPECT_TRUE(channel.Export());
    EXPECT_TRUE(channel.Enable(true)); // which the kernel refuses without a period
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"enable 1 EINVAL"}));
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(PwmChannel, SwitchesOnAndOff) {
    SimulatedBoard board;
    PwmChannel channel(1, 1000.0F, 30.0F);
    board.Forget();
    EXPECT_TRUE(channel.Enable(false));
    EXPECT_FALSE(board.Channel(1).enabled);
    EXPECT_TRUE(channel.Enable(true));
    EXPECT_TRUE(board.Channel(1).enabled);
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"enable 0", "enable 1"}));
}

TEST(PwmChannel, TellsOnStandardOutputThatItCannotBeSwitched) {
    SimulatedBoard board;
    CapturedConsole console;
    PwmChannel channel(1);
    board.Channel(1).exported = false;
    EXPECT_FALSE(channel.Enable(true));
    EXPECT_EQ(console.Output(), "not locked yet\n");
    EXPECT_EQ(console.Error(), "");
}

TEST(PwmChannel, FailsWhenEnableCannotBeOpened) {
    SimulatedBoard board;
    PwmChannel channel(1);
    board.Fail("open", kEnable, EACCES);
    CapturedConsole console;
    EXPECT_FALSE(channel.Enable(true));
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "unable to enable a pwm");
}

TEST(PwmChannel, IsEnabledOnlyForTheWordOne) {
    SimulatedBoard board;
    const PwmChannel channel(1);
    for (const char* on : {"1", "1\n", " 1 0"}) {
        board.ReplaceText(kEnable, on);
        EXPECT_TRUE(channel.IsEnabled()) << on;
    }
    for (const char* off : {"0\n", "", "\n", "01", "11", "on", "\xff"}) {
        board.ReplaceText(kEnable, off);
        EXPECT_FALSE(channel.IsEnabled()) << off;
    }
}

TEST(PwmChannel, CountsAsEnabledWhenItsStateCannotBeOpened) {
    SimulatedBoard board;
    const PwmChannel channel(1);
    CapturedConsole console;
    board.Fail("open", kEnable, EACCES);
    EXPECT_TRUE(channel.IsEnabled());
    board.Fail("read", kEnable, EIO);
    EXPECT_FALSE(channel.IsEnabled());
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(PwmChannel, IsNotEnabledWhenItIsUnexported) {
    SimulatedBoard board;
    CapturedConsole console;
    const PwmChannel channel(1);
    board.Channel(1).exported = false;
    EXPECT_FALSE(channel.IsEnabled());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "not locked yet\n");
}

TEST(PwmChannel, IsSwitchedOffBeforeItIsGivenBack) {
    SimulatedBoard board;
    {
        const PwmChannel channel(1, 1000.0F, 30.0F);
        board.Forget();
    }
    EXPECT_EQ(board.Events(), (Texts{
                                  "write /sys/class/pwm/pwmchip0/pwm1/enable \"0\"",
                                  "write /sys/class/pwm/pwmchip0/unexport \"1\"",
                              }));
}

TEST(PwmChannel, StaysExportedWhenItCannotBeSwitchedOff) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const PwmChannel channel(1, 1000.0F, 30.0F);
        board.TakeAway(kEnable);
    }
    EXPECT_TRUE(board.Channel(1).exported);
    EXPECT_EQ(board.WritesTo("pwmchip0"), (Texts{"export 1"}));
    EXPECT_EQ(console.Error(), "unable to enable a pwm");
}

TEST(PwmChannel, CanBeGivenBackOnce) {
    SimulatedBoard board;
    CapturedConsole console;
    PwmChannel channel(1);
    board.Fail("open", kUnexport, EACCES);
    EXPECT_FALSE(channel.Unexport());
    EXPECT_TRUE(channel.Unexport());
    EXPECT_FALSE(channel.Unexport());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "unable to release a pwmnot used yet\n");
    EXPECT_EQ(board.WritesTo("pwmchip0"), (Texts{"export 1", "unexport 1"}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
