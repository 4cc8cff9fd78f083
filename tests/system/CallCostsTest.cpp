// With the costs of calls, the instrument keeps the times that were measured on a Linux 6.1 for
// 32-bit ARM.

#include "tests/support/InstrumentRun.h"
#include "tests/system/EventLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

constexpr std::size_t kStartUp = 3; // Init, Prime and Search come before step 1

class CostOfCalls : public testing::Test {
  protected:
    static std::int64_t BeginOf(std::size_t step) {
        static const std::vector<Section> sections = SplitIntoSections(
            ParseEvents(RunInstrument({.measurements = 2, .ioCost = "board"}).events));
        return sections.at(kStartUp + step - 1).Begin();
    }
    /// Within two in a hundred of a measured time in milliseconds.
    static testing::Matcher<double> AsMeasured(double milliseconds) {
        return testing::DoubleNear(milliseconds, milliseconds / 50.0);
    }
    static double Duration(std::size_t step, std::size_t steps = 1) {
        return static_cast<double>(BeginOf(step + steps) - BeginOf(step)) / 1000.0;
    }
};

TEST_F(CostOfCalls, MakesStartUpAsLongAsMeasured) {
    EXPECT_THAT(static_cast<double>(BeginOf(1)) / 1000.0, AsMeasured(2865));
}

TEST_F(CostOfCalls, MakesAMeasurementAndItsStepsAsLongAsMeasured) {
    EXPECT_THAT(Duration(1, 17), AsMeasured(14'674));
    EXPECT_THAT(Duration(1), AsMeasured(1017)) << "mounts the card";
    EXPECT_THAT(Duration(11), AsMeasured(1809)) << "polls the home sensor";
    for (const std::size_t step : {2U, 3U, 4U, 5U, 6U, 7U, 10U, 12U, 13U, 14U, 15U}) {
        EXPECT_THAT(Duration(step), AsMeasured(1007)) << "step " << step;
    }
}

} // namespace
} // namespace tavrelin
