// The scheduler with real threads: one at a time, in an order that is known beforehand.

#include "simulator/testing/SimulatedBoard.h"

#include "tests/support/Worker.h"

#include <cerrno>
#include <ctime>
#include <gtest/gtest.h>
#include <pthread.h>
#include <set>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Scenario;
using sim::SimulatedBoard;

void SleepFor(int ms) {
    const timespec span{ms / 1'000, ms % 1'000 * 1'000'000L};
    ::nanosleep(&span, nullptr);
}

class Threads : public testing::Test {
  protected:
    void Note(const std::string& what) {
        order += (order.empty() ? "" : " ") + what;
        times.push_back(board.Now() / Milliseconds(1));
    }

    SimulatedBoard board;
    std::string order;
    std::vector<std::int64_t> times;
};

TEST_F(Threads, RunInOrderOfArrivalUntilTheyWait) {
    {
        Worker a([&] { Note("a"); });
        Worker b([&] { Note("b"); });
        Note("main");
        Worker c([&] { Note("c"); });
        c.Join();
        Note("joined");
    }
    EXPECT_EQ(order, "main a b c joined");
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(Threads, SleepersWakeInOrderOfTheirTimesAndThenOfArrival) {
    {
        const auto sleeper = [&](int ms, const char* name) {
            return [this, ms, name] {
                SleepFor(ms);
                Note(name);
            };
        };
        const Worker late(sleeper(30, "late"));
        const Worker early(sleeper(10, "early"));
        const Worker alsoLate(sleeper(30, "also-late"));
    }
    EXPECT_EQ(order, "early late also-late");
    EXPECT_EQ(times, (std::vector<std::int64_t>{10, 30, 30}));
}

TEST_F(Threads, TimeStandsWhileOneCanRun) {
    {
        Worker sleeper([&] { SleepFor(10); });
        Worker busy([&] {
            for (int i = 0; i < 1000; ++i) {
                ::access("/sys/class/gpio/export", F_OK);
            }
            Note("busy");
        });
    }
    EXPECT_EQ(times, std::vector<std::int64_t>{0});
    EXPECT_EQ(board.Now(), Milliseconds(10));
}

TEST_F(Threads, JoiningWaitsForTheEnd) {
    Worker worker([&] {
        SleepFor(50);
        Note("ends");
    });
    worker.Join();
    Note("joined");
    EXPECT_EQ(order, "ends joined");
    EXPECT_EQ(times, (std::vector<std::int64_t>{50, 50}));
}

TEST_F(Threads, JoiningTakesTheResultOfAnEndedThread) {
    pthread_t thread{};
    pthread_create(
        &thread, nullptr, [](void* given) -> void* { pthread_exit(given); }, &board);
    SleepFor(1);
    void* result = nullptr;
    EXPECT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, &board);
}

TEST_F(Threads, JoiningOneselfIsRefused) {
    const Worker worker([] { EXPECT_EQ(pthread_join(pthread_self(), nullptr), EDEADLK); });
}

TEST_F(Threads, AMutexPassesOnInOrderOfArrival) {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    {
        const auto take = [&](const char* name, int hold) {
            return [&, name, hold] {
                pthread_mutex_lock(&mutex);
                Note(name);
                SleepFor(hold);
                pthread_mutex_unlock(&mutex);
            };
        };
        Worker a(take("a", 20));
        Worker b(take("b", 5));
        Worker c(take("c", 0));
    }
    EXPECT_EQ(order, "a b c");
    EXPECT_EQ(times, (std::vector<std::int64_t>{0, 20, 25}));
}

TEST_F(Threads, AMutexThatIsNotHeldMayBeUnlocked) {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    {
        Worker other([&] { EXPECT_EQ(pthread_mutex_unlock(&mutex), 0); });
    }
    EXPECT_EQ(pthread_mutex_lock(&mutex), 0) << "somebody else has unlocked it";
    pthread_mutex_unlock(&mutex);
}

TEST_F(Threads, TheEventsTellStartEndAndJoin) {
    Worker([] {}).Join();
    EXPECT_EQ(board.TimedEvents(),
              (sim::Texts{"0 1 thread-start - 2", "0 2 thread-end - -", "0 1 join - 2"}));
}

TEST_F(Threads, StartingAndJoiningCanBeMadeToFail) {
    board.Fail("pthread_create", "", EAGAIN, 2);
    board.Fail("pthread_join", "", EINVAL);
    pthread_t first{};
    pthread_t second{};
    const auto nothing = [](void* given) { return given; };
    EXPECT_EQ(pthread_create(&first, nullptr, nothing, nullptr), 0);
    EXPECT_EQ(pthread_create(&second, nullptr, nothing, nullptr), EAGAIN);
    EXPECT_EQ(pthread_join(first, nullptr), EINVAL);
    EXPECT_EQ(pthread_join(first, nullptr), 0);
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    board.Fail("pthread_mutex_init", "", ENOMEM);
    board.Fail("pthread_mutex_lock", "", EINVAL);
    EXPECT_EQ(pthread_mutex_init(&mutex, nullptr), ENOMEM);
    EXPECT_EQ(pthread_mutex_lock(&mutex), EINVAL);
    EXPECT_EQ(pthread_mutex_lock(&mutex), 0);
    board.Fail("pthread_mutex_unlock", "", EPERM);
    EXPECT_EQ(pthread_mutex_unlock(&mutex), EPERM);
}

/// The order in which four workers, three operations each, come under a seed.
std::string OrderOf(std::uint64_t seed) {
    Scenario scenario;
    scenario.threads.order = sim::ThreadOrder::Seeded;
    sim::RunOptions options;
    options.seed = seed;
    SimulatedBoard board(scenario, options);
    std::string order;
    const auto work = [&](char name) {
        return [&order, name] {
            for (int i = 0; i < 3; ++i) {
                ::access("/sys/class/gpio/export", F_OK);
                order += name;
            }
        };
    };
    {
        Worker a(work('a'));
        Worker b(work('b'));
        Worker c(work('c'));
        Worker d(work('d'));
    }
    return order;
}

TEST(SeededOrder, IsTheSameForTheSameSeed) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        EXPECT_EQ(OrderOf(seed), OrderOf(seed)) << seed;
    }
}

TEST(SeededOrder, ExploresOrdersAndInterleavings) {
    std::set<std::string> orders;
    bool interleaved = false;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const std::string order = OrderOf(seed);
        EXPECT_EQ(order.size(), 12U);
        orders.insert(order);
        interleaved = interleaved || order.find("aaa") == std::string::npos;
    }
    EXPECT_GT(orders.size(), 10U);
    EXPECT_TRUE(interleaved);
}

} // namespace
} // namespace tavrelin
