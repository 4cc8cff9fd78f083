#include "app/ChlorineCalculator.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace tavrelin {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kSlope = 1714.8182373046875F; // concentration per absorbance

struct Readings {
    float reference;
    float dark;
    float sample;
};

bool IsSameNumber(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

// Repeatable numbers from all over the range of a float: small and large, of both signs.
class AnyNumbers {
  public:
    float Next() { return std::bit_cast<float>(static_cast<std::uint32_t>(numbers_())); }
    float NextReading() {
        const float number = Next();
        return std::isfinite(number) ? std::fmod(number, 16777216.0F) : 20.0F;
    }

  private:
    std::mt19937 numbers_{47};
};

void ExpectSlopeTimesAbsorbance(const Readings& readings) {
    AbsorbanceCalculator absorbance;
    ChlorineCalculator chlorine;
    chlorine.SetDarkCount(readings.dark);
    chlorine.SetReferenceReading(readings.reference);
    chlorine.SetSampleReading(readings.sample);
    const float expected =
        absorbance.Absorbance(readings.reference, readings.dark, readings.sample) * kSlope;
    EXPECT_PRED2(IsSameNumber, chlorine.ChlorineConcentration(), expected);
    if (!std::isnan(readings.dark + readings.reference + readings.sample)) {
        EXPECT_PRED2(IsSameNumber,
                     ChlorineCalculator().ChlorineConcentration(readings.reference, readings.dark,
                                                                readings.sample),
                     expected);
    }
}

TEST(ChlorineCalculator, GivesSlopeTimesAbsorbanceToTheLastBit) {
    AnyNumbers numbers;
    for (int i = 0; i < 100000; ++i) {
        ExpectSlopeTimesAbsorbance({.reference = numbers.NextReading(),
                                    .dark = numbers.NextReading(),
                                    .sample = numbers.NextReading()});
        ExpectSlopeTimesAbsorbance(
            {.reference = numbers.Next(), .dark = numbers.Next(), .sample = numbers.Next()});
    }
}

TEST(ChlorineCalculator, GivesSlopeTimesAbsorbanceAtTheEdgesOfTheRange) {
    constexpr std::array edges = {0.0F,  -0.0F,  20.0F,     16777215.0F, -16777216.0F, 1e-45F,
                                  3e38F, -3e38F, kInfinity, -kInfinity,  kNaN};
    for (const float reference : edges) {
        for (const float dark : edges) {
            for (const float sample : edges) {
                ExpectSlopeTimesAbsorbance(
                    {.reference = reference, .dark = dark, .sample = sample});
            }
        }
    }
}

float ConcentrationOf(float reference, float dark, float sample) {
    return ChlorineCalculator().ChlorineConcentration(reference, dark, sample);
}

TEST(ChlorineCalculator, TakesReferenceFirstAndDarkCountSecond) {
    EXPECT_EQ(ConcentrationOf(3020000.0F, 20000.0F, 320000.0F), kSlope);
}

TEST(ChlorineCalculator, GivesMinusTheSlopeWhenSampleEqualsDark) {
    EXPECT_EQ(ConcentrationOf(3000000.0F, 20.0F, 20.0F), -kSlope);
}

TEST(ChlorineCalculator, GivesZeroForAReadingThatIsNaN) {
    EXPECT_EQ(ConcentrationOf(40.0F, kNaN, 30.0F), 0.0F);
    EXPECT_EQ(ConcentrationOf(kNaN, 20.0F, 30.0F), 0.0F);
    EXPECT_EQ(ConcentrationOf(40.0F, 20.0F, kNaN), 0.0F);
    // Also where a calculation would take the short way out.
    EXPECT_EQ(ConcentrationOf(kNaN, 20.0F, 20.0F), 0.0F);
}

TEST(ChlorineCalculator, ChecksDarkCountThenReferenceThenSampleAndStopsAtTheFirstNaN) {
    ChlorineCalculator calculator;
    calculator.ChlorineConcentration(1000.0F, 0.0F, 10.0F);
    calculator.ChlorineConcentration(500.0F, kNaN, 50.0F); // only the dark count was taken over
    calculator.SetDarkCount(0.0F);
    EXPECT_EQ(calculator.ChlorineConcentration(), 2.0F * kSlope); // 1000 to 10

    calculator.ChlorineConcentration(kNaN, 1.0F, 50.0F); // dark count and reference
    calculator.SetReferenceReading(91.0F);
    EXPECT_EQ(calculator.ChlorineConcentration(), kSlope); // 90 to 9
}

TEST(ChlorineCalculator, IsCopiedWithItsReadings) {
    ChlorineCalculator original;
    original.ChlorineConcentration(1000.0F, 0.0F, 10.0F);
    ChlorineCalculator copy;
    copy = original;
    original.SetSampleReading(100.0F);
    EXPECT_EQ(copy.ChlorineConcentration(), 2.0F * kSlope);
    const ChlorineCalculator& itself = copy;
    copy = itself;
    EXPECT_EQ(copy.ChlorineConcentration(), 2.0F * kSlope);
}

} // namespace
} // namespace tavrelin
