#include "devices/ADC.h"

#include "tests/devices/FrontEnd.h"

#include <limits>

namespace tavrelin {
namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// The board's own converter, with a channel not yet opened.
class BoardsConverter : public BoardTest {
  protected:
    void Show(const std::string& raw, const std::string& scale) {
        board.ReplaceText(kCounts, raw);
        board.ReplaceText(kScale, scale);
    }
    /// The voltage of input 6; whether it can be read is what `readable` says.
    float Voltage(bool readable = true) {
        EXPECT_TRUE(adc.Open(6));
        float voltage = kUntouched;
        EXPECT_EQ(adc.ReadVoltage(voltage), readable);
        return voltage;
    }

    ADC adc;
};

using BoardsConverterChannel = BoardsConverter;

TEST_F(BoardsConverterChannel, IsMinusOneUntilItIsOpenedAndNothingIsReadFromIt) {
    EXPECT_EQ(adc.Channel(), -1);
    EXPECT_EQ(adc.RawPath(), std::string(kConverter) + "in_voltage-1_raw");
    std::int32_t raw = 77;
    float figure = kUntouched;
    EXPECT_FALSE(adc.ReadRaw(raw));
    EXPECT_FALSE(adc.ReadReference(figure));
    EXPECT_FALSE(adc.ReadVoltage(figure));
    EXPECT_EQ(raw, 77);
    EXPECT_EQ(figure, kUntouched);
    EXPECT_EQ(board.Calls("open"), 0U);
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(BoardsConverterChannel, MayBeAnyUpTo11) {
    for (std::int32_t channel = 0; channel <= 11; ++channel) {
        EXPECT_TRUE(adc.Open(channel)) << channel;
        EXPECT_EQ(adc.Channel(), channel);
    }
    EXPECT_EQ(Console(), kSilence);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(BoardsConverterChannel, Above11IsRefusedWithoutALookAtTheDevice) {
    for (const std::int32_t channel : {12, 13, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_FALSE(adc.Open(channel)) << channel;
        EXPECT_EQ(adc.Channel(), -1);
    }
    EXPECT_EQ(Console(), kSilence);
    EXPECT_EQ(board.Calls("access") + board.Calls("open") + board.Calls("stat"), 0U);
}

TEST_F(BoardsConverterChannel, BelowZeroIsFoundOutByTheReadingsOnly) {
    for (const std::int32_t channel : {-1, -2, kLowest}) {
        EXPECT_TRUE(adc.Open(channel)) << channel;
        EXPECT_EQ(adc.Channel(), channel);
        float voltage = kUntouched;
        EXPECT_FALSE(adc.ReadVoltage(voltage));
        EXPECT_EQ(voltage, kUntouched);
    }
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(BoardsConverterChannel, StaysWhatItWasWhenAnotherIsRefusedOrTheConverterIsGone) {
    ASSERT_TRUE(adc.Open(6));
    EXPECT_FALSE(adc.Open(12));
    EXPECT_EQ(Console(), kSilence);
    board.FailForever("access", kConverter, EACCES);
    EXPECT_FALSE(adc.Open(3));
    EXPECT_EQ(Console(), (Said{"", "ADC: device does not exist\n"}));
    EXPECT_FALSE(adc.Open(-1));
    EXPECT_FALSE(adc.Open(12));
    EXPECT_EQ(Console(), (Said{"", "ADC: device does not exist\nADC: device does not exist\n"}));
    EXPECT_EQ(adc.Channel(), 6);
}

TEST_F(BoardsConverterChannel, CannotBeOpenedOnABoardWithoutConverter) {
    sim::Scenario scenario;
    scenario.kernel.paths.missing = {kConverter};
    NewBoard(scenario);
    EXPECT_FALSE(adc.Open(6));
    EXPECT_EQ(Console(), (Said{"", "ADC: device does not exist\n"}));
}

// The longest name there is stays far below the hundred characters at which it would be cut.
TEST_F(BoardsConverterChannel, GivesItsNumberToTheAttributesName) {
    for (const auto& [channel, path] :
         {std::pair{6, "/sys/bus/iio/devices/iio:device0/in_voltage6_raw"},
          std::pair{11, "/sys/bus/iio/devices/iio:device0/in_voltage11_raw"},
          std::pair{kLowest, "/sys/bus/iio/devices/iio:device0/in_voltage-2147483648_raw"}}) {
        ASSERT_TRUE(adc.Open(channel));
        EXPECT_EQ(adc.RawPath(), path);
    }
    EXPECT_EQ(ADC::ReferencePath(), "/sys/bus/iio/devices/iio:device0/in_voltage_scale");
}

TEST_F(BoardsConverter, TellsThatTheCountsCannotBeReadLeavesTheScaleAloneAndGoesOn) {
    board.TakeAway(kCounts);
    EXPECT_EQ(Voltage(false), kUntouched);
    EXPECT_EQ(Console(), (Said{"", "ADC: can't read raw counts\n"}));
    EXPECT_EQ(board.Calls("open"), 1U);
    board.Restore(kCounts);
    EXPECT_NE(Voltage(), kUntouched);
}

TEST_F(BoardsConverter, TellsThatTheReferenceCannotBeRead) {
    board.TakeAway(kScale);
    EXPECT_EQ(Voltage(false), kUntouched);
    EXPECT_EQ(Console(), (Said{"", "ADC: can't read the reference\n"}));
}

TEST_F(BoardsConverter, OpensReadsAndClosesBothAttributesForEveryReading) {
    Show("1024", "2");
    EXPECT_EQ(Voltage(), 2.0F);
    EXPECT_EQ(board.Calls("open"), 2U);
    Show("2048", "0.5");
    EXPECT_EQ(Voltage(), 1.0F);
    EXPECT_EQ(board.Calls("open"), 4U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(BoardsConverter, ReadsTheInputThatWasOpened) {
    board.Model().analog.scale = "1024";
    for (const std::int32_t channel : {0, 5, 7, 11}) {
        board.Model().analog.direct[static_cast<std::size_t>(channel)] = 100.0 + channel;
        ASSERT_TRUE(adc.Open(channel));
        float voltage = 0.0F;
        EXPECT_TRUE(adc.ReadVoltage(voltage));
        EXPECT_EQ(voltage, 100.0F + static_cast<float>(channel));
    }
}

/// What the attributes hold, and the count or voltage that it makes.
struct Reading {
    const char *raw, *scale;
    float voltage;
};

class BoardsConverterVoltage : public BoardsConverter {
  protected:
    void Expect(std::initializer_list<Reading> readings) {
        for (const Reading& reading : readings) {
            Show(reading.raw, reading.scale);
            EXPECT_EQ(Voltage(), reading.voltage)
                << "'" << reading.raw << "' times '" << reading.scale << "'";
        }
        EXPECT_EQ(Console(), kSilence);
    }
};

// To the last bit: all in single precision, and the unit is 1/1024.
TEST_F(BoardsConverterVoltage, IsCountTimesScaleIn1024ths) {
    Expect({{"2048", "0.805664062", 0x1.9c8p+0F},
            {"2048\n", "0.805664062\n", 0x1.9c8p+0F},
            {"1", "0.805664062", 0x1.9c8p-11F},
            {"4095", "0.805664062", 0x1.9c6638p+1F},
            {"3", "0.1", 0x1.333334p-12F},
            {"-1234", "0.805664062", -0x1.f1184p-1F},
            {"4095", "0.000976563", 0x1.ffe01p-9F},
            {"123456789", "0.3", 0x1.1a91f8p+15F},
            {"0", "0.805664062", 0.0F}});
}

// A count beyond 2^24 is rounded before it is multiplied, and the product may overflow before the
// unit makes it smaller.
TEST_F(BoardsConverterVoltage, OfLargeNumbersIsRoundedAndMayOverflow) {
    Expect({{"16777217", "1", 16384.0F},
            {"16777219", "1", 0x1.000004p+14F},
            {"4", "1e38", kInfinity},
            {"-4", "1e38", -kInfinity},
            {"3", "1e38", 0x1.c363ccp+117F},
            {"1", "1e50", kLargest / 1024.0F}}); // the scale is the largest there is
}

// What formatted extraction makes of a text that is no number is used all the same.
TEST_F(BoardsConverterVoltage, OfRubbishIsWhatTheExtractionLeaves) {
    constexpr float largestCount = 2097152.0F; // 2^31 / 1024
    Expect({{"", "1", 0.0F},
            {"\n", "1", 0.0F},
            {"abc", "1", 0.0F},
            {"1024", "", 0.0F},
            {"1024", "abc", 0.0F},
            {"1024", "-", 0.0F},
            {"1024", ".", 0.0F},
            {"  1024  ", "\t1\n", 1.0F},
            {"1024abc", "1volt", 1.0F},
            {"1024 2048", "1 2", 1.0F},
            {"1024.9", "1", 1.0F},
            {"0x400", "1", 0.0F},
            {"+1024", "+1", 1.0F},
            {"99999999999", "1", largestCount},
            {"-99999999999", "1", -largestCount},
            {"1024", "1e", 0.0F}});
    board.FailForever("read", kCounts, EIO);
    Expect({{"1024", "1", 0.0F}});
}

} // namespace
} // namespace tavrelin
