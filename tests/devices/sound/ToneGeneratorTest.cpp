#include "devices/ToneGenerator.h"

#include "tests/devices/sound/Sweep.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tavrelin {
namespace {

constexpr double kSampleTime = 1.0 / 18000.0;

std::string Bytes(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::vector<int> Samples(double frequency, std::int32_t count, double phase = 0.0) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(count) * 2);
    EXPECT_TRUE(GenerateTone(bytes.data(), count, frequency, &phase));
    std::vector<int> samples;
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        const int sample = bytes[at] + 256 * bytes[at + 1];
        samples.push_back(sample < 32768 ? sample : sample - 65536);
    }
    return samples;
}

TEST(ToneGenerator, StartsTheWaveDownwardAtHalfOfFullScale) {
    EXPECT_EQ(Samples(500.0, 12), (std::vector<int>{0, -2846, -5604, -8193, -10532, -12551, -14189,
                                                    -15396, -16136, -16384, -16136, -15396}));
}

TEST(ToneGenerator, WritesTheLowByteFirst) {
    std::array<std::uint8_t, 4> bytes{};
    double phase = 0.0;
    EXPECT_TRUE(GenerateTone(bytes.data(), 2, 500.0, &phase));
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{0x00, 0x00, 0xE2, 0xF4})); // -2846
}

TEST(ToneGenerator, StartsAnewWhenAPeriodIsJustFull) {
    EXPECT_EQ(Samples(18000.0, 4), (std::vector<int>{0, 0, 0, 0}));
    double phase = 0.0;
    std::array<std::uint8_t, 2> bytes{};
    EXPECT_TRUE(GenerateTone(bytes.data(), 1, 18000.0, &phase));
    EXPECT_EQ(phase, 0.0);
}

TEST(ToneGenerator, TakesOffOnePeriodOnlyWhenSeveralHavePassed) {
    std::array<std::uint8_t, 2> bytes{};
    double phase = 0.0;
    EXPECT_TRUE(GenerateTone(bytes.data(), 1, 72000.0, &phase));
    EXPECT_EQ(phase, kSampleTime - 1.0 / 72000.0);
}

TEST(ToneGenerator, GoesOnWhereTheLastCallEnded) {
    std::vector<std::uint8_t> bytes(512);
    double phase = 0.0;
    EXPECT_TRUE(GenerateTone(bytes.data(), 100, 500.0, &phase));
    EXPECT_GT(phase, 0.0);
    EXPECT_TRUE(GenerateTone(bytes.data() + 200, 156, 500.0, &phase));
    EXPECT_EQ(Difference(Bytes(bytes), TonePeriod(500.0, 256)), "");
}

TEST(ToneGenerator, IsRightForEveryFrequencyOfTheSweepAndBeyond) {
    for (double frequency = 50.0; frequency < 100000.0; frequency += 50.0) {
        std::vector<std::uint8_t> bytes(512);
        double phase = 0.0;
        EXPECT_TRUE(GenerateTone(bytes.data(), 256, frequency, &phase));
        ASSERT_EQ(Difference(Bytes(bytes), TonePeriod(frequency, 256)), "") << frequency;
    }
}

TEST(ToneGenerator, FailsWithoutADestination) {
    double phase = 0.25;
    EXPECT_FALSE(GenerateTone(nullptr, 1, 500.0, &phase));
    EXPECT_FALSE(GenerateTone(nullptr, 0, 500.0, &phase));
    EXPECT_EQ(phase, 0.25);
}

TEST(ToneGenerator, FailsWithoutAPhase) {
    std::array<std::uint8_t, 2> bytes = {7, 7};
    EXPECT_FALSE(GenerateTone(bytes.data(), 1, 500.0, nullptr));
    EXPECT_FALSE(GenerateTone(bytes.data(), 0, 500.0, nullptr));
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{7, 7}));
}

TEST(ToneGenerator, DoesNothingForACountBelowOneAndSucceeds) {
    for (const std::int32_t count : {0, -1, INT32_MIN}) {
        std::array<std::uint8_t, 2> bytes = {7, 7};
        double phase = 0.25;
        EXPECT_TRUE(GenerateTone(bytes.data(), count, 500.0, &phase));
        EXPECT_EQ(phase, 0.25);
        EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{7, 7}));
    }
}

} // namespace
} // namespace tavrelin
