#include "platform/GpioPin.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kExport = "/sys/class/gpio/export";
constexpr const char* kUnexport = "/sys/class/gpio/unexport";

TEST(GpioPinOwnership, TakesALineAsInputWithoutEdgeAndGivesItBack) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const GpioPin pin(1, 7);
        EXPECT_TRUE(pin.Ok());
        EXPECT_EQ(pin.Bank(), 1U);
        EXPECT_EQ(pin.Bit(), 7U);
        EXPECT_EQ(pin.Mode(), kPinInput);
        EXPECT_EQ(pin.Edge(), kEdgeNone);
        EXPECT_TRUE(board.Line("B7").exported);
    }
    EXPECT_FALSE(board.Line("B7").exported);
    EXPECT_EQ(board.Events(), (Texts{
                                  "access /sys/class/gpio/pioB7 ENOENT",
                                  "write /sys/class/gpio/export \"39\"",
                                  "write /sys/class/gpio/pioB7/direction \"in\"",
                                  "write /sys/class/gpio/pioB7/edge \"none\"",
                                  "write /sys/class/gpio/unexport \"39\"",
                              }));
    EXPECT_EQ(console.Output() + console.Error(), "");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(GpioPinOwnership, NamesLinesByPortAndBit) {
    struct Case {
        std::uint32_t bank, bit;
        const char *exported, *name;
    };
    for (const Case& line :
         {Case{0, 0, "export 0", "A0"}, Case{0, 3, "export 3", "A3"}, Case{1, 7, "export 39", "B7"},
          Case{2, 27, "export 91", "C27"}, Case{3, 31, "export 127", "D31"}}) {
        SimulatedBoard board;
        const GpioPin pin(line.bank, line.bit);
        EXPECT_TRUE(pin.Ok()) << line.name;
        EXPECT_EQ(board.WritesTo("gpio"), (Texts{line.exported}));
        EXPECT_EQ(board.WritesTo(line.name), (Texts{"direction in", "edge none"}));
    }
}

TEST(GpioPinOwnership, RefusesBit32OnStandardOutput) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin pin(0, 32);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(console.Output(), "wrong gpio pin");
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Calls("access") + board.Calls("open"), 0U);
}

TEST(GpioPinOwnership, RefusesBit32OnStandardErrorWhenAskedForAMode) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin pin(0, 32, kPinOutput, kEdgeNone);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "wrong gpio pin");
    EXPECT_EQ(board.Calls("access") + board.Calls("open"), 0U);
}

TEST(GpioPinOwnership, ReleasesNobodysLineAfterARefusal) {
    SimulatedBoard board;
    CapturedConsole console;
    board.Line("A0").exported = true;
    board.Line("B0").exported = true;
    { const GpioPin refused(1, 32); }
    EXPECT_TRUE(board.Line("A0").exported);
    EXPECT_TRUE(board.Line("B0").exported);
    EXPECT_EQ(console.Output(), "wrong gpio pin");
    EXPECT_EQ(console.Error(), "not used yet\n");
}

TEST(GpioPinOwnership, LeavesTheBankToTheKernel) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin pin(4, 0);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(pin.Bank(), 4U);
    EXPECT_EQ(board.Events(), (Texts{
                                  "access /sys/class/gpio/pioE0 ENOENT",
                                  "write /sys/class/gpio/export \"128\" EINVAL",
                                  "access /sys/class/gpio/pioE0 ENOENT",
                              }));
    EXPECT_EQ(console.Error(), "not locked yet\n");
}

TEST(GpioPinOwnership, RefusesALineThatIsInUse) {
    SimulatedBoard board;
    board.Line("B7").exported = true;
    CapturedConsole console;
    const GpioPin pin(1, 7);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(console.Error(), "already used\n");
    EXPECT_EQ(board.Events(), Texts{});
}

TEST(GpioPinOwnership, CannotBeHadTwice) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin owner(1, 7);
    auto second = std::make_unique<GpioPin>(1, 7);
    EXPECT_FALSE(second->Ok());
    EXPECT_EQ(console.Error(), "already used\n");
    // Even so the second one gives the line back when it goes.
    second.reset();
    EXPECT_FALSE(board.Line("B7").exported);
}

TEST(GpioPinOwnership, FailsWhenExportCannotBeOpened) {
    SimulatedBoard board;
    board.Fail("open", kExport, EACCES);
    CapturedConsole console;
    const GpioPin pin(1, 7);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "unable to lock a gpio");
    EXPECT_EQ(board.WritesTo("B7"), Texts{});
}

TEST(GpioPinOwnership, DoesNotLookAtWhatTheExportCameTo) {
    SimulatedBoard board;
    board.Fail("write", kExport, EBUSY);
    CapturedConsole console;
    GpioPin pin(1, 7);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(console.Error(), "not locked yet\n"); // of the direction, not of the export
    EXPECT_TRUE(pin.Export());
}

TEST(GpioPinOwnership, StopsAtADirectionThatCannotBeOpened) {
    SimulatedBoard board;
    board.Fail("open", "/sys/class/gpio/pioB7/direction", EACCES);
    CapturedConsole console;
    const GpioPin pin(1, 7, kPinOutput, kEdgeNone);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(pin.Mode(), kPinInput);
    EXPECT_EQ(console.Error(), "unable to set the gpio mode");
    EXPECT_EQ(board.WritesTo("B7"), Texts{});
    EXPECT_TRUE(board.Line("B7").exported);
}

TEST(GpioPinOwnership, FailsWhenTheEdgeCannotBeOpened) {
    SimulatedBoard board;
    board.Fail("open", "/sys/class/gpio/pioB7/edge", EACCES);
    CapturedConsole console;
    const GpioPin pin(1, 7, kPinInputWithEdge, kEdgeBoth);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(pin.Mode(), kPinInputWithEdge);
    EXPECT_EQ(pin.Edge(), kEdgeNone);
    EXPECT_EQ(console.Error(), "unable to set the gpio trigger");
    EXPECT_EQ(board.WritesTo("B7"), (Texts{"direction in"}));
}

TEST(GpioPinOwnership, SetsTheEdgeOnlyOfAnInputThatWaitsForOne) {
    struct Case {
        std::uint32_t mode;
        Texts writes;
        std::uint32_t edge;
    };
    for (const Case& asked : {Case{0, {"direction in", "edge none"}, kEdgeNone},
                              Case{1, {"direction out", "edge none"}, kEdgeNone},
                              Case{2, {"direction in", "edge falling"}, kEdgeFalling},
                              Case{3, {"direction in", "edge falling"}, kEdgeFalling}}) {
        SimulatedBoard board;
        const GpioPin pin(1, 7, asked.mode, kEdgeFalling);
        EXPECT_TRUE(pin.Ok());
        EXPECT_EQ(pin.Mode(), asked.mode);
        EXPECT_EQ(pin.Edge(), asked.edge);
        EXPECT_EQ(board.WritesTo("B7"), asked.writes);
    }
}

TEST(GpioPinOwnership, CanBeGivenBackOnce) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        GpioPin pin(1, 7);
        EXPECT_TRUE(pin.Unexport());
        EXPECT_FALSE(pin.Unexport());
        EXPECT_EQ(console.Error(), "not used yet\n");
    }
    EXPECT_EQ(console.Error(), "not used yet\nnot used yet\n");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(board.WritesTo("gpio"), (Texts{"export 39", "unexport 39"}));
}

TEST(GpioPinOwnership, KeepsTheLineWhenUnexportCannotBeOpened) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const GpioPin pin(1, 7);
        board.Fail("open", kUnexport, EACCES);
    }
    EXPECT_TRUE(board.Line("B7").exported);
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "unable to release a gpio");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(GpioPinOwnership, LetsLevelAndDirectionOutliveIt) {
    SimulatedBoard board;
    {
        GpioPin pin(1, 7, kPinOutput, kEdgeNone);
        pin.Write(kLevelHigh);
    }
    EXPECT_TRUE(board.Line("B7").output);
    EXPECT_TRUE(board.Line("B7").level);
}

} // namespace
} // namespace tavrelin
