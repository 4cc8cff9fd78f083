#include "service/Diagnostics.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/GoldenFile.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

std::string Printout() {
    CapturedConsole console;
    PrintStateTable();
    EXPECT_EQ(console.Error(), "");
    return console.Output();
}

TEST(StateTablePrintout, ShowsEveryStepTwice) {
    EXPECT_TRUE(MatchesGoldenFile(Printout(), "service/golden/state-table.txt"));
}

// It walks through a table of its own.
TEST(StateTablePrintout, BeginsAtTheFirstStepEveryTime) {
    const std::string first = Printout();
    EXPECT_EQ(Printout(), first);
}

TEST(StateTablePrintout, TouchesNothing) {
    const sim::SimulatedBoard board;
    Printout();
    EXPECT_EQ(board.Events(), sim::Texts{});
}

} // namespace
} // namespace tavrelin
