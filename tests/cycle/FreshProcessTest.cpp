// What a process holds before its first reading and its first delivery. Each test runs its body in
// a process of its own, because other tests leave their traces in this one.

#include "tests/cycle/Instrument.h"

#include <cstdlib>

namespace tavrelin {
namespace {

class FreshProcessDeathTest : public testing::Test {
  protected:
    FreshProcessDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

bool SamplesZeroWithoutAnyResult() {
    Instrument instrument(Where(&sim::BoardSetup::converterWords, {kNothingNew}));
    instrument.Sample(0);
    return instrument.samples.front() == 0.0F;
}

TEST_F(FreshProcessDeathTest, ReadsZeroBeforeTheFirstResult) {
    EXPECT_EXIT(std::_Exit(SamplesZeroWithoutAnyResult() ? 0 : 1), testing::ExitedWithCode(0), "");
}

bool TurnsHalfATurnTo180Degrees() {
    Instrument instrument;
    instrument.Run({.Duration = 1000, .MotorAngle = 180.0F, .MotorSpeed = 180});
    return instrument.StepsTurned() == 800;
}

TEST_F(FreshProcessDeathTest, DeliversFromAngleZero) {
    EXPECT_EXIT(std::_Exit(TurnsHalfATurnTo180Degrees() ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace tavrelin
