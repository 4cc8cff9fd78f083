// What a process holds before its first reading and its first delivery. Each test runs its body in
// a process of its own, because other tests leave their traces in this one.

#include "devices/Converter.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tavrelin {
namespace {

class FreshProcessDeathTest : public testing::Test {
  protected:
    FreshProcessDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

bool ReadsZeroWithoutAnyResult() {
    sim::Scenario scenario;
    scenario.board.converterWords = {kNothingNew};
    sim::SimulatedBoard board(scenario);
    const SpiDevice device;
    return doADCConversion(&device) == 0.0F;
}

TEST_F(FreshProcessDeathTest, ReadsZeroBeforeTheFirstResult) {
    EXPECT_EXIT(std::_Exit(ReadsZeroWithoutAnyResult() ? 0 : 1), testing::ExitedWithCode(0), "");
}

bool TurnsHalfATurnTo180Degrees() {
    Instrument instrument;
    instrument.Run({.angle = 180.0F, .speed = 180, .duration = 1000});
    return instrument.board.Model().shaft.StepsTurned(instrument.board.Now()) == 800;
}

TEST_F(FreshProcessDeathTest, DeliversFromAngleZero) {
    EXPECT_EXIT(std::_Exit(TurnsHalfATurnTo180Degrees() ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace tavrelin
