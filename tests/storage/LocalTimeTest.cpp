#include "storage/LocalTime.h"

#include "storage/DataLog.h"

#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tavrelin {
namespace {

using sim::RunOptions;
using sim::Scenario;
using sim::SimulatedBoard;
using sim::WallClock;
using sim::WorldEvent;

/// The time zone of the place where the instrument stands, as long as this object lives.
class Zone {
  public:
    explicit Zone(const char* name) { Set(name); }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
    ~Zone() { Set("UTC0"); }

  private:
    static void Set(const char* name) {
        setenv("TZ", name, 1);
        tzset();
    }
};

RunOptions At(const char* universalTime) {
    RunOptions options;
    options.startTime = WallClock::parse(universalTime).value();
    return options;
}

/// What the instrument shows at this moment.
std::string TimestampAt(const char* universalTime) {
    const SimulatedBoard board(Scenario{}, At(universalTime));
    return TimestampText();
}

TEST(Timestamp, HasAFullStopBeforeTheSeconds) {
    const Zone zone("UTC0");
    EXPECT_EQ(TimestampAt("2024-03-07 09:05:02"), "2024-03-07 09:05.02");
    EXPECT_EQ(TimestampAt("2026-01-02 07:03:05"), "2026-01-02 07:03.05");
    EXPECT_EQ(TimestampAt("2026-12-31 23:59:59"), "2026-12-31 23:59.59");
    EXPECT_EQ(TimestampAt("2027-01-01 00:00:00"), "2027-01-01 00:00.00");
}

TEST(Timestamp, GoesOnBeyondTheYear2038) {
    const Zone zone("UTC0");
    EXPECT_EQ(TimestampAt("2038-01-19 03:14:08"), "2038-01-19 03:14.08");
    EXPECT_EQ(TimestampAt("2106-02-07 06:28:16"), "2106-02-07 06:28.16");
}

TEST(Timestamp, IsOfTheLocalTime) {
    const Zone zone("IST-5:30");
    EXPECT_EQ(TimestampAt("2026-03-07 18:29:59"), "2026-03-07 23:59.59");
    EXPECT_EQ(TimestampAt("2026-03-07 18:30:00"), "2026-03-08 00:00.00");
}

TEST(Timestamp, FollowsSummerTime) {
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(TimestampAt("2026-03-29 00:59:59"), "2026-03-29 01:59.59");
    EXPECT_EQ(TimestampAt("2026-03-29 01:00:00"), "2026-03-29 03:00.00");
    EXPECT_EQ(TimestampAt("2026-10-25 01:00:00"), "2026-10-25 02:00.00");
}

TEST(Timestamp, FollowsAClockThatIsSetBack) {
    const Zone zone("UTC0");
    Scenario scenario;
    scenario.events = {{sim::seconds(60), WorldEvent::Kind::jumpClock, -3600, 0}};
    SimulatedBoard board(scenario, At("2026-03-08 00:30:00"));
    EXPECT_EQ(TimestampText(), "2026-03-08 00:30.00");
    board.elapse(sim::seconds(59));
    EXPECT_EQ(TimestampText(), "2026-03-08 00:30.59");
    board.elapse(sim::seconds(1));
    EXPECT_EQ(TimestampText(), "2026-03-07 23:31.00");
    EXPECT_EQ(DateText(), "2026-03-07");
}

TEST(Date, HasFourDigitsOfTheYearAndTwoOfMonthAndDay) {
    std::tm date{};
    date.tm_year = 2026 - 1900;
    date.tm_mon = 2;
    date.tm_mday = 7;
    EXPECT_EQ(DateText(date), "2026-03-07");
    date.tm_year = 987 - 1900;
    EXPECT_EQ(DateText(date), "0987-03-07");
    date.tm_year = 12345 - 1900;
    date.tm_mon = 11;
    date.tm_mday = 31;
    EXPECT_EQ(DateText(date), "12345-12-31");
}

TEST(Date, IsTodaysLocalOne) {
    const Zone zone("EST5");
    const SimulatedBoard board(Scenario{}, At("2024-03-01 04:59:59"));
    EXPECT_EQ(DateText(), "2024-02-29");
}

TEST(DayLog, LiesOnTheCardUnderItsDate) {
    EXPECT_EQ(DayLogPath("2026-03-07"), "/mnt/sd-card/2026-03-07_logfile.csv");
}

TEST(DayLog, IsNamedAfterTheLocalDate) {
    const Zone zone("EST5");
    const SimulatedBoard board(Scenario{}, At("2026-03-08 04:59:59"));
    EXPECT_EQ(DataLog().file_name(), "/mnt/sd-card/2026-03-07_logfile.csv");
}

TEST(DayLog, ChangesAtMidnight) {
    const Zone zone("UTC0");
    SimulatedBoard board(Scenario{}, At("2026-03-07 23:59:59"));
    const auto record = [](const std::string& text) {
        DataLog log;
        EXPECT_TRUE(log.open());
        EXPECT_TRUE(log.write(text));
    };
    record("before midnight\n");
    board.elapse(sim::seconds(2));
    record("after midnight\n");
    EXPECT_EQ(board.fileOnCard("2026-03-07_logfile.csv"), "before midnight\n");
    EXPECT_EQ(board.fileOnCard("2026-03-08_logfile.csv"), "after midnight\n");
}

TEST(DayLog, KeepsTheNameThatWasMadeBeforeMidnight) {
    const Zone zone("UTC0");
    SimulatedBoard board(Scenario{}, At("2026-03-07 23:59:59"));
    DataLog log;
    board.elapse(sim::seconds(2));
    EXPECT_TRUE(log.open());
    EXPECT_EQ(log.file_name(), "/mnt/sd-card/2026-03-07_logfile.csv");
}

TEST(DayLog, IsTakenUpAgainWhenTheClockIsSetBackOverMidnight) {
    const Zone zone("UTC0");
    SimulatedBoard board(Scenario{}, At("2026-03-08 00:30:00"));
    board.writeFileOnCard("2026-03-07_logfile.csv", "of yesterday\n");
    board.board().clock.jump(-3600);
    DataLog log;
    EXPECT_TRUE(log.open());
    EXPECT_TRUE(log.write("of yesterday again\n"));
    log.close();
    EXPECT_EQ(board.fileOnCard("2026-03-07_logfile.csv"), "of yesterday\nof yesterday again\n");
}

} // namespace
} // namespace tavrelin
