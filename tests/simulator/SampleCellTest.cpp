// The measuring cell by itself: flushing, reagent, stirring, colour.

#include "simulator/board/SampleCell.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::SampleCell;

/// A cell at a moment of board time, with the pump's steps so far.
class Cell {
  public:
    explicit Cell(std::vector<double> absorbances = {0.4}) : cell(std::move(absorbances)) {}

    void Wait(int ms) { now += Milliseconds(ms); }
    void Flush() {
        cell.SetValve(now, true);
        Wait(1000);
        cell.PumpTurned(steps);
        cell.SetValve(now, false);
        Wait(1000);
    }
    void Dose(int by = 1600) { steps += by; }
    void Stir() {
        cell.SetStirring(now, true, steps);
        Wait(1000);
        cell.SetStirring(now, false, steps);
    }
    double Absorbance() const { return cell.Absorbance(now, steps); }

    SampleCell cell;
    sim::Nanoseconds now = 0;
    std::int64_t steps = 0;
};

/// One that was flushed in.
class ASample : public testing::Test, protected Cell {
  protected:
    ASample() { Flush(); }
};

TEST_F(ASample, IsClearWithoutReagent) {
    Stir();
    EXPECT_EQ(Absorbance(), 0.0);
}

TEST_F(ASample, IsClearUntilItIsStirred) {
    Dose();
    Wait(60'000);
    EXPECT_EQ(Absorbance(), 0.0);
}

TEST_F(ASample, ShowsTheTrueAbsorbanceOnceItsColourHasDeveloped) {
    Dose();
    Stir();
    EXPECT_NEAR(Absorbance(), 0.4 * 1000 / 1500, 1e-12) << "still developing";
    Wait(500);
    EXPECT_EQ(Absorbance(), 0.4);
    Wait(60'000);
    EXPECT_EQ(Absorbance(), 0.4);
}

TEST_F(ASample, ColoursByTheDose) {
    Dose(700);
    Stir();
    Wait(500);
    EXPECT_EQ(Absorbance(), 0.2) << "half a full dose";
    Dose(700);
    EXPECT_EQ(Absorbance(), 0.4);
    Dose(1600);
    EXPECT_EQ(Absorbance(), 0.4) << "more reagent changes nothing";
}

TEST_F(ASample, StirringAgainDoesNotStartTheColourAnew) {
    Dose();
    Stir();
    Wait(500);
    Stir();
    EXPECT_EQ(Absorbance(), 0.4);
}

TEST(SampleCell, LosesReagentWhileTheValveIsOpen) {
    Cell cell;
    cell.cell.SetValve(cell.now, true);
    cell.Dose();
    cell.cell.PumpTurned(cell.steps);
    cell.cell.SetValve(cell.now, false);
    cell.Stir();
    cell.Wait(500);
    EXPECT_EQ(cell.Absorbance(), 0.0);
}

TEST_F(ASample, IsWashedOutByTheNextFlush) {
    Dose();
    Stir();
    Wait(500);
    Flush();
    EXPECT_EQ(Absorbance(), 0.0);
}

double Measure(Cell& cell) {
    cell.Flush();
    cell.Dose();
    cell.Stir();
    cell.Wait(1000);
    return cell.Absorbance();
}

TEST(SampleCell, TakesItsSamplesOneByOneAndKeepsTheLast) {
    Cell cell({0.1, 0.2, 0.3});
    cell.Flush(); // priming
    EXPECT_EQ(Measure(cell), 0.1);
    EXPECT_EQ(Measure(cell), 0.2);
    EXPECT_EQ(Measure(cell), 0.3);
    EXPECT_EQ(Measure(cell), 0.3);
    EXPECT_EQ(cell.cell.Flushes(), 5U);
}

TEST(SampleCell, TakesWhatWasPutThereNext) {
    Cell cell({0.1, 0.2, 0.3});
    cell.Flush(); // priming
    EXPECT_EQ(Measure(cell), 0.1);
    cell.cell.SetNext(0.7);
    EXPECT_EQ(cell.cell.TrueAbsorbance(), 0.1) << "the one in the cell is what it was";
    EXPECT_EQ(cell.cell.NextAbsorbance(), 0.7);
    EXPECT_EQ(Measure(cell), 0.7);
    EXPECT_EQ(Measure(cell), 0.3) << "the list goes on";
    cell.cell.SetNext(0.9);
    EXPECT_EQ(Measure(cell), 0.9);
    EXPECT_EQ(Measure(cell), 0.9) << "the last one stays";
}

TEST(SampleCell, TheValveDoesNotCloseWithin20Milliseconds) {
    Cell cell({0.1, 0.2, 0.3});
    cell.Flush();
    cell.cell.SetValve(cell.now, true);
    cell.Wait(1000);
    cell.cell.SetValve(cell.now, false);
    cell.Wait(20);
    cell.cell.SetValve(cell.now, true);
    EXPECT_EQ(cell.cell.Flushes(), 2U) << "the coil had not let go";
    cell.cell.SetValve(cell.now, false);
    cell.Wait(21);
    cell.cell.SetValve(cell.now, true);
    EXPECT_EQ(cell.cell.Flushes(), 3U);
}

} // namespace
} // namespace tavrelin
