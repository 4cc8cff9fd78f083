#include "tests/devices/FrontEnd.h"

#include <cerrno>
#include <cstddef>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kDevice = "/sys/bus/iio/devices/iio:device0/";
constexpr const char* kCounts = "/sys/bus/iio/devices/iio:device0/in_voltage6_raw";
constexpr const char* kScale = "/sys/bus/iio/devices/iio:device0/in_voltage_scale";
constexpr float kUntouched = -123.5F;

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

    float voltage = kUntouched;
};

TEST_F(DemultiplexerReadVoltage, GivesTheSignalOfEachChannel) {
    for (const std::uint32_t channel :
         {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 10U, 11U, 12U, 13U, 14U, 15U}) {
        EXPECT_TRUE(Read(channel)) << channel;
        EXPECT_EQ(voltage, 100.0F + static_cast<float>(channel));
    }
    ExpectSilence();
}

TEST_F(DemultiplexerReadVoltage, TakesTheFirstOfTheUpperGroupForAChannelThatThereIsNot) {
    for (const std::uint32_t channel : {8U, 9U, 16U, 17U}) {
        voltage = kUntouched;
        EXPECT_TRUE(Read(channel)) << channel;
        EXPECT_EQ(voltage, 108.0F);
    }
    const std::string invalid = "Demultiplexer::SelectChannel - Invalid channel\n";
    EXPECT_EQ(console.Output(), invalid + invalid + invalid + invalid);
    EXPECT_EQ(console.Error(), "");
}

TEST_F(DemultiplexerReadVoltage, SelectsReadsAndRestoresTheSwitch) {
    ASSERT_TRUE(analogSwitch.Write(1));
    board.Forget();
    EXPECT_TRUE(Read(10));
    EXPECT_EQ(Writes(board),
              (Texts{"C27 value 0", "C28 value 1", "C31 value 0", "D18 value 0", "D18 value 1"}));
    board.Forget();
    ASSERT_TRUE(analogSwitch.Write(0));
    EXPECT_TRUE(Read(2));
    EXPECT_EQ(Writes(board), (Texts{"D18 value 0", "C27 value 0", "C28 value 1", "C31 value 0",
                                    "D18 value 1", "D18 value 0"}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
    ExpectSilence();
}

TEST_F(DemultiplexerReadVoltage, LeavesTheSelectLinesAtTheChannel) {
    EXPECT_TRUE(Read(13));
    EXPECT_TRUE(board.Line("C27").level);
    EXPECT_FALSE(board.Line("C28").level);
    EXPECT_TRUE(board.Line("C31").level);
}

TEST_F(DemultiplexerReadVoltage, UsesTheConvertersInput6) {
    board.Model().analog.direct.fill(999.0);
    EXPECT_TRUE(Read(3));
    EXPECT_EQ(voltage, 103.0F);
    board.TakeAway(kCounts);
    EXPECT_FALSE(Read(3));
}

TEST_F(DemultiplexerReadVoltage, FailsFirstOfAllWithoutAConverter) {
    board.FailForever("access", kDevice, ENOENT);
    EXPECT_FALSE(Read(2));
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(demultiplexer.Channel(), 0U);
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_EQ(console.Output(), "Demultiplexer::ReadVoltage failed!\n");
    EXPECT_EQ(console.Error(), "ADC: device does not exist\n");
}

TEST_F(DemultiplexerReadVoltage, FailsWithoutASwitchAndReadsNothing) {
    EXPECT_FALSE(demultiplexer.ReadVoltage(2, nullptr, voltage));
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_EQ(console.Output(), "Demultiplexer::SetAnalogSwitch: failed!\n"
                                "Demultiplexer::SelectChannel - Setting mux channel failed\n"
                                "Demultiplexer::ReadVoltage failed!\n");
    EXPECT_EQ(console.Error(), "");
}

TEST_F(DemultiplexerReadVoltage, FailsBeforeInit) {
    Demultiplexer fresh;
    EXPECT_FALSE(fresh.ReadVoltage(2, &analogSwitch, voltage));
    EXPECT_EQ(console.Output(), "Demultiplexer::SelectChannel - Setting mux channel failed\n"
                                "Demultiplexer::ReadVoltage failed!\n");
    EXPECT_EQ(Writes(board), Texts{});
}

/// An attribute of a line whose occurrence-th opening fails, and what comes of it.
struct FailingWrite {
    const char* line;
    std::uint64_t occurrence;
    Texts before;
    const char* output;
};

void PrintTo(const FailingWrite& write, std::ostream* out) {
    *out << write.line << " opened " << write.occurrence << " times";
}

class DemultiplexerReadFailing : public DemultiplexerReadVoltage,
                                 public testing::WithParamInterface<FailingWrite> {};

TEST_P(DemultiplexerReadFailing, StopsThere) {
    FailToOpen(GetParam().line, "value", GetParam().occurrence);
    EXPECT_FALSE(Read(7));
    EXPECT_EQ(Writes(board), GetParam().before);
    EXPECT_EQ(console.Output(), GetParam().output);
    EXPECT_EQ(console.Error(), "unable to set the gpio value");
}

constexpr const char* kSelectFailed = "Demultiplexer::SelectChannel - Setting mux channel "
                                      "failed\nDemultiplexer::ReadVoltage failed!\n";
constexpr const char* kSwitchFailed =
    "Demultiplexer::SetAnalogSwitch: failed!\nDemultiplexer::SelectChannel - Setting mux channel "
    "failed\nDemultiplexer::ReadVoltage failed!\n";
constexpr const char* kResetFailed =
    "Demultiplexer::ResetAnalogSwitchState: failed!\nDemultiplexer::ReadVoltage failed!\n";

INSTANTIATE_TEST_SUITE_P(
    , DemultiplexerReadFailing,
    testing::Values(
        FailingWrite{"C27", 1, {}, kSelectFailed},
        FailingWrite{"C28", 1, {"C27 value 1"}, kSelectFailed},
        FailingWrite{"C31", 1, {"C27 value 1", "C28 value 1"}, kSelectFailed},
        // The first opening of the switch's value is the look at its level.
        FailingWrite{"D18", 2, {"C27 value 1", "C28 value 1", "C31 value 1"}, kSwitchFailed},
        FailingWrite{
            "D18", 3, {"C27 value 1", "C28 value 1", "C31 value 1", "D18 value 1"}, kResetFailed}));

TEST_F(DemultiplexerReadVoltage, KeepsTheSwitchWhenTheVoltageCannotBeRead) {
    board.TakeAway(kCounts);
    EXPECT_FALSE(Read(7));
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_TRUE(board.Line("D18").level);
    EXPECT_EQ(console.Output(), "Demultiplexer::ReadVoltage failed!\n");
    EXPECT_EQ(console.Error(), "ADC: can't read raw counts\n");
    EXPECT_TRUE(demultiplexer.ResetAnalogSwitchState()); // still held, with the level it had
    EXPECT_FALSE(board.Line("D18").level);
}

TEST_F(DemultiplexerReadVoltage, KeepsTheSwitchWhenTheScaleCannotBeRead) {
    board.TakeAway(kScale);
    EXPECT_FALSE(Read(7));
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_TRUE(board.Line("D18").level);
    EXPECT_EQ(console.Output(), "Demultiplexer::ReadVoltage failed!\n");
    EXPECT_EQ(console.Error(), "ADC: can't read the reference\n");
}

TEST_F(DemultiplexerReadVoltage, HasStoredTheVoltageWhenOnlyTheSwitchCannotBeRestored) {
    FailToOpen("D18", "value", 3);
    EXPECT_FALSE(Read(7));
    EXPECT_EQ(voltage, 107.0F);
}

TEST_F(DemultiplexerReadVoltage, TakesRubbishInTheCountForZero) {
    board.ReplaceText(kCounts, "rubbish");
    EXPECT_TRUE(Read(7));
    EXPECT_EQ(voltage, 0.0F);
    ExpectSilence();
}

} // namespace
} // namespace tavrelin
