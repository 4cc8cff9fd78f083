// The measuring cell by itself: flushing, reagent, stirring, colour.

#include "simulator/board/SampleCell.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::milliseconds;
using sim::SampleCell;

/// A cell at a moment of board time, with the pump's steps so far.
class Cell {
  public:
    explicit Cell(std::vector<double> absorbances = {0.4}) : cell(std::move(absorbances)) {}

    void wait(int ms) { now += milliseconds(ms); }
    void flush() {
        cell.setValve(now, true);
        wait(1000);
        cell.pumpTurned(steps);
        cell.setValve(now, false);
        wait(1000);
    }
    void dose(int by = 1600) { steps += by; }
    void stir() {
        cell.setStirring(now, true, steps);
        wait(1000);
        cell.setStirring(now, false, steps);
    }
    double absorbance() const { return cell.absorbance(now, steps); }

    SampleCell cell;
    sim::Nanoseconds now = 0;
    std::int64_t steps = 0;
};

TEST(SampleCell, IsClearWithoutReagent) {
    Cell cell;
    cell.flush();
    cell.stir();
    EXPECT_EQ(cell.absorbance(), 0.0);
}

TEST(SampleCell, IsClearUntilItIsStirred) {
    Cell cell;
    cell.flush();
    cell.dose();
    cell.wait(60'000);
    EXPECT_EQ(cell.absorbance(), 0.0);
}

TEST(SampleCell, ShowsTheTrueAbsorbanceOnceItsColourHasDeveloped) {
    Cell cell;
    cell.flush();
    cell.dose();
    cell.stir();
    EXPECT_NEAR(cell.absorbance(), 0.4 * 1000 / 1500, 1e-12) << "still developing";
    cell.wait(500);
    EXPECT_EQ(cell.absorbance(), 0.4);
    cell.wait(60'000);
    EXPECT_EQ(cell.absorbance(), 0.4);
}

TEST(SampleCell, ColoursByTheDose) {
    Cell cell;
    cell.flush();
    cell.dose(700);
    cell.stir();
    cell.wait(500);
    EXPECT_EQ(cell.absorbance(), 0.2) << "half a full dose";
    cell.dose(700);
    EXPECT_EQ(cell.absorbance(), 0.4);
    cell.dose(1600);
    EXPECT_EQ(cell.absorbance(), 0.4) << "more reagent changes nothing";
}

TEST(SampleCell, StirringAgainDoesNotStartTheColourAnew) {
    Cell cell;
    cell.flush();
    cell.dose();
    cell.stir();
    cell.wait(500);
    cell.stir();
    EXPECT_EQ(cell.absorbance(), 0.4);
}

TEST(SampleCell, LosesReagentWhileTheValveIsOpen) {
    Cell cell;
    cell.cell.setValve(cell.now, true);
    cell.dose();
    cell.cell.pumpTurned(cell.steps);
    cell.cell.setValve(cell.now, false);
    cell.stir();
    cell.wait(500);
    EXPECT_EQ(cell.absorbance(), 0.0);
}

TEST(SampleCell, IsWashedOutByTheNextFlush) {
    Cell cell;
    cell.flush();
    cell.dose();
    cell.stir();
    cell.wait(500);
    cell.flush();
    EXPECT_EQ(cell.absorbance(), 0.0);
}

double measure(Cell& cell) {
    cell.flush();
    cell.dose();
    cell.stir();
    cell.wait(1000);
    return cell.absorbance();
}

TEST(SampleCell, TakesItsSamplesOneByOneAndKeepsTheLast) {
    Cell cell({0.1, 0.2, 0.3});
    cell.flush(); // priming
    EXPECT_EQ(measure(cell), 0.1);
    EXPECT_EQ(measure(cell), 0.2);
    EXPECT_EQ(measure(cell), 0.3);
    EXPECT_EQ(measure(cell), 0.3);
    EXPECT_EQ(cell.cell.flushes(), 5U);
}

TEST(SampleCell, TheValveDoesNotCloseWithinAMillisecond) {
    Cell cell({0.1, 0.2, 0.3});
    cell.flush();
    cell.cell.setValve(cell.now, true);
    cell.wait(1000);
    cell.cell.setValve(cell.now, false);
    cell.wait(1);
    cell.cell.setValve(cell.now, true);
    EXPECT_EQ(cell.cell.flushes(), 2U) << "the coil had not let go";
    cell.cell.setValve(cell.now, false);
    cell.wait(2);
    cell.cell.setValve(cell.now, true);
    EXPECT_EQ(cell.cell.flushes(), 3U);
}

} // namespace
} // namespace tavrelin
