#include "cycle/MeasurementCycle.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <new>

namespace {

/// Allocations of devices until the one that is refused; negative: none is.
int allocationsToRefusal = -1;

} // namespace

// In place of the C++ library's own, which does the same without refusing anything.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    if (allocationsToRefusal >= 0 && allocationsToRefusal-- == 0) {
        return nullptr;
    }
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

class ShortOfMemory : public testing::TestWithParam<int> {
  protected:
    ~ShortOfMemory() override { allocationsToRefusal = -1; }

    SimulatedBoard board;
    MeasurementCycle cycle;
};

TEST_P(ShortOfMemory, InitCreatesNoDeviceAfterTheFirstThatCannotBe) {
    const int created = GetParam();
    allocationsToRefusal = created;
    EXPECT_FALSE(cycle.Init());
    EXPECT_EQ(cycle.ExternalAdc() != nullptr, created > 0);
    EXPECT_EQ(cycle.Led() != nullptr, created > 1);
    EXPECT_EQ(cycle.ReagentPump() != nullptr, created > 2);
    EXPECT_EQ(cycle.Valve() != nullptr, created > 3);
    EXPECT_EQ(cycle.Stirrer(), nullptr);
    EXPECT_EQ(board.WritesTo("gpio"), Texts{}) << "no line is set up";
}

INSTANTIATE_TEST_SUITE_P(AfterDevices, ShortOfMemory, testing::Values(0, 1, 2, 3, 4));

class PrimeShortOfMemory : public ShortOfMemory {};

TEST_P(PrimeShortOfMemory, PrimeRefusesWithoutPumpOrValve) {
    allocationsToRefusal = GetParam();
    ASSERT_FALSE(cycle.Init());
    board.Forget();
    testing::internal::CaptureStdout();
    EXPECT_FALSE(cycle.Prime());
    std::cout.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "MeasurementCycle.cpp, 162, NULL Pointer ERROR!\n");
    EXPECT_EQ(board.Events(), Texts{});
}

// Neither pump nor valve; the pump alone.
INSTANTIATE_TEST_SUITE_P(AfterDevices, PrimeShortOfMemory, testing::Values(2, 3));

TEST_F(PrimeShortOfMemory, InitSucceedsWithMemoryForFiveDevices) {
    allocationsToRefusal = 5;
    EXPECT_TRUE(cycle.Init());
}

} // namespace
} // namespace tavrelin
