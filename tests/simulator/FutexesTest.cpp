// Futexes with real threads on board time: who is woken, in which order, and who times out.

#include "simulator/time/Futexes.h"
#include "simulator/interpose/SystemCallGate.h"
#include "simulator/testing/SimulatedBoard.h"

#include "tests/support/Worker.h"

#include <cerrno>
#include <climits>
#include <gtest/gtest.h>
#include <list>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::Futexes;
using sim::kNever;
using sim::Microseconds;
using sim::Milliseconds;
using sim::SimulatedBoard;
using sim::system_calls::Through;

class FutexWords : public testing::Test {
  protected:
    /// A thread that waits on the word and notes its name when it was woken, else the errno.
    void Waiter(const char* name, std::uint32_t bits = Futexes::kAnyBit,
                sim::Nanoseconds deadline = kNever) {
        waiters.emplace_back([this, name, bits, deadline] {
            const Through through;
            const long result = futexes.Wait(&word, 0, bits, deadline, "a word");
            order += (order.empty() ? "" : " ") + std::string(name);
            order += result == 0 ? "" : std::to_string(result);
        });
    }
    /// Threads with these names wait on the word, in this order.
    void Wait(const std::vector<const char*>& names) {
        for (const char* name : names) {
            Waiter(name);
        }
        ::usleep(1);
    }
    std::string Woken() {
        ::usleep(1);
        return std::exchange(order, "");
    }

    SimulatedBoard board;
    Futexes futexes{board.Scheduler()};
    std::uint32_t word = 0;
    std::uint32_t other = 0;
    std::string order;
    std::list<Worker> waiters;
};

TEST_F(FutexWords, AWordThatHoldsAnotherValueIsNotWaitedFor) {
    EXPECT_EQ(futexes.Wait(&word, 1, Futexes::kAnyBit, kNever, "a word"), -EAGAIN);
    EXPECT_EQ(futexes.Wait(&word, 0, 0, kNever, "a word"), -EINVAL) << "nobody could wake it";
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(FutexWords, AWaitEndsAtItsDeadline) {
    const Through through;
    EXPECT_EQ(futexes.Wait(&word, 0, Futexes::kAnyBit, Milliseconds(30), "a word"), -ETIMEDOUT);
    EXPECT_EQ(board.Now(), Milliseconds(30));
    EXPECT_EQ(futexes.Wait(&word, 0, Futexes::kAnyBit, Milliseconds(10), "a word"), -ETIMEDOUT);
    EXPECT_EQ(board.Now(), Milliseconds(30)) << "a deadline in the past takes no time";
    EXPECT_EQ(futexes.Wake(&word, INT_MAX), 0) << "nobody waits any more";
}

TEST_F(FutexWords, ThoseWhoWaitAreWokenInOrderOfArrival) {
    Wait({"a", "b", "c", "d"});
    EXPECT_EQ(futexes.Wake(&other, INT_MAX), 0);
    EXPECT_EQ(futexes.Wake(&word, 2), 2);
    EXPECT_EQ(Woken(), "a b");
    EXPECT_EQ(futexes.Wake(&word, 0), 1) << "the kernel wakes one for none, too";
    EXPECT_EQ(Woken(), "c");
    EXPECT_EQ(futexes.Wake(&word, INT_MAX), 1);
    EXPECT_EQ(Woken(), "d");
}

TEST_F(FutexWords, AWakeReachesThoseWhoShareABitWithIt) {
    Waiter("read", 1);
    Waiter("write", 2);
    Waiter("both", 3);
    ::usleep(1);
    EXPECT_EQ(futexes.Wake(&word, INT_MAX, 4), 0);
    EXPECT_EQ(futexes.Wake(&word, INT_MAX, 0), -EINVAL);
    EXPECT_EQ(futexes.Wake(&word, INT_MAX, 2), 2);
    EXPECT_EQ(Woken(), "write both");
    EXPECT_EQ(futexes.Wake(&word, 1, 1), 1);
    EXPECT_EQ(Woken(), "read");
}

TEST_F(FutexWords, TheBitsOfAWaitEndWithIt) {
    waiters.emplace_back([&] {
        const Through through;
        futexes.Wait(&word, 0, 1, kNever, "a word");
        futexes.Wait(&word, 0, Futexes::kAnyBit, kNever, "a word");
    });
    ::usleep(1);
    EXPECT_EQ(futexes.Wake(&word, 1, 1), 1);
    ::usleep(1);
    EXPECT_EQ(futexes.Wake(&word, 1, 2), 1);
}

TEST_F(FutexWords, AWakeAtTheVeryDeadlineIsOne) {
    Waiter("woken", Futexes::kAnyBit, Milliseconds(5));
    Waiter("late", Futexes::kAnyBit, Milliseconds(5));
    ::usleep(1);
    EXPECT_EQ(futexes.Wake(&word, 1), 1);
    ::usleep(5000);
    EXPECT_EQ(Woken(), "woken late" + std::to_string(-ETIMEDOUT));
}

TEST_F(FutexWords, ARequeueWakesSomeAndHasOthersWaitElsewhere) {
    Wait({"a", "b", "c", "d", "e"});
    EXPECT_EQ(futexes.Requeue(&word, 1, &other, 3), 4);
    EXPECT_EQ(Woken(), "a");
    EXPECT_EQ(futexes.Wake(&word, INT_MAX), 1);
    EXPECT_EQ(Woken(), "e");
    EXPECT_EQ(futexes.Wake(&other, INT_MAX), 3);
    EXPECT_EQ(Woken(), "b c d");
}

TEST_F(FutexWords, ARequeueOfAWordThatHasChangedDoesNothing) {
    Wait({"a"});
    EXPECT_EQ(futexes.Requeue(&word, 1, &other, 1, 7), -EAGAIN);
    EXPECT_EQ(futexes.Requeue(&word, -1, &other, 1), -EINVAL);
    EXPECT_EQ(futexes.Requeue(&word, 1, &other, -1), -EINVAL);
    EXPECT_EQ(Woken(), "");
    EXPECT_EQ(futexes.Requeue(&word, 0, &other, INT_MAX, 0), 1);
    EXPECT_EQ(futexes.Wake(&other, 1), 1);
    EXPECT_EQ(Woken(), "a");
}

TEST_F(FutexWords, ThoseWhoWaitForEverAreNamedInADeadlock) {
    struct Deadlock {
        std::string text;
    };
    sim::RunEnd end;
    end.how = [](sim::Ending /*deadlock*/, const std::string& text) { throw Deadlock{text}; };
    sim::Scheduler scheduler(sim::ThreadOrder::Arrival, 1, end);
    scheduler.now = [] { return sim::Nanoseconds{0}; };
    sim::Scheduler::Thread* const before = sim::ThreadSelf();
    sim::SetThreadSelf(&scheduler.AdoptMainThread());
    std::string text;
    try {
        Futexes(scheduler).Wait(&word, 0, Futexes::kAnyBit, kNever, "a condition variable");
    } catch (const Deadlock& deadlock) {
        text = deadlock.text;
    }
    sim::SetThreadSelf(before);
    EXPECT_EQ(text, "thread 1 waits for a condition variable");
}

class Yielding : public testing::Test {
  protected:
    void Yield() {
        const Through through;
        board.Timeline().Yields();
    }

    SimulatedBoard board;
};

TEST_F(Yielding, LetsTheOthersRunFirst) {
    std::string order;
    Worker a([&] {
        order += "a";
        Yield();
        order += "A";
    });
    Worker b([&] { order += "b"; });
    Yield();
    order += "main ";
    a.Join();
    EXPECT_EQ(order, "abmain A");
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(Yielding, TakesTimeWhenItIsAllThatHappens) {
    for (int i = 0; i < 1000; ++i) {
        Yield();
    }
    EXPECT_EQ(board.Now(), 0);
    Yield();
    EXPECT_EQ(board.Now(), Microseconds(20));
}

TEST_F(Yielding, OfTwoToEachOtherEndsWithWhatTheyWaitFor) {
    bool done = false;
    const auto spin = [&] {
        while (!done) {
            Yield();
        }
    };
    Worker a(spin);
    Worker b(spin);
    ::usleep(5000);
    done = true;
    a.Join();
    b.Join();
    EXPECT_LT(board.Now(), Milliseconds(7));
}

} // namespace
} // namespace tavrelin
