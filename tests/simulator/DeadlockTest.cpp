// When no thread can ever run again, the scheduler names what each waits for.

#include "simulator/time/Scheduler.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using sim::Scheduler;

struct Deadlock {
    std::string text;
};

/// A scheduler without threads behind it: its hand-overs end in a deadlock, which is thrown.
class NothingRuns : public testing::Test {
  protected:
    NothingRuns() {
        scheduler.now = [this] { return now; };
        scheduler.advanceTo = [this](sim::Nanoseconds moment) { now = moment; };
        end.how = [](sim::Ending /*deadlock*/, const std::string& text) { throw Deadlock{text}; };
    }

    sim::RunEnd end;
    Scheduler scheduler{sim::ThreadOrder::Arrival, 1, end};
    sim::Nanoseconds now = 0;
};

TEST_F(NothingRuns, TheOnlyThreadIsNamed) {
    Scheduler::Thread& main = scheduler.AdoptMainThread();
    try {
        scheduler.WaitFor(main, &main, "a bus");
        FAIL() << "it waits for ever";
    } catch (const Deadlock& deadlock) {
        EXPECT_EQ(deadlock.text, "thread 1 waits for a bus");
    }
}

TEST_F(NothingRuns, ASleeperWakesBeforeItIsADeadlock) {
    Scheduler::Thread& main = scheduler.AdoptMainThread();
    scheduler.SleepUntil(main, 500, "its sleep");
    EXPECT_EQ(now, 500);
    EXPECT_THROW(scheduler.SleepUntil(main, sim::kNever, "the end of time"), Deadlock);
}

TEST_F(NothingRuns, AnEndedThreadLeavesTheOthersNamed) {
    scheduler.AdoptMainThread();
    Scheduler::Thread& other = scheduler.Create();
    EXPECT_EQ(other.number, 2U);
    EXPECT_EQ(scheduler.Alive(), 2U);
    scheduler.Forget(other);
    EXPECT_EQ(scheduler.Alive(), 1U);
    EXPECT_EQ(scheduler.Create().number, 3U) << "numbers are not given again";
}

} // namespace
} // namespace tavrelin
