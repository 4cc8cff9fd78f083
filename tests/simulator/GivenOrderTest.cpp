// Orders that are asked for choice by choice, and calls that take their time in parallel.

#include "simulator/testing/SimulatedBoard.h"

#include "tests/simulator/Launcher.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"
#include "tests/support/Worker.h"

#include <gmock/gmock.h>
#include <set>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using testing::ElementsAre;
using testing::HasSubstr;

struct Given {
    std::string order;
    std::vector<std::uint64_t> choices;
    std::uint64_t preempted = 0;
};

/// A step in which two workers make two calls each, with the choices given.
Given RunStep(const std::vector<std::uint64_t>& preempt) {
    sim::Scenario scenario;
    scenario.threads.order = sim::ThreadOrder::Given;
    scenario.threads.preempt = preempt;
    SimulatedBoard board(scenario);
    std::string order;
    const auto work = [&](char name) {
        return [&order, name] {
            for (int i = 0; i < 2; ++i) {
                ::access("/sys/class/gpio/export", F_OK);
                order += name;
            }
        };
    };
    board.Scheduler().StepBegan(1);
    {
        Worker a(work('a'));
        Worker b(work('b'));
    }
    return {order, board.Scheduler().Choices(), board.Scheduler().StepsPreempted()};
}

// One choice as b starts, two as b is to be joined, one as the test waits for it; then a's calls.
TEST(GivenOrder, IsThatOfArrivalButForTheChoicesGiven) {
    EXPECT_EQ(RunStep({}).order, "aabb");
    EXPECT_THAT(RunStep({}).choices, ElementsAre(6));
    EXPECT_EQ(RunStep({1}).order, "aabb") << "a runs before b is there";
    EXPECT_EQ(RunStep({3}).order, "bbaa");
    EXPECT_EQ(RunStep({5}).order, "bbaa");
    EXPECT_EQ(RunStep({6}).order, "abba");
    EXPECT_EQ(RunStep({7}).order, "aabb") << "there is no such choice";
}

TEST(GivenOrder, CountsASecondChoiceInTheOrderThatTheFirstHasMade) {
    EXPECT_EQ(RunStep({6, 8}).order, "abab");
    EXPECT_EQ(RunStep({6, 8}).preempted, 1U);
    EXPECT_EQ(RunStep({1, 7}).preempted, 0U) << "no such choice after the first";
}

/// All orders of the step with at most so many changes from the usual one.
std::set<std::string> OrdersWith(std::size_t changes, const std::vector<std::uint64_t>& done = {}) {
    const Given run = RunStep(done);
    std::set<std::string> orders{run.order};
    for (std::uint64_t next = done.empty() ? 1 : done.back() + 1;
         done.size() < changes && next <= run.choices.front(); ++next) {
        std::vector<std::uint64_t> more = done;
        more.push_back(next);
        orders.merge(OrdersWith(changes, more));
    }
    return orders;
}

TEST(GivenOrder, ComesToEveryOrderWithSoManyChanges) {
    EXPECT_THAT(OrdersWith(1), ElementsAre("aabb", "abba", "bbaa"));
    EXPECT_THAT(OrdersWith(3), ElementsAre("aabb", "abab", "abba", "baab", "baba", "bbaa"));
}

class GivenOrderOfTheInstrument : public testing::Test {
  protected:
    void Run(const std::string& threads, const std::string& cost) {
        WriteText(folder.Path("scenario"), "[threads]\nconsole = true\n" + threads);
        const CommandResult run =
            RunCommand({Binary("simulate"), "--scenario", folder.Path("scenario"), "--steps", "3",
                        "--io-cost", cost, "--events", folder.Path("events"), "--summary",
                        folder.Path("summary"), "--", Binary("tavrelin")});
        EXPECT_EQ(run.status, 0) << run.error;
        events = TextOf(folder.Path("events"));
        summary = TextOf(folder.Path("summary"));
    }

    TestFolder folder;
    std::string events;
    std::string summary;
};

TEST_F(GivenOrderOfTheInstrument, IsTriedInEachStepAndToldByTheSummary) {
    Run("", "none");
    EXPECT_THAT(summary, testing::Not(HasSubstr("[threads]")));
    const std::string usual = events;
    Run("order = 'given'", "none");
    EXPECT_EQ(events, usual);
    EXPECT_THAT(summary, testing::ContainsRegex("\\[threads\\]\nchoices = \\[[0-9]+, [0-9]+, "
                                                "[0-9]+\\]\nsteps_preempted = 0\n"));
    Run("order = 'given'\npreempt = [3]", "none");
    EXPECT_NE(events, usual);
    EXPECT_THAT(summary, HasSubstr("]\nsteps_preempted = 3\n"));
}

TEST_F(GivenOrderOfTheInstrument, ShowsWhoShowsWhat) {
    Run("", "none");
    EXPECT_THAT(events, HasSubstr(" 1 show stdout \"main.cpp, 889: 1, 0\\n\"\n"));
    EXPECT_THAT(events,
                HasSubstr(" 3 show stdout \"MeasurementCycle.cpp, 1096, success: 1\\n\"\n"));
}

TEST(CallsInParallel, TakeTheirTimeTogether) {
    sim::Scenario scenario;
    sim::RunOptions options;
    options.ioCosts = true;
    const auto look = [] { ::access("/sys/class/gpio/export", F_OK); };
    for (const bool parallel : {false, true}) {
        scenario.threads.ioParallel = parallel;
        SimulatedBoard board(scenario, options);
        {
            Worker a(look);
            Worker b(look);
        }
        EXPECT_EQ(board.Now(), sim::Microseconds(parallel ? 200 + 200 + 60 : 200 + 200 + 60 + 60));
    }
}

} // namespace
} // namespace tavrelin
