#include "tests/cycle/SensorHeld.h"

#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

/// Readings on the flag, from the first of the search on, and what comes of them. A search that
/// succeeds reads 2 off the flag, 1 on it, 1 off it, 10 for the debouncing and one for the check.
struct Readings {
    const char* name;
    std::vector<std::uint64_t> onFlag;
    bool found;
    int readings;
    std::uint32_t speed = 360;
};

void PrintTo(const Readings& readings, std::ostream* out) {
    *out << readings.name;
}

class SensorReadings : public SensorHeld, public testing::WithParamInterface<Readings> {};

TEST_P(SensorReadings, DecideTheSearch) {
    FlagAtReadings(GetParam().onFlag);
    EXPECT_EQ(Search(GetParam().speed), GetParam().found);
    EXPECT_EQ(readings, GetParam().readings);
}

INSTANTIATE_TEST_SUITE_P(
    , SensorReadings,
    testing::Values(
        Readings{"FirstOnTheFlag", {1}, false, 1},
        Readings{"OffTheFlagOnlyWhenTheTimerWasStarted", {2}, false, 2},
        Readings{"OffTheFlagOnceTimed", {3}, true, 15},
        // Above 360 degrees per second the first timed reading on the flag is one too many.
        Readings{"OnTheFlagTimedAbove360DegreesPerSecond", {3, 4, 5}, false, 5, 361},
        Readings{"OnTheFlagUntimedAbove360DegreesPerSecond", {3, 4}, true, 16, 361},
        Readings{"BouncingAtTheLastOfTheTen", {3, 14}, true, 25},
        Readings{"BouncingFromTheFirstOn", {3, 5, 6, 8}, true, 19},
        Readings{"OnTheFlagAtTheCheck", {3, 15}, false, 15}),
    [](const auto& instance) { return instance.param.name; });

// A clock that cannot be read.

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

TEST_F(SensorHeld, TimesNothingOnTheFlagWhileTheClockFails) {
    FlagAtReadings({3, 4, 5, 6, 7, 8});
    board.FailForever("clock_gettime", "", EINVAL, 4); // after the timer was started once more
    EXPECT_TRUE(Search(361));
}

} // namespace
} // namespace tavrelin
