#include "simulator/board/SampleCell.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

constexpr std::int64_t kFullTurn = 1600;

// Flushes a sample in from `at` for a second.
void Flush(SampleCell& cell, Nanoseconds at, std::int64_t pumpSteps) {
    cell.SetValve(at, true);
    cell.PumpTurned(pumpSteps);
    cell.SetValve(at + Seconds(1), false);
}

TEST(SampleCell, IsClearWithoutReagent) {
    SampleCell cell({0.5});
    Flush(cell, 0, 0);
    cell.SetStirring(Seconds(2), true, 0);
    EXPECT_EQ(cell.Absorbance(Seconds(10), 0), 0.0);
}

TEST(SampleCell, IsClearUntilTheReagentIsStirredIn) {
    SampleCell cell({0.5});
    Flush(cell, 0, 0);
    EXPECT_EQ(cell.Absorbance(Seconds(10), kFullTurn), 0.0);
}

TEST(SampleCell, ShowsItsTrueAbsorbanceOnceTheColourHasDeveloped) {
    SampleCell cell({0.5});
    Flush(cell, 0, 0);
    cell.SetStirring(Seconds(3), true, kFullTurn);
    EXPECT_EQ(cell.Absorbance(Seconds(3), kFullTurn), 0.0);
    EXPECT_DOUBLE_EQ(cell.Absorbance(Seconds(3) + Milliseconds(750), kFullTurn), 0.25);
    EXPECT_EQ(cell.Absorbance(Seconds(3) + Milliseconds(1500), kFullTurn), 0.5);
    EXPECT_EQ(cell.Absorbance(Seconds(60), kFullTurn), 0.5);
}

TEST(SampleCell, ShowsLessColourForHalfADose) {
    SampleCell cell({0.5});
    Flush(cell, 0, 0);
    cell.SetStirring(Seconds(3), true, SampleCell::kFullDoseSteps / 2);
    EXPECT_DOUBLE_EQ(cell.Absorbance(Seconds(60), SampleCell::kFullDoseSteps / 2), 0.25);
}

TEST(SampleCell, LosesTheReagentThatComesWhileTheValveIsOpen) {
    SampleCell cell({0.5});
    Flush(cell, 0, 2 * kFullTurn);
    cell.SetStirring(Seconds(3), true, 2 * kFullTurn);
    EXPECT_EQ(cell.Absorbance(Seconds(60), 2 * kFullTurn), 0.0);
}

TEST(SampleCell, TakesTheNextAbsorbanceAtEachFlushAfterThePriming) {
    SampleCell cell({0.1, 0.2});
    std::int64_t turned = 0;
    Nanoseconds now = 0;
    for (const double expected : {0.1, 0.1, 0.2, 0.2}) {
        Flush(cell, now, turned);
        turned += kFullTurn;
        cell.SetStirring(now + Seconds(2), true, turned);
        cell.SetStirring(now + Seconds(3), false, turned);
        EXPECT_EQ(cell.Absorbance(now + Seconds(9), turned), expected);
        now += Seconds(10);
    }
}

TEST(SampleCell, TakesAPauseShorterThanTheCoilForNoClosing) {
    SampleCell cell({0.1});
    cell.SetValve(0, true);
    cell.SetValve(Seconds(1), false);
    cell.SetValve(Seconds(1) + Milliseconds(1), true);
    EXPECT_EQ(cell.Flushes(), 1U);
    cell.SetValve(Seconds(2), false);
    cell.SetValve(Seconds(2) + Milliseconds(1) + 1, true);
    EXPECT_EQ(cell.Flushes(), 2U);
}

} // namespace
} // namespace sim
