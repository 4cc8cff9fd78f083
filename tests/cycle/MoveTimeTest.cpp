#include "cycle/ReagentDelivery.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace tavrelin {
namespace {

constexpr std::uint32_t kNoLimit = std::numeric_limits<std::uint32_t>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(MoveTime, IsCappedByTheStepsDuration) {
    EXPECT_EQ(MoveTime(360.0F, 0, 200), 0U);
    EXPECT_EQ(MoveTime(360.0F, 1000, 200), 1000U);
    EXPECT_EQ(MoveTime(360.0F, 1799, 200), 1799U);
    EXPECT_EQ(MoveTime(360.0F, 1800, 200), 1800U);
    EXPECT_EQ(MoveTime(360.0F, 5000, 200), 1800U);
}

TEST(MoveTime, IsTruncatedToWholeMilliseconds) {
    EXPECT_EQ(MoveTime(200.9F, kNoLimit, 200), 1004U); // 1004.5
    EXPECT_EQ(MoveTime(199.9F, kNoLimit, 200), 999U);  // 999.5
    EXPECT_EQ(MoveTime(1.0F, kNoLimit, 3), 333U);      // 333.33
}

TEST(MoveTime, OfASecondOrMoreIsAngleBySpeedTimesAThousandInSinglePrecision) {
    EXPECT_EQ(MoveTime(7.0F, kNoLimit, 1), 7000U); // 6999 in the other order
    EXPECT_EQ(MoveTime(30.0F, kNoLimit, 1), 30000U);
    EXPECT_EQ(MoveTime(163.0F, kNoLimit, 5), 32599U); // 32600 in the other order or with doubles
    EXPECT_EQ(MoveTime(321.0F, kNoLimit, 20), 16049U);
}

TEST(MoveTime, BelowASecondIsAThousandByTheirInverseInSinglePrecision) {
    EXPECT_EQ(MoveTime(7.0F, kNoLimit, 8), 874U); // 875 in the other order or with doubles
    EXPECT_EQ(MoveTime(9.0F, kNoLimit, 10), 899U);
    EXPECT_EQ(MoveTime(90.0F, 501, 180), 500U);
    EXPECT_EQ(MoveTime(90.0F, 499, 180), 499U);
}

// 200.5 counts as 200 and so as a second or more; 7.9 counts as 7, less than 8.
TEST(MoveTime, TakesWholeDegreesToTellTheTwo) {
    EXPECT_EQ(MoveTime(200.5F, kNoLimit, 200), 1002U);
    EXPECT_EQ(MoveTime(7.9F, kNoLimit, 8), 987U);
    EXPECT_EQ(MoveTime(1.0F, kNoLimit, 1), 1000U);
}

TEST(MoveTime, IsZeroForLessThanADegree) {
    EXPECT_EQ(MoveTime(0.99F, kNoLimit, 1), 0U);
    EXPECT_EQ(MoveTime(0.0F, kNoLimit, 200), 0U);
    EXPECT_EQ(MoveTime(-0.0F, kNoLimit, 200), 0U);
    EXPECT_EQ(MoveTime(-90.0F, kNoLimit, 1), 0U);
    EXPECT_EQ(MoveTime(-kInfinity, kNoLimit, 1), 0U);
}

TEST(MoveTime, IsZeroForAnAngleThatIsNotANumber) {
    EXPECT_EQ(MoveTime(kNan, kNoLimit, 200), 0U);
}

TEST(MoveTime, IsZeroAtSpeedZero) {
    EXPECT_EQ(MoveTime(kNan, kNoLimit, 0), 0U);
    EXPECT_EQ(MoveTime(0.0F, kNoLimit, 0), 0U);
    EXPECT_EQ(MoveTime(360.0F, kNoLimit, 0), 0U);
    EXPECT_EQ(MoveTime(-360.0F, kNoLimit, 0), 0U);
    EXPECT_EQ(MoveTime(kInfinity, kNoLimit, 0), 0U);
}

TEST(MoveTime, SaturatesAtAllOnes) {
    EXPECT_EQ(MoveTime(1e30F, kNoLimit, 1), kNoLimit);
    EXPECT_EQ(MoveTime(kInfinity, kNoLimit, 200), kNoLimit);
    EXPECT_EQ(MoveTime(4294968.0F, kNoLimit, 1), kNoLimit); // just beyond 32 bits
    EXPECT_EQ(MoveTime(4294967.0F, kNoLimit, 1), 4294967040U);
    EXPECT_EQ(MoveTime(1e30F, 1000, 1), 1000U);
    EXPECT_EQ(MoveTime(1e30F, kNoLimit, kNoLimit), kNoLimit);
}

} // namespace
} // namespace tavrelin
