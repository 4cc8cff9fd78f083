#include "platform/PwmChannel.h"

#include "tests/support/BoardTest.h"

#include <string>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kChannelCount = "/sys/class/pwm/pwmchip0/npwm";
constexpr const char* kExport = "/sys/class/pwm/pwmchip0/export";

using PwmChannelCount = BoardTest;

TEST_F(PwmChannelCount, IsTheCodeOfTheFirstCharacter) {
    EXPECT_EQ(ChannelCount(), 52); // "4"
    for (const auto& [text, count] :
         {std::pair{"16\n", 49}, std::pair{"  8", 56}, std::pair{"\n0", 48}, std::pair{"x4", 120},
          std::pair{"\xff", 255}}) {
        board.ReplaceText(kChannelCount, text);
        EXPECT_EQ(ChannelCount(), count) << text;
    }
}

TEST_F(PwmChannelCount, IsZeroWithoutAControllerOrWhenNothingCanBeRead) {
    for (const char* text : {"", "\n", " \t "}) {
        board.ReplaceText(kChannelCount, text);
        EXPECT_EQ(ChannelCount(), 0);
    }
    board.Restore(kChannelCount);
    board.Fail("read", kChannelCount, EIO);
    EXPECT_EQ(ChannelCount(), 0);
    board.TakeAway(kChannelCount);
    EXPECT_EQ(ChannelCount(), 0);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

// A channel, claimed only or claimed and started.
using ChannelOnBoard = BoardTest;

TEST_F(ChannelOnBoard, IsTakenAndGivenBack) {
    {
        const PwmChannel channel(1);
        EXPECT_TRUE(channel.Ok());
        EXPECT_EQ(channel.Channel(), 1);
        EXPECT_TRUE(board.Channel(1).exported);
    }
    EXPECT_FALSE(board.Channel(1).exported);
    EXPECT_EQ(board.Events(), (Texts{"read /sys/class/pwm/pwmchip0/npwm \"4\\n\"",
                                     "access /sys/class/pwm/pwmchip0/pwm1 ENOENT",
                                     "write /sys/class/pwm/pwmchip0/export \"1\"",
                                     "write /sys/class/pwm/pwmchip0/pwm1/enable \"0\" EINVAL",
                                     "write /sys/class/pwm/pwmchip0/unexport \"1\""}));
    EXPECT_EQ(Console(), kSilence);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(ChannelOnBoard, IsTakenForAnyNumberBelowTheCodeOfTheCount) {
    const PwmChannel channel(51);
    EXPECT_TRUE(channel.Ok());
    EXPECT_EQ(channel.Channel(), 51);
    EXPECT_EQ(board.WritesTo("pwmchip0"), (Texts{"export c EINVAL"}));
}

TEST_F(ChannelOnBoard, TenIsNamedByAColon) {
    {
        const PwmChannel channel(10);
        EXPECT_TRUE(channel.Ok());
    }
    EXPECT_EQ(board.Events(), (Texts{"read /sys/class/pwm/pwmchip0/npwm \"4\\n\"",
                                     "access /sys/class/pwm/pwmchip0/pwm: ENOENT",
                                     "write /sys/class/pwm/pwmchip0/export \":\" EINVAL",
                                     "access /sys/class/pwm/pwmchip0/pwm: ENOENT"}));
    EXPECT_EQ(console.Output(), "not locked yet\n"); // cannot be switched off at the end
    EXPECT_EQ(console.Error(), "");
}

/// Both ways to have a channel fail; what each says.
class ChannelRefused : public BoardTest {
  protected:
    void ExpectRefusals(std::uint8_t number, const std::string& complaint) {
        const PwmChannel bare(number);
        const PwmChannel running(number, 1000.0F, 30.0F);
        EXPECT_FALSE(bare.Ok() || running.Ok());
        EXPECT_EQ(Console(), (Said{"", complaint + complaint}));
        EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
        EXPECT_EQ(board.WritesTo("pwm1"), Texts{});
    }
};

TEST_F(ChannelRefused, FromTheCodeOfTheCountOn) {
    ExpectRefusals(52, "wrong pwm channel");
}

TEST_F(ChannelRefused, WithoutAControllerStopsNobodysChannel) {
    board.Channel(0) = {.exported = true, .period = 1000, .duty = 500, .enabled = true};
    board.TakeAway(kChannelCount);
    ExpectRefusals(0, "wrong pwm channel");
    EXPECT_TRUE(board.Channel(0).exported && board.Channel(0).enabled);
    EXPECT_EQ(console.Output(), "not locked yet\nnot locked yet\n"); // at the ends
}

TEST_F(ChannelRefused, WhenExportCannotBeOpened) {
    board.FailForever("open", kExport, EACCES);
    ExpectRefusals(1, "unable to lock a pwm");
}

TEST_F(ChannelRefused, WhenItsFolderMayNotBeRead) {
    board.FailForever("access", "/sys/class/pwm/pwmchip0/pwm1", EACCES);
    PwmChannel channel(1);
    EXPECT_FALSE(channel.SetFrequencyAndDuty(1000.0F, 30.0F));
    EXPECT_EQ(Console(), (Said{"", "not locked yet\nunable to set pwm frequency"}));
}

// Even so it is switched off and given back with the object.
TEST_F(ChannelRefused, WhileItIsInUse) {
    const PwmChannel owner(1, 1000.0F, 30.0F);
    board.Forget();
    ExpectRefusals(1, "already used\n");
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"enable 0"}));
    EXPECT_FALSE(board.Channel(1).exported);
}

TEST_F(ChannelOnBoard, DoesNotLookAtWhatAWriteCameTo) {
    board.Fail("write", kExport, EIO);
    PwmChannel channel(1);
    EXPECT_TRUE(channel.Ok());
    EXPECT_TRUE(channel.Export());
    EXPECT_TRUE(channel.Enable(true)); // which the kernel refuses without a period
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"enable 1 EINVAL"}));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(ChannelOnBoard, SwitchesOnAndOff) {
    PwmChannel channel(1, 1000.0F, 30.0F);
    board.Forget();
    EXPECT_TRUE(channel.Enable(false));
    EXPECT_FALSE(board.Channel(1).enabled);
    EXPECT_TRUE(channel.Enable(true));
    EXPECT_TRUE(board.Channel(1).enabled);
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"enable 0", "enable 1"}));
}

TEST_F(ChannelOnBoard, TellsOnStandardOutputThatItCannotBeSwitched) {
    PwmChannel channel(1);
    board.Channel(1).exported = false;
    EXPECT_FALSE(channel.Enable(true));
    EXPECT_EQ(Console(), (Said{"not locked yet\n", ""}));
}

TEST_F(ChannelOnBoard, FailsWhenEnableCannotBeOpened) {
    PwmChannel channel(1);
    FailToOpen("pwm1/enable");
    EXPECT_FALSE(channel.Enable(true));
    EXPECT_EQ(Console(), (Said{"", "unable to enable a pwm"}));
}

TEST_F(ChannelOnBoard, IsEnabledOnlyForTheWordOne) {
    const PwmChannel channel(1);
    for (const char* on : {"1", "1\n", " 1 0"}) {
        board.ReplaceText(PathOf("pwm1/enable"), on);
        EXPECT_TRUE(channel.IsEnabled()) << on;
    }
    for (const char* off : {"0\n", "", "\n", "01", "11", "on", "\xff"}) {
        board.ReplaceText(PathOf("pwm1/enable"), off);
        EXPECT_FALSE(channel.IsEnabled()) << off;
    }
}

TEST_F(ChannelOnBoard, CountsAsEnabledWhenItsStateCannotBeOpened) {
    const PwmChannel channel(1);
    FailToOpen("pwm1/enable");
    EXPECT_TRUE(channel.IsEnabled());
    board.Fail("read", PathOf("pwm1/enable"), EIO);
    EXPECT_FALSE(channel.IsEnabled());
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(ChannelOnBoard, IsNotEnabledWhenItIsUnexported) {
    const PwmChannel channel(1);
    board.Channel(1).exported = false;
    EXPECT_FALSE(channel.IsEnabled());
    EXPECT_EQ(Console(), (Said{"", "not locked yet\n"}));
}

TEST_F(ChannelOnBoard, IsSwitchedOffBeforeItIsGivenBack) {
    {
        const PwmChannel channel(1, 1000.0F, 30.0F);
        board.Forget();
    }
    EXPECT_EQ(board.Events(), (Texts{"write /sys/class/pwm/pwmchip0/pwm1/enable \"0\"",
                                     "write /sys/class/pwm/pwmchip0/unexport \"1\""}));
}

TEST_F(ChannelOnBoard, StaysExportedWhenItCannotBeSwitchedOff) {
    {
        const PwmChannel channel(1, 1000.0F, 30.0F);
        board.TakeAway(PathOf("pwm1/enable"));
    }
    EXPECT_TRUE(board.Channel(1).exported);
    EXPECT_EQ(board.WritesTo("pwmchip0"), (Texts{"export 1"}));
    EXPECT_EQ(console.Error(), "unable to enable a pwm");
}

TEST_F(ChannelOnBoard, CanBeGivenBackOnce) {
    PwmChannel channel(1);
    board.Fail("open", "/sys/class/pwm/pwmchip0/unexport", EACCES);
    EXPECT_FALSE(channel.Unexport());
    EXPECT_TRUE(channel.Unexport());
    EXPECT_FALSE(channel.Unexport());
    EXPECT_EQ(Console(), (Said{"", "unable to release a pwmnot used yet\n"}));
    EXPECT_EQ(board.WritesTo("pwmchip0"), (Texts{"export 1", "unexport 1"}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
