#include "tests/cycle/SensorHeld.h"

#include <string>
#include <utility>

namespace tavrelin {
namespace {

using sim::Microseconds;
using sim::Milliseconds;
using sim::Nanoseconds;

// Reaching the flag.

TEST_F(SensorHeld, WaitsForTheFlagForJustUnderTwoSeconds) {
    ReadingAt(Milliseconds(2000) - 1);
    FlagAt(Milliseconds(2000) + 1);
    NoFlagAt(Milliseconds(2100));
    EXPECT_TRUE(Search());
    EXPECT_EQ(took, Milliseconds(2100));
}

TEST_F(SensorHeld, FailsAfterTwoSecondsWithoutFlag) {
    ReadingAt(Milliseconds(2000));
    FlagAt(Milliseconds(2000) + 1);
    EXPECT_FALSE(Search());
    EXPECT_EQ(took, Milliseconds(2000));
}

TEST_F(SensorHeld, CountsTheTwoSecondsAcrossTheFullSecond) {
    board.Elapse(Milliseconds(700));
    ReadingAt(Milliseconds(2700) - 1);
    ReadingAt(Milliseconds(2700));
    EXPECT_FALSE(Search());
    EXPECT_EQ(took, Milliseconds(2000));
}

TEST_F(SensorHeld, FailsWhenTheClockIsSetForward) {
    board.Model().At(Milliseconds(500), [this] { board.Model().clock.Jump(3600); });
    EXPECT_FALSE(Search());
    EXPECT_EQ(took, Milliseconds(500));
}

TEST_F(SensorHeld, IsPatientWhenTheClockIsSetBack) {
    board.Model().At(Milliseconds(500), [this] { board.Model().clock.Jump(-3600); });
    FlagAt(Milliseconds(2500));
    NoFlagAt(Milliseconds(2600));
    EXPECT_TRUE(Search());
    EXPECT_EQ(took, Milliseconds(2600));
}

// Leaving the flag.

TEST_F(SensorHeld, MeasuresTheTimeOnTheFlagFromTheFlagOn) {
    FlagAt(Milliseconds(1900));
    NoFlagAt(Milliseconds(2800));
    EXPECT_TRUE(Search(360));
    EXPECT_EQ(took, Milliseconds(2800));
}

/// Degrees per second, and the milliseconds that they give to leave the flag.
class SensorHeldOnFlag : public SensorHeld,
                         public testing::WithParamInterface<std::pair<std::uint32_t, int>> {};

TEST_P(SensorHeldOnFlag, SucceedsUntilAReadingIsAtTheRevolutionLimit) {
    const auto [speed, milliseconds] = GetParam();
    const Nanoseconds limit = Milliseconds(milliseconds);
    for (const Nanoseconds early : {1, 0}) {
        const Nanoseconds flag = board.Now() + Milliseconds(10);
        FlagAt(flag);
        ReadingAt(flag + limit - early);
        NoFlagAt(flag + limit + 1);
        EXPECT_EQ(Search(speed), early == 1);
        EXPECT_EQ(board.Now(), flag + limit + early);
        board.Elapse(1);
    }
}

// A second for each whole time that the speed goes into a turn.
INSTANTIATE_TEST_SUITE_P(Speeds, SensorHeldOnFlag,
                         testing::Values(std::pair{360U, 1000}, std::pair{200U, 1000},
                                         std::pair{181U, 1000}, std::pair{180U, 2000},
                                         std::pair{121U, 2000}, std::pair{120U, 3000},
                                         std::pair{100U, 3000}, std::pair{50U, 7000}));

/// Reading the sensor takes 330 us here.
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
        for (const std::string& event : board.TimedEvents()) {
            if (event.find("pwm1/enable \"0\"") != std::string::npos) {
                return std::stol(event);
            }
        }
        return -1;
    }
};

TEST_F(SensorBouncing, WaitsUntilTheEdgeIsSteady) {
    const Nanoseconds edge = board.Now() + Milliseconds(20);
    FlagAt(board.Now() + Milliseconds(10));
    for (int bounce = 0; bounce < 5; ++bounce) {
        NoFlagAt(edge + Microseconds(200 * bounce));
        FlagAt(edge + Microseconds(200 * bounce + 100));
    }
    const Nanoseconds steady = edge + Microseconds(1000);
    NoFlagAt(steady);
    EXPECT_TRUE(Search());
    EXPECT_GE(StoppedAt(), steady / 1000 + 9 * 330) << "ten readings";
    EXPECT_LT(StoppedAt(), steady / 1000 + 12 * 330);
}

TEST_F(SensorBouncing, WaitsForASteadyEdgeWithoutAnyLimit) {
    FlagAt(board.Now() + Milliseconds(10));
    NoFlagAt(board.Now() + Milliseconds(20));
    FlagAt(board.Now() + Milliseconds(21));
    NoFlagAt(board.Now() + sim::Seconds(60));
    EXPECT_TRUE(Search());
    EXPECT_GE(took, sim::Seconds(60));
}

TEST_F(SensorBouncing, FailsWithoutItsLineAfterTwoSeconds) {
    board.TakeAway("/sys/class/gpio/export");
    ConsoleOf([&] { EXPECT_FALSE(Search()); });
    EXPECT_GE(StoppedAt(), 2000000);
    EXPECT_LT(StoppedAt(), 2030000);
}

} // namespace
} // namespace tavrelin
