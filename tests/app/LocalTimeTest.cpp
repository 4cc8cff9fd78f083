#include "storage/LocalTime.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/app/BoardClock.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;

TEST(LocalTime, SeparatesMinutesAndSecondsByAFullStop) {
    const TimeZone utc;
    const SimulatedBoard board({}, StartingAt("2024-03-07 09:05:02"));
    EXPECT_EQ(TimestampText(), "2024-03-07 09:05.02");
}

TEST(LocalTime, PadsHoursMinutesAndSecondsToTwoDigits) {
    const TimeZone utc;
    const SimulatedBoard board({}, StartingAt("2026-01-01 07:03:05"));
    EXPECT_EQ(TimestampText(), "2026-01-01 07:03.05");
}

TEST(LocalTime, FollowsTheClockFromOneYearToTheNext) {
    const TimeZone utc;
    SimulatedBoard board({}, StartingAt("2026-12-31 23:59:59"));
    EXPECT_EQ(TimestampText(), "2026-12-31 23:59.59");
    EXPECT_EQ(DateText(), "2026-12-31");
    board.elapse(sim::seconds(1));
    EXPECT_EQ(TimestampText(), "2027-01-01 00:00.00");
    EXPECT_EQ(DateText(), "2027-01-01");
}

TEST(LocalTime, IsThatOfTheTimeZoneNotOfGreenwich) {
    const TimeZone zone("XST-5:30");
    const SimulatedBoard board({}, StartingAt("2024-02-28 20:00:00"));
    EXPECT_EQ(TimestampText(), "2024-02-29 01:30.00");
    EXPECT_EQ(DateText(), "2024-02-29");
}

TEST(LocalTime, OutlivesTheLastSecondOfA32BitClock) {
    const TimeZone utc;
    SimulatedBoard board({}, StartingAt("2038-01-19 03:14:07"));
    board.elapse(sim::seconds(1));
    EXPECT_EQ(TimestampText(), "2038-01-19 03:14.08");
}

} // namespace
} // namespace tavrelin
