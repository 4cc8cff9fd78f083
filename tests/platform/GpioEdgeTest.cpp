#include "platform/GpioPin.h"

#include "tests/support/BoardTest.h"

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Texts;

constexpr const char* kValue = "/sys/class/gpio/pioB7/value";

// Line B7 waits for edges; the outside moves it at board times.
class GpioEdge : public BoardTest {
  protected:
    void LevelAt(sim::Nanoseconds moment, bool level) {
        board.Model().At(moment, [this, level] { board.SetInput("B7", level); });
    }

    GpioPin pin{1, 7, kPinInputWithEdge, kEdgeBoth};
};

TEST_F(GpioEdge, EndsTheWaitWhenItComes) {
    LevelAt(Milliseconds(30), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    EXPECT_EQ(board.Now(), Milliseconds(30));
    LevelAt(Milliseconds(75), false);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow);
    EXPECT_EQ(board.Now(), Milliseconds(75));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GpioEdge, WakesOnlyForTheEdgeThatWasSet) {
    pin.SetEdge(kEdgeRising);
    LevelAt(Milliseconds(10), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    LevelAt(Milliseconds(20), false);
    LevelAt(Milliseconds(50), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    EXPECT_EQ(board.Now(), Milliseconds(50));
    pin.SetEdge(kEdgeFalling);
    LevelAt(Milliseconds(60), false);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow);
    EXPECT_EQ(board.Now(), Milliseconds(60));
}

TEST_F(GpioEdge, TimesOutToTheMillisecond) {
    LevelAt(Milliseconds(51), true);
    EXPECT_EQ(pin.WaitForEdge(50), kLevelTimeOut);
    EXPECT_EQ(board.Now(), Milliseconds(50));
    EXPECT_EQ(pin.WaitForEdge(0), kLevelTimeOut);
    EXPECT_EQ(board.Now(), Milliseconds(50));
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(GpioEdge, IsWaitedForWithoutEndWhenTheTimeOutIsNegative) {
    const sim::Nanoseconds nextDay = sim::Seconds(86400);
    LevelAt(nextDay, true);
    EXPECT_EQ(pin.WaitForEdge(-1), kLevelHigh);
    EXPECT_EQ(board.Now(), nextDay);
}

TEST_F(GpioEdge, DoesNotCountWhenItCameOrWasDueBeforeTheWait) {
    board.SetInput("B7", true);
    EXPECT_EQ(pin.WaitForEdge(50), kLevelTimeOut);
    board.Elapse(Milliseconds(20));
    LevelAt(Milliseconds(60), false);
    EXPECT_EQ(pin.WaitForEdge(50), kLevelTimeOut);
    EXPECT_EQ(board.Now(), Milliseconds(120));
    EXPECT_EQ(pin.Read(), kLevelLow);
}

TEST_F(GpioEdge, IsClearedBeforeTheWaitAndReadAfterIt) {
    board.Forget();
    LevelAt(Milliseconds(30), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    EXPECT_EQ(board.Events(), (Texts{"read /sys/class/gpio/pioB7/value \"0\\n\"",
                                     "poll /sys/class/gpio/pioB7/value for 100 ms: edge",
                                     "read /sys/class/gpio/pioB7/value \"1\\n\""}));
    EXPECT_EQ(board.Calls("lseek"), 2U);
    EXPECT_EQ(board.Calls("read"), 2U);
}

TEST_F(GpioEdge, LeavesTheDescriptorOpenUnlessTheWaitTimedOut) {
    EXPECT_EQ(pin.WaitForEdge(10), kLevelTimeOut);
    EXPECT_EQ(board.Kernel().Held(), 0U);
    LevelAt(Milliseconds(20), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    EXPECT_EQ(board.Kernel().Held(), 1U);
}

// Nothing is said of any of these.
class GpioEdgeFailing : public GpioEdge {
  protected:
    void TearDown() override { EXPECT_EQ(Console(), kSilence); }
};

TEST_F(GpioEdgeFailing, IsATimeOutWhenTheWaitFails) {
    for (const int error : {EINTR, ENOMEM}) {
        board.Fail("poll", kValue, error);
        EXPECT_EQ(pin.WaitForEdge(100), kLevelTimeOut);
        board.StopFailing();
    }
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(GpioEdgeFailing, IsAnErrorWhenTheValueCannotBeOpened) {
    FailToOpen("B7/value");
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.Now(), 0);
    EXPECT_EQ(board.Calls("poll"), 0U);
}

TEST_F(GpioEdgeFailing, IsAnErrorWhenNoLevelComesAfterIt) {
    LevelAt(Milliseconds(10), true);
    board.Fail("read", kValue, EIO, 2);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.Kernel().Held(), 1U);
    board.StopFailing();
    LevelAt(Milliseconds(20), false);
    board.CutShort("read", kValue, 0, 2);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.Kernel().Held(), 2U);
}

TEST_F(GpioEdgeFailing, IsAnErrorWhenTheWaitTellsOfNoEdge) {
    board.CutShort("poll", kValue, 0);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.Calls("read"), 1U);
    EXPECT_EQ(board.Kernel().Held(), 1U);
}

TEST_F(GpioEdge, NeedsOnlyOneByteOfTheLevel) {
    LevelAt(Milliseconds(10), true);
    board.CutShort("read", kValue, 1, 2);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
}

TEST_F(GpioEdge, IsHighForAnyTextButZero) {
    board.ReplaceText(kValue, "x\n");
    LevelAt(Milliseconds(10), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    board.ReplaceText(kValue, "01\n");
    LevelAt(Milliseconds(20), false);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow);
}

TEST_F(GpioEdge, IsAnErrorWhenTheLineGoesDuringTheWait) {
    board.Model().At(Milliseconds(10), [this] { board.Line("B7").exported = false; });
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.Now(), Milliseconds(10));
}

TEST_F(GpioEdge, IsAnErrorOnALineThatIsGone) {
    board.Line("B7").exported = false;
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(Console(), (Said{"", "not locked yet\n"}));
}

TEST_F(GpioEdge, IsNotWaitedForWithoutEdgeDetection) {
    board.SetInput("B7", true);
    for (const std::uint32_t mode : {kPinInput, kPinOutput}) {
        pin.SetEdge(kEdgeNone);
        pin.SetDirection(mode);
        pin.Write(kLevelHigh);
        EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    }
    board.Fail("open", kValue, EACCES);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow); // as a plain read answers
    EXPECT_EQ(board.Calls("poll"), 0U);
    EXPECT_EQ(board.Now(), 0);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
