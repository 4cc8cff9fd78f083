#include "app/ResultRecord.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavrelin {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

class ResultRecordText : public ::testing::Test {
  protected:
    const TimeZone utc_;
    const sim::SimulatedBoard board_{{}, StartingAt("2024-03-07 09:41:10")};
};

TEST_F(ResultRecordText, HoldsTimeThreeEmptyFieldsAndFiveFigures) {
    EXPECT_EQ(ResultRecord({.absorbance = 0.107906F,
                            .chlorine = 185.04F,
                            .darkCount = 20.0F,
                            .reference = 3000000.0F,
                            .reactedSample = 2340000.0F}),
              "2024-03-07 09:41.10,,,0.107906,185.04,20,3e+06,2.34e+06\n");
}

TEST_F(ResultRecordText, ShowsEachFigureInItsShortestSpelling) {
    EXPECT_EQ(ResultRecord({.absorbance = -kNaN,
                            .chlorine = -1714.8182F,
                            .darkCount = -0.0F,
                            .reference = std::numeric_limits<float>::infinity(),
                            .reactedSample = 0.0000123456789F}),
              "2024-03-07 09:41.10,,,nan,-1714.82,-0,inf,1.23457e-05\n");
}

} // namespace
} // namespace tavrelin
