// The pump's shaft by itself: steps, the flag, and when it passes the sensor.

#include "simulator/board/PumpShaft.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::microseconds;
using sim::milliseconds;
using sim::never;
using sim::PumpShaft;

constexpr sim::Nanoseconds pulse = microseconds(625); // one turn a second

TEST(PumpShaft, TurnsOneStepForEachWholePulse) {
    PumpShaft shaft;
    EXPECT_FALSE(shaft.turning());
    shaft.setPulsePeriod(milliseconds(5), pulse);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(5)), 0);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(5) + pulse - 1), 0);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(5) + pulse), 1);
    EXPECT_EQ(shaft.stepsTurned(milliseconds(1005)), 1600);
    EXPECT_TRUE(shaft.turning());
}

TEST(PumpShaft, StandsWithoutPulses) {
    PumpShaft shaft;
    shaft.setPulsePeriod(0, pulse);
    shaft.setPulsePeriod(10 * pulse, 0);
    EXPECT_FALSE(shaft.turning());
    EXPECT_EQ(shaft.stepsTurned(milliseconds(5000)), 10);
    EXPECT_EQ(shaft.nextFlagChange(milliseconds(5000)), never);
}

TEST(PumpShaft, KeepsItsStepsWhenThePulsesChange) {
    PumpShaft shaft;
    shaft.setPulsePeriod(0, pulse);
    shaft.setPulsePeriod(10 * pulse, 2 * pulse);
    EXPECT_EQ(shaft.stepsTurned(20 * pulse), 15);
    shaft.setPulsePeriod(20 * pulse, 2 * pulse);
    EXPECT_EQ(shaft.stepsTurned(21 * pulse), 15) << "the same pulses go on";
    EXPECT_EQ(shaft.stepsTurned(22 * pulse), 16);
}

TEST(PumpShaft, CarriesAFlagOf67StepsOnceATurn) {
    PumpShaft shaft;
    shaft.setPulsePeriod(0, pulse);
    int seen = 0;
    for (int step = 0; step < 1600; ++step) {
        seen += shaft.onFlag(step * pulse) ? 1 : 0;
    }
    EXPECT_EQ(seen, 67) << "15 degrees of 0.225";
    EXPECT_FALSE(shaft.onFlag(1199 * pulse));
    EXPECT_TRUE(shaft.onFlag(1200 * pulse));
    EXPECT_TRUE(shaft.onFlag(1266 * pulse));
    EXPECT_FALSE(shaft.onFlag(1267 * pulse));
    EXPECT_TRUE(shaft.onFlag(2800 * pulse)) << "a turn later";
}

TEST(PumpShaft, KnowsWhenTheFlagPassesNext) {
    PumpShaft shaft;
    shaft.setPulsePeriod(0, pulse);
    EXPECT_EQ(shaft.nextFlagChange(0), 1200 * pulse);
    EXPECT_EQ(shaft.nextFlagChange(1200 * pulse - 1), 1200 * pulse);
    EXPECT_EQ(shaft.nextFlagChange(1200 * pulse), 1267 * pulse);
    EXPECT_EQ(shaft.nextFlagChange(1267 * pulse), 2800 * pulse);
    EXPECT_EQ(shaft.nextFlagChange(1700 * pulse), 2800 * pulse);
}

TEST(PumpShaft, MayStartOnTheFlag) {
    PumpShaft shaft(PumpShaft::flagFirstStep + 1);
    EXPECT_TRUE(shaft.onFlag(0));
    EXPECT_EQ(shaft.stepsTurned(0), 0);
    shaft.setPulsePeriod(0, pulse);
    EXPECT_EQ(shaft.nextFlagChange(0), 66 * pulse);
}

TEST(PumpShaft, MayHaveAFlagThatIsNeverSeen) {
    PumpShaft shaft(PumpShaft::flagFirstStep, false);
    EXPECT_FALSE(shaft.onFlag(0));
    shaft.setPulsePeriod(0, pulse);
    EXPECT_EQ(shaft.nextFlagChange(0), never);
}

TEST(PumpShaft, TurnsForMonthsWithoutLosingAStep) {
    PumpShaft shaft;
    shaft.setPulsePeriod(0, pulse);
    const sim::Nanoseconds month = sim::seconds(30LL * 86'400);
    EXPECT_EQ(shaft.stepsTurned(month), 30LL * 86'400 * 1600);
    EXPECT_EQ(shaft.nextFlagChange(month), month + 1200 * pulse);
}

} // namespace
} // namespace tavrelin
