#include "app/RunApplication.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/ConsoleOf.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>

namespace {

// Device objects that can still be made before memory runs out; negative: no end.
int devicesLeft = -1;

} // namespace

// The instrument makes its devices, and nothing else, with this form.
void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
    if (devicesLeft == 0) {
        return nullptr;
    }
    if (devicesLeft > 0) {
        --devicesLeft;
    }
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace tavrelin {
namespace {

class MemoryForDevices {
  public:
    explicit MemoryForDevices(int devices) { devicesLeft = devices; }
    MemoryForDevices(const MemoryForDevices&) = delete;
    MemoryForDevices& operator=(const MemoryForDevices&) = delete;
    MemoryForDevices(MemoryForDevices&&) = delete;
    MemoryForDevices& operator=(MemoryForDevices&&) = delete;
    ~MemoryForDevices() { devicesLeft = -1; }
};

TEST(RunApplication, EndsInSilenceWhenADeviceCannotBeMade) {
    for (int devices = 0; devices < 5; ++devices) {
        const sim::SimulatedBoard board;
        const MemoryForDevices memory(devices);
        EXPECT_EQ(ConsoleOf(RunApplication), "") << devices << " of five devices made";
        EXPECT_EQ(board.Now(), 0);
    }
}

TEST(RunApplication, GivesBackTheDevicesItCouldMake) {
    sim::SimulatedBoard board;
    const MemoryForDevices memory(2); // converter and LED
    ConsoleOf(RunApplication);
    EXPECT_EQ(board.Kernel().Held(), 0U);
    EXPECT_FALSE(board.Channel(0).exported);
    EXPECT_FALSE(board.Channel(0).enabled);
}

} // namespace
} // namespace tavrelin
