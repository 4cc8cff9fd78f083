#include "cycle/CycleConsole.h"

#include "tests/support/FlushedConsole.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

TEST(CycleConsole, NamesTheModuleAndTheLineAndFlushes) {
    const FlushedConsole console;
    PrintCycleLine(451, "Elements: 3");
    EXPECT_EQ(console.Text(), "MeasurementCycle.cpp, 451, Elements: 3\n");
}

TEST(CycleConsole, PrintsSuccessAsADigitAndFlushes) {
    const FlushedConsole console;
    PrintCycleSuccess(1091, true);
    PrintCycleSuccess(1096, false);
    EXPECT_EQ(console.Text(), "MeasurementCycle.cpp, 1091, success: 1\n"
                              "MeasurementCycle.cpp, 1096, success: 0\n");
}

} // namespace
} // namespace tavrelin
