#include "devices/Converter.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/ConverterWords.h"
#include "tests/support/Happenings.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kSpi = "/dev/spidev32765.1";
constexpr float kMarker = 4294967296.0F; // 2 to the 32nd

Scenario Sending(const std::vector<std::uint32_t>& words) {
    Scenario scenario;
    scenario.board.converterWords = words;
    return scenario;
}

/// What a raw conversion on a channel makes of a word of the converter.
float RawOf(std::uint32_t word, std::uint8_t channel = 0) {
    SimulatedBoard board(Sending({word}));
    const SpiDevice device;
    return doRawConversion(channel, &device);
}

/// What the conversion makes of words in a row.
std::vector<float> ReadingsOf(const std::vector<std::uint32_t>& words) {
    SimulatedBoard board(Sending(words));
    const SpiDevice device;
    std::vector<float> readings;
    for (std::size_t reading = 0; reading < words.size(); ++reading) {
        readings.push_back(doADCConversion(&device));
    }
    return readings;
}

TEST(Converter, IsAskedAndAfter250MillisecondsRead) {
    SimulatedBoard board;
    const SpiDevice device;
    board.Forget();
    doRawConversion(0, &device);
    EXPECT_EQ(Happenings(board), (Texts{"thread 1: write spi a080", "thread 1: sleep - 250000 us",
                                        "thread 1: read spi 2009c400"}));
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

TEST(Converter, IsGivenItsTimeEvenWhenTheWaitIsInterrupted) {
    SimulatedBoard board;
    const SpiDevice device;
    board.Fail("nanosleep", "", EINTR, 1);
    board.Fail("nanosleep", "", EINTR, 2);
    EXPECT_EQ(doADCConversion(&device), 20000.0F);
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

struct Command {
    int channel;
    const char* onTheWire;
};

void PrintTo(const Command& command, std::ostream* out) {
    *out << "channel " << command.channel;
}

class ConverterCommand : public testing::TestWithParam<Command> {};

TEST_P(ConverterCommand, GoesOutMostSignificantByteFirst) {
    SimulatedBoard board;
    const SpiDevice device;
    doRawConversion(static_cast<std::uint8_t>(GetParam().channel), &device);
    EXPECT_EQ(board.WritesTo("spi"), (Texts{GetParam().onTheWire}));
}

// The channel is put over the bits a0 of the first byte; from 200 on there is none.
INSTANTIATE_TEST_SUITE_P(Channels, ConverterCommand,
                         testing::Values(Command{0, "a080"}, Command{1, "a180"}, Command{2, "a280"},
                                         Command{16, "b080"}, Command{32, "a080"},
                                         Command{95, "ff80"}, Command{199, "e780"},
                                         Command{200, "a0c0"}, Command{255, "a0c0"}));

TEST(Converter, GivesItsWordMostSignificantByteFirst) {
    SimulatedBoard board(Sending({0x12345678}));
    const SpiDevice device;
    board.Forget();
    EXPECT_EQ(doRawConversion(0, &device), static_cast<float>(0x12345678 >> 5));
    EXPECT_EQ(CountOf(board, "read spi 12345678"), 1);
}

TEST(Converter, GivesTwentyFiveBitsFromTheFifthOn) {
    EXPECT_EQ(RawOf(0x0000001F), 0.0F);
    EXPECT_EQ(RawOf(0x00000020), 1.0F);
    EXPECT_EQ(RawOf(0x20000000), 16777216.0F);
    EXPECT_EQ(RawOf(0x3FFFFFC0), 33554430.0F);
    EXPECT_EQ(RawOf(0xC0000000), 0.0F);
    EXPECT_EQ(RawOf(0xC0000060), 3.0F);
}

TEST(Converter, GivesTheMarkerWhenItSendsTheCommandBack) {
    EXPECT_EQ(RawOf(0xA0800000, 0), kMarker);
    EXPECT_EQ(RawOf(0xA1800000, 1), kMarker);
    EXPECT_EQ(RawOf(0xE7800000, 199), kMarker);
    EXPECT_EQ(RawOf(0xA0C00000, 200), kMarker);
    EXPECT_EQ(RawOf(0xA0C00000, 255), kMarker);
}

TEST(Converter, GivesNoMarkerForAnyOtherWord) {
    EXPECT_EQ(RawOf(0xA0800001), 17039360.0F);
    EXPECT_EQ(RawOf(0xA0C00000), 17170432.0F);
    EXPECT_EQ(RawOf(0xA0800000, 1), 17039360.0F) << "another channel's command";
    EXPECT_EQ(RawOf(0x0000A080), 1284.0F);
    EXPECT_EQ(RawOf(0x80A00000), 327680.0F) << "the bytes swapped";
}

TEST(Converter, GivesZeroWithoutADevice) {
    SimulatedBoard board;
    EXPECT_EQ(doRawConversion(0, nullptr), 0.0F);
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Now(), 0);
}

TEST(Converter, GivesZeroWhenItCannotBeRead) {
    SimulatedBoard board;
    const SpiDevice device;
    board.Fail("read", kSpi, EIO);
    EXPECT_EQ(doRawConversion(0, &device), 0.0F);
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

TEST(Converter, IsReadEvenWhenItCouldNotBeAsked) {
    SimulatedBoard board(Sending(WordsFor({1000})));
    const SpiDevice device;
    board.Fail("write", kSpi, EIO);
    EXPECT_EQ(doADCConversion(&device), 1000.0F);
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

TEST(Reading, IsNotNegativeWhenBit24IsSet) {
    EXPECT_EQ(ReadingsOf({0x20000000, 0x20000040, 0x3FFFFFC0}),
              (std::vector<float>{0.0F, 2.0F, 16777214.0F}));
}

TEST(Reading, IsNegativeInTwosComplementWhenBit24IsClear) {
    EXPECT_EQ(ReadingsOf({0x1FFFFFE0, 0x1FFFFFC0, 0x10000000, 0x00000000}),
              (std::vector<float>{-1.0F, -2.0F, -8388608.0F, -16777216.0F}));
}

// The 25 bits pass through a single-precision number, which keeps 24 of them: ties go to even, and
// the largest number goes over into the most negative.
TEST(Reading, LosesTheLastBitWhenItIsNotNegative) {
    EXPECT_EQ(ReadingsOf({0x20000020, 0x20000060, 0x200000A0, 0x200000E0, 0x3FFFFFE0}),
              (std::vector<float>{0.0F, 4.0F, 4.0F, 8.0F, -16777216.0F}));
}

TEST(Reading, RepeatsTheLastOneWhenThereIsNoNewResult) {
    const std::vector<std::uint32_t> results = WordsFor({100, -7});
    EXPECT_EQ(ReadingsOf({results[0], kNothingNew, kNothingNew, results[1], kNothingNew}),
              (std::vector<float>{100.0F, 100.0F, 100.0F, -7.0F, -7.0F}));
}

TEST(Reading, IsKeptFromOneDeviceToTheNext) {
    ReadingsOf(WordsFor({4242}));
    EXPECT_EQ(ReadingsOf({kNothingNew}), (std::vector<float>{4242.0F}));
}

TEST(Reading, IsTheMostNegativeWithoutAWord) {
    SimulatedBoard board;
    const SpiDevice device;
    board.Fail("read", kSpi, EIO);
    EXPECT_EQ(doADCConversion(&device), -16777216.0F);
    EXPECT_EQ(doADCConversion(nullptr), -16777216.0F);
}

} // namespace
} // namespace tavrelin
