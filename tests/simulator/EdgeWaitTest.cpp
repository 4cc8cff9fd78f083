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

using sim::milliseconds;
using sim::SimulatedBoard;

/// A line A7 that watches an edge, and one open descriptor of its value.
class EdgeWait : public testing::Test {
  protected:
    EdgeWait() {
        store(gpioExport, "7");
        store(lineFile("A7", "edge"), "both");
    }

    void raiseAt(int ms) {
        board.board().at(milliseconds(ms), [this] { board.setInput("A7", true); });
    }
    /// What poll tells: the returned events, 0 for a time-out.
    short wait(const Descriptor& file, int timeout, short events = POLLPRI) {
        pollfd one{file.number(), events, 0};
        const int count = ::poll(&one, 1, timeout);
        EXPECT_EQ(count, one.revents != 0 ? 1 : 0);
        return one.revents;
    }

    SimulatedBoard board;
};

TEST_F(EdgeWait, IsOverAtOnceBeforeTheFirstRead) {
    Descriptor fresh(lineFile("A7", "value"), O_RDONLY);
    EXPECT_EQ(wait(fresh, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.now(), 0);
}

TEST_F(EdgeWait, EndsAtTheEdge) {
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    file.readAgain();
    raiseAt(40);
    EXPECT_EQ(wait(file, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.now(), milliseconds(40));
    EXPECT_EQ(file.readAgain(), "1\n");
    EXPECT_EQ(wait(file, 10), 0);
}

TEST_F(EdgeWait, EndsAtItsTimeOut) {
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    file.readAgain();
    raiseAt(2000);
    EXPECT_EQ(wait(file, 1000), 0);
    EXPECT_EQ(board.now(), milliseconds(1000));
}

TEST_F(EdgeWait, WaitsForEverWithANegativeTimeOut) {
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    file.readAgain();
    raiseAt(100'000);
    EXPECT_EQ(wait(file, -1), POLLPRI | POLLERR);
    EXPECT_EQ(board.now(), milliseconds(100'000));
}

TEST_F(EdgeWait, HeedsOnlyTheEdgesThatTheLineWatches) {
    store(lineFile("A7", "edge"), "falling");
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    file.readAgain();
    raiseAt(40);
    EXPECT_EQ(wait(file, 1000), 0);
    board.setInput("A7", false);
    EXPECT_EQ(wait(file, 1000), POLLPRI | POLLERR);

    store(lineFile("A7", "edge"), "none");
    file.readAgain();
    board.setInput("A7", true);
    EXPECT_EQ(wait(file, 10), 0);
}

TEST_F(EdgeWait, EveryDescriptorSeesTheEdgeForItself) {
    Descriptor one(lineFile("A7", "value"), O_RDONLY);
    Descriptor other(lineFile("A7", "value"), O_RDONLY);
    one.readAgain();
    EXPECT_EQ(wait(other, 10), POLLPRI | POLLERR) << "it has not been read yet";
    other.readAgain();
    board.setInput("A7", true);
    one.readAgain();
    EXPECT_EQ(wait(one, 10), 0);
    EXPECT_EQ(wait(other, 10), POLLPRI | POLLERR);
}

TEST_F(EdgeWait, AskedForReadabilityAnAttributeIsAlwaysReady) {
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    file.readAgain();
    EXPECT_EQ(wait(file, 1000, POLLIN | POLLPRI), POLLIN);
    EXPECT_EQ(board.now(), 0);
}

TEST_F(EdgeWait, AStaleDescriptorFiresAtOnceAndReadsNoDevice) {
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    file.readAgain();
    store(gpioUnexport, "7");
    EXPECT_EQ(wait(file, 1000), POLLPRI | POLLERR);
    EXPECT_EQ(board.now(), 0);
    EXPECT_EQ(file.readAgain(), "ENODEV");
}

TEST_F(EdgeWait, AStaleDescriptorStaysStaleWhenTheLineIsExportedAgain) {
    Descriptor file(lineFile("A7", "value"), O_RDWR);
    store(gpioUnexport, "7");
    store(gpioExport, "7");
    store(lineFile("A7", "direction"), "out");
    EXPECT_EQ(file.readAgain(), "ENODEV");
    EXPECT_EQ(file.write("1"), -ENODEV);
    EXPECT_FALSE(board.line("A7").level);
}

void* unexportLater(void* /*unused*/) {
    const timespec span{0, 300'000'000};
    ::nanosleep(&span, nullptr);
    store(gpioUnexport, "7");
    return nullptr;
}

TEST_F(EdgeWait, EndsWhenAnotherThreadGivesTheLineBack) {
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    file.readAgain();
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, nullptr, unexportLater, nullptr), 0);
    EXPECT_EQ(wait(file, -1), POLLPRI | POLLERR);
    EXPECT_EQ(board.now(), milliseconds(300));
    pthread_join(thread, nullptr);
}

TEST_F(EdgeWait, CanBeMadeToFail) {
    Descriptor file(lineFile("A7", "value"), O_RDONLY);
    board.fail("poll", lineFile("A7", "value"), EINTR);
    pollfd one{file.number(), POLLPRI, 0};
    EXPECT_EQ(::poll(&one, 1, 1000), -1);
    EXPECT_EQ(errno, EINTR);
}

} // namespace
} // namespace tavrelin
