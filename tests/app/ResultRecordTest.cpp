#include "app/ResultRecord.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class ResultRecordText : public ::testing::Test {
  protected:
    const TimeZone utc_;
    const SimulatedBoard board_{{}, StartingAt("2024-03-07 09:41:10")};
};

TEST_F(ResultRecordText, HoldsTimeThreeEmptyFieldsAndFiveFigures) {
    EXPECT_EQ(ResultRecord({.absorbance = 0.107906F,
                            .chlorine = 185.04F,
                            .darkCount = 20.0F,
                            .reference = 3000000.0F,
                            .reactedSample = 2340000.0F}),
              "2024-03-07 09:41.10,,,0.107906,185.04,20,3e+06,2.34e+06\n");
}

TEST_F(ResultRecordText, ShowsNaNWithoutASign) {
    EXPECT_EQ(ResultRecord({.absorbance = -kNaN,
                            .chlorine = kNaN,
                            .darkCount = -kNaN,
                            .reference = 0.0F,
                            .reactedSample = -0.0F}),
              "2024-03-07 09:41.10,,,nan,nan,nan,0,-0\n");
}

TEST_F(ResultRecordText, ShowsInfinitiesAndTheSentinels) {
    EXPECT_EQ(ResultRecord({.absorbance = -1.0F,
                            .chlorine = -1714.8182F,
                            .darkCount = -16777216.0F,
                            .reference = kInfinity,
                            .reactedSample = -kInfinity}),
              "2024-03-07 09:41.10,,,-1,-1714.82,-1.67772e+07,inf,-inf\n");
}

TEST_F(ResultRecordText, HasSixSignificantDigitsWhateverTheSize) {
    EXPECT_EQ(ResultRecord({.absorbance = 0.0000123456789F,
                            .chlorine = 0.000123456789F,
                            .darkCount = 999999.0F,
                            .reference = 1000000.0F,
                            .reactedSample = 123456.5F}),
              "2024-03-07 09:41.10,,,1.23457e-05,0.000123457,999999,1e+06,123456\n");
}

} // namespace
} // namespace tavrelin
