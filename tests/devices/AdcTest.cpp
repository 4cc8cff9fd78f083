#include "devices/ADC.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr const char* kDevice = "/sys/bus/iio/devices/iio:device0/";
constexpr const char* kRawOfInput6 = "/sys/bus/iio/devices/iio:device0/in_voltage6_raw";
constexpr const char* kScale = "/sys/bus/iio/devices/iio:device0/in_voltage_scale";
constexpr float kUntouched = -123.5F;

/// The board's own converter, with a channel not yet opened.
class BoardsConverter : public testing::Test {
  protected:
    void Show(const std::string& raw, const std::string& scale) {
        board.ReplaceText(kRawOfInput6, raw);
        board.ReplaceText(kScale, scale);
    }

    void ExpectSilence() {
        EXPECT_EQ(console.Output(), "");
        EXPECT_EQ(console.Error(), "");
    }

    sim::SimulatedBoard board;
    CapturedConsole console;
    ADC adc;
};

using BoardsConverterChannel = BoardsConverter;

TEST_F(BoardsConverterChannel, IsMinusOneUntilItIsOpened) {
    EXPECT_EQ(adc.Channel(), -1);
    EXPECT_EQ(adc.RawPath(), std::string(kDevice) + "in_voltage-1_raw");
}

TEST_F(BoardsConverterChannel, MayBeAnyUpTo11) {
    for (std::int32_t channel = 0; channel <= 11; ++channel) {
        EXPECT_TRUE(adc.Open(channel)) << channel;
        EXPECT_EQ(adc.Channel(), channel);
    }
    ExpectSilence();
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(BoardsConverterChannel, Above11IsRefusedWithoutALookAtTheDevice) {
    for (const std::int32_t channel : {12, 13, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_FALSE(adc.Open(channel)) << channel;
        EXPECT_EQ(adc.Channel(), -1);
    }
    ExpectSilence();
    EXPECT_EQ(board.Calls("access") + board.Calls("open") + board.Calls("stat"), 0U);
}

TEST_F(BoardsConverterChannel, BelowZeroIsFoundOutByTheReadingsOnly) {
    for (const std::int32_t channel : {-1, -2, std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_TRUE(adc.Open(channel)) << channel;
        EXPECT_EQ(adc.Channel(), channel);
        float voltage = kUntouched;
        EXPECT_FALSE(adc.ReadVoltage(voltage));
        EXPECT_EQ(voltage, kUntouched);
    }
    ExpectSilence();
}

TEST_F(BoardsConverterChannel, StaysWhatItWasWhenAnotherIsRefused) {
    ASSERT_TRUE(adc.Open(6));
    EXPECT_FALSE(adc.Open(12));
    EXPECT_EQ(adc.Channel(), 6);
    board.FailForever("access", kDevice, EACCES);
    EXPECT_FALSE(adc.Open(3));
    EXPECT_EQ(adc.Channel(), 6);
    EXPECT_EQ(console.Error(), "ADC: device does not exist\n");
}

TEST_F(BoardsConverterChannel, GivesItsNumberToTheAttributesName) {
    ASSERT_TRUE(adc.Open(6));
    EXPECT_EQ(adc.RawPath(), "/sys/bus/iio/devices/iio:device0/in_voltage6_raw");
    EXPECT_EQ(ADC::ReferencePath(), "/sys/bus/iio/devices/iio:device0/in_voltage_scale");
    ASSERT_TRUE(adc.Open(11));
    EXPECT_EQ(adc.RawPath(), "/sys/bus/iio/devices/iio:device0/in_voltage11_raw");
}

// The longest name there is stays far below the hundred characters at which it would be cut.
TEST_F(BoardsConverterChannel, IsNeverCutOutOfTheAttributesName) {
    ASSERT_TRUE(adc.Open(std::numeric_limits<std::int32_t>::min()));
    EXPECT_EQ(adc.RawPath(), "/sys/bus/iio/devices/iio:device0/in_voltage-2147483648_raw");
}

TEST(BoardWithoutConverter, RefusesEveryChannelThatThereCouldBe) {
    sim::Scenario scenario;
    scenario.kernel.paths.missing = {kDevice};
    const sim::SimulatedBoard board(scenario);
    CapturedConsole console;
    ADC adc;
    EXPECT_FALSE(adc.Open(6));
    EXPECT_EQ(adc.Channel(), -1);
    EXPECT_EQ(console.Error(), "ADC: device does not exist\n");
    EXPECT_FALSE(adc.Open(-1));
    EXPECT_EQ(console.Error(), "ADC: device does not exist\nADC: device does not exist\n");
    EXPECT_FALSE(adc.Open(12));
    EXPECT_EQ(console.Error(), "ADC: device does not exist\nADC: device does not exist\n");
    EXPECT_EQ(console.Output(), "");
}

TEST_F(BoardsConverter, ReadsNothingBeforeAChannelIsOpened) {
    std::int32_t raw = 77;
    float figure = kUntouched;
    EXPECT_FALSE(adc.ReadRaw(raw));
    EXPECT_FALSE(adc.ReadReference(figure));
    EXPECT_FALSE(adc.ReadVoltage(figure));
    EXPECT_EQ(raw, 77);
    EXPECT_EQ(figure, kUntouched);
    EXPECT_EQ(board.Calls("open"), 0U);
    ExpectSilence();
}

TEST_F(BoardsConverter, TellsThatTheCountsCannotBeReadAndLeavesTheScaleAlone) {
    board.TakeAway(kRawOfInput6);
    ASSERT_TRUE(adc.Open(6));
    float voltage = kUntouched;
    EXPECT_FALSE(adc.ReadVoltage(voltage));
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_EQ(console.Error(), "ADC: can't read raw counts\n");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(board.Calls("open"), 1U);
}

TEST_F(BoardsConverter, TellsThatTheReferenceCannotBeRead) {
    board.TakeAway(kScale);
    ASSERT_TRUE(adc.Open(6));
    float voltage = kUntouched;
    EXPECT_FALSE(adc.ReadVoltage(voltage));
    EXPECT_EQ(voltage, kUntouched);
    EXPECT_EQ(console.Error(), "ADC: can't read the reference\n");
    EXPECT_EQ(console.Output(), "");
}

TEST_F(BoardsConverter, GoesOnWhenAnAttributeIsBack) {
    board.TakeAway(kRawOfInput6);
    ASSERT_TRUE(adc.Open(6));
    float voltage = 0.0F;
    EXPECT_FALSE(adc.ReadVoltage(voltage));
    board.Restore(kRawOfInput6);
    EXPECT_TRUE(adc.ReadVoltage(voltage));
}

TEST_F(BoardsConverter, OpensReadsAndClosesBothAttributesForEveryReading) {
    ASSERT_TRUE(adc.Open(6));
    Show("1024", "2");
    float voltage = 0.0F;
    EXPECT_TRUE(adc.ReadVoltage(voltage));
    EXPECT_EQ(voltage, 2.0F);
    EXPECT_EQ(board.Calls("open"), 2U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
    Show("2048", "0.5");
    EXPECT_TRUE(adc.ReadVoltage(voltage));
    EXPECT_EQ(voltage, 1.0F);
    EXPECT_EQ(board.Calls("open"), 4U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
    ExpectSilence();
}

TEST_F(BoardsConverter, ReadsTheInputThatWasOpened) {
    board.Model().analog.scale = "1024";
    for (std::size_t input = 0; input < 12; ++input) {
        board.Model().analog.direct[input] = 100.0 + static_cast<double>(input);
    }
    for (const std::int32_t channel : {0, 5, 7, 11}) {
        ASSERT_TRUE(adc.Open(channel));
        float voltage = 0.0F;
        EXPECT_TRUE(adc.ReadVoltage(voltage));
        EXPECT_EQ(voltage, 100.0F + static_cast<float>(channel));
    }
}

/// What the attributes hold, and the count or voltage that it makes.
struct Reading {
    const char* raw;
    const char* scale;
    float voltage;
};

void PrintTo(const Reading& reading, std::ostream* out) {
    *out << "'" << reading.raw << "' times '" << reading.scale << "'";
}

class BoardsConverterVoltage : public BoardsConverter,
                               public testing::WithParamInterface<Reading> {};

// To the last bit: all in single precision, and the unit is 1/1024.
TEST_P(BoardsConverterVoltage, IsCountTimesScaleIn1024ths) {
    Show(GetParam().raw, GetParam().scale);
    ASSERT_TRUE(adc.Open(6));
    float voltage = kUntouched;
    EXPECT_TRUE(adc.ReadVoltage(voltage));
    EXPECT_EQ(voltage, GetParam().voltage);
    ExpectSilence();
}

INSTANTIATE_TEST_SUITE_P(OfNumbers, BoardsConverterVoltage,
                         testing::Values(Reading{"2048", "0.805664062", 0x1.9c8p+0F},
                                         Reading{"2048\n", "0.805664062\n", 0x1.9c8p+0F},
                                         Reading{"1", "0.805664062", 0x1.9c8p-11F},
                                         Reading{"4095", "0.805664062", 0x1.9c6638p+1F},
                                         Reading{"3", "0.1", 0x1.333334p-12F},
                                         Reading{"-1234", "0.805664062", -0x1.f1184p-1F},
                                         Reading{"4095", "0.000976563", 0x1.ffe01p-9F},
                                         Reading{"123456789", "0.3", 0x1.1a91f8p+15F},
                                         Reading{"0", "0.805664062", 0.0F}));

// A count beyond 2^24 is rounded before it is multiplied, and the product may overflow before the
// unit makes it smaller.
INSTANTIATE_TEST_SUITE_P(
    OfLargeNumbers, BoardsConverterVoltage,
    testing::Values(Reading{"16777217", "1", 16384.0F}, Reading{"16777219", "1", 0x1.000004p+14F},
                    Reading{"4", "1e38", std::numeric_limits<float>::infinity()},
                    Reading{"-4", "1e38", -std::numeric_limits<float>::infinity()},
                    Reading{"3", "1e38", 0x1.c363ccp+117F}));

// What formatted extraction makes of a text that is no number is used all the same.
constexpr float kLargestCount = 2097152.0F; // 2^31 / 1024
INSTANTIATE_TEST_SUITE_P(
    OfRubbish, BoardsConverterVoltage,
    testing::Values(Reading{"", "1", 0.0F}, Reading{"\n", "1", 0.0F}, Reading{"abc", "1", 0.0F},
                    Reading{"1024", "", 0.0F}, Reading{"1024", "abc", 0.0F},
                    Reading{"1024", "-", 0.0F}, Reading{"1024", ".", 0.0F},
                    Reading{"  1024  ", "\t1\n", 1.0F}, Reading{"1024abc", "1volt", 1.0F},
                    Reading{"1024 2048", "1 2", 1.0F}, Reading{"1024.9", "1", 1.0F},
                    Reading{"0x400", "1", 0.0F}, Reading{"+1024", "+1", 1.0F},
                    Reading{"99999999999", "1", kLargestCount},
                    Reading{"-99999999999", "1", -kLargestCount}, Reading{"1024", "1e", 0.0F}));

TEST_F(BoardsConverter, TakesAScaleOutOfRangeForTheLargest) {
    Show("1", "1e50");
    ASSERT_TRUE(adc.Open(6));
    float reference = 0.0F;
    EXPECT_TRUE(adc.ReadReference(reference));
    EXPECT_EQ(reference, std::numeric_limits<float>::max());
}

TEST_F(BoardsConverter, TakesAnAttributeThatCannotBeReadForZero) {
    board.FailForever("read", kRawOfInput6, EIO);
    ASSERT_TRUE(adc.Open(6));
    std::int32_t raw = 77;
    EXPECT_TRUE(adc.ReadRaw(raw));
    EXPECT_EQ(raw, 0);
    ExpectSilence();
}

} // namespace
} // namespace tavrelin
