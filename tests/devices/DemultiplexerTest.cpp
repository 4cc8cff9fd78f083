#include "tests/devices/FrontEnd.h"

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kInitFailed =
    "Demultiplexer::Init Configuring demultiplexer driver GPIO failed\n";
const std::string kInvalid = "Demultiplexer::SelectChannel - Invalid channel\n";
const std::string kSelectFailed = "Demultiplexer::SelectChannel - Setting mux channel failed\n";
const std::string kSwitchFailed = "Demultiplexer::SetAnalogSwitch: failed!\n";
const std::string kResetFailed = "Demultiplexer::ResetAnalogSwitchState: failed!\n";
const std::string kReadFailed = "Demultiplexer::ReadVoltage failed!\n";
constexpr const char* kNoValue = "unable to set the gpio value";

class DemultiplexerInit : public BoardTest {
  protected:
    bool Init() { return demultiplexer.Init({{{2, 27}, {2, 28}, {2, 31}}}); }

    Demultiplexer demultiplexer;
};

TEST_F(DemultiplexerInit, MakesThePinsThenEachALowOutput) {
    EXPECT_FALSE(demultiplexer.Initialised());
    EXPECT_EQ(demultiplexer.Channel(), 0U);
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_TRUE(Init());
    EXPECT_TRUE(demultiplexer.Initialised());
    EXPECT_EQ(Writes(board), kDemultiplexerSetUp);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(DemultiplexerInit, TakesTheLinesThatItIsGivenAndGivesThemBackInTheirOrder) {
    {
        Demultiplexer other;
        EXPECT_TRUE(other.Init({{{3, 31}, {1, 0}, {0, 1}}}));
        EXPECT_TRUE(board.Line("D31").output && board.Line("B0").output && board.Line("A1").output);
        board.Forget();
    }
    EXPECT_EQ(Writes(board), (Texts{"gpio unexport 127", "gpio unexport 32", "gpio unexport 1"}));
}

// A line left behind by an earlier run is complained of, but does its work, and goes with the rest.
TEST_F(DemultiplexerInit, MakesDoWithALineThatIsAlreadyUsedAndUnexportsIt) {
    board.Line("C28").exported = true;
    {
        Demultiplexer other;
        EXPECT_TRUE(other.Init(wiring::kDemultiplexerSelect));
        EXPECT_EQ(Console(), (Said{"", "already used\n"}));
    }
    EXPECT_FALSE(board.Line("C28").exported);
}

TEST_F(DemultiplexerInit, ThatFailsIsToldAndMayBeTriedAgain) {
    FailToOpen("C28/edge", 2);
    EXPECT_FALSE(Init());
    EXPECT_FALSE(demultiplexer.Initialised());
    EXPECT_EQ(Writes(board).back(), "C28 direction out");
    EXPECT_EQ(Console(), (Said{kInitFailed, "unable to set the gpio trigger"}));
    EXPECT_TRUE(Init());
    EXPECT_EQ(console.Output(), kInitFailed);
}

TEST_F(DemultiplexerInit, OnceDoneAnswersTrueThoughALineIsLost) {
    EXPECT_TRUE(Init());
    board.FailForever("open", PathOf("C31/value"), EACCES);
    EXPECT_TRUE(Init());
    EXPECT_TRUE(demultiplexer.Initialised());
    EXPECT_EQ(Console(), (Said{"", kNoValue}));
}

TEST_F(DemultiplexerInit, BeforeItNothingIsSelectedOrRead) {
    GpioPin analogSwitch(3, 18);
    analogSwitch.SetDirection(kPinOutput);
    board.Forget();
    EXPECT_FALSE(demultiplexer.SelectChannel(3, &analogSwitch));
    EXPECT_EQ(demultiplexer.Channel(), 3U);
    EXPECT_FALSE(demultiplexer.SelectChannel(8, &analogSwitch));
    float voltage = kUntouched;
    EXPECT_FALSE(demultiplexer.ReadVoltage(2, &analogSwitch, voltage));
    EXPECT_EQ(Console(),
              (Said{kSelectFailed + kInvalid + kSelectFailed + kSelectFailed + kReadFailed, ""}));
    EXPECT_EQ(Writes(board), Texts{});
}

TEST_F(DemultiplexerInit, ThatFailedSelectsNothing) {
    FailToOpen("C31/value");
    EXPECT_FALSE(Init());
    board.Forget();
    EXPECT_FALSE(demultiplexer.SelectChannel(3, nullptr));
    EXPECT_EQ(Writes(board), Texts{});
}

class DemultiplexerSelect : public DemultiplexerAtWork {
  protected:
    /// The channel's bits, lowest first, and then the switch.
    void ExpectSelected(std::uint32_t channel, const char* bits, const char* level) {
        board.Forget();
        EXPECT_TRUE(demultiplexer.SelectChannel(channel, &analogSwitch));
        EXPECT_EQ(demultiplexer.Channel(), channel);
        EXPECT_EQ(Writes(board),
                  InOrder({SelectWrites(bits), {std::string("D18 value ") + level}}));
    }
    void ExpectFailure(const std::string& output, const char* error, const Texts& writes) {
        EXPECT_FALSE(demultiplexer.SelectChannel(5, &analogSwitch));
        EXPECT_EQ(demultiplexer.Channel(), 5U);
        EXPECT_EQ(Writes(board), writes);
        EXPECT_EQ(Console(), (Said{output, error}));
    }
};

TEST_F(DemultiplexerSelect, DrivesBitsZeroToTwoAndThenTheSwitch) {
    for (const auto& [channel, bits] :
         {std::pair{0U, "000"}, std::pair{1U, "100"}, std::pair{2U, "010"}, std::pair{3U, "110"},
          std::pair{4U, "001"}, std::pair{5U, "101"}, std::pair{6U, "011"}, std::pair{7U, "111"}}) {
        ExpectSelected(channel, bits, "1");
    }
    for (const auto& [channel, bits] :
         {std::pair{10U, "010"}, std::pair{11U, "110"}, std::pair{12U, "001"},
          std::pair{13U, "101"}, std::pair{14U, "011"}, std::pair{15U, "111"}}) {
        ExpectSelected(channel, bits, "0");
    }
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(DemultiplexerSelect, TakesTheFirstOfTheUpperGroupForAChannelThatThereIsNot) {
    std::string invalid;
    for (const std::uint32_t channel : {8U, 9U, 16U, 17U, 0x8000'0002U, 0xFFFF'FFFFU}) {
        ExpectSelected(channel, "000", "0");
        invalid += kInvalid;
    }
    EXPECT_EQ(Console(), (Said{invalid, ""}));
}

TEST_F(DemultiplexerSelect, StopsAtASelectLineThatCannotBeWritten) {
    FailToOpen("C28/value");
    ExpectFailure(kSelectFailed, kNoValue, SelectWrites("1"));
}

TEST_F(DemultiplexerSelect, FailsWhenTheSwitchCannotBeWritten) {
    FailToOpen("D18/value", 2); // after its level was read
    ExpectFailure(kSwitchFailed + kSelectFailed, kNoValue, SelectWrites("101"));
}

TEST_F(DemultiplexerSelect, FailsWithoutASwitch) {
    EXPECT_FALSE(demultiplexer.SelectChannel(5, nullptr));
    EXPECT_EQ(Writes(board), SelectWrites("101"));
    EXPECT_EQ(Console(), (Said{kSwitchFailed + kSelectFailed, ""}));
}

class DemultiplexerSwitch : public DemultiplexerAtWork {
  protected:
    void ExpectNotSet(const char* error) {
        EXPECT_FALSE(demultiplexer.SetAnalogSwitch(&analogSwitch));
        EXPECT_EQ(Writes(board), Texts{});
        EXPECT_EQ(Console(), (Said{kSwitchFailed, error}));
    }
};

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
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(DemultiplexerSwitch, IsResetOnceAndOnlyAfterItWasSet) {
    EXPECT_FALSE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_TRUE(demultiplexer.SelectChannel(2, &analogSwitch));
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    board.Forget();
    EXPECT_FALSE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(Console(), (Said{kResetFailed + kResetFailed, ""}));
}

TEST_F(DemultiplexerSwitch, StaysHeldWhenItCannotBeReset) {
    EXPECT_TRUE(demultiplexer.SelectChannel(2, &analogSwitch));
    FailToOpen("D18/value");
    EXPECT_FALSE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_EQ(Console(), (Said{kResetFailed, kNoValue}));
    EXPECT_TRUE(board.Line("D18").level);
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_FALSE(board.Line("D18").level);
}

// It is remembered before it is looked at, and so is the error for a level: anything but 1 is low.
TEST_F(DemultiplexerSwitch, IsHeldThoughItIsNotSetBecauseItsLevelIsAnError) {
    board.Line("D18").exported = false;
    ExpectNotSet("not locked yet\n");
    board.Line("D18").exported = true;
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_EQ(Writes(board), Texts{"D18 value 0"});
}

TEST_F(DemultiplexerSwitch, ThatIsAnInputCannotBeSet) {
    ASSERT_TRUE(analogSwitch.SetDirection(kPinInput));
    board.Forget();
    ExpectNotSet("");
}

TEST_F(DemultiplexerSwitch, WhoseLevelCannotBeReadCountsAsLow) {
    ASSERT_TRUE(analogSwitch.Write(1));
    board.FailForever("read", PathOf("D18/value"), EIO);
    EXPECT_TRUE(demultiplexer.SelectChannel(2, &analogSwitch));
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState());
    EXPECT_FALSE(board.Line("D18").level);
    EXPECT_EQ(Console(), kSilence);
}

/// Sixteen signals that tell themselves apart: signal 7 is 107 volts, one count each.
class DemultiplexerReadVoltage : public DemultiplexerAtWork {
  protected:
    DemultiplexerReadVoltage() {
        board.Model().analog.scale = "1024";
        for (std::size_t signal = 0; signal < 16; ++signal) {
            board.Model().analog.signals[signal] = 100.0 + static_cast<double>(signal);
        }
    }

    bool Read(std::uint32_t channel) {
        return demultiplexer.ReadVoltage(channel, &analogSwitch, voltage);
    }
    /// A reading of channel 7 that fails after these writes.
    void ExpectFailure(const Texts& writes, const std::string& output, const char* error) {
        EXPECT_FALSE(Read(7));
        EXPECT_EQ(Writes(board), writes);
        EXPECT_EQ(Console(), (Said{output + kReadFailed, error}));
    }

    float voltage = kUntouched;
};

TEST_F(DemultiplexerReadVoltage, GivesTheSignalOfEachChannel) {
    for (const std::uint32_t channel :
         {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 10U, 11U, 12U, 13U, 14U, 15U}) {
        EXPECT_TRUE(Read(channel)) << channel;
        EXPECT_EQ(voltage, 100.0F + static_cast<float>(channel));
    }
    EXPECT_EQ(Console(), kSilence);
    EXPECT_TRUE(Read(9));
    EXPECT_EQ(voltage, 108.0F);
    EXPECT_EQ(Console(), (Said{kInvalid, ""}));
}

TEST_F(DemultiplexerReadVoltage, SelectsReadsAndRestoresTheSwitch) {
    ASSERT_TRUE(analogSwitch.Write(1));
    board.Forget();
    EXPECT_TRUE(Read(10));
    EXPECT_EQ(Writes(board), InOrder({SelectWrites("010"), {"D18 value 0", "D18 value 1"}}));
    ASSERT_TRUE(analogSwitch.Write(0));
    board.Forget();
    EXPECT_TRUE(Read(2));
    EXPECT_EQ(Writes(board), InOrder({SelectWrites("010"), {"D18 value 1", "D18 value 0"}}));
    EXPECT_TRUE(board.Line("C28").level) << "the select lines stay";
    EXPECT_EQ(board.Kernel().Held(), 0U);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(DemultiplexerReadVoltage, FailsFirstOfAllWithoutAConverter) {
    board.FailForever("access", kConverter, ENOENT);
    ExpectFailure({}, "", "ADC: device does not exist\n");
    EXPECT_EQ(demultiplexer.Channel(), 0U);
    EXPECT_EQ(voltage, kUntouched);
}

TEST_F(DemultiplexerReadVoltage, FailsWithoutASwitchAndReadsNothing) {
    EXPECT_FALSE(demultiplexer.ReadVoltage(2, nullptr, voltage));
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_EQ(Console(), (Said{kSwitchFailed + kSelectFailed + kReadFailed, ""}));
}

TEST_F(DemultiplexerReadVoltage, KeepsTheSwitchWhenTheVoltageCannotBeRead) {
    board.TakeAway(kCounts);
    ExpectFailure(InOrder({SelectWrites("111"), {"D18 value 1"}}), "",
                  "ADC: can't read raw counts\n");
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState()); // still held, with the level it had
    EXPECT_FALSE(board.Line("D18").level);
}

TEST_F(DemultiplexerReadVoltage, HasStoredTheVoltageWhenOnlyTheSwitchCannotBeRestored) {
    FailToOpen("D18/value", 3);
    ExpectFailure(InOrder({SelectWrites("111"), {"D18 value 1"}}), kResetFailed, kNoValue);
    EXPECT_EQ(voltage, 107.0F);
}

} // namespace
} // namespace tavrelin
