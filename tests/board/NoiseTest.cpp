#include "simulator/board/Noise.h"

#include <cmath>
#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(Noise, IsTheSameForTheSameSeedAndAnotherForAnother) {
    Noise first(7);
    Noise second(7);
    Noise other(8);
    bool differs = false;
    for (int i = 0; i < 100; ++i) {
        const std::uint64_t number = first.Next();
        EXPECT_EQ(number, second.Next());
        differs = differs || number != other.Next();
    }
    EXPECT_TRUE(differs);
}

TEST(Noise, HasMeanZeroAndDeviationOne) {
    Noise noise(1);
    constexpr int count = 20'000;
    double sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < count; ++i) {
        const double number = noise.Normal();
        sum += number;
        squares += number * number;
    }
    // Three standard errors: 1 / sqrt(n) of the mean, 1 / sqrt(2 n) of the deviation.
    EXPECT_NEAR(sum / count, 0.0, 3.0 / std::sqrt(count));
    EXPECT_NEAR(std::sqrt(squares / count), 1.0, 3.0 / std::sqrt(2.0 * count));
}

} // namespace
} // namespace sim
