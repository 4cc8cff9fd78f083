#include "app/RunApplication.h"

#include "app/RunCycleStep.h"
#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/MemoryForDevices.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdint>
#include <set>

namespace tavrelin {
namespace {

// What the steps of a run were given.
struct StepsRun {
    std::uint32_t count = 0;
    std::set<StateTable*> tables;
    std::set<MeasurementCycle*> cycles;
};

StepsRun stepsRun;

} // namespace

// In place of the instrument's own: the table moves on, and that is all.
void RunCycleStep(StateTable* table, MeasurementCycle* cycle) {
    ++stepsRun.count;
    stepsRun.tables.insert(table);
    stepsRun.cycles.insert(cycle);
    table->Next();
}

namespace {

using testing::EndsWith;
using testing::SizeIs;

class RunApplicationTest : public testing::Test {
  protected:
    RunApplicationTest() { stepsRun = {}; }

    sim::SimulatedBoard board;
};

// The process has one table: another run goes on where the one before it left it.
TEST_F(RunApplicationTest, Runs200000StepsOnOneTableAndOneCycle) {
    ConsoleOf(RunApplication);
    EXPECT_EQ(stepsRun.count, 200000U);
    ASSERT_THAT(stepsRun.tables, SizeIs(1));
    EXPECT_THAT(stepsRun.cycles, SizeIs(1));
    EXPECT_EQ(board.Kernel().Held(), 0U) << "the devices are given back";
    const unsigned left = (*stepsRun.tables.begin())->Step();
    ConsoleOf(RunApplication);
    ASSERT_THAT(stepsRun.tables, SizeIs(1));
    EXPECT_EQ((*stepsRun.tables.begin())->Step(), (left - 1 + 12) % 17 + 1)
        << "11764 measurements and 12 steps";
}

TEST_F(RunApplicationTest, SearchesTheStartBeforeTheFirstStepAt360DegreesPerSecond) {
    ConsoleOf(RunApplication);
    EXPECT_EQ(board.Model().shaft.StepsTurned(board.Now()), 3200 + 1267) << "primed, then found";
    EXPECT_EQ(board.Now(), sim::Milliseconds(2000) + sim::Microseconds(1267 * 625));
}

TEST_F(RunApplicationTest, StepsWithoutASearchAfterAPrimingThatFailed) {
    board.Fail("pthread_mutex_lock", "", EINVAL); // the pump's
    EXPECT_THAT(ConsoleOf(RunApplication), EndsWith("MeasurementCycle.cpp, 158, success: 1\n"));
    EXPECT_EQ(board.WritesTo("B18"), sim::Texts{});
    EXPECT_EQ(stepsRun.count, 200000U);
}

TEST_F(RunApplicationTest, EndsInSilenceWithoutAStepWhenADeviceCannotBeMade) {
    for (int devices = 0; devices < 5; ++devices) {
        const MemoryForDevices memory(devices);
        EXPECT_EQ(ConsoleOf(RunApplication), "") << devices << " of five devices made";
        EXPECT_EQ(board.Now(), 0);
        EXPECT_EQ(stepsRun.count, 0U);
        EXPECT_EQ(board.Kernel().Held(), 0U) << "what could be made is given back";
        EXPECT_FALSE(board.Channel(0).exported || board.Channel(0).enabled);
    }
}

} // namespace
} // namespace tavrelin
