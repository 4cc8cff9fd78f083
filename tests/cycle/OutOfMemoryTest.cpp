#include "cycle/MeasurementCycle.h"

#include "tests/cycle/Instrument.h"
#include "tests/support/MemoryForDevices.h"

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

/// There is memory for so many devices.
class ShortOfMemory : public testing::TestWithParam<int> {
  protected:
    SimulatedBoard board;
    MeasurementCycle cycle;
};

TEST_P(ShortOfMemory, InitCreatesNoDeviceAfterTheFirstThatCannotBe) {
    const int created = GetParam();
    const MemoryForDevices memory(created);
    EXPECT_EQ(cycle.Init(), created == 5);
    EXPECT_EQ(cycle.ExternalAdc() != nullptr, created > 0);
    EXPECT_EQ(cycle.Led() != nullptr, created > 1);
    EXPECT_EQ(cycle.ReagentPump() != nullptr, created > 2);
    EXPECT_EQ(cycle.Valve() != nullptr, created > 3);
    EXPECT_EQ(cycle.Stirrer() != nullptr, created > 4);
    EXPECT_EQ(board.WritesTo("gpio").empty(), created < 5) << "all or no lines are set up";
}

INSTANTIATE_TEST_SUITE_P(Devices, ShortOfMemory, testing::Range(0, 6));

class PrimeShortOfMemory : public ShortOfMemory {};

TEST_P(PrimeShortOfMemory, PrimeRefusesWithoutPumpOrValve) {
    const MemoryForDevices memory(GetParam());
    ASSERT_FALSE(cycle.Init());
    board.Forget();
    EXPECT_EQ(ConsoleOf([&] { EXPECT_FALSE(cycle.Prime()); }),
              "MeasurementCycle.cpp, 162, NULL Pointer ERROR!\n");
    EXPECT_EQ(board.Events(), Texts{});
}

// No device at all; neither pump nor valve; the pump alone.
INSTANTIATE_TEST_SUITE_P(Devices, PrimeShortOfMemory, testing::Values(0, 2, 3));

} // namespace
} // namespace tavrelin
