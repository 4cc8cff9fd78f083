#include "log/CivilTime.h"

#include <gtest/gtest.h>

namespace tavrelin::daylog {
namespace {

TEST(CivilTime, CountsFrom1970) {
    EXPECT_EQ(DayBegin(1970, 1, 1), 0);
    EXPECT_EQ(DayBegin(2026, 3, 7), 1'772'841'600); // date -u -d 2026-03-07 +%s
    EXPECT_EQ(DayBegin(1969, 12, 31), -86'400);
    EXPECT_EQ(DayOf(-1), -86'400);
    EXPECT_EQ(DayOf(86'399), 0);
}

TEST(CivilTime, KnowsNoDateThatTheCalendarDoesNotHave) {
    EXPECT_TRUE(DayBegin(2028, 2, 29));
    EXPECT_FALSE(DayBegin(2026, 2, 29));
    EXPECT_FALSE(DayBegin(2026, 13, 1));
    EXPECT_FALSE(DayBegin(2026, 0, 1));
}

TEST(CivilTime, IsWrittenAndReadAsIso8601) {
    EXPECT_EQ(IsoText(1'772'841'600 + 9 * 3600 + 17), "2026-03-07T09:00:17");
    EXPECT_EQ(IsoText(-1), "1969-12-31T23:59:59");
    EXPECT_EQ(ParseIsoTime("2026-03-07T09:00:17"), 1'772'841'600 + 9 * 3600 + 17);
    EXPECT_EQ(ParseIsoTime("2026-03-07 09:05"), 1'772'841'600 + 9 * 3600 + 300);
    EXPECT_EQ(ParseIsoTime("2026-03-07"), 1'772'841'600);
}

TEST(CivilTime, RefusesEveryOtherText) {
    for (const char* text :
         {"", "2026", "2026-3-7", "2026-03-07T", "2026-03-07T09", "2026-03-07T24:00",
          "2026-03-07T09:60", "2026-03-07T09:00:60", "2026-03-07T09:00:17Z", "2026-02-30", "x"}) {
        EXPECT_FALSE(ParseIsoTime(text)) << text;
    }
}

} // namespace
} // namespace tavrelin::daylog
