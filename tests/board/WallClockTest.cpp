#include "simulator/board/WallClock.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(WallClock, RunsWithBoardTimeAndCanBeSet) {
    WallClock clock(1'000);
    EXPECT_EQ(clock.At(Milliseconds(1'500)), Seconds(1'001) + Milliseconds(500));
    clock.Jump(-3'600);
    EXPECT_EQ(clock.At(0), Seconds(-2'600));
}

TEST(WallClock, ReadsDateAndTime) {
    EXPECT_EQ(WallClock::Parse("1970-01-01 00:00:00"), 0);
    EXPECT_EQ(WallClock::Parse("2026-03-07 09:00:00"), WallClock::kDefaultStart);
    EXPECT_EQ(WallClock::Parse("2024-02-29 23:59:59"), 1'709'251'199);
}

TEST(WallClock, RefusesEveryOtherText) {
    for (const char* text :
         {"", "2026-03-07", "2026-03-07 09:00", "2026-03-07 9:00:00", "2026-02-29 09:00:00",
          "2026-13-01 09:00:00", "2026-03-07 24:00:00", "2026-03-07 09:60:00",
          "2026-03-07 09:00:60", "2026-03-07 09:00:00 ", "1969-12-31 23:59:59"}) {
        EXPECT_FALSE(WallClock::Parse(text)) << text;
    }
}

} // namespace
} // namespace sim
