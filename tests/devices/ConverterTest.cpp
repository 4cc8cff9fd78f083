#include "devices/Converter.h"

#include "tests/support/BoardTest.h"
#include "tests/support/ConverterWords.h"
#include "tests/support/Happenings.h"

#include <vector>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Texts;

using Readings = std::vector<float>;

constexpr const char* kSpi = "/dev/spidev32765.1";
constexpr float kMarker = 4294967296.0F; // 2 to the 32nd

/// A converter that sends these words.
class Converter : public BoardTest {
  protected:
    /// What a raw conversion on a channel makes of a word.
    float RawOf(std::uint32_t word, std::uint8_t channel = 0) {
        board.Model().converter.AnswerWith({word});
        return doRawConversion(channel, &device);
    }
    /// What the conversion makes of words in a row.
    Readings ReadingsOf(const std::vector<std::uint32_t>& words) {
        board.Model().converter.AnswerWith({words.begin(), words.end()});
        Readings readings;
        for (std::size_t reading = 0; reading < words.size(); ++reading) {
            readings.push_back(doADCConversion(&device));
        }
        return readings;
    }

    SpiDevice device;
};

TEST_F(Converter, IsAskedAndAfter250MillisecondsRead) {
    board.Forget();
    doRawConversion(0, &device);
    EXPECT_EQ(Happenings(board), (Texts{"thread 1: write spi a080", "thread 1: sleep - 250000 us",
                                        "thread 1: read spi 2009c400"}));
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

TEST_F(Converter, IsGivenItsTimeEvenWhenTheWaitIsInterrupted) {
    board.Fail("nanosleep", "", EINTR, 1);
    board.Fail("nanosleep", "", EINTR, 2);
    EXPECT_EQ(doADCConversion(&device), 20000.0F);
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

// The channel is put over the bits a0 of the first byte; from 200 on there is none.
TEST_F(Converter, IsAskedMostSignificantByteFirst) {
    for (const auto& [channel, command] :
         {std::pair{0, "a080"}, std::pair{1, "a180"}, std::pair{2, "a280"}, std::pair{16, "b080"},
          std::pair{32, "a080"}, std::pair{95, "ff80"}, std::pair{199, "e780"},
          std::pair{200, "a0c0"}, std::pair{255, "a0c0"}}) {
        board.Forget();
        doRawConversion(static_cast<std::uint8_t>(channel), &device);
        EXPECT_EQ(board.WritesTo("spi"), (Texts{command})) << channel;
    }
}

TEST_F(Converter, GivesTwentyFiveBitsFromTheFifthOnMostSignificantByteFirst) {
    for (const auto& [word, raw] :
         {std::pair{0x12345678U, 9544371.0F}, std::pair{0x0000001FU, 0.0F},
          std::pair{0x00000020U, 1.0F}, std::pair{0x20000000U, 16777216.0F},
          std::pair{0x3FFFFFC0U, 33554430.0F}, std::pair{0xC0000000U, 0.0F},
          std::pair{0xC0000060U, 3.0F}}) {
        EXPECT_EQ(RawOf(word), raw) << word;
    }
}

TEST_F(Converter, GivesTheMarkerWhenItSendsTheCommandBackAndForNoOtherWord) {
    EXPECT_EQ(RawOf(0xA0800000, 0), kMarker);
    EXPECT_EQ(RawOf(0xA1800000, 1), kMarker);
    EXPECT_EQ(RawOf(0xE7800000, 199), kMarker);
    EXPECT_EQ(RawOf(0xA0C00000, 200), kMarker);
    EXPECT_EQ(RawOf(0xA0C00000, 255), kMarker);
    EXPECT_EQ(RawOf(0xA0800001), 17039360.0F);
    EXPECT_EQ(RawOf(0xA0C00000), 17170432.0F);
    EXPECT_EQ(RawOf(0xA0800000, 1), 17039360.0F) << "another channel's command";
    EXPECT_EQ(RawOf(0x0000A080), 1284.0F);
    EXPECT_EQ(RawOf(0x80A00000), 327680.0F) << "the bytes swapped";
}

TEST_F(Converter, GivesZeroWithoutADeviceAndWhenItCannotBeRead) {
    board.Forget();
    EXPECT_EQ(doRawConversion(0, nullptr), 0.0F);
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Now(), 0);
    board.Fail("read", kSpi, EIO);
    EXPECT_EQ(doRawConversion(0, &device), 0.0F);
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

TEST_F(Converter, IsReadEvenWhenItCouldNotBeAsked) {
    board.Fail("write", kSpi, EIO);
    EXPECT_EQ(ReadingsOf(WordsFor({1000})), (Readings{1000.0F}));
    EXPECT_EQ(board.Now(), Milliseconds(250));
}

using Reading = Converter;

TEST_F(Reading, BelowZeroComesAsItIsInTwosComplementWithBit24Clear) {
    EXPECT_EQ(ReadingsOf({0x1FFFFFE0, 0x1FFFFFC0, 0x1FFFFFA0, 0x10000020, 0x00000020, 0x00000000}),
              (Readings{-1.0F, -2.0F, -3.0F, -8388607.0F, -16777215.0F, -16777216.0F}));
}

// The 25 bits pass through a single-precision number, which keeps 24 of them.
TEST_F(Reading, FromZeroOnComesEvenAndAnOddOneAsItsNeighbourThatFourDivides) {
    EXPECT_EQ(ReadingsOf({0x20000000, 0x20000020, 0x20000040, 0x20000060, 0x20000080, 0x200000A0,
                          0x200000C0, 0x200000E0}),
              (Readings{0.0F, 0.0F, 2.0F, 4.0F, 4.0F, 4.0F, 6.0F, 8.0F}));
}

TEST_F(Reading, IsAtMost16777214AndFullScaleIsTheMostNegative) {
    EXPECT_EQ(ReadingsOf({0x3FFFFF80, 0x3FFFFFA0, 0x3FFFFFC0, 0x3FFFFFE0}),
              (Readings{16777212.0F, 16777212.0F, 16777214.0F, -16777216.0F}));
}

TEST_F(Reading, RepeatsTheLastOneWhenThereIsNoNewResult) {
    const std::vector<std::uint32_t> results = WordsFor({100, -7});
    EXPECT_EQ(ReadingsOf({results[0], kNothingNew, kNothingNew, results[1], kNothingNew}),
              (Readings{100.0F, 100.0F, 100.0F, -7.0F, -7.0F}));
}

TEST_F(Reading, IsKeptFromOneDeviceToTheNext) {
    ReadingsOf(WordsFor({4242}));
    const SpiDevice next;
    board.Model().converter.AnswerWith({kNothingNew});
    EXPECT_EQ(doADCConversion(&next), 4242.0F);
}

TEST_F(Reading, IsTheMostNegativeWithoutAWord) {
    board.Fail("read", kSpi, EIO);
    EXPECT_EQ(doADCConversion(&device), -16777216.0F);
    EXPECT_EQ(doADCConversion(nullptr), -16777216.0F);
}

} // namespace
} // namespace tavrelin
