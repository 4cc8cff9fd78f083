#include "service/Diagnostics.h"

#include "devices/RemoteIndicator.h"
#include "tests/devices/IndicatorWrites.h"
#include "tests/support/BoardTest.h"
#include "tests/support/BoardWrites.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::Texts;

class IndicatorStart : public BoardTest {};

TEST_F(IndicatorStart, WithoutAnIndicatorIsRefusedAndTouchesNothing) {
    EXPECT_FALSE(StartIndicator(nullptr));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Calls("open") + board.Calls("access"), 0U);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(IndicatorStart, SetsTheBoardsLinesUpAndShowsColour1) {
    RemoteIndicator indicator;
    EXPECT_TRUE(StartIndicator(&indicator));
    EXPECT_TRUE(indicator.Initialised());
    EXPECT_EQ(Writes(board),
              InOrder({IndicatorSetUpWrites(), ColourWrites("111111"), ColourWrites("010100")}));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(IndicatorStart, AnswersTrueThoughNothingCouldBeDone) {
    board.FailForever("open", "/sys/class/gpio/*", EACCES);
    RemoteIndicator indicator;
    EXPECT_TRUE(StartIndicator(&indicator));
    EXPECT_FALSE(indicator.Initialised());
    EXPECT_EQ(console.Output(), "RemoteIndicator::Init Configuring remote LED driver GPIO failed\n"
                                "RemoteIndicator::SetLEDColors failed!\n");
}

TEST_F(IndicatorStart, AnswersTrueThoughTheColourCannotBeShown) {
    FailToOpen("D17/value", 2);
    RemoteIndicator indicator;
    EXPECT_TRUE(StartIndicator(&indicator));
    EXPECT_EQ(console.Output(), "RemoteIndicator::SetLEDColors failed!\n");
    EXPECT_EQ(console.Error(), "unable to set the gpio value");
}

} // namespace
} // namespace tavrelin
