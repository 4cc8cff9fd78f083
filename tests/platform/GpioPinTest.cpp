#include "platform/GpioPin.h"

#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

TEST(GpioPin, TakesALineAsInputWithoutEdge) {
    SimulatedBoard board;
    const GpioPin pin(1, 7);
    EXPECT_TRUE(pin.ok());
    EXPECT_EQ(board.writesTo("gpio"), (Texts{"export 39"}));
    EXPECT_EQ(board.writesTo("B7"), (Texts{"direction in", "edge none"}));
}

} // namespace
} // namespace tavrelin
