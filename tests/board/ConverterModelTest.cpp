#include "simulator/board/Converter.h"

#include <array>
#include <gtest/gtest.h>

namespace sim {
namespace {

using Wire = std::array<std::uint8_t, 4>;

constexpr std::array<std::uint8_t, 2> kCommand{0xA0, 0x80};

Wire ResultAt(Converter& converter, Nanoseconds now) {
    Wire wire{};
    converter.Send(now, wire);
    return wire;
}

TEST(ConverterModel, GivesTheReadingMostSignificantByteFirst) {
    Converter converter;
    converter.detector = [](Nanoseconds) { return 0x123456; };
    converter.Receive(0, kCommand);
    // Bit 24 for a number of 0 or more, then shifted up by five.
    EXPECT_EQ(ResultAt(converter, Milliseconds(250)), (Wire{0x22, 0x46, 0x8A, 0xC0}));
}

TEST(ConverterModel, GivesTheCommandBackBeforeTheConversionIsDone) {
    Converter converter;
    converter.detector = [](Nanoseconds) { return 1; };
    converter.Receive(0, kCommand);
    EXPECT_EQ(ResultAt(converter, Milliseconds(149)), (Wire{0xA0, 0x80, 0, 0}));
    EXPECT_EQ(ResultAt(converter, Milliseconds(150)), (Wire{0x20, 0, 0, 0x20}));
}

TEST(ConverterModel, SpellsNegativeReadingsWithoutTheSignBit) {
    EXPECT_EQ(Converter::ResultWord(-1), 0xFFFFFFU << 5U);
    EXPECT_EQ(Converter::ResultWord(0), 0x1000000U << 5U);
}

TEST(ConverterModel, HoldsReadingsBeyond24BitsAtTheEndOfTheRange) {
    EXPECT_EQ(Converter::ResultWord(1 << 24), Converter::ResultWord((1 << 24) - 1));
    EXPECT_EQ(Converter::ResultWord(-(1 << 24) - 1), Converter::ResultWord(-(1 << 24)));
}

TEST(ConverterModel, AnswersWithGivenWordsFirst) {
    Converter converter;
    converter.detector = [](Nanoseconds) { return 0; };
    converter.AnswerWith({0xDEADBEEF});
    converter.Receive(0, kCommand);
    EXPECT_EQ(ResultAt(converter, Milliseconds(250)), (Wire{0xDE, 0xAD, 0xBE, 0xEF}));
    EXPECT_EQ(ResultAt(converter, Milliseconds(250)), (Wire{0x20, 0, 0, 0}));
}

} // namespace
} // namespace sim
