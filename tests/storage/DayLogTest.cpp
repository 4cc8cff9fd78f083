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
    EXPECT_EQ(DataLog().FileName(), "/mnt/sd-card/2026-03-07_logfile.csv");
}

TEST(DayLog, ChangesAtMidnightForANewObjectOnly) {
    const TimeZone utc;
    SimulatedBoard board({}, StartingAt("2026-03-07 23:59:59"));
    DataLog before;
    board.Elapse(sim::Seconds(2));
    DataLog after;
    for (DataLog* log : {&before, &after}) {
        EXPECT_TRUE(log->open());
        EXPECT_TRUE(log->write(log == &before ? "before midnight\n" : "after midnight\n"));
        log->close();
    }
    EXPECT_EQ(board.FileOnCard("2026-03-07_logfile.csv"), "before midnight\n");
    EXPECT_EQ(board.FileOnCard("2026-03-08_logfile.csv"), "after midnight\n");
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
