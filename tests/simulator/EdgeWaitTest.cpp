// Waiting for an edge with poll on a line's value.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::SimulatedBoard;

/// A line A7 that watches an edge, and one open descriptor of its value.
class EdgeWait : public testing::Test {
  protected:
    EdgeWait() {
        Store(kGpioExport, "7");
        Store(LineFile("A7", "edge"), "both");
    }

    void RaiseAt(int ms) {
        board.Model().At(Milliseconds(ms), [this] { board.SetInput("A7", true); });
    }
    /// What poll tells: the returned events, 0 for a time-out.
    short Wait(const Descriptor& file, int timeout, short events = POLLPRI) {
        pollfd one{file.Number(), events, 0};
        const int count = ::poll(&one, 1, timeout);
        EXPECT_EQ(count, one.revents != 0 ? 1 : 0);
        return one.revents;
    }

    SimulatedBoard board;
};

TEST_F(EdgeWait, IsOverAtOnceBeforeTheFirstRead) {
    Descriptor fresh(LineFile("A7", "value"), O_RDONLY);
    EXPECT_EQ(Wait(fresh, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(EdgeWait, EndsAtTheEdge) {
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    file.ReadAgain();
    RaiseAt(40);
    EXPECT_EQ(Wait(file, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), Milliseconds(40));
    EXPECT_EQ(file.ReadAgain(), "1\n");
    EXPECT_EQ(Wait(file, 10), 0);
}

TEST_F(EdgeWait, EndsAtItsTimeOut) {
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    file.ReadAgain();
    RaiseAt(2000);
    EXPECT_EQ(Wait(file, 1000), 0);
    EXPECT_EQ(board.Now(), Milliseconds(1000));
}

TEST_F(EdgeWait, WaitsForEverWithANegativeTimeOut) {
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    file.ReadAgain();
    RaiseAt(100'000);
    EXPECT_EQ(Wait(file, -1), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), Milliseconds(100'000));
}

TEST_F(EdgeWait, HeedsOnlyTheEdgesThatTheLineWatches) {
    Store(LineFile("A7", "edge"), "falling");
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    file.ReadAgain();
    RaiseAt(40);
    EXPECT_EQ(Wait(file, 1000), 0);
    board.SetInput("A7", false);
    EXPECT_EQ(Wait(file, 1000), POLLPRI | POLLERR);

    Store(LineFile("A7", "edge"), "none");
    file.ReadAgain();
    board.SetInput("A7", true);
    EXPECT_EQ(Wait(file, 10), 0);
}

TEST_F(EdgeWait, EveryDescriptorSeesTheEdgeForItself) {
    Descriptor one(LineFile("A7", "value"), O_RDONLY);
    Descriptor other(LineFile("A7", "value"), O_RDONLY);
    one.ReadAgain();
    EXPECT_EQ(Wait(other, 10), POLLPRI | POLLERR) << "it has not been read yet";
    other.ReadAgain();
    board.SetInput("A7", true);
    one.ReadAgain();
    EXPECT_EQ(Wait(one, 10), 0);
    EXPECT_EQ(Wait(other, 10), POLLPRI | POLLERR);
}

TEST_F(EdgeWait, AskedForReadabilityAnAttributeIsAlwaysReady) {
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    file.ReadAgain();
    EXPECT_EQ(Wait(file, 1000, POLLIN | POLLPRI), POLLIN);
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(EdgeWait, AStaleDescriptorFiresAtOnceAndReadsNoDevice) {
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    file.ReadAgain();
    Store(kGpioUnexport, "7");
    EXPECT_EQ(Wait(file, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), 0);
    EXPECT_EQ(file.ReadAgain(), "ENODEV");
}

TEST_F(EdgeWait, AStaleDescriptorStaysStaleWhenTheLineIsExportedAgain) {
    Descriptor file(LineFile("A7", "value"), O_RDWR);
    Store(kGpioUnexport, "7");
    Store(kGpioExport, "7");
    Store(LineFile("A7", "direction"), "out");
    EXPECT_EQ(file.ReadAgain(), "ENODEV");
    EXPECT_EQ(file.Write("1"), -ENODEV);
    EXPECT_FALSE(board.Line("A7").level);
}

void* UnexportLater(void* /*unused*/) {
    const timespec span{0, 300'000'000};
    ::nanosleep(&span, nullptr);
    Store(kGpioUnexport, "7");
    return nullptr;
}

TEST_F(EdgeWait, EndsWhenAnotherThreadGivesTheLineBack) {
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    file.ReadAgain();
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, nullptr, UnexportLater, nullptr), 0);
    EXPECT_EQ(Wait(file, -1), POLLPRI | POLLERR);
    EXPECT_EQ(board.Now(), Milliseconds(300));
    pthread_join(thread, nullptr);
}

TEST_F(EdgeWait, CanBeMadeToFail) {
    Descriptor file(LineFile("A7", "value"), O_RDONLY);
    board.Fail("poll", LineFile("A7", "value"), EINTR);
    pollfd one{file.Number(), POLLPRI, 0};
    EXPECT_EQ(::poll(&one, 1, 1000), -1);
    EXPECT_EQ(errno, EINTR);
}

} // namespace
} // namespace tavrelin
