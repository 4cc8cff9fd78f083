#include "base/LocalTime.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::WorldEvent;

/// What the instrument shows at this moment.
std::string TimestampAt(const char* universalTime) {
    const SimulatedBoard board({}, StartingAt(universalTime));
    return TimestampText();
}

TEST(Timestamp, HasAFullStopBeforeTheSeconds) {
    const TimeZone utc;
    EXPECT_EQ(TimestampAt("2024-03-07 09:05:02"), "2024-03-07 09:05.02");
    EXPECT_EQ(TimestampAt("2026-01-02 07:03:05"), "2026-01-02 07:03.05");
    EXPECT_EQ(TimestampAt("2026-12-31 23:59:59"), "2026-12-31 23:59.59");
    EXPECT_EQ(TimestampAt("2027-01-01 00:00:00"), "2027-01-01 00:00.00");
}

TEST(Timestamp, GoesOnBeyondTheYear2038) {
    const TimeZone utc;
    EXPECT_EQ(TimestampAt("2038-01-19 03:14:08"), "2038-01-19 03:14.08");
    EXPECT_EQ(TimestampAt("2106-02-07 06:28:16"), "2106-02-07 06:28.16");
}

TEST(Timestamp, IsOfTheLocalTime) {
    const TimeZone zone("IST-5:30");
    EXPECT_EQ(TimestampAt("2026-03-07 18:29:59"), "2026-03-07 23:59.59");
    EXPECT_EQ(TimestampAt("2026-03-07 18:30:00"), "2026-03-08 00:00.00");
}

TEST(Timestamp, FollowsSummerTime) {
    const TimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(TimestampAt("2026-03-29 00:59:59"), "2026-03-29 01:59.59");
    EXPECT_EQ(TimestampAt("2026-03-29 01:00:00"), "2026-03-29 03:00.00");
    EXPECT_EQ(TimestampAt("2026-10-25 01:00:00"), "2026-10-25 02:00.00");
}

/// A time zone's file of one local time, so many seconds east: below 65536, in two bytes.
std::string ZoneFile(const std::string& east) {
    using namespace std::string_literals;
    const std::string header = "TZif2"s + std::string(15, '\0');
    const std::string counts = std::string(16, '\0') + "\0\0\0\1\0\0\0\4"s; // 1 time, 4 letters
    const std::string body = header + counts + "\0\0"s + east + "\0\0LMT\0"s;
    return body + body + "\n\n"; // in 32 bits, in 64 bits, no rule for later
}

// The C library looks into a file anew when TZ names it in another way. Into /etc/localtime, which
// it takes without TZ, it looks whenever it is told to look, but that file is not a test's to
// change.
TEST(Timestamp, FollowsAZoneFileThatIsReplacedWhileTheProgramRuns) {
    const SimulatedBoard board({}, StartingAt("2026-03-07 09:05:02"));
    const TestFolder folder;
    WriteText(folder.Path("zone"), ZoneFile("\x46\x50"));
    const Environment zone("TZ", ":" + folder.Path("zone"));
    EXPECT_EQ(TimestampText(), "2026-03-07 14:05.02"); // 18000 s
    WriteText(folder.Path("new"), ZoneFile("\x62\x70"));
    std::filesystem::rename(folder.Path("new"), folder.Path("zone"));
    const Environment zoneAgain("TZ", ":" + folder.Path("/zone"));
    EXPECT_EQ(TimestampText(), "2026-03-07 16:05.02"); // 25200 s
}

TEST(Timestamp, FollowsAClockThatIsSetBack) {
    const TimeZone utc;
    Scenario scenario;
    scenario.board.events = {{sim::Seconds(60), WorldEvent::Kind::JumpClock, -3600, 0}};
    SimulatedBoard board(scenario, StartingAt("2026-03-08 00:30:00"));
    EXPECT_EQ(TimestampText(), "2026-03-08 00:30.00");
    board.Elapse(sim::Seconds(59));
    EXPECT_EQ(TimestampText(), "2026-03-08 00:30.59");
    board.Elapse(sim::Seconds(1));
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
    const TimeZone zone("EST5");
    const SimulatedBoard board({}, StartingAt("2024-03-01 04:59:59"));
    EXPECT_EQ(DateText(), "2024-02-29");
}

} // namespace
} // namespace tavrelin
