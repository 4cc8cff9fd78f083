#include "storage/DataLog.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;

TEST(DayLog, LiesOnTheCardUnderItsDate) {
    EXPECT_EQ(DayLogPath("2026-03-07"), "/mnt/sd-card/2026-03-07_logfile.csv");
}

TEST(DayLog, IsNamedAfterTheLocalDate) {
    const TimeZone zone("EST5");
    const SimulatedBoard board({}, StartingAt("2026-03-08 04:59:59"));
    EXPECT_EQ(DataLog().file_name(), "/mnt/sd-card/2026-03-07_logfile.csv");
}

TEST(DayLog, ChangesAtMidnight) {
    const TimeZone utc;
    SimulatedBoard board({}, StartingAt("2026-03-07 23:59:59"));
    const auto record = [](const std::string& text) {
        DataLog log;
        EXPECT_TRUE(log.open());
        EXPECT_TRUE(log.write(text));
    };
    record("before midnight\n");
    board.Elapse(sim::Seconds(2));
    record("after midnight\n");
    EXPECT_EQ(board.FileOnCard("2026-03-07_logfile.csv"), "before midnight\n");
    EXPECT_EQ(board.FileOnCard("2026-03-08_logfile.csv"), "after midnight\n");
}

TEST(DayLog, KeepsTheNameThatWasMadeBeforeMidnight) {
    const TimeZone utc;
    SimulatedBoard board({}, StartingAt("2026-03-07 23:59:59"));
    DataLog log;
    board.Elapse(sim::Seconds(2));
    EXPECT_TRUE(log.open());
    EXPECT_EQ(log.file_name(), "/mnt/sd-card/2026-03-07_logfile.csv");
}

TEST(DayLog, IsTakenUpAgainWhenTheClockIsSetBackOverMidnight) {
    const TimeZone utc;
    SimulatedBoard board({}, StartingAt("2026-03-08 00:30:00"));
    board.WriteFileOnCard("2026-03-07_logfile.csv", "of yesterday\n");
    board.Model().clock.Jump(-3600);
    DataLog log;
    EXPECT_TRUE(log.open());
    EXPECT_TRUE(log.write("of yesterday again\n"));
    log.close();
    EXPECT_EQ(board.FileOnCard("2026-03-07_logfile.csv"), "of yesterday\nof yesterday again\n");
}

} // namespace
} // namespace tavrelin
