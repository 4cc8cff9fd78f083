#include "app/AbsorbanceCalculator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tavrelin {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(AbsorbanceCalculator, TakesTheLogarithmOfTheDarkCorrectedRatio) {
    AbsorbanceCalculator calculator;
    calculator.SetDarkCount(20000.0F);
    calculator.SetReferenceReading(3020000.0F);
    calculator.SetSampleReading(320000.0F);
    EXPECT_EQ(calculator.Absorbance(), 1.0F); // 3000000 to 300000
}

TEST(AbsorbanceCalculator, TakesReferenceFirstAndDarkCountSecond) {
    AbsorbanceCalculator calculator;
    EXPECT_EQ(calculator.Absorbance(3020000.0F, 20000.0F, 320000.0F), 1.0F);
}

TEST(AbsorbanceCalculator, KeepsTheThreeReadingsItWasAskedAbout) {
    AbsorbanceCalculator calculator;
    calculator.Absorbance(1010.0F, 10.0F, 20.0F);
    EXPECT_EQ(calculator.Absorbance(), 2.0F);
    calculator.SetSampleReading(110.0F);
    EXPECT_EQ(calculator.Absorbance(), 1.0F);
}

TEST(AbsorbanceCalculator, DividesInSinglePrecisionAndRoundsTheLogarithmToIt) {
    AbsorbanceCalculator calculator;
    const float ratio = (3000001.0F - 20.0F) / (2340000.0F - 20.0F);
    EXPECT_EQ(calculator.Absorbance(3000001.0F, 20.0F, 2340000.0F),
              static_cast<float>(std::log10(static_cast<double>(ratio))));
}

TEST(AbsorbanceCalculator, GivesMinusOneWhenSampleEqualsDark) {
    AbsorbanceCalculator calculator;
    EXPECT_EQ(calculator.Absorbance(3000000.0F, 20.0F, 20.0F), -1.0F);
    EXPECT_EQ(calculator.Absorbance(20.0F, 20.0F, 20.0F), -1.0F);
    EXPECT_EQ(calculator.Absorbance(kNaN, 20.0F, 20.0F), -1.0F);
    EXPECT_EQ(calculator.Absorbance(1.0F, 0.0F, -0.0F), -1.0F);
    EXPECT_EQ(calculator.Absorbance(1.0F, kInfinity, kInfinity), -1.0F);
}

TEST(AbsorbanceCalculator, GivesZeroWhenReferenceEqualsSample) {
    AbsorbanceCalculator calculator;
    EXPECT_EQ(calculator.Absorbance(3000000.0F, 20.0F, 3000000.0F), 0.0F);
}

TEST(AbsorbanceCalculator, GivesMinusInfinityWhenReferenceEqualsDark) {
    AbsorbanceCalculator calculator;
    EXPECT_EQ(calculator.Absorbance(20.0F, 20.0F, 3000000.0F), -kInfinity);
    EXPECT_EQ(calculator.Absorbance(20.0F, 20.0F, 10.0F), -kInfinity); // ratio -0
}

TEST(AbsorbanceCalculator, GivesNaNForANegativeRatio) {
    AbsorbanceCalculator calculator;
    EXPECT_TRUE(std::isnan(calculator.Absorbance(10.0F, 20.0F, 30.0F)));
}

TEST(AbsorbanceCalculator, GivesNaNForAReadingThatIsNaN) {
    AbsorbanceCalculator calculator;
    EXPECT_TRUE(std::isnan(calculator.Absorbance(kNaN, 20.0F, 30.0F)));
    EXPECT_TRUE(std::isnan(calculator.Absorbance(40.0F, kNaN, 30.0F)));
    EXPECT_TRUE(std::isnan(calculator.Absorbance(40.0F, 20.0F, kNaN)));
}

TEST(AbsorbanceCalculator, LetsInfiniteReadingsThrough) {
    AbsorbanceCalculator calculator;
    EXPECT_EQ(calculator.Absorbance(kInfinity, 20.0F, 30.0F), kInfinity);
    EXPECT_EQ(calculator.Absorbance(40.0F, 20.0F, kInfinity), -kInfinity);
    EXPECT_TRUE(std::isnan(calculator.Absorbance(kInfinity, 20.0F, kInfinity)));
}

TEST(AbsorbanceCalculator, AcceptsAnyNumberAsAReading) {
    AbsorbanceCalculator calculator;
    for (const float number : {0.0F, -0.0F, -16777216.0F, kInfinity, -kInfinity}) {
        EXPECT_TRUE(calculator.SetDarkCount(number));
        EXPECT_TRUE(calculator.SetReferenceReading(number));
        EXPECT_TRUE(calculator.SetSampleReading(number));
    }
}

TEST(AbsorbanceCalculator, ComplainsAboutNaNButKeepsIt) {
    using Setter = bool (AbsorbanceCalculator::*)(float);
    for (const Setter set :
         {&AbsorbanceCalculator::SetDarkCount, &AbsorbanceCalculator::SetReferenceReading,
          &AbsorbanceCalculator::SetSampleReading}) {
        AbsorbanceCalculator calculator;
        calculator.Absorbance(40.0F, 20.0F, 30.0F);
        EXPECT_FALSE((calculator.*set)(kNaN));
        EXPECT_TRUE(std::isnan(calculator.Absorbance()));
    }
}

} // namespace
} // namespace tavrelin
