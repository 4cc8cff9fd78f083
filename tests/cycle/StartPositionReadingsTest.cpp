#include "tests/cycle/SensorHeld.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavrelin {
namespace {

// Reaching the flag.

TEST_F(SensorHeld, FailsWhenTheFirstReadingIsOnTheFlag) {
    FlagAtReadings({1});
    EXPECT_FALSE(Search());
    EXPECT_EQ(readings, 1);
}

TEST_F(SensorHeld, FailsWhenOnlyTheTimerWasStartedOffTheFlag) {
    FlagAtReadings({2});
    EXPECT_FALSE(Search());
    EXPECT_EQ(readings, 2);
}

// 2 off the flag, 1 on it, 1 off it, 10 for the debouncing, the final check.
TEST_F(SensorHeld, SucceedsAfterOneTimedReadingOffTheFlag) {
    FlagAtReadings({3});
    EXPECT_TRUE(Search());
    EXPECT_EQ(readings, 15);
    EXPECT_EQ(took, 0);
}

TEST_F(SensorHeld, ForgetsThatItWasOffTheFlagWhenTheClockFails) {
    board.Fail("clock_gettime", "", EINVAL, 3);
    FlagAtReadings({4});
    EXPECT_FALSE(Search());
    EXPECT_EQ(readings, 4);
}

TEST_F(SensorHeld, GoesOnAfterAClockThatFailed) {
    board.Fail("clock_gettime", "", EINVAL, 3);
    FlagAtReadings({5});
    EXPECT_TRUE(Search());
}

TEST_F(SensorHeld, StartsItsTimerAtTheFirstClockThatDoesNotFail) {
    board.Fail("clock_gettime", "", EINVAL, 1);
    FlagAtReadings({3});
    EXPECT_FALSE(Search()) << "the second reading started the timer";
    board.StopFailing();
    board.Fail("clock_gettime", "", EINVAL, 1);
    FlagAtReadings({4});
    EXPECT_TRUE(Search());
}

TEST_F(SensorHeld, FailsWithoutAClock) {
    board.FailForever("clock_gettime", "", EINVAL);
    FlagAtReadings({15});
    EXPECT_FALSE(Search());
    EXPECT_EQ(readings, 15);
}

// Leaving the flag.

TEST_F(SensorHeld, LeavesNoTimeToLeaveTheFlagAbove360DegreesPerSecond) {
    FlagAtReadings({3, 4, 5});
    EXPECT_FALSE(Search(361));
    EXPECT_EQ(readings, 5) << "the fourth starts the timer, the fifth is timed";
    EXPECT_EQ(took, 0);
}

TEST_F(SensorHeld, FindsTheStartAbove360DegreesPerSecondWhenTheFlagIsLeftBeforeATimedReading) {
    FlagAtReadings({3, 4});
    EXPECT_TRUE(Search(361));
}

TEST_F(SensorHeld, TimesNothingOnTheFlagWhileTheClockFails) {
    FlagAtReadings({3, 4, 5, 6, 7, 8});
    board.FailForever("clock_gettime", "", EINVAL, 4); // after the timer was started once more
    EXPECT_TRUE(Search(361));
}

// Debouncing.

TEST_F(SensorHeld, CountsTheHighReadingsAnewAfterALowOne) {
    FlagAtReadings({3, 14}); // 14: the last of the ten
    EXPECT_TRUE(Search());
    EXPECT_EQ(readings, 25);
}

TEST_F(SensorHeld, DebouncesFromTheFirstReadingOn) {
    FlagAtReadings({3, 5, 6, 8});
    EXPECT_TRUE(Search());
    EXPECT_EQ(readings, 19) << "ten after the eighth, and the final check";
}

TEST_F(SensorHeld, FailsWhenTheFinalCheckIsOnTheFlag) {
    FlagAtReadings({3, 15});
    EXPECT_FALSE(Search());
    EXPECT_EQ(readings, 15);
}

} // namespace
} // namespace tavrelin
