#include "devices/ValvePWM.h"

#include "tests/devices/Drivers.h"

#include <type_traits>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::Texts;

static_assert(!std::is_copy_constructible_v<ValvePWM> && !std::is_copy_assignable_v<ValvePWM>);
static_assert(!std::is_move_constructible_v<ValvePWM> && !std::is_move_assignable_v<ValvePWM>);

const std::string kNotOpened = "ValvePWM::ValveOn: valve did not successfully turn on\n";
const std::string kNotClosed = "ValvePWM::ValveOff: error turning valve off\n";

/// The sample valve as the instrument has it.
struct SampleValve {
    SampleValve() { EXPECT_TRUE(valve.Init()); }

    ValvePWM valve{3, 1000};
};

using ValveBefore = BoardTest;

TEST_F(ValveBefore, ItIsInitialisedTouchesNoHardware) {
    {
        ValvePWM valve(3, 1000);
        EXPECT_FALSE(valve.Initialised());
        EXPECT_EQ(valve.Channel(), 3);
        EXPECT_EQ(valve.Frequency(), 1000);
        EXPECT_FALSE(valve.ValveOn(100.0F));
        EXPECT_FALSE(valve.ValveOff());
    }
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(ValveBefore, ItIsOpenedHasClaimedItsChannel) {
    const SampleValve on;
    EXPECT_TRUE(on.valve.Initialised());
    EXPECT_EQ(Writes(board), (Texts{"pwmchip0 export 3"}));
    EXPECT_FALSE(board.Model().ValveOpen());
}

TEST_F(ValveBefore, TakesTheHighestFrequencyOf16Bits) {
    ValvePWM valve(3, 65535);
    EXPECT_TRUE(valve.Init());
    EXPECT_TRUE(valve.ValveOn(100.0F));
    EXPECT_EQ(board.Channel(3).period, 15259U);
}

TEST_F(ValveBefore, SwitchesAChannelThatAnEarlierRunLeftBehindAndGivesItBack) {
    Scenario leftBehind;
    leftBehind.board.channels.exported = {3};
    NewBoard(leftBehind);
    {
        SampleValve on;
        EXPECT_TRUE(on.valve.ValveOn(100.0F));
        EXPECT_TRUE(board.Model().ValveOpen());
    }
    EXPECT_FALSE(board.Channel(3).exported);
    EXPECT_EQ(Console(), (Said{"", "already used\n"}));
}

class Valve : public DeviceTest<SampleValve> {
  protected:
    ValvePWM& valve = device.valve;
};

TEST_F(Valve, OpensAtItsFrequencyWithTheDutyAskedFor) {
    EXPECT_TRUE(valve.ValveOn(100.0F));
    EXPECT_EQ(Writes(board), Pulses("pwm3", "1000000", "1000000"));
    EXPECT_TRUE(board.Model().ValveOpen());
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(Valve, OpensAndClosesAnyNumberOfTimes) {
    EXPECT_TRUE(valve.ValveOn(30.0F));
    for (int again = 0; again < 2; ++again) {
        EXPECT_TRUE(valve.ValveOff());
        board.Forget();
        EXPECT_TRUE(valve.ValveOn(30.0F));
        EXPECT_EQ(Writes(board), PulsesAgain("pwm3", "1000000", "300000"));
    }
}

TEST_F(Valve, OpenedWhileOpenIsSwitchedOffFirst) {
    EXPECT_TRUE(valve.ValveOn(100.0F));
    board.Forget();
    EXPECT_TRUE(valve.ValveOn(50.0F));
    EXPECT_EQ(Writes(board),
              InOrder({{"pwm3 enable 0"}, PulsesAgain("pwm3", "1000000", "500000")}));
}

TEST_F(Valve, TellsThatItDidNotOpen) {
    FailToOpen("pwm3/enable", 2); // the first open reads whether it is on
    EXPECT_FALSE(valve.ValveOn(100.0F));
    EXPECT_EQ(Console(), (Said{kNotOpened, "unable to enable a pwm"}));
}

TEST_F(Valve, CountsAsOpenWhenThePeriodCannotBeOpened) {
    FailToOpen("pwm3/period");
    EXPECT_TRUE(valve.ValveOn(100.0F));
    EXPECT_FALSE(board.Model().ValveOpen());
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(Valve, TellsThatItDidNotClose) {
    EXPECT_TRUE(valve.ValveOn(100.0F));
    FailToOpen("pwm3/enable");
    EXPECT_FALSE(valve.ValveOff());
    EXPECT_TRUE(board.Model().ValveOpen());
    EXPECT_EQ(Console(), (Said{kNotClosed, "unable to enable a pwm"}));
}

TEST_F(ValveBefore, ItIsSwitchedDoesNotNoticeThatItsChannelCouldNotBeClaimed) {
    board.Fail("open", "/sys/class/pwm/pwmchip0/export", EACCES);
    SampleValve on;
    EXPECT_TRUE(on.valve.Initialised());
    EXPECT_EQ(Console(), (Said{"", "unable to lock a pwm"}));
    EXPECT_FALSE(on.valve.ValveOff());
    EXPECT_FALSE(on.valve.ValveOn(100.0F));
    EXPECT_EQ(Console(), (Said{"not locked yet\n" + kNotClosed + kNotOpened,
                               "unable to lock a pwmnot locked yet\nunable to set pwm frequency"}));
}

TEST_F(Valve, IsClosedAndGivenBackAtTheEnd) {
    {
        ValvePWM other(2, 1000);
        EXPECT_TRUE(other.Init() && other.ValveOn(100.0F));
        board.Forget();
    }
    EXPECT_EQ(Writes(board), (Texts{"pwm2 enable 0", "pwmchip0 unexport 2"}));
}

} // namespace
} // namespace tavrelin
