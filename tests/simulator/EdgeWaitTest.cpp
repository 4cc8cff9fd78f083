// Waiting for an edge with poll on a line's value.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include "tests/support/Worker.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::SimulatedBoard;

/// A line A7 that watches an edge, and an open descriptor of its value that was read once.
class EdgeWait : public testing::Test {
  protected:
    EdgeWait() {
        Store(kGpioExport, "7");
        Store(LineFile("A7", "edge"), "both");
        value.emplace(LineFile("A7", "value"), O_RDONLY);
        value->ReadAgain();
    }

    void RaiseAt(int ms) {
        board.Model().At(Milliseconds(ms), [this] { board.SetInput("A7", true); });
    }
    /// What poll tells: the returned events, 0 for a time-out.
    static short Wait(const Descriptor& file, int timeout, short events = POLLPRI) {
        pollfd one{file.Number(), events, 0};
        const int count = ::poll(&one, 1, timeout);
        EXPECT_EQ(count, one.revents != 0 ? 1 : 0);
        return one.revents;
    }

    SimulatedBoard board;
    std::optional<Descriptor> value;
};

TEST_F(EdgeWait, EndsAtTheEdge) {
    RaiseAt(40);
    EXPECT_EQ(Wait(*value, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), Milliseconds(40));
    EXPECT_EQ(value->ReadAgain(), "1\n");
    EXPECT_EQ(Wait(*value, 10), 0);
}

TEST_F(EdgeWait, EndsAtItsTimeOut) {
    RaiseAt(2000);
    EXPECT_EQ(Wait(*value, 1000), 0);
    EXPECT_EQ(board.Now(), Milliseconds(1000));
}

TEST_F(EdgeWait, WaitsForEverWithANegativeTimeOut) {
    RaiseAt(100'000);
    EXPECT_EQ(Wait(*value, -1), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), Milliseconds(100'000));
}

TEST_F(EdgeWait, HeedsOnlyTheEdgesThatTheLineWatches) {
    Store(LineFile("A7", "edge"), "falling");
    RaiseAt(40);
    EXPECT_EQ(Wait(*value, 1000), 0);
    board.SetInput("A7", false);
    EXPECT_EQ(Wait(*value, 1000), POLLPRI | POLLERR);

    Store(LineFile("A7", "edge"), "none");
    value->ReadAgain();
    board.SetInput("A7", true);
    EXPECT_EQ(Wait(*value, 10), 0);
}

TEST_F(EdgeWait, EveryDescriptorSeesTheEdgeForItself) {
    const Descriptor other(LineFile("A7", "value"), O_RDONLY);
    EXPECT_EQ(Wait(other, 1000), POLLPRI | POLLERR) << "it has not been read yet";
    EXPECT_EQ(board.Now(), 0);
    other.ReadAgain();
    board.SetInput("A7", true);
    value->ReadAgain();
    EXPECT_EQ(Wait(*value, 10), 0);
    EXPECT_EQ(Wait(other, 10), POLLPRI | POLLERR);
}

TEST_F(EdgeWait, AskedForReadabilityAnAttributeIsAlwaysReady) {
    EXPECT_EQ(Wait(*value, 1000, POLLIN | POLLPRI), POLLIN);
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(EdgeWait, AStaleDescriptorFiresAtOnceAndReadsNoDevice) {
    Store(kGpioUnexport, "7");
    EXPECT_EQ(Wait(*value, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), 0);
    EXPECT_EQ(value->ReadAgain(), "ENODEV");
}

TEST_F(EdgeWait, AStaleDescriptorStaysStaleWhenTheLineIsExportedAgain) {
    const Descriptor file(LineFile("A7", "value"), O_RDWR);
    Store(kGpioUnexport, "7");
    Store(kGpioExport, "7");
    Store(LineFile("A7", "direction"), "out");
    EXPECT_EQ(file.ReadAgain(), "ENODEV");
    EXPECT_EQ(file.Write("1"), -ENODEV);
    EXPECT_FALSE(board.Line("A7").level);
}

TEST_F(EdgeWait, EndsWhenAnotherThreadGivesTheLineBack) {
    const Worker worker([] {
        ::usleep(300'000);
        Store(kGpioUnexport, "7");
    });
    EXPECT_EQ(Wait(*value, -1), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), Milliseconds(300));
}

TEST_F(EdgeWait, CanBeMadeToFail) {
    board.Fail("poll", LineFile("A7", "value"), EINTR);
    pollfd one{value->Number(), POLLPRI, 0};
    EXPECT_EQ(::poll(&one, 1, 1000), -1);
    EXPECT_EQ(errno, EINTR);
}

} // namespace
} // namespace tavrelin
