#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace tavrelin {
namespace {

using sim::microseconds;
using sim::milliseconds;
using sim::Nanoseconds;
using sim::SimulatedBoard;

constexpr const char* kSensorValue = "/sys/class/gpio/pioB18/value";

/// A search whose sensor line the test holds: off the flag, until the test puts the flag there.
class SensorHeld : public testing::Test {
  protected:
    explicit SensorHeld(const sim::RunOptions& options = {}) : instrument({}, options) {
        board.setInput("B18", true);
    }

    /// The flag is in the sensor at these readings of it, counted from 1 through both phases, the
    /// debouncing and the final check: a level that cannot be opened reads as low.
    void FlagAtReadings(const std::vector<std::uint64_t>& ordinals) {
        for (const std::uint64_t ordinal : ordinals) {
            board.fail("open", kSensorValue, EACCES, ordinal);
        }
    }
    void FlagAt(Nanoseconds moment) {
        board.board().at(moment, [this] { board.setInput("B18", false); });
    }
    void NoFlagAt(Nanoseconds moment) {
        board.board().at(moment, [this] { board.setInput("B18", true); });
    }
    /// Has the sensor read at this moment too: polling waits at most until something happens.
    void ReadingAt(Nanoseconds moment) {
        board.board().at(moment, [] {});
    }

    bool Search(std::uint32_t speed = 360) {
        board.forget();
        const Nanoseconds begin = board.now();
        const bool found = instrument.cycle.doFindStartPosition(speed);
        took = board.now() - begin;
        readings = CountOf(board, "read B18/value") + CountOf(board, "/value EACCES");
        EXPECT_FALSE(board.channel(1).enabled);
        EXPECT_FALSE(board.line("A2").level || board.line("A4").level);
        EXPECT_FALSE(board.line("B18").exported);
        return found;
    }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
    Nanoseconds took = 0;
    int readings = 0;
};

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
    board.fail("clock_gettime", "", EINVAL, 3);
    FlagAtReadings({4});
    EXPECT_FALSE(Search());
    EXPECT_EQ(readings, 4);
}

TEST_F(SensorHeld, GoesOnAfterAClockThatFailed) {
    board.fail("clock_gettime", "", EINVAL, 3);
    FlagAtReadings({5});
    EXPECT_TRUE(Search());
}

TEST_F(SensorHeld, StartsItsTimerAtTheFirstClockThatDoesNotFail) {
    board.fail("clock_gettime", "", EINVAL, 1);
    FlagAtReadings({3});
    EXPECT_FALSE(Search()) << "the second reading started the timer";
    board.stopFailing();
    board.fail("clock_gettime", "", EINVAL, 1);
    FlagAtReadings({4});
    EXPECT_TRUE(Search());
}

TEST_F(SensorHeld, FailsWithoutAClock) {
    board.failForever("clock_gettime", "", EINVAL);
    FlagAtReadings({15});
    EXPECT_FALSE(Search());
    EXPECT_EQ(readings, 15);
}

TEST_F(SensorHeld, WaitsForTheFlagForJustUnderTwoSeconds) {
    ReadingAt(milliseconds(2000) - 1);
    FlagAt(milliseconds(2000) + 1);
    NoFlagAt(milliseconds(2100));
    EXPECT_TRUE(Search());
    EXPECT_EQ(took, milliseconds(2100));
}

TEST_F(SensorHeld, FailsAfterTwoSecondsWithoutFlag) {
    ReadingAt(milliseconds(2000));
    FlagAt(milliseconds(2000) + 1);
    EXPECT_FALSE(Search());
    EXPECT_EQ(took, milliseconds(2000));
}

TEST_F(SensorHeld, CountsTheTwoSecondsAcrossTheFullSecond) {
    board.elapse(milliseconds(700));
    ReadingAt(milliseconds(2700) - 1);
    ReadingAt(milliseconds(2700));
    EXPECT_FALSE(Search());
    EXPECT_EQ(took, milliseconds(2000));
}

TEST_F(SensorHeld, FailsWhenTheClockIsSetForward) {
    board.board().at(milliseconds(500), [this] { board.board().clock.jump(3600); });
    EXPECT_FALSE(Search());
    EXPECT_EQ(took, milliseconds(500));
}

TEST_F(SensorHeld, IsPatientWhenTheClockIsSetBack) {
    board.board().at(milliseconds(500), [this] { board.board().clock.jump(-3600); });
    FlagAt(milliseconds(2500));
    NoFlagAt(milliseconds(2600));
    EXPECT_TRUE(Search());
    EXPECT_EQ(took, milliseconds(2600));
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
    board.failForever("clock_gettime", "", EINVAL, 4); // after the timer was started once more
    EXPECT_TRUE(Search(361));
}

TEST_F(SensorHeld, MeasuresTheTimeOnTheFlagFromTheFlagOn) {
    FlagAt(milliseconds(1900));
    NoFlagAt(milliseconds(2800));
    EXPECT_TRUE(Search(360));
    EXPECT_EQ(took, milliseconds(2800));
}

struct RevolutionLimit {
    std::uint32_t speed;
    int milliseconds;
};

class SensorHeldOnFlag : public SensorHeld, public testing::WithParamInterface<RevolutionLimit> {};

TEST_P(SensorHeldOnFlag, FailsWhenTheRevolutionLimitIsReached) {
    const Nanoseconds limit = milliseconds(GetParam().milliseconds);
    FlagAt(milliseconds(10));
    ReadingAt(milliseconds(10) + limit);
    NoFlagAt(milliseconds(10) + limit + 1);
    EXPECT_FALSE(Search(GetParam().speed));
    EXPECT_EQ(took, milliseconds(10) + limit);
}

TEST_P(SensorHeldOnFlag, SucceedsJustBeforeTheRevolutionLimitIsReached) {
    const Nanoseconds limit = milliseconds(GetParam().milliseconds);
    FlagAt(milliseconds(10));
    ReadingAt(milliseconds(10) + limit - 1);
    NoFlagAt(milliseconds(10) + limit + 1);
    EXPECT_TRUE(Search(GetParam().speed));
    EXPECT_EQ(took, milliseconds(10) + limit + 1);
}

// A second for each whole time that the speed goes into a turn.
INSTANTIATE_TEST_SUITE_P(Speeds, SensorHeldOnFlag,
                         testing::Values(RevolutionLimit{360, 1000}, RevolutionLimit{200, 1000},
                                         RevolutionLimit{181, 1000}, RevolutionLimit{180, 2000},
                                         RevolutionLimit{121, 2000}, RevolutionLimit{120, 3000},
                                         RevolutionLimit{100, 3000}, RevolutionLimit{50, 7000}));

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

/// Reading the sensor takes 42 us here.
class SensorBouncing : public SensorHeld {
  protected:
    SensorBouncing() : SensorHeld(WithCosts()) {}

    static sim::RunOptions WithCosts() {
        sim::RunOptions options;
        options.ioCosts = true;
        return options;
    }

    /// When the pump's pulses were switched off, in us.
    long StoppedAt() {
        for (const std::string& event : board.timedEvents()) {
            if (event.find("pwm1/enable \"0\"") != std::string::npos) {
                return std::stol(event);
            }
        }
        return -1;
    }
};

TEST_F(SensorBouncing, WaitsUntilTheEdgeIsSteady) {
    const Nanoseconds edge = board.now() + milliseconds(20);
    FlagAt(board.now() + milliseconds(10));
    for (int bounce = 0; bounce < 5; ++bounce) {
        NoFlagAt(edge + microseconds(200 * bounce));
        FlagAt(edge + microseconds(200 * bounce + 100));
    }
    const Nanoseconds steady = edge + microseconds(1000);
    NoFlagAt(steady);
    EXPECT_TRUE(Search());
    EXPECT_GE(StoppedAt(), steady / 1000 + 9 * 42) << "ten readings";
    EXPECT_LT(StoppedAt(), steady / 1000 + 12 * 42);
}

TEST_F(SensorBouncing, FailsWithoutItsLineAfterTwoSeconds) {
    board.takeAway("/sys/class/gpio/export");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Search());
    testing::internal::GetCapturedStderr();
    EXPECT_GE(StoppedAt(), 2000000);
    EXPECT_LT(StoppedAt(), 2010000);
}

} // namespace
} // namespace tavrelin
