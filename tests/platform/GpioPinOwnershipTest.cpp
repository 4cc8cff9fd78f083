#include "platform/GpioPin.h"

#include "tests/support/BoardTest.h"

namespace tavrelin {
namespace {

using sim::Texts;

using GpioPinOwnership = BoardTest;

TEST_F(GpioPinOwnership, TakesALineAsInputWithoutEdgeAndGivesItBack) {
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
    EXPECT_EQ(board.Events(),
              (Texts{"access /sys/class/gpio/pioB7 ENOENT", "write /sys/class/gpio/export \"39\"",
                     "write /sys/class/gpio/pioB7/direction \"in\"",
                     "write /sys/class/gpio/pioB7/edge \"none\"",
                     "write /sys/class/gpio/unexport \"39\""}));
    EXPECT_EQ(Console(), kSilence);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(GpioPinOwnership, NamesLinesByPortAndBit) {
    struct Case {
        std::uint32_t bank, bit;
        const char *exported, *name;
    };
    for (const Case& line :
         {Case{0, 0, "export 0", "A0"}, Case{0, 3, "export 3", "A3"}, Case{1, 7, "export 39", "B7"},
          Case{2, 27, "export 91", "C27"}, Case{3, 31, "export 127", "D31"}}) {
        NewBoard();
        const GpioPin pin(line.bank, line.bit);
        EXPECT_TRUE(pin.Ok()) << line.name;
        EXPECT_EQ(board.WritesTo("gpio"), (Texts{line.exported}));
        EXPECT_EQ(board.WritesTo(line.name), (Texts{"direction in", "edge none"}));
    }
}

TEST_F(GpioPinOwnership, RefusesBit32OnTheStreamOfEachConstructor) {
    const GpioPin pin(0, 32);
    EXPECT_EQ(Console(), (Said{"wrong gpio pin", ""}));
    const GpioPin pinWithMode(0, 32, kPinOutput, kEdgeNone);
    EXPECT_EQ(Console(), (Said{"wrong gpio pin", "wrong gpio pin"}));
    EXPECT_FALSE(pin.Ok() || pinWithMode.Ok());
    EXPECT_EQ(board.Calls("access") + board.Calls("open"), 0U);
}

TEST_F(GpioPinOwnership, ReleasesNobodysLineAfterARefusal) {
    board.Line("A0").exported = true;
    board.Line("B0").exported = true;
    { const GpioPin refused(1, 32); }
    EXPECT_TRUE(board.Line("A0").exported);
    EXPECT_TRUE(board.Line("B0").exported);
    EXPECT_EQ(Console(), (Said{"wrong gpio pin", "not used yet\n"}));
}

TEST_F(GpioPinOwnership, LeavesTheBankToTheKernel) {
    const GpioPin pin(4, 0);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(pin.Bank(), 4U);
    EXPECT_EQ(board.Events(), (Texts{"access /sys/class/gpio/pioE0 ENOENT",
                                     "write /sys/class/gpio/export \"128\" EINVAL",
                                     "access /sys/class/gpio/pioE0 ENOENT"}));
    EXPECT_EQ(console.Error(), "not locked yet\n");
}

// Even so the line can be used, and goes with the object.
TEST_F(GpioPinOwnership, CannotBeHadOfALineThatIsInUse) {
    board.Line("B7").exported = true;
    {
        GpioPin pin(1, 7);
        EXPECT_FALSE(pin.Ok());
        EXPECT_EQ(Console(), (Said{"", "already used\n"}));
        EXPECT_EQ(board.Events(), Texts{});
        EXPECT_TRUE(pin.SetDirection(kPinOutput) && pin.Write(kLevelHigh));
        EXPECT_TRUE(board.Line("B7").level);
    }
    EXPECT_FALSE(board.Line("B7").exported);
}

// A folder that may not be listed counts as none: the kernel says that the line is busy, which is
// not looked at.
TEST_F(GpioPinOwnership, CannotBeHadOfALineWhoseFolderMayNotBeRead) {
    board.Line("B7").exported = true;
    board.FailForever("access", "/sys/class/gpio/pioB7", EACCES);
    GpioPin pin(1, 7);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(board.WritesTo("gpio"), (Texts{"export 39 EBUSY"}));
    EXPECT_EQ(pin.Read(), kLevelError);
    EXPECT_EQ(Console(), (Said{"", "not locked yet\nnot locked yet\n"}));
}

TEST_F(GpioPinOwnership, DoesNotLookAtWhatTheExportCameTo) {
    board.Fail("write", "/sys/class/gpio/export", EBUSY);
    GpioPin pin(1, 7);
    EXPECT_FALSE(pin.Ok());
    EXPECT_EQ(console.Error(), "not locked yet\n"); // of the direction, not of the export
    EXPECT_TRUE(pin.Export());
}

TEST_F(GpioPinOwnership, StopsAtTheFirstStepThatFails) {
    struct Case {
        const char *path, *complaint;
        Texts writes;
        std::uint32_t mode;
    };
    for (const Case& failing :
         {Case{"/sys/class/gpio/export", "unable to lock a gpio", {}, kPinInput},
          Case{"/sys/class/gpio/pioB7/direction", "unable to set the gpio mode", {}, kPinInput},
          Case{"/sys/class/gpio/pioB7/edge",
               "unable to set the gpio trigger",
               {"direction in"},
               kPinInputWithEdge}}) {
        NewBoard();
        board.Fail("open", failing.path, EACCES);
        const GpioPin pin(1, 7, kPinInputWithEdge, kEdgeBoth);
        EXPECT_FALSE(pin.Ok());
        EXPECT_EQ(pin.Mode(), failing.mode);
        EXPECT_EQ(pin.Edge(), kEdgeNone);
        EXPECT_EQ(Console(), (Said{"", failing.complaint}));
        EXPECT_EQ(board.WritesTo("B7"), failing.writes);
    }
}

TEST_F(GpioPinOwnership, SetsTheEdgeOnlyOfAnInputThatWaitsForOne) {
    struct Case {
        std::uint32_t mode;
        Texts writes;
        std::uint32_t edge;
    };
    for (const Case& asked : {Case{0, {"direction in", "edge none"}, kEdgeNone},
                              Case{1, {"direction out", "edge none"}, kEdgeNone},
                              Case{2, {"direction in", "edge falling"}, kEdgeFalling},
                              Case{3, {"direction in", "edge falling"}, kEdgeFalling}}) {
        NewBoard();
        const GpioPin pin(1, 7, asked.mode, kEdgeFalling);
        EXPECT_TRUE(pin.Ok());
        EXPECT_EQ(pin.Mode(), asked.mode);
        EXPECT_EQ(pin.Edge(), asked.edge);
        EXPECT_EQ(board.WritesTo("B7"), asked.writes);
    }
}

TEST_F(GpioPinOwnership, CanBeGivenBackOnce) {
    {
        GpioPin pin(1, 7);
        EXPECT_TRUE(pin.Unexport());
        EXPECT_FALSE(pin.Unexport());
        EXPECT_EQ(console.Error(), "not used yet\n");
    }
    EXPECT_EQ(Console(), (Said{"", "not used yet\nnot used yet\n"}));
    EXPECT_EQ(board.WritesTo("gpio"), (Texts{"export 39", "unexport 39"}));
}

TEST_F(GpioPinOwnership, KeepsTheLineWhenUnexportCannotBeOpened) {
    {
        const GpioPin pin(1, 7);
        board.Fail("open", "/sys/class/gpio/unexport", EACCES);
    }
    EXPECT_TRUE(board.Line("B7").exported);
    EXPECT_EQ(Console(), (Said{"", "unable to release a gpio"}));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(GpioPinOwnership, LetsLevelAndDirectionOutliveIt) {
    {
        GpioPin pin(1, 7, kPinOutput, kEdgeNone);
        pin.Write(kLevelHigh);
    }
    EXPECT_TRUE(board.Line("B7").output);
    EXPECT_TRUE(board.Line("B7").level);
}

} // namespace
} // namespace tavrelin
