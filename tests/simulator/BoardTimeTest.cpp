// Clocks, sleeps and polls on board time.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include "tests/support/Worker.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::Microseconds;
using sim::Milliseconds;
using sim::Seconds;
using sim::SimulatedBoard;

timespec ClockOf(clockid_t clock) {
    timespec time{};
    EXPECT_EQ(::clock_gettime(clock, &time), 0);
    return time;
}

class BoardTime : public testing::Test {
  protected:
    SimulatedBoard board;
};
using Clocks = BoardTime;
using PollingALine = BoardTime;

TEST_F(BoardTime, PassesWithSleepsOnly) {
    const timespec span{1, 500'000'000};
    EXPECT_EQ(::nanosleep(&span, nullptr), 0);
    EXPECT_EQ(board.Now(), Milliseconds(1500));
    EXPECT_EQ(::usleep(250), 0);
    EXPECT_EQ(::sleep(2), 0U);
    EXPECT_EQ(::poll(nullptr, 0, 100), 0);
    EXPECT_EQ(::clock_nanosleep(CLOCK_MONOTONIC, 0, &span, nullptr), 0);
    EXPECT_EQ(board.Now(), Milliseconds(5100) + Microseconds(250));
}

TEST_F(BoardTime, AnAbsoluteSleepEndsAtItsMoment) {
    const timespec moment{3, 0};
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &moment, nullptr);
    EXPECT_EQ(board.Now(), Seconds(3));
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &moment, nullptr);
    EXPECT_EQ(board.Now(), Seconds(3)) << "a moment in the past is no sleep";
}

TEST_F(BoardTime, ASpanThatIsNoneIsRefused) {
    for (const timespec span : {timespec{-1, 0}, timespec{0, -1}, timespec{0, 1'000'000'000}}) {
        EXPECT_EQ(::nanosleep(&span, nullptr), -1);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(::clock_nanosleep(CLOCK_MONOTONIC, 0, &span, nullptr), EINVAL);
    }
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(BoardTime, AnInterruptedSleepTellsTheRest) {
    board.Fail("nanosleep", "", EINTR);
    const timespec span{2, 0};
    timespec rest{};
    EXPECT_EQ(::nanosleep(&span, &rest), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(rest.tv_sec, 1);
    EXPECT_EQ(board.Now(), Seconds(1));
}

TEST_F(Clocks, ShowTheWallAndTheTimeSinceTheStart) {
    EXPECT_EQ(::time(nullptr), sim::WallClock::kDefaultStart);
    board.Elapse(Milliseconds(2500));
    EXPECT_EQ(ClockOf(CLOCK_MONOTONIC).tv_sec, 2);
    EXPECT_EQ(ClockOf(CLOCK_MONOTONIC).tv_nsec, 500'000'000);
    EXPECT_EQ(ClockOf(CLOCK_REALTIME).tv_sec, sim::WallClock::kDefaultStart + 2);
    EXPECT_EQ(::time(nullptr), sim::WallClock::kDefaultStart + 2);
    timeval day{};
    ::gettimeofday(&day, nullptr);
    EXPECT_EQ(day.tv_usec, 500'000);
}

TEST(AClockThatIsSet, MovesOnTheWallAlone) {
    sim::Scenario scenario;
    scenario.board.events = {{Seconds(1), sim::WorldEvent::Kind::JumpClock, -3600, 0}};
    SimulatedBoard board(scenario);
    ::sleep(2);
    EXPECT_EQ(ClockOf(CLOCK_MONOTONIC).tv_sec, 2);
    EXPECT_EQ(::time(nullptr), sim::WallClock::kDefaultStart + 2 - 3600);
}

TEST_F(Clocks, CanBeMadeToFail) {
    board.Fail("clock_gettime", "", EINVAL);
    timespec time{};
    EXPECT_EQ(::clock_gettime(CLOCK_REALTIME, &time), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(board.Events().back(), "clock_gettime - EINVAL");
}

TEST_F(Clocks, ProcessorTimePassesWithEachLook) {
    const clock_t before = std::clock();
    EXPECT_EQ(std::clock() - before, 1);
    EXPECT_EQ(board.Now(), Microseconds(2));
}

TEST_F(Clocks, ALoopThatOnlyLooksAtOneEnds) {
    const time_t start = ::time(nullptr);
    while (::time(nullptr) < start + 2) {
    }
    EXPECT_GE(board.Now(), Seconds(2));
    EXPECT_LE(board.Now(), Seconds(2) + Milliseconds(1));
}

/// How far board time has come after so many reads of a line that does not change.
sim::Nanoseconds TimeOfReads(int count) {
    SimulatedBoard board;
    Store(kGpioExport, "7");
    const Descriptor value(LineFile("A7", "value"), O_RDONLY);
    for (int i = 0; i < count; ++i) {
        value.ReadAgain();
    }
    return board.Now();
}

TEST(PollsOfALine, AreFreeAtFirstAndThenCostMoreAndMore) {
    EXPECT_EQ(TimeOfReads(16), 0);
    EXPECT_EQ(TimeOfReads(17), Microseconds(20));
    EXPECT_EQ(TimeOfReads(18), Microseconds(60));
    EXPECT_EQ(TimeOfReads(22), Microseconds(20 + 40 + 80 + 160 + 320 + 640));
    EXPECT_EQ(TimeOfReads(26), Microseconds(20 * 1023));
    EXPECT_EQ(TimeOfReads(28), Microseconds(20 * 1023 + 32000)) << "16 milliseconds at most";
}

TEST_F(PollingALine, GoesOnWhileAnotherThreadSleeps) {
    Store(kGpioExport, "7");
    const Worker sleeper([] {
        for (int i = 0; i < 1000; ++i) {
            ::usleep(10);
        }
    });
    const Descriptor value(LineFile("A7", "value"), O_RDONLY);
    for (int i = 0; i < 28; ++i) {
        value.ReadAgain();
    }
    EXPECT_EQ(board.Now(), Microseconds(20 * 1023 + 32000));
}

TEST_F(PollingALine, NeverMissesTheMomentOfAChange) {
    Store(kGpioExport, "7");
    board.Model().At(Microseconds(7777), [&] { board.SetInput("A7", true); });
    const Descriptor value(LineFile("A7", "value"), O_RDONLY);
    while (value.ReadAgain() != "1\n") {
    }
    EXPECT_EQ(board.Now(), Microseconds(7777));
}

TEST(CallCosts, AreTakenWhenAskedFor) {
    sim::RunOptions options;
    options.ioCosts = true;
    SimulatedBoard board(sim::Scenario{}, options);
    ::access("/sys/class/gpio/export", F_OK);
    EXPECT_EQ(board.Now(), Microseconds(60));
    Store(kGpioExport, "7");
    EXPECT_EQ(board.Now(), Microseconds(60 + 140 + 80 + 50));
}

} // namespace
} // namespace tavrelin
