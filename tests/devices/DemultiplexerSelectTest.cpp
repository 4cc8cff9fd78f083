#include "tests/devices/FrontEnd.h"

#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kInvalid = "Demultiplexer::SelectChannel - Invalid channel\n";
constexpr const char* kSelectFailed = "Demultiplexer::SelectChannel - Setting mux channel failed\n";
constexpr const char* kSwitchFailed = "Demultiplexer::SetAnalogSwitch: failed!\n";
constexpr const char* kResetFailed = "Demultiplexer::ResetAnalogSwitchState: failed!\n";

/// A channel, and what goes to the lines for it.
struct Selection {
    std::uint32_t channel;
    const char* bits; ///< highest first: lines C31, C28, C27
    const char* analogSwitch;
    bool exists = true;
};

void PrintTo(const Selection& selection, std::ostream* out) {
    *out << "channel " << selection.channel;
}

using DemultiplexerSelect = DemultiplexerAtWork;

class DemultiplexerSelection : public DemultiplexerAtWork,
                               public testing::WithParamInterface<Selection> {};

TEST_P(DemultiplexerSelection, DrivesBitsZeroToTwoAndThenTheSwitch) {
    const Selection& selection = GetParam();
    EXPECT_TRUE(demultiplexer.SelectChannel(selection.channel, &analogSwitch));
    EXPECT_EQ(demultiplexer.Channel(), selection.channel);
    EXPECT_EQ(Writes(board), (Texts{std::string("C27 value ") + selection.bits[2],
                                    std::string("C28 value ") + selection.bits[1],
                                    std::string("C31 value ") + selection.bits[0],
                                    std::string("D18 value ") + selection.analogSwitch}));
    EXPECT_EQ(console.Output(), selection.exists ? "" : kInvalid);
    EXPECT_EQ(console.Error(), "");
}

INSTANTIATE_TEST_SUITE_P(OfTheLowerGroup, DemultiplexerSelection,
                         testing::Values(Selection{0, "000", "1"}, Selection{1, "001", "1"},
                                         Selection{2, "010", "1"}, Selection{3, "011", "1"},
                                         Selection{4, "100", "1"}, Selection{5, "101", "1"},
                                         Selection{6, "110", "1"}, Selection{7, "111", "1"}));
INSTANTIATE_TEST_SUITE_P(OfTheUpperGroup, DemultiplexerSelection,
                         testing::Values(Selection{10, "010", "0"}, Selection{11, "011", "0"},
                                         Selection{12, "100", "0"}, Selection{13, "101", "0"},
                                         Selection{14, "110", "0"}, Selection{15, "111", "0"}));
INSTANTIATE_TEST_SUITE_P(OfNone, DemultiplexerSelection,
                         testing::Values(Selection{8, "000", "0", false},
                                         Selection{9, "000", "0", false},
                                         Selection{16, "000", "0", false},
                                         Selection{17, "000", "0", false},
                                         Selection{0x8000'0002, "000", "0", false},
                                         Selection{0xFFFF'FFFF, "000", "0", false}));

TEST_F(DemultiplexerSelect, SetsTheBitsBackToZero) {
    EXPECT_TRUE(demultiplexer.SelectChannel(7, &analogSwitch));
    EXPECT_TRUE(board.Line("C27").level && board.Line("C28").level && board.Line("C31").level);
    EXPECT_TRUE(board.Line("D18").level);
    EXPECT_TRUE(demultiplexer.SelectChannel(9, &analogSwitch));
    EXPECT_FALSE(board.Line("C27").level || board.Line("C28").level || board.Line("C31").level);
    EXPECT_FALSE(board.Line("D18").level);
}

class DemultiplexerSelectBeforeInit : public FrontEnd {};

TEST_F(DemultiplexerSelectBeforeInit, FailsAndTouchesNoLine) {
    GpioPin analogSwitch(3, 18);
    analogSwitch.SetDirection(kPinOutput);
    board.Forget();
    Demultiplexer demultiplexer;
    EXPECT_FALSE(demultiplexer.SelectChannel(3, &analogSwitch));
    EXPECT_EQ(demultiplexer.Channel(), 3U);
    EXPECT_EQ(console.Output(), kSelectFailed);
    EXPECT_FALSE(demultiplexer.SelectChannel(8, &analogSwitch));
    EXPECT_EQ(console.Output(), kSelectFailed + (kInvalid + std::string(kSelectFailed)));
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{});
}

TEST_F(DemultiplexerSelectBeforeInit, FailsAfterAFailedInitToo) {
    FailToOpen("C31", "value");
    Demultiplexer demultiplexer;
    EXPECT_FALSE(demultiplexer.Init(wiring::kDemultiplexerSelect));
    board.Forget();
    EXPECT_FALSE(demultiplexer.SelectChannel(3, nullptr));
    EXPECT_EQ(Writes(board), Texts{});
}

/// A select line that cannot be written, and the writes that come before it.
struct FailingLine {
    const char* line;
    Texts before;
};

void PrintTo(const FailingLine& failing, std::ostream* out) {
    *out << failing.line;
}

class DemultiplexerSelectFailing : public DemultiplexerAtWork,
                                   public testing::WithParamInterface<FailingLine> {};

TEST_P(DemultiplexerSelectFailing, StopsThere) {
    FailToOpen(GetParam().line, "value");
    EXPECT_FALSE(demultiplexer.SelectChannel(5, &analogSwitch));
    EXPECT_EQ(demultiplexer.Channel(), 5U);
    EXPECT_EQ(Writes(board), GetParam().before);
    EXPECT_EQ(console.Output(), kSelectFailed);
    EXPECT_EQ(console.Error(), "unable to set the gpio value");
}

INSTANTIATE_TEST_SUITE_P(, DemultiplexerSelectFailing,
                         testing::Values(FailingLine{"C27", {}},
                                         FailingLine{"C28", {"C27 value 1"}},
                                         FailingLine{"C31", {"C27 value 1", "C28 value 0"}}));

TEST_F(DemultiplexerSelect, FailsWhenTheSwitchCannotBeWritten) {
    FailToOpen("D18", "value", 2); // after its level was read
    EXPECT_FALSE(demultiplexer.SelectChannel(5, &analogSwitch));
    EXPECT_EQ(Writes(board), (Texts{"C27 value 1", "C28 value 0", "C31 value 1"}));
    EXPECT_EQ(console.Output(), kSwitchFailed + std::string(kSelectFailed));
    EXPECT_EQ(console.Error(), "unable to set the gpio value");
}

TEST_F(DemultiplexerSelect, FailsWithoutASwitch) {
    EXPECT_FALSE(demultiplexer.SelectChannel(5, nullptr));
    EXPECT_EQ(Writes(board), (Texts{"C27 value 1", "C28 value 0", "C31 value 1"}));
    EXPECT_EQ(console.Output(), kSwitchFailed + std::string(kSelectFailed));
    EXPECT_EQ(console.Error(), "");
}

using DemultiplexerSwitch = DemultiplexerAtWork;

TEST_F(DemultiplexerSwitch, FollowsTheChannelLastAskedFor) {
    EXPECT_TRUE(demultiplexer.SetAnalogSwitch(&analogSwitch)); // channel 0 at first
    EXPECT_EQ(Writes(board), Texts{"D18 value 1"});
    EXPECT_FALSE(demultiplexer.SelectChannel(12, nullptr));
    board.Forget();
    EXPECT_TRUE(demultiplexer.SetAnalogSwitch(&analogSwitch));
    EXPECT_EQ(Writes(board), Texts{"D18 value 0"});
}

TEST_F(DemultiplexerSwitch, GetsItsLevelBack) {
    for (const bool level : {false, true}) {
        ASSERT_TRUE(analogSwitch.Write(level ? 1 : 0));
        for (const std::uint32_t channel : {2U, 10U}) {
            EXPECT_TRUE(demultiplexer.SelectChannel(channel, &analogSwitch));
            EXPECT_EQ(board.Line("D18").level, channel < 8);
            EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
            EXPECT_EQ(board.Line("D18").level, level) << channel;
        }
    }
    ExpectSilence();
}

TEST_F(DemultiplexerSwitch, IsResetOnceOnly) {
    EXPECT_TRUE(demultiplexer.SelectChannel(2, &analogSwitch));
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    board.Forget();
    EXPECT_FALSE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(console.Output(), kResetFailed);
    EXPECT_EQ(console.Error(), "");
}

TEST_F(DemultiplexerSwitch, IsNotThereToResetBeforeItIsSet) {
    EXPECT_FALSE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_EQ(console.Output(), kResetFailed);
}

TEST_F(DemultiplexerSwitch, StaysHeldWhenItCannotBeReset) {
    EXPECT_TRUE(demultiplexer.SelectChannel(2, &analogSwitch));
    FailToOpen("D18", "value");
    EXPECT_FALSE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_EQ(console.Output(), kResetFailed);
    EXPECT_EQ(console.Error(), "unable to set the gpio value");
    EXPECT_TRUE(board.Line("D18").level);
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_FALSE(board.Line("D18").level);
}

TEST_F(DemultiplexerSwitch, IsNotSetWhenItsLevelIsAnError) {
    board.Line("D18").exported = false;
    EXPECT_FALSE(demultiplexer.SetAnalogSwitch(&analogSwitch));
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(console.Output(), kSwitchFailed);
    EXPECT_EQ(console.Error(), "not locked yet\n");
}

// It is remembered before it is looked at, and so is the error for a level: anything but 1 is low.
TEST_F(DemultiplexerSwitch, IsHeldThoughItsLevelIsAnError) {
    board.Line("D18").exported = false;
    EXPECT_FALSE(demultiplexer.SetAnalogSwitch(&analogSwitch));
    board.Line("D18").exported = true;
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_EQ(Writes(board), Texts{"D18 value 0"});
    EXPECT_EQ(console.Output(), kSwitchFailed);
}

TEST_F(DemultiplexerSwitch, ThatIsAnInputCannotBeSet) {
    ASSERT_TRUE(analogSwitch.SetDirection(kPinInput));
    board.Forget();
    EXPECT_FALSE(demultiplexer.SetAnalogSwitch(&analogSwitch));
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(console.Output(), kSwitchFailed);
    EXPECT_EQ(console.Error(), "");
}

TEST_F(DemultiplexerSwitch, WhoseLevelCannotBeReadCountsAsLow) {
    ASSERT_TRUE(analogSwitch.Write(1));
    board.FailForever("read", "/sys/class/gpio/pioD18/value", EIO);
    EXPECT_TRUE(demultiplexer.SelectChannel(2, &analogSwitch));
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_FALSE(board.Line("D18").level);
    ExpectSilence();
}

} // namespace
} // namespace tavrelin
