#include "devices/ValvePWM.h"

#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <cerrno>
#include <vector>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

const std::string kNotOpened = "ValvePWM::ValveOn: valve did not successfully turn on\n";
const std::string kNotClosed = "ValvePWM::ValveOff: error turning valve off\n";
const std::string kChannel = "/sys/class/pwm/pwmchip0/pwm3/";

/// The sample valve as the instrument has it, initialised and what was written for that forgotten.
struct ValveOnBoard {
    ValveOnBoard() {
        EXPECT_TRUE(valve.Init());
        board.Forget();
    }

    SimulatedBoard board;
    ValvePWM valve{3, 1000};
};

TEST(Valve, TouchesNoHardwareBeforeItIsInitialised) {
    const SimulatedBoard board;
    CapturedConsole console;
    {
        ValvePWM valve(3, 1000);
        EXPECT_FALSE(valve.Initialised());
        EXPECT_EQ(valve.Channel(), 3);
        EXPECT_EQ(valve.Frequency(), 1000);
        EXPECT_FALSE(valve.ValveOn(100.0F));
        EXPECT_FALSE(valve.ValveOff());
    }
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(Valve, ClaimsItsChannelAndLeavesItOff) {
    SimulatedBoard board;
    ValvePWM valve(3, 1000);
    EXPECT_TRUE(valve.Init());
    EXPECT_TRUE(valve.Initialised());
    EXPECT_EQ(Writes(board), (Texts{"pwmchip0 export 3"}));
    EXPECT_FALSE(board.Model().ValveOpen());
}

TEST(Valve, OpensAtItsFrequencyWithTheDutyAskedFor) {
    ValveOnBoard on;
    CapturedConsole console;
    EXPECT_TRUE(on.valve.ValveOn(100.0F));
    EXPECT_EQ(Writes(on.board), (Texts{"pwm3 duty_cycle 0 EINVAL", "pwm3 period 1000000",
                                       "pwm3 duty_cycle 1000000", "pwm3 enable 1"}));
    EXPECT_TRUE(on.board.Model().ValveOpen());
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(Valve, OpensAndClosesAnyNumberOfTimes) {
    ValveOnBoard on;
    for (const bool again : {false, true, true}) {
        on.board.Forget();
        EXPECT_TRUE(on.valve.ValveOn(30.0F));
        EXPECT_TRUE(on.valve.ValveOff());
        EXPECT_EQ(Writes(on.board), (Texts{again ? "pwm3 duty_cycle 0" : "pwm3 duty_cycle 0 EINVAL",
                                           "pwm3 period 1000000", "pwm3 duty_cycle 300000",
                                           "pwm3 enable 1", "pwm3 enable 0"}));
    }
}

TEST(Valve, OpenedWhileOpenIsSwitchedOffFirst) {
    ValveOnBoard on;
    EXPECT_TRUE(on.valve.ValveOn(100.0F));
    on.board.Forget();
    EXPECT_TRUE(on.valve.ValveOn(50.0F));
    EXPECT_EQ(Writes(on.board), (Texts{"pwm3 enable 0", "pwm3 duty_cycle 0", "pwm3 period 1000000",
                                       "pwm3 duty_cycle 500000", "pwm3 enable 1"}));
}

TEST(Valve, TakesTheHighestFrequencyOf16Bits) {
    const SimulatedBoard board;
    ValvePWM valve(3, 65535);
    EXPECT_TRUE(valve.Init());
    EXPECT_TRUE(valve.ValveOn(100.0F));
    EXPECT_EQ(board.WritesTo("pwm3")[1], "period 15259");
}

struct OpenFailure {
    const char* attribute;
    unsigned occurrence;
    const char* error;
};

TEST(Valve, TellsThatItDidNotOpen) {
    const std::vector<OpenFailure> failures = {
        {"duty_cycle", 1, "unable to reset pwm duty cycle"},
        {"duty_cycle", 2, "unable to set pwm duty cycle"},
        {"enable", 2, "unable to enable a pwm"}, // the first open reads whether it is on
    };
    for (const OpenFailure& failure : failures) {
        ValveOnBoard on;
        on.board.Fail("open", kChannel + failure.attribute, EACCES, failure.occurrence);
        CapturedConsole console;
        EXPECT_FALSE(on.valve.ValveOn(100.0F));
        EXPECT_EQ(console.Output(), kNotOpened);
        EXPECT_EQ(console.Error(), failure.error);
    }
}

TEST(Valve, CountsAsOpenWhenThePeriodCannotBeOpened) {
    ValveOnBoard on;
    on.board.Fail("open", kChannel + "period", EACCES);
    CapturedConsole console;
    EXPECT_TRUE(on.valve.ValveOn(100.0F));
    EXPECT_FALSE(on.board.Model().ValveOpen());
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(Valve, TellsThatItDidNotClose) {
    ValveOnBoard on;
    EXPECT_TRUE(on.valve.ValveOn(100.0F));
    on.board.Fail("open", kChannel + "enable", EACCES);
    CapturedConsole console;
    EXPECT_FALSE(on.valve.ValveOff());
    EXPECT_TRUE(on.board.Model().ValveOpen());
    EXPECT_EQ(console.Output(), kNotClosed);
    EXPECT_EQ(console.Error(), "unable to enable a pwm");
}

TEST(Valve, NoticesOnlyWhenSwitchedThatItsChannelCouldNotBeClaimed) {
    SimulatedBoard board;
    board.Fail("open", "/sys/class/pwm/pwmchip0/export", EACCES);
    ValvePWM valve(3, 1000);
    {
        CapturedConsole console;
        EXPECT_TRUE(valve.Init());
        EXPECT_TRUE(valve.Initialised());
        EXPECT_EQ(console.Output(), "");
        EXPECT_EQ(console.Error(), "unable to lock a pwm");
    }
    CapturedConsole console;
    EXPECT_FALSE(valve.ValveOff());
    EXPECT_EQ(console.Output(), "not locked yet\n" + kNotClosed);
    EXPECT_EQ(console.Error(), "");
    EXPECT_FALSE(valve.ValveOn(100.0F));
    EXPECT_EQ(console.Output(), "not locked yet\n" + kNotClosed + kNotOpened);
    EXPECT_EQ(console.Error(), "not locked yet\nunable to set pwm frequency");
}

TEST(Valve, SwitchesAChannelThatAnEarlierRunLeftBehind) {
    Scenario leftBehind;
    leftBehind.board.exportedChannels = {3};
    SimulatedBoard board(leftBehind);
    CapturedConsole console;
    ValvePWM valve(3, 1000);
    EXPECT_TRUE(valve.Init());
    EXPECT_TRUE(valve.ValveOn(100.0F));
    EXPECT_TRUE(board.Model().ValveOpen());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "already used\n");
}

TEST(Valve, IsClosedAndGivenBackAtTheEnd) {
    SimulatedBoard board;
    {
        ValvePWM valve(3, 1000);
        EXPECT_TRUE(valve.Init());
        EXPECT_TRUE(valve.ValveOn(100.0F));
        board.Forget();
    }
    EXPECT_EQ(Writes(board), (Texts{"pwm3 enable 0", "pwmchip0 unexport 3"}));
    EXPECT_FALSE(board.Model().ValveOpen());
}

} // namespace
} // namespace tavrelin
