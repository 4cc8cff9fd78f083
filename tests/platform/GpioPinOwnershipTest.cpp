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
        EXPECT_TRUE(pin.ok());
        EXPECT_EQ(pin.bank(), 1U);
        EXPECT_EQ(pin.bit(), 7U);
        EXPECT_EQ(pin.mode(), kPinInput);
        EXPECT_EQ(pin.edge(), kEdgeNone);
        EXPECT_TRUE(board.line("B7").exported);
    }
    EXPECT_FALSE(board.line("B7").exported);
    EXPECT_EQ(board.events(), (Texts{
                                  "access /sys/class/gpio/pioB7 ENOENT",
                                  "write /sys/class/gpio/export \"39\"",
                                  "write /sys/class/gpio/pioB7/direction \"in\"",
                                  "write /sys/class/gpio/pioB7/edge \"none\"",
                                  "write /sys/class/gpio/unexport \"39\"",
                              }));
    EXPECT_EQ(console.output() + console.error(), "");
    EXPECT_EQ(board.kernel().held(), 0U);
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
        EXPECT_TRUE(pin.ok()) << line.name;
        EXPECT_EQ(board.writesTo("gpio"), (Texts{line.exported}));
        EXPECT_EQ(board.writesTo(line.name), (Texts{"direction in", "edge none"}));
    }
}

TEST(GpioPinOwnership, RefusesBit32OnStandardOutput) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin pin(0, 32);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(console.output(), "wrong gpio pin");
    EXPECT_EQ(console.error(), "");
    EXPECT_EQ(board.calls("access") + board.calls("open"), 0U);
}

TEST(GpioPinOwnership, RefusesBit32OnStandardErrorWhenAskedForAMode) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin pin(0, 32, kPinOutput, kEdgeNone);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "wrong gpio pin");
    EXPECT_EQ(board.calls("access") + board.calls("open"), 0U);
}

TEST(GpioPinOwnership, ReleasesNobodysLineAfterARefusal) {
    SimulatedBoard board;
    CapturedConsole console;
    board.line("A0").exported = true;
    board.line("B0").exported = true;
    { const GpioPin refused(1, 32); }
    EXPECT_TRUE(board.line("A0").exported);
    EXPECT_TRUE(board.line("B0").exported);
    EXPECT_EQ(console.output(), "wrong gpio pin");
    EXPECT_EQ(console.error(), "not used yet\n");
}

TEST(GpioPinOwnership, LeavesTheBankToTheKernel) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin pin(4, 0);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(pin.bank(), 4U);
    EXPECT_EQ(board.events(), (Texts{
                                  "access /sys/class/gpio/pioE0 ENOENT",
                                  "write /sys/class/gpio/export \"128\" EINVAL",
                                  "access /sys/class/gpio/pioE0 ENOENT",
                              }));
    EXPECT_EQ(console.error(), "not locked yet\n");
}

TEST(GpioPinOwnership, RefusesALineThatIsInUse) {
    SimulatedBoard board;
    board.line("B7").exported = true;
    CapturedConsole console;
    const GpioPin pin(1, 7);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(console.error(), "already used\n");
    EXPECT_EQ(board.events(), Texts{});
}

TEST(GpioPinOwnership, CannotBeHadTwice) {
    SimulatedBoard board;
    CapturedConsole console;
    const GpioPin owner(1, 7);
    auto second = std::make_unique<GpioPin>(1, 7);
    EXPECT_FALSE(second->ok());
    EXPECT_EQ(console.error(), "already used\n");
    // Even so the second one gives the line back when it goes.
    second.reset();
    EXPECT_FALSE(board.line("B7").exported);
}

TEST(GpioPinOwnership, FailsWhenExportCannotBeOpened) {
    SimulatedBoard board;
    board.fail("open", kExport, EACCES);
    CapturedConsole console;
    const GpioPin pin(1, 7);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "unable to lock a gpio");
    EXPECT_EQ(board.writesTo("B7"), Texts{});
}

TEST(GpioPinOwnership, DoesNotLookAtWhatTheExportCameTo) {
    SimulatedBoard board;
    board.fail("write", kExport, EBUSY);
    CapturedConsole console;
    GpioPin pin(1, 7);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(console.error(), "not locked yet\n"); // of the direction, not of the export
    EXPECT_TRUE(pin.Export());
}

TEST(GpioPinOwnership, StopsAtADirectionThatCannotBeOpened) {
    SimulatedBoard board;
    board.fail("open", "/sys/class/gpio/pioB7/direction", EACCES);
    CapturedConsole console;
    const GpioPin pin(1, 7, kPinOutput, kEdgeNone);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(pin.mode(), kPinInput);
    EXPECT_EQ(console.error(), "unable to set the gpio mode");
    EXPECT_EQ(board.writesTo("B7"), Texts{});
    EXPECT_TRUE(board.line("B7").exported);
}

TEST(GpioPinOwnership, FailsWhenTheEdgeCannotBeOpened) {
    SimulatedBoard board;
    board.fail("open", "/sys/class/gpio/pioB7/edge", EACCES);
    CapturedConsole console;
    const GpioPin pin(1, 7, kPinInputWithEdge, kEdgeBoth);
    EXPECT_FALSE(pin.ok());
    EXPECT_EQ(pin.mode(), kPinInputWithEdge);
    EXPECT_EQ(pin.edge(), kEdgeNone);
    EXPECT_EQ(console.error(), "unable to set the gpio trigger");
    EXPECT_EQ(board.writesTo("B7"), (Texts{"direction in"}));
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
        EXPECT_TRUE(pin.ok());
        EXPECT_EQ(pin.mode(), asked.mode);
        EXPECT_EQ(pin.edge(), asked.edge);
        EXPECT_EQ(board.writesTo("B7"), asked.writes);
    }
}

TEST(GpioPinOwnership, CanBeGivenBackOnce) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        GpioPin pin(1, 7);
        EXPECT_TRUE(pin.Unexport());
        EXPECT_FALSE(pin.Unexport());
        EXPECT_EQ(console.error(), "not used yet\n");
    }
    EXPECT_EQ(console.error(), "not used yet\nnot used yet\n");
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(board.writesTo("gpio"), (Texts{"export 39", "unexport 39"}));
}

TEST(GpioPinOwnership, KeepsTheLineWhenUnexportCannotBeOpened) {
    SimulatedBoard board;
    CapturedConsole console;
    {
        const GpioPin pin(1, 7);
        board.fail("open", kUnexport, EACCES);
    }
    EXPECT_TRUE(board.line("B7").exported);
    EXPECT_EQ(console.output(), "");
    EXPECT_EQ(console.error(), "unable to release a gpio");
    EXPECT_EQ(board.kernel().held(), 0U);
}

TEST(GpioPinOwnership, LetsLevelAndDirectionOutliveIt) {
    SimulatedBoard board;
    {
        GpioPin pin(1, 7, kPinOutput, kEdgeNone);
        pin.Write(kLevelHigh);
    }
    EXPECT_TRUE(board.line("B7").output);
    EXPECT_TRUE(board.line("B7").level);
}

} // namespace
} // namespace tavrelin
