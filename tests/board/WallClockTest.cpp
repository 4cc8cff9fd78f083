#include "simulator/board/WallClock.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(WallClock, RunsWithBoardTimeAndCanBeSet) {
    WallClock clock(1'000);
    EXPECT_EQ(clock.at(milliseconds(1'500)), seconds(1'001) + milliseconds(500));
    clock.jump(-3'600);
    EXPECT_EQ(clock.at(0), seconds(-2'600));
}

TEST(WallClock, ReadsDateAndTime) {
    EXPECT_EQ(WallClock::parse("1970-01-01 00:00:00"), 0);
    EXPECT_EQ(WallClock::parse("2026-03-07 09:00:00"), WallClock::defaultStart);
    EXPECT_EQ(WallClock::parse("2024-02-29 23:59:59"), 1'709'251'199);
}

TEST(WallClock, RefusesEveryOtherText) {
    for (const char* text :
         {"", "2026-03-07", "2026-03-07 09:00", "2026-03-07 9:00:00", "2026-02-29 09:00:00",
          "2026-13-01 09:00:00", "2026-03-07 24:00:00", "2026-03-07 09:60:00",
          "2026-03-07 09:00:60", "2026-03-07 09:00:00 ", "1969-12-31 23:59:59"}) {
        EXPECT_FALSE(WallClock::parse(text)) << text;
    }
}

} // namespace
} // namespace sim
