// The pump's shaft by itself: steps, the flag, and when it passes the sensor.

#include "simulator/board/PumpShaft.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::kNever;
using sim::Microseconds;
using sim::Milliseconds;
using sim::PumpShaft;

constexpr sim::Nanoseconds kPulse = Microseconds(625); // one turn a second

TEST(PumpShaft, TurnsOneStepForEachWholePulse) {
    PumpShaft shaft({});
    EXPECT_FALSE(shaft.Turning());
    shaft.SetPulsePeriod(Milliseconds(5), kPulse);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(5)), 0);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(5) + kPulse - 1), 0);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(5) + kPulse), 1);
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(1005)), 1600);
    EXPECT_TRUE(shaft.Turning());
}

TEST(PumpShaft, StandsWithoutPulses) {
    PumpShaft shaft({});
    shaft.SetPulsePeriod(0, kPulse);
    shaft.SetPulsePeriod(10 * kPulse, 0);
    EXPECT_FALSE(shaft.Turning());
    EXPECT_EQ(shaft.StepsTurned(Milliseconds(5000)), 10);
    EXPECT_EQ(shaft.NextFlagChange(Milliseconds(5000)), kNever);
}

TEST(PumpShaft, KeepsItsStepsWhenThePulsesChange) {
    PumpShaft shaft({});
    shaft.SetPulsePeriod(0, kPulse);
    shaft.SetPulsePeriod(10 * kPulse, 2 * kPulse);
    EXPECT_EQ(shaft.StepsTurned(20 * kPulse), 15);
    shaft.SetPulsePeriod(20 * kPulse, 2 * kPulse);
    EXPECT_EQ(shaft.StepsTurned(21 * kPulse), 15) << "the same pulses go on";
    EXPECT_EQ(shaft.StepsTurned(22 * kPulse), 16);
}

TEST(PumpShaft, CarriesAFlagOf67StepsOnceATurn) {
    PumpShaft shaft({});
    shaft.SetPulsePeriod(0, kPulse);
    int seen = 0;
    for (int step = 0; step < 1600; ++step) {
        seen += shaft.OnFlag(step * kPulse) ? 1 : 0;
    }
    EXPECT_EQ(seen, 67) << "15 degrees of 0.225";
    EXPECT_FALSE(shaft.OnFlag(1199 * kPulse));
    EXPECT_TRUE(shaft.OnFlag(1200 * kPulse));
    EXPECT_TRUE(shaft.OnFlag(1266 * kPulse));
    EXPECT_FALSE(shaft.OnFlag(1267 * kPulse));
    EXPECT_TRUE(shaft.OnFlag(2800 * kPulse)) << "a turn later";
}

TEST(PumpShaft, KnowsWhenTheFlagPassesNext) {
    PumpShaft shaft({});
    shaft.SetPulsePeriod(0, kPulse);
    EXPECT_EQ(shaft.NextFlagChange(0), 1200 * kPulse);
    EXPECT_EQ(shaft.NextFlagChange(1200 * kPulse - 1), 1200 * kPulse);
    EXPECT_EQ(shaft.NextFlagChange(1200 * kPulse), 1267 * kPulse);
    EXPECT_EQ(shaft.NextFlagChange(1267 * kPulse), 2800 * kPulse);
    EXPECT_EQ(shaft.NextFlagChange(1700 * kPulse), 2800 * kPulse);
}

TEST(PumpShaft, MayStartOnTheFlag) {
    PumpShaft shaft({.onFlag = true});
    EXPECT_TRUE(shaft.OnFlag(0));
    EXPECT_EQ(shaft.StepsTurned(0), 0);
    shaft.SetPulsePeriod(0, kPulse);
    EXPECT_EQ(shaft.NextFlagChange(0), 66 * kPulse);
}

TEST(PumpShaft, MayHaveAFlagThatIsNeverSeen) {
    PumpShaft shaft({.flagSeen = false, .onFlag = true});
    EXPECT_FALSE(shaft.OnFlag(0));
    shaft.SetPulsePeriod(0, kPulse);
    EXPECT_EQ(shaft.NextFlagChange(0), kNever);
}

TEST(PumpShaft, TurnsForMonthsWithoutLosingAStep) {
    PumpShaft shaft({});
    shaft.SetPulsePeriod(0, kPulse);
    const sim::Nanoseconds month = sim::Seconds(30LL * 86'400);
    EXPECT_EQ(shaft.StepsTurned(month), 30LL * 86'400 * 1600);
    EXPECT_EQ(shaft.NextFlagChange(month), month + 1200 * kPulse);
}

} // namespace
} // namespace tavrelin
