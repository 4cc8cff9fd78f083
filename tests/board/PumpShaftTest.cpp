#include "simulator/board/PumpShaft.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

// 1600 steps a second: a turn a second.
constexpr Nanoseconds kPeriod = 625'000;

TEST(PumpShaft, StandsWithoutPulses) {
    const PumpShaft shaft;
    EXPECT_FALSE(shaft.Turning());
    EXPECT_EQ(shaft.StepsTurned(Seconds(10)), 0);
    EXPECT_EQ(shaft.NextFlagChange(0), kNever);
}

TEST(PumpShaft, TurnsOneStepPerPulse) {
    PumpShaft shaft;
    shaft.SetPulsePeriod(Milliseconds(100), kPeriod);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(100)), 0);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(100) + kPeriod - 1), 0);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(100) + kPeriod), 1);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(1100)), 1600);
}

TEST(PumpShaft, KeepsItsPlaceWhenThePulsesStop) {
    PumpShaft shaft;
    shaft.SetPulsePeriod(0, kPeriod);
    shaft.SetPulsePeriod(Milliseconds(500), 0);
    EXPECT_EQ(shaft.StepsTurned(Seconds(5)), 800);
}

TEST(PumpShaft, PassesAFlagOf67StepsOnceATurn) {
    PumpShaft shaft;
    shaft.SetPulsePeriod(0, kPeriod);
    const Nanoseconds leading = PumpShaft::kFlagFirstStep * kPeriod;
    const Nanoseconds trailing = leading + 67 * kPeriod;
    EXPECT_EQ(shaft.NextFlagChange(0), leading);
    EXPECT_FALSE(shaft.OnFlag(leading - 1));
    EXPECT_TRUE(shaft.OnFlag(leading));
    EXPECT_EQ(shaft.NextFlagChange(leading), trailing);
    EXPECT_TRUE(shaft.OnFlag(trailing - 1));
    EXPECT_FALSE(shaft.OnFlag(trailing));
    EXPECT_EQ(shaft.NextFlagChange(trailing), leading + Seconds(1));
}

TEST(PumpShaft, ShowsNoFlagToASensorThatIsBlind) {
    PumpShaft shaft(PumpShaft::kFlagFirstStep, false);
    shaft.SetPulsePeriod(0, kPeriod);
    EXPECT_FALSE(shaft.OnFlag(0));
    EXPECT_EQ(shaft.NextFlagChange(0), kNever);
}

} // namespace
} // namespace sim
