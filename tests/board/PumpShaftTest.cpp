#include "simulator/board/PumpShaft.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

// 1600 steps a second: a turn a second.
constexpr Nanoseconds period = 625'000;

TEST(PumpShaft, StandsWithoutPulses) {
    const PumpShaft shaft;
    EXPECT_FALSE(shaft.turning());
    EXPECT_EQ(shaft.stepsTurned(seconds(10)), 0);
    EXPECT_EQ(shaft.nextFlagChange(0), never);
}

TEST(PumpShaft, TurnsOneStepPerPulse) {
    PumpShaft shaft;
    shaft.setPulsePeriod(milliseconds(100), period);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(100)), 0);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(100) + period - 1), 0);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(100) + period), 1);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(1100)), 1600);
}

TEST(PumpShaft, KeepsItsPlaceWhenThePulsesStop) {
    PumpShaft shaft;
    shaft.setPulsePeriod(0, period);
    shaft.setPulsePeriod(milliseconds(500), 0);
    EXPECT_EQ(shaft.stepsTurned(seconds(5)), 800);
}

TEST(PumpShaft, PassesAFlagOf67StepsOnceATurn) {
    PumpShaft shaft;
    shaft.setPulsePeriod(0, period);
    const Nanoseconds leading = PumpShaft::flagFirstStep * period;
    const Nanoseconds trailing = leading + 67 * period;
    EXPECT_EQ(shaft.nextFlagChange(0), leading);
    EXPECT_FALSE(shaft.onFlag(leading - 1));
    EXPECT_TRUE(shaft.onFlag(leading));
    EXPECT_EQ(shaft.nextFlagChange(leading), trailing);
    EXPECT_TRUE(shaft.onFlag(trailing - 1));
    EXPECT_FALSE(shaft.onFlag(trailing));
    EXPECT_EQ(shaft.nextFlagChange(trailing), leading + seconds(1));
}

TEST(PumpShaft, ShowsNoFlagToASensorThatIsBlind) {
    PumpShaft shaft(PumpShaft::flagFirstStep, false);
    shaft.setPulsePeriod(0, period);
    EXPECT_FALSE(shaft.onFlag(0));
    EXPECT_EQ(shaft.nextFlagChange(0), never);
}

} // namespace
} // namespace sim
