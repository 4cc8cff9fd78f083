#include "platform/GpioPin.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavrelin {
namespace {

using sim::milliseconds;
using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kValue = "/sys/class/gpio/pioB7/value";

// Line B7 waits for edges; the outside moves it at board times.
class GpioEdge : public testing::Test {
  protected:
    void LevelAt(sim::Nanoseconds moment, bool level) {
        board.board().at(moment, [this, level] { board.setInput("B7", level); });
    }

    SimulatedBoard board;
    CapturedConsole console;
    GpioPin pin{1, 7, kPinInputWithEdge, kEdgeBoth};
};

TEST_F(GpioEdge, EndsTheWaitWhenItComes) {
    LevelAt(milliseconds(30), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    EXPECT_EQ(board.now(), milliseconds(30));
    LevelAt(milliseconds(75), false);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow);
    EXPECT_EQ(board.now(), milliseconds(75));
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST_F(GpioEdge, WakesOnlyForTheEdgeThatWasSet) {
    pin.SetEdge(kEdgeRising);
    LevelAt(milliseconds(10), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    LevelAt(milliseconds(20), false);
    LevelAt(milliseconds(50), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    EXPECT_EQ(board.now(), milliseconds(50));
    pin.SetEdge(kEdgeFalling);
    LevelAt(milliseconds(60), false);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow);
    EXPECT_EQ(board.now(), milliseconds(60));
}

TEST_F(GpioEdge, TimesOutToTheMillisecond) {
    LevelAt(milliseconds(51), true);
    EXPECT_EQ(pin.WaitForEdge(50), kLevelTimeOut);
    EXPECT_EQ(board.now(), milliseconds(50));
    EXPECT_EQ(pin.WaitForEdge(0), kLevelTimeOut);
    EXPECT_EQ(board.now(), milliseconds(50));
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST_F(GpioEdge, IsWaitedForWithoutEndWhenTheTimeOutIsNegative) {
    const sim::Nanoseconds nextDay = sim::seconds(86400);
    LevelAt(nextDay, true);
    EXPECT_EQ(pin.WaitForEdge(-1), kLevelHigh);
    EXPECT_EQ(board.now(), nextDay);
}

TEST_F(GpioEdge, DoesNotCountWhenItCameBeforeTheWait) {
    board.setInput("B7", true);
    EXPECT_EQ(pin.WaitForEdge(50), kLevelTimeOut);
    EXPECT_EQ(board.now(), milliseconds(50));
}

TEST_F(GpioEdge, DoesNotCountWhenItWasDueBeforeTheWait) {
    board.elapse(milliseconds(20));
    LevelAt(milliseconds(10), true);
    EXPECT_EQ(pin.WaitForEdge(50), kLevelTimeOut);
    EXPECT_EQ(board.now(), milliseconds(70));
    EXPECT_EQ(pin.Read(), kLevelHigh);
}

TEST_F(GpioEdge, IsClearedBeforeTheWaitAndReadAfterIt) {
    board.forget();
    LevelAt(milliseconds(30), true);
    pin.WaitForEdge(100);
    EXPECT_EQ(board.events(), (Texts{
                                  "read /sys/class/gpio/pioB7/value \"0\\n\"",
                                  "poll /sys/class/gpio/pioB7/value for 100 ms: edge",
                                  "read /sys/class/gpio/pioB7/value \"1\\n\"",
                              }));
    EXPECT_EQ(board.calls("lseek"), 2U);
    EXPECT_EQ(board.calls("read"), 2U);
}

TEST_F(GpioEdge, LeavesTheDescriptorOpenUnlessTheWaitTimedOut) {
    EXPECT_EQ(pin.WaitForEdge(10), kLevelTimeOut);
    EXPECT_EQ(board.kernel().held(), 0U);
    LevelAt(milliseconds(20), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    EXPECT_EQ(board.kernel().held(), 1U);
}

TEST_F(GpioEdge, IsATimeOutWhenTheWaitFails) {
    for (const int error : {EINTR, ENOMEM}) {
        board.fail("poll", kValue, error);
        EXPECT_EQ(pin.WaitForEdge(100), kLevelTimeOut);
        board.stopFailing();
    }
    EXPECT_EQ(board.kernel().held(), 0U);
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST_F(GpioEdge, IsAnErrorWhenTheValueCannotBeOpened) {
    board.fail("open", kValue, EACCES);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.now(), 0);
    EXPECT_EQ(board.calls("poll"), 0U);
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST_F(GpioEdge, IsAnErrorWhenNoLevelComesAfterIt) {
    LevelAt(milliseconds(10), true);
    board.fail("read", kValue, EIO, 2);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.kernel().held(), 1U);
    board.stopFailing();
    LevelAt(milliseconds(20), false);
    board.cutShort("read", kValue, 0, 2);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.kernel().held(), 2U);
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST_F(GpioEdge, IsAnErrorWhenTheWaitTellsOfNoEdge) {
    board.cutShort("poll", kValue, 0);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.calls("read"), 1U);
    EXPECT_EQ(board.kernel().held(), 1U);
    EXPECT_EQ(console.output() + console.error(), "");
}

TEST_F(GpioEdge, NeedsOnlyOneByteOfTheLevel) {
    LevelAt(milliseconds(10), true);
    board.cutShort("read", kValue, 1, 2);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
}

TEST_F(GpioEdge, IsHighForAnyTextButZero) {
    board.replaceText(kValue, "x\n");
    LevelAt(milliseconds(10), true);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    board.replaceText(kValue, "01\n");
    LevelAt(milliseconds(20), false);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow);
}

TEST_F(GpioEdge, IsAnErrorWhenTheLineGoesDuringTheWait) {
    board.board().at(milliseconds(10), [this] { board.line("B7").exported = false; });
    EXPECT_EQ(pin.WaitForEdge(100), kLevelError);
    EXPECT_EQ(board.now(), milliseconds(10));
}

TEST_F(GpioEdge, IsNotWaitedForWithoutEdgeDetection) {
    board.setInput("B7", true);
    for (const std::uint32_t mode : {kPinInput, kPinOutput}) {
        pin.SetEdge(kEdgeNone);
        pin.SetDirection(mode);
        pin.Write(kLevelHigh);
        EXPECT_EQ(pin.WaitForEdge(100), kLevelHigh);
    }
    board.fail("open", kValue, EACCES);
    EXPECT_EQ(pin.WaitForEdge(100), kLevelLow); // as a plain read answers
    EXPECT_EQ(board.calls("poll"), 0U);
    EXPECT_EQ(board.now(), 0);
    EXPECT_EQ(board.kernel().held(), 0U);
}

} // namespace
} // namespace tavrelin
