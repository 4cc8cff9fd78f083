// What a seed makes, and the clock on the wall.

#include "simulator/board/Noise.h"
#include "simulator/board/WallClock.h"

#include "tests/support/Text.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Noise;
using sim::WallClock;

TEST(Noise, IsTheSameForTheSameSeed) {
    Noise one(7);
    Noise same(7);
    Noise other(8);
    bool differs = false;
    for (int i = 0; i < 1000; ++i) {
        const double value = one.Normal();
        EXPECT_EQ(value, same.Normal());
        differs = differs || value != other.Normal();
    }
    EXPECT_TRUE(differs);
}

// Known numbers of the generator: another machine or library must not make others.
TEST(Noise, IsTheSameEverywhere) {
    Noise noise(1);
    EXPECT_EQ(noise.Next(), 0x910A2DEC89025CC1ULL);
    EXPECT_EQ(noise.Next(), 0xBEEB8DA1658EEC67ULL);
}

TEST(Noise, HasMeanZeroAndDeviationOne) {
    Noise noise(3);
    constexpr int count = 100'000;
    double sum = 0.0;
    double squares = 0.0;
    int beyondTwo = 0;
    for (int i = 0; i < count; ++i) {
        const double value = noise.Normal();
        sum += value;
        squares += value * value;
        beyondTwo += std::fabs(value) > 2.0 ? 1 : 0;
    }
    EXPECT_NEAR(sum / count, 0.0, 0.01);
    EXPECT_NEAR(std::sqrt(squares / count), 1.0, 0.01);
    EXPECT_NEAR(static_cast<double>(beyondTwo) / count, 0.0455, 0.004) << "as a bell has";
}

TEST(Noise, PicksEveryNumberBelowABound) {
    Noise noise(5);
    std::array<int, 6> picked{};
    for (int i = 0; i < 6000; ++i) {
        ++picked.at(static_cast<std::size_t>(noise.Below(6)));
    }
    for (const int times : picked) {
        EXPECT_NEAR(times, 1000, 150);
    }
}

TEST(WallClock, ReadsDatesAsUtc) {
    EXPECT_EQ(WallClock::Parse("1970-01-01 00:00:00"), 0);
    EXPECT_EQ(WallClock::Parse("2026-03-07 09:00:00"), WallClock::kDefaultStart);
    EXPECT_EQ(WallClock::Parse("2024-02-29 23:59:59"), 1'709'251'199);
    EXPECT_EQ(WallClock::Parse("2038-01-19 03:14:08"), 2'147'483'648);
}

TEST(WallClock, ReadsNothingElse) {
    for (const std::string& wrong :
         Split("|2026-03-07|2026-03-07 09:00|2026-03-07 09:00:00 | 2026-03-07 09:00:00|"
               "2026-3-07 09:00:00|2026-02-30 09:00:00|2025-02-29 09:00:00|2026-13-01 09:00:00|"
               "2026-00-01 09:00:00|2026-03-00 09:00:00|2026-03-07 24:00:00|2026-03-07 09:60:00|"
               "2026-03-07 09:00:60|2026-03-07 -9:00:00|1969-12-31 23:59:59|2026/03/07 09:00:00|"
               "2026-03-07 9:00:00|2026-03-07 09:00:0x|2026-03-07 09:00: 0|+026-03-07 09:00:00",
               '|')) {
        EXPECT_EQ(WallClock::Parse(wrong), std::nullopt) << wrong;
    }
}

TEST(WallClock, RunsWithBoardTimeAndCanBeSet) {
    WallClock clock(1000);
    EXPECT_EQ(clock.At(sim::Milliseconds(1500)), sim::Milliseconds(1'001'500));
    clock.Jump(-3600);
    EXPECT_EQ(clock.At(0), sim::Seconds(1000 - 3600));
}

} // namespace
} // namespace tavrelin
