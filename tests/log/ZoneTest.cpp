#include "log/Zone.h"

#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

namespace tavrelin::daylog {
namespace {

std::string At(ZonedClock& clock, const char* local) {
    return IsoText(clock.At(*ParseIsoTime(local)));
}

class Zoned : public testing::Test {
  protected:
    void Use(const std::string& name) { ASSERT_TRUE(SetZone(name)) << name; }

    Environment before_{"TZ", "UTC"};
    ZonedClock clock_;
};

TEST_F(Zoned, TimesHaveTheOffsetOfTheirSeason) {
    Use("Europe/Berlin");
    EXPECT_EQ(At(clock_, "2026-03-07T09:00:17"), "2026-03-07T09:00:17+01:00");
    EXPECT_EQ(At(clock_, "2026-07-07T09:00:17"), "2026-07-07T09:00:17+02:00");
}

TEST_F(Zoned, OffsetsMayBeWestAndOfHalfAnHour) {
    Use("America/St_Johns");
    EXPECT_EQ(At(clock_, "2026-01-07T09:00:17"), "2026-01-07T09:00:17-03:30");
    Use("Asia/Kolkata");
    EXPECT_EQ(At(clock_, "2026-01-09T09:00:17"), "2026-01-09T09:00:17+05:30");
}

TEST_F(Zoned, HourThatComesTwiceIsToldApartByTheOrder) {
    Use("Europe/Berlin"); // back from 3 to 2 on 2026-10-25
    EXPECT_EQ(At(clock_, "2026-10-25T01:59:50"), "2026-10-25T01:59:50+02:00");
    EXPECT_EQ(At(clock_, "2026-10-25T02:00:07"), "2026-10-25T02:00:07+02:00");
    EXPECT_EQ(At(clock_, "2026-10-25T02:59:58"), "2026-10-25T02:59:58+02:00");
    EXPECT_EQ(At(clock_, "2026-10-25T02:00:15"), "2026-10-25T02:00:15+01:00");
    EXPECT_EQ(At(clock_, "2026-10-25T02:59:58"), "2026-10-25T02:59:58+01:00");
    EXPECT_EQ(At(clock_, "2026-10-25T03:00:00"), "2026-10-25T03:00:00+01:00");
}

TEST_F(Zoned, RecordASecondOutOfItsOrderBelongsToTheSameHour) {
    Use("Europe/Berlin");
    EXPECT_EQ(At(clock_, "2026-10-25T02:00:20"), "2026-10-25T02:00:20+02:00");
    EXPECT_EQ(At(clock_, "2026-10-25T02:00:19"), "2026-10-25T02:00:19+02:00");
    EXPECT_EQ(At(clock_, "2026-10-25T02:00:30"), "2026-10-25T02:00:30+02:00");
}

TEST_F(Zoned, HourThatIsLeftOutEndsWhenItBegins) {
    Use("Europe/Berlin"); // on from 2 to 3 on 2026-03-29
    EXPECT_EQ(clock_.At(*ParseIsoTime("2026-03-29T03:00:00")).utc -
                  clock_.At(*ParseIsoTime("2026-03-29T01:59:50")).utc,
              10);
}

TEST_F(Zoned, NameMustBeOneThatTheMachineKnows) {
    for (const char* name :
         {"", "Nowhere/Else", "Europe", "zone.tab", "/etc/passwd", "../../../etc/passwd"}) {
        EXPECT_FALSE(SetZone(name)) << name;
    }
}

} // namespace
} // namespace tavrelin::daylog
