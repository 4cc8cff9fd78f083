#include "simulator/board/SampleCell.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

constexpr std::int64_t fullTurn = 1600;

// Flushes a sample in from `at` for a second.
void flush(SampleCell& cell, Nanoseconds at, std::int64_t pumpSteps) {
    cell.setValve(at, true);
    cell.pumpTurned(pumpSteps);
    cell.setValve(at + seconds(1), false);
}

TEST(SampleCell, IsClearWithoutReagent) {
    SampleCell cell({0.5});
    flush(cell, 0, 0);
    cell.setStirring(seconds(2), true, 0);
    EXPECT_EQ(cell.absorbance(seconds(10), 0), 0.0);
}

TEST(SampleCell, IsClearUntilTheReagentIsStirredIn) {
    SampleCell cell({0.5});
    flush(cell, 0, 0);
    EXPECT_EQ(cell.absorbance(seconds(10), fullTurn), 0.0);
}

TEST(SampleCell, ShowsItsTrueAbsorbanceOnceTheColourHasDeveloped) {
    SampleCell cell({0.5});
    flush(cell, 0, 0);
    cell.setStirring(seconds(3), true, fullTurn);
    EXPECT_EQ(cell.absorbance(seconds(3), fullTurn), 0.0);
    EXPECT_DOUBLE_EQ(cell.absorbance(seconds(3) + milliseconds(750), fullTurn), 0.25);
    EXPECT_EQ(cell.absorbance(seconds(3) + milliseconds(1500), fullTurn), 0.5);
    EXPECT_EQ(cell.absorbance(seconds(60), fullTurn), 0.5);
}

TEST(SampleCell, ShowsLessColourForHalfADose) {
    SampleCell cell({0.5});
    flush(cell, 0, 0);
    cell.setStirring(seconds(3), true, SampleCell::fullDoseSteps / 2);
    EXPECT_DOUBLE_EQ(cell.absorbance(seconds(60), SampleCell::fullDoseSteps / 2), 0.25);
}

TEST(SampleCell, LosesTheReagentThatComesWhileTheValveIsOpen) {
    SampleCell cell({0.5});
    flush(cell, 0, 2 * fullTurn);
    cell.setStirring(seconds(3), true, 2 * fullTurn);
    EXPECT_EQ(cell.absorbance(seconds(60), 2 * fullTurn), 0.0);
}

TEST(SampleCell, TakesTheNextAbsorbanceAtEachFlushAfterThePriming) {
    SampleCell cell({0.1, 0.2});
    std::int64_t turned = 0;
    Nanoseconds now = 0;
    for (const double expected : {0.1, 0.1, 0.2, 0.2}) {
        flush(cell, now, turned);
        turned += fullTurn;
        cell.setStirring(now + seconds(2), true, turned);
        cell.setStirring(now + seconds(3), false, turned);
        EXPECT_EQ(cell.absorbance(now + seconds(9), turned), expected);
        now += seconds(10);
    }
}

TEST(SampleCell, TakesAPauseShorterThanTheCoilForNoClosing) {
    SampleCell cell({0.1});
    cell.setValve(0, true);
    cell.setValve(seconds(1), false);
    cell.setValve(seconds(1) + milliseconds(1), true);
    EXPECT_EQ(cell.flushes(), 1U);
    cell.setValve(seconds(2), false);
    cell.setValve(seconds(2) + milliseconds(1) + 1, true);
    EXPECT_EQ(cell.flushes(), 2U);
}

} // namespace
} // namespace sim
