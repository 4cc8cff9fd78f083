#include "app/AbsorbanceCalculator.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace tavrelin {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Reference first, dark count second.
float AbsorbanceOf(float reference, float dark, float sample) {
    return AbsorbanceCalculator().Absorbance(reference, dark, sample);
}

TEST(AbsorbanceCalculator, TakesTheLogarithmOfTheDarkCorrectedRatio) {
    EXPECT_EQ(AbsorbanceOf(3020000.0F, 20000.0F, 320000.0F), 1.0F); // 3000000 to 300000
    EXPECT_EQ(AbsorbanceOf(3000000.0F, 20.0F, 3000000.0F), 0.0F);
}

TEST(AbsorbanceCalculator, KeepsTheReadingsItWasSetOrAskedAbout) {
    AbsorbanceCalculator calculator;
    calculator.SetDarkCount(20000.0F);
    calculator.SetReferenceReading(3020000.0F);
    calculator.SetSampleReading(320000.0F);
    EXPECT_EQ(calculator.Absorbance(), 1.0F);
    calculator.Absorbance(1010.0F, 10.0F, 20.0F);
    EXPECT_EQ(calculator.Absorbance(), 2.0F);
    calculator.SetSampleReading(110.0F);
    EXPECT_EQ(calculator.Absorbance(), 1.0F);
}

TEST(AbsorbanceCalculator, DividesInSinglePrecisionAndRoundsTheLogarithmToIt) {
    const float ratio = (3000001.0F - 20.0F) / (2340000.0F - 20.0F);
    EXPECT_EQ(AbsorbanceOf(3000001.0F, 20.0F, 2340000.0F),
              static_cast<float>(std::log10(static_cast<double>(ratio))));
}

TEST(AbsorbanceCalculator, GivesMinusOneWhenSampleEqualsDark) {
    EXPECT_EQ(AbsorbanceOf(3000000.0F, 20.0F, 20.0F), -1.0F);
    EXPECT_EQ(AbsorbanceOf(20.0F, 20.0F, 20.0F), -1.0F);
    EXPECT_EQ(AbsorbanceOf(kNaN, 20.0F, 20.0F), -1.0F);
    EXPECT_EQ(AbsorbanceOf(1.0F, 0.0F, -0.0F), -1.0F);
    EXPECT_EQ(AbsorbanceOf(1.0F, kInfinity, kInfinity), -1.0F);
}

TEST(AbsorbanceCalculator, LetsInfinitiesThrough) {
    EXPECT_EQ(AbsorbanceOf(20.0F, 20.0F, 3000000.0F), -kInfinity) << "reference as dark";
    EXPECT_EQ(AbsorbanceOf(20.0F, 20.0F, 10.0F), -kInfinity) << "a ratio of -0";
    EXPECT_EQ(AbsorbanceOf(kInfinity, 20.0F, 30.0F), kInfinity);
    EXPECT_EQ(AbsorbanceOf(40.0F, 20.0F, kInfinity), -kInfinity);
}

TEST(AbsorbanceCalculator, GivesNaNForANegativeRatioAndForNaN) {
    EXPECT_THAT(AbsorbanceOf(10.0F, 20.0F, 30.0F), testing::IsNan());
    EXPECT_THAT(AbsorbanceOf(kInfinity, 20.0F, kInfinity), testing::IsNan());
    EXPECT_THAT(AbsorbanceOf(kNaN, 20.0F, 30.0F), testing::IsNan());
    EXPECT_THAT(AbsorbanceOf(40.0F, kNaN, 30.0F), testing::IsNan());
    EXPECT_THAT(AbsorbanceOf(40.0F, 20.0F, kNaN), testing::IsNan());
}

TEST(AbsorbanceCalculator, AcceptsAnyNumberAndComplainsAboutNaNButKeepsIt) {
    using Setter = bool (AbsorbanceCalculator::*)(float);
    for (const Setter set :
         {&AbsorbanceCalculator::SetDarkCount, &AbsorbanceCalculator::SetReferenceReading,
          &AbsorbanceCalculator::SetSampleReading}) {
        AbsorbanceCalculator calculator;
        calculator.Absorbance(40.0F, 20.0F, 30.0F);
        for (const float number : {0.0F, -0.0F, -16777216.0F, kInfinity, -kInfinity}) {
            EXPECT_TRUE((calculator.*set)(number));
        }
        EXPECT_FALSE((calculator.*set)(kNaN));
        EXPECT_THAT(calculator.Absorbance(), testing::IsNan());
    }
}

} // namespace
} // namespace tavrelin
