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

// It walks through a table of its own, from the first step every time.
TEST(StateTablePrintout, ShowsEveryStepTwiceAndTouchesNothing) {
    const sim::SimulatedBoard board;
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(MatchesGoldenFile(Printout(), "service/golden/state-table.txt"));
    }
    EXPECT_EQ(board.Events(), sim::Texts{});
}

} // namespace
} // namespace tavrelin
