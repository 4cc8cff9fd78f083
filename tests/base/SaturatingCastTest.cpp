#include "base/SaturatingCast.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>

namespace tavrelin {
namespace {

// Compilers saturate a conversion that they work out themselves; the processor does not.
template <typename To, typename From>
To AtRunTime(From number) {
    const volatile From opaque = number;
    return SaturatingCast<To, From>(opaque);
}

template <typename From>
class SaturatingCastFrom : public testing::Test {
  protected:
    static constexpr From kNan = std::numeric_limits<From>::quiet_NaN();
    static constexpr From kInfinity = std::numeric_limits<From>::infinity();
    static From NextBelow(From number) { return std::nextafter(number, -kInfinity); }
};

using FloatingPoints = testing::Types<float, double>;
TYPED_TEST_SUITE(SaturatingCastFrom, FloatingPoints);

using Integers = std::tuple<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                            std::uint32_t, std::int64_t, std::uint64_t>;

// Calls `check` with a value of each integer type that a conversion may lead to.
template <typename Check>
void ForEachInteger(Check check) {
    std::apply([&](auto... zero) { (check(zero), ...); }, Integers{});
}

TYPED_TEST(SaturatingCastFrom, GivesZeroForNotANumber) {
    ForEachInteger([](auto zero) {
        using To = decltype(zero);
        EXPECT_EQ(AtRunTime<To>(TestFixture::kNan), zero);
        EXPECT_EQ(AtRunTime<To>(-TestFixture::kNan), zero);
    });
}

TYPED_TEST(SaturatingCastFrom, GivesTheEndsOfTheRangeForTheWidestNumbersAndInfinities) {
    for (const TypeParam wide :
         {std::numeric_limits<TypeParam>::max(), std::numeric_limits<TypeParam>::infinity()}) {
        ForEachInteger([&](auto zero) {
            using To = decltype(zero);
            EXPECT_EQ(AtRunTime<To>(wide), std::numeric_limits<To>::max());
            EXPECT_EQ(AtRunTime<To>(-wide), std::numeric_limits<To>::min());
        });
    }
}

// 2 to the number of value bits is the first number that does not fit; the one below it does.
TYPED_TEST(SaturatingCastFrom, SaturatesFromTheFirstNumberThatDoesNotFit) {
    ForEachInteger([](auto zero) {
        using To = decltype(zero);
        const TypeParam first = std::ldexp(TypeParam{1}, std::numeric_limits<To>::digits);
        const TypeParam last = TestFixture::NextBelow(first);
        EXPECT_EQ(AtRunTime<To>(first), std::numeric_limits<To>::max());
        EXPECT_EQ(AtRunTime<To>(last), static_cast<To>(std::trunc(last)));
    });
}

TYPED_TEST(SaturatingCastFrom, ReachesTheLowestNumberAndNoLower) {
    ForEachInteger([](auto zero) {
        using To = decltype(zero);
        const auto lowest = static_cast<TypeParam>(std::numeric_limits<To>::min());
        EXPECT_EQ(AtRunTime<To>(lowest), std::numeric_limits<To>::min());
        EXPECT_EQ(AtRunTime<To>(TestFixture::NextBelow(lowest)), std::numeric_limits<To>::min());
        EXPECT_EQ(AtRunTime<To>(lowest - TypeParam{1}), std::numeric_limits<To>::min());
    });
}

TYPED_TEST(SaturatingCastFrom, TruncatesTowardsZero) {
    EXPECT_EQ(AtRunTime<std::int32_t>(TypeParam{1.875}), 1);
    EXPECT_EQ(AtRunTime<std::int32_t>(TypeParam{-1.875}), -1);
    EXPECT_EQ(AtRunTime<std::int32_t>(TypeParam{0.96875}), 0);
    EXPECT_EQ(AtRunTime<std::int32_t>(TypeParam{-0.96875}), 0);
    EXPECT_EQ(AtRunTime<std::int32_t>(TypeParam{-0.0}), 0);
    EXPECT_EQ(AtRunTime<std::uint32_t>(TypeParam{1.875}), 1U);
    EXPECT_EQ(AtRunTime<std::int8_t>(TypeParam{-127.5}), -127);
    EXPECT_EQ(AtRunTime<std::int64_t>(std::numeric_limits<TypeParam>::denorm_min()), 0);
}

// As the board's processor converts them.
TEST(SaturatingCast, ConvertsAsTheBoardDoes) {
    EXPECT_EQ(AtRunTime<std::int32_t>(3.33e9F), 2147483647);
    EXPECT_EQ(AtRunTime<std::int32_t>(-3.33e9F), -2147483647 - 1);
    EXPECT_EQ(AtRunTime<std::uint32_t>(4294967296.0F), 4294967295U);
    EXPECT_EQ(AtRunTime<std::uint32_t>(4294967040.0F), 4294967040U);
    EXPECT_EQ(AtRunTime<std::int32_t>(2147483520.0F), 2147483520);
    EXPECT_EQ(AtRunTime<std::int32_t>(2147483647.9), 2147483647);
}

} // namespace
} // namespace tavrelin
