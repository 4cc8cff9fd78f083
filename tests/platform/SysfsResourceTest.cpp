#include "platform/SysfsResource.h"

#include "tests/support/BoardTest.h"

namespace tavrelin {
namespace {

using SysfsResourceTest = BoardTest;

TEST_F(SysfsResourceTest, TakesALineAsItStandsAndGivesItBackSo) {
    board.Line("B15").output = true;
    const SysfsResource line = SysfsResource::Line(1, 15);
    EXPECT_FALSE(line.IsExported());
    EXPECT_TRUE(line.Export());
    EXPECT_TRUE(line.IsExported());
    EXPECT_EQ(line.Read("direction"), "out");
    EXPECT_EQ(line.Read("value"), "0");
    line.Write("direction", "high");
    EXPECT_TRUE(line.Unexport());
    EXPECT_FALSE(line.IsExported());
    EXPECT_TRUE(board.Line("B15").level);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(SysfsResourceTest, AnswersWhatTheKernelMadeOfIt) {
    const SysfsResource channel = SysfsResource::Channel(2);
    EXPECT_EQ(channel.Read("enable"), "");
    EXPECT_TRUE(channel.Export());
    EXPECT_TRUE(channel.Export()); // by whomever
    EXPECT_EQ(channel.Read("enable"), "0");
    board.FailForever("write", "/sys/class/pwm/pwmchip0/unexport", EIO);
    EXPECT_FALSE(channel.Unexport());
    EXPECT_TRUE(board.Channel(2).exported);
    EXPECT_FALSE(SysfsResource::Channel(4).Export());
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(SysfsResourceTest, LeavesNothingExportedUnderAnotherName) {
    board.TakeAway("/sys/class/gpio/pioA2");
    EXPECT_FALSE(SysfsResource::Line(0, 2).Export());
    EXPECT_FALSE(board.Line("A2").exported);
    EXPECT_EQ(board.Line("A2").exports, 1U);
}

TEST_F(SysfsResourceTest, TellsAKernelThatHasNoneAtAll) {
    EXPECT_TRUE(SysfsResource::Line(3, 31).CanBeExported());
    EXPECT_TRUE(SysfsResource::Channel(3).CanBeExported());
    board.TakeAway("/sys/class/gpio");
    board.TakeAway("/sys/class/pwm/pwmchip0");
    EXPECT_FALSE(SysfsResource::Line(3, 31).CanBeExported());
    EXPECT_FALSE(SysfsResource::Channel(3).CanBeExported());
}

} // namespace
} // namespace tavrelin
