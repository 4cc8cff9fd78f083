#include "log/Statistics.h"

#include "log/Flag.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tavrelin::daylog {
namespace {

TEST(Spread, IsThatOfASample) {
    Spread spread;
    for (const double number : {2.0, 4.0, 4.0, 4.0, 5.0, 5.0, 7.0, 9.0}) {
        spread.Add(number);
    }
    EXPECT_EQ(spread.Count(), 8U);
    EXPECT_DOUBLE_EQ(spread.Mean(), 5.0);
    EXPECT_DOUBLE_EQ(spread.StandardDeviation(), std::sqrt(32.0 / 7.0));
    EXPECT_EQ(spread.Least(), 2.0);
    EXPECT_EQ(spread.Most(), 9.0);
}

TEST(Spread, OfOneNumberIsNone) {
    Spread spread;
    spread.Add(-3.0);
    EXPECT_EQ(spread.Mean(), -3.0);
    EXPECT_EQ(spread.Most(), -3.0);
    EXPECT_EQ(spread.StandardDeviation(), 0.0);
}

TEST(Spread, KeepsSmallDifferencesOfLargeNumbers) {
    Spread spread;
    for (int i = 0; i < 1000; ++i) {
        spread.Add(1e9 + i % 2);
    }
    EXPECT_NEAR(spread.StandardDeviation(), 0.50025, 1e-5);
}

TEST(Trend, IsTheSlopeOfTheNearestLine) {
    Trend trend;
    for (const auto& [x, y] :
         {std::pair{0.0, 1.0}, {1.0, 3.0}, {2.0, 5.0}, {1.0, 4.0}, {1.0, 2.0}}) {
        trend.Add(x, y);
    }
    EXPECT_DOUBLE_EQ(trend.Slope(), 2.0);
}

TEST(Trend, OfOneMomentIsNone) {
    Trend trend;
    EXPECT_EQ(trend.Slope(), 0.0);
    trend.Add(3.0, 1.0);
    trend.Add(3.0, 2.0);
    EXPECT_EQ(trend.Slope(), 0.0);
}

TEST(Cycles, TellTheirMedianAndWhatIsLonger) {
    Cycles cycles(Cycles::kMany);
    std::int64_t begin = 0;
    for (const std::int64_t seconds : {17, 300, 16, 17, 40, 17}) {
        cycles.Add({seconds, begin, begin + seconds});
        begin += seconds;
    }
    EXPECT_EQ(cycles.Median(), 17);
    EXPECT_EQ(cycles.Longest(), 300);
    EXPECT_EQ(cycles.CountAbove(34), 2U);
    EXPECT_EQ(cycles.CountAbove(40), 1U);
    EXPECT_EQ(cycles.Above(34), (std::vector<Cycles::Span>{{300, 17, 317}, {40, 350, 390}}));
}

TEST(Cycles, HaveNoMedianWithoutAny) {
    EXPECT_EQ(Cycles().Median(), 0);
}

TEST(Cycles, KeepTheBeginOfTheLongestOnly) {
    Cycles cycles(Cycles::kMany);
    constexpr std::int64_t many = 5000;
    for (std::int64_t i = 0; i < many; ++i) {
        cycles.Add({i, i, 2 * i});
    }
    EXPECT_EQ(cycles.CountAbove(-1), 5000U);
    ASSERT_EQ(cycles.Above(-1).size(), Cycles::kMany);
    EXPECT_EQ(cycles.Above(-1).front().seconds, 4000);
}

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(FlagOfARecord, IsTheFirstThatHolds) {
    EXPECT_EQ(FlagOf({0.1, 171.482, 20000, 3e6, 2.3871e6}), Flag::None);
    EXPECT_EQ(FlagOf({-1, -1714.82, 20000, 3e6, kNan}), Flag::NotANumber);
    EXPECT_EQ(FlagOf({-kInfinity, -kInfinity, 20000, 3e6, 20000}), Flag::Infinite);
    EXPECT_EQ(FlagOf({-1, -1714.82, 20000, 3e6, 20000}), Flag::Negative);
    EXPECT_EQ(FlagOf({-1, -1, -1.67772e7, 3e6, 20000}), Flag::OutOfRange);
    EXPECT_EQ(FlagOf({0.1, 1, 20000, 1.67772e7, 20000}), Flag::OutOfRange);
    EXPECT_EQ(FlagOf({0.1, 1, 20000, 1.67771e7, 20000}), Flag::None);
    EXPECT_EQ(FlagOf({0.1, 0, -5, 3e6, -7}), Flag::None);
    EXPECT_STREQ(FlagText(Flag::None), "");
}

} // namespace
} // namespace tavrelin::daylog
