// The optical converter by itself, byte by byte on the wire.

#include "simulator/board/Converter.h"

#include <array>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Converter;
using sim::Milliseconds;

constexpr std::array<std::uint8_t, 2> kCommand{0xA0, 0x80};

class ConverterModel : public testing::Test {
  protected:
    ConverterModel() {
        converter.detector = [this](sim::Nanoseconds now) {
            askedAt = now;
            return reading;
        };
    }
    std::uint32_t ReadWord(sim::Nanoseconds now) {
        std::array<std::uint8_t, 4> wire{};
        converter.Send(now, wire);
        return static_cast<std::uint32_t>(wire[0] << 24U | wire[1] << 16U | wire[2] << 8U |
                                          wire[3]);
    }

    Converter converter;
    std::int32_t reading = 3'000'000;
    sim::Nanoseconds askedAt = -1;
};

TEST_F(ConverterModel, GivesTheDetectorsReadingAfterTheConversion) {
    converter.Receive(0, kCommand);
    EXPECT_EQ(ReadWord(Milliseconds(250)), (1U << 29U) | 3'000'000U << 5U);
    EXPECT_EQ(askedAt, Milliseconds(250));
}

TEST_F(ConverterModel, GivesTheCommandBackWhileItConverts) {
    converter.Receive(0, kCommand);
    EXPECT_EQ(ReadWord(Milliseconds(150) - 1), 0xA0800000U);
    EXPECT_EQ(askedAt, -1);
    EXPECT_NE(ReadWord(Milliseconds(150)), 0xA0800000U);
}

TEST_F(ConverterModel, ConvertsNothingWithoutACommand) {
    EXPECT_EQ(ReadWord(Milliseconds(250)), 0U);
    EXPECT_EQ(askedAt, -1);
}

TEST_F(ConverterModel, ConvertsAnewAfterEachCommand) {
    converter.Receive(0, kCommand);
    ReadWord(Milliseconds(250));
    converter.Receive(Milliseconds(300), std::array<std::uint8_t, 2>{0xA1, 0x80});
    EXPECT_EQ(ReadWord(Milliseconds(310)), 0xA1800000U);
}

TEST_F(ConverterModel, AWordMayBeReadInPieces) {
    converter.Receive(0, kCommand);
    std::array<std::uint8_t, 3> three{};
    std::array<std::uint8_t, 1> one{};
    converter.Send(Milliseconds(250), three);
    reading = 0;
    converter.Send(Milliseconds(260), one);
    const std::uint32_t word = (1U << 29U) | 3'000'000U << 5U;
    EXPECT_EQ(three[0], word >> 24U);
    EXPECT_EQ(three[2], word >> 8U & 0xFFU);
    EXPECT_EQ(one[0], word & 0xFFU) << "it belongs to the reading that was begun";
}

TEST(ConverterWord, HoldsTheSignAnd24Bits) {
    EXPECT_EQ(Converter::ResultWord(0), 1U << 29U);
    EXPECT_EQ(Converter::ResultWord(1), (1U << 29U) | 1U << 5U);
    EXPECT_EQ(Converter::ResultWord(16'777'215), 0x3FFFFFE0U);
    EXPECT_EQ(Converter::ResultWord(-1), 0x1FFFFFE0U);
    EXPECT_EQ(Converter::ResultWord(-16'777'216), 0U);
}

TEST(ConverterWord, HoldsReadingsBeyondItsRangeAtTheEnd) {
    EXPECT_EQ(Converter::ResultWord(2'000'000'000), Converter::ResultWord(16'777'215));
    EXPECT_EQ(Converter::ResultWord(-2'000'000'000), Converter::ResultWord(-16'777'216));
}

TEST_F(ConverterModel, AnswersWithGivenWordsFirst) {
    converter.AnswerWith({0x12345678, 0});
    EXPECT_EQ(ReadWord(0), 0x12345678U);
    converter.Receive(0, kCommand);
    EXPECT_EQ(ReadWord(Milliseconds(250)), 0U);
    EXPECT_EQ(ReadWord(Milliseconds(250)), Converter::ResultWord(3'000'000));
}

} // namespace
} // namespace tavrelin
