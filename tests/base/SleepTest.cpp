#include "base/Sleep.h"

#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavrelin {
namespace {

using sim::Texts;

TEST(Sleep, LastsTheGivenMilliseconds) {
    sim::SimulatedBoard board;
    SleepMilliseconds(1999);
    EXPECT_EQ(board.Events(), (Texts{"sleep - 1999000 us"}));
}

// The board cuts a sleep in half when a signal comes.
TEST(Sleep, GoesOnForWhatIsLeftAfterEachSignal) {
    sim::SimulatedBoard board;
    board.Fail("nanosleep", "", EINTR, 1);
    board.Fail("nanosleep", "", EINTR, 2);
    SleepMilliseconds(1000);
    EXPECT_EQ(board.Events(), (Texts{"nanosleep - EINTR", "sleep - 500000 us", "nanosleep - EINTR",
                                     "sleep - 250000 us", "sleep - 250000 us"}));
    EXPECT_EQ(board.Now(), sim::Seconds(1));
}

TEST(Sleep, EndsAtAnyOtherFailure) {
    sim::SimulatedBoard board;
    board.FailForever("nanosleep", "", EFAULT);
    SleepMilliseconds(1000);
    EXPECT_EQ(board.Now(), sim::Milliseconds(500));
}

} // namespace
} // namespace tavrelin
