#include "service/Diagnostics.h"

#include "devices/RemoteIndicator.h"
#include "tests/devices/FrontEnd.h"
#include "tests/devices/IndicatorWrites.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::Texts;

class IndicatorStart : public FrontEnd {};

TEST_F(IndicatorStart, WithoutAnIndicatorIsRefusedAndTouchesNothing) {
    EXPECT_FALSE(StartIndicator(nullptr));
    EXPECT_EQ(board.events(), Texts{});
    EXPECT_EQ(board.calls("open") + board.calls("access"), 0U);
    ExpectSilence();
}

TEST_F(IndicatorStart, SetsTheBoardsLinesUpAndShowsColour1) {
    RemoteIndicator indicator;
    EXPECT_TRUE(StartIndicator(&indicator));
    EXPECT_TRUE(indicator.initialised());
    EXPECT_EQ(Writes(board),
              InOrder({IndicatorSetUpWrites(), ColourWrites("111111"), ColourWrites("010100")}));
    ExpectSilence();
}

TEST_F(IndicatorStart, AnswersTrueThoughNothingCouldBeDone) {
    board.failForever("open", "/sys/class/gpio/*", EACCES);
    RemoteIndicator indicator;
    EXPECT_TRUE(StartIndicator(&indicator));
    EXPECT_FALSE(indicator.initialised());
    EXPECT_EQ(console.output(), "RemoteIndicator::Init Configuring remote LED driver GPIO failed\n"
                                "RemoteIndicator::SetLEDColors failed!\n");
}

TEST_F(IndicatorStart, AnswersTrueThoughTheColourCannotBeShown) {
    FailToOpen("D17", "value", 2);
    RemoteIndicator indicator;
    EXPECT_TRUE(StartIndicator(&indicator));
    EXPECT_EQ(console.output(), "RemoteIndicator::SetLEDColors failed!\n");
    EXPECT_EQ(console.error(), "unable to set the gpio value");
}

} // namespace
} // namespace tavrelin
