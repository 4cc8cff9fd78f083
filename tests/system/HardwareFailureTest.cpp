#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"
#include "tests/system/InstrumentRun.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <ostream>
#include <string_view>

namespace tavrelin {
namespace {

constexpr const char* kCreate = "pthread_create";
constexpr const char* kJoin = "pthread_join";

// A call on a worker's thread that fails: the how-manieth of the run, once or from then on.
struct ThreadFault {
    const char* call;
    int occurrence;
    const char* repeat;
};

std::string ScenarioOf(const ThreadFault& fault) {
    return std::string("[[fault]]\ncall = \"") + fault.call +
           "\"\nerrno = \"EAGAIN\"\noccurrence = " + std::to_string(fault.occurrence) +
           "\nrepeat = \"" + fault.repeat + "\"\n";
}

// Workers of a measurement: LED, valve and monitoring in steps 1 to 16, LED and valve in step 17,
// the stirrer in 3, 5, 10 and 13, the pump in 11. They start in the order pump, LED, valve,
// stirrer, monitoring and are joined in the order stirrer, valve, monitoring, LED, pump.
constexpr int kWorkersOfAMeasurement = 16 * 3 + 2 + 4 + 1;
constexpr int kBeforeStep3 = 2 * 3;
constexpr int kBeforeStep11 = 10 * 3 + 3;

struct FailingWorker {
    const char* name;
    ThreadFault fault;
    int step;
    int index;
};

void PrintTo(const FailingWorker& worker, std::ostream* out) {
    *out << worker.name << " in step " << worker.step;
}

class HardwareFailure : public testing::TestWithParam<FailingWorker> {};

TEST_P(HardwareFailure, ShowsTheIndexAndEndsWithStatusZero) {
    // A worker that cannot be joined may outlive the request that it works on. The thread sanitizer
    // is right to say so, and is not asked about runs with such a fault.
    std::optional<Environment> withoutRaceReports;
    if (std::string_view(GetParam().fault.call) == kJoin) {
        const char* options = std::getenv("TSAN_OPTIONS");
        withoutRaceReports.emplace("TSAN_OPTIONS", std::string(options == nullptr ? "" : options) +
                                                       ":report_bugs=0");
    }
    const RunResult run = RunInstrument({.board = ScenarioOf(GetParam().fault), .boardTime = 60});
    EXPECT_EQ(run.status, kEndedAsAsked);
    const std::vector<std::string> lines = LinesOf(run.console);
    ASSERT_GT(lines.size(), 3U);
    const auto last = lines.end();
    EXPECT_EQ(last[-3], "Failed Index:  " + std::to_string(GetParam().index));
    EXPECT_THAT(last[-2], testing::StartsWith("TAVRELIN,2026-03-07 09:00."));
    EXPECT_THAT(last[-2], testing::HasSubstr(",0.000,"));
    EXPECT_EQ(last[-1], ",!!!Error: Hardware Failure!!!");
    EXPECT_EQ(LinesWith(run.console, "Failed Index").size(), 1U);
    EXPECT_EQ(LinesWith(run.console, "main.cpp, 889: ").size(),
              static_cast<std::size_t>(GetParam().step));
    EXPECT_THAT(ResultLines(run.Log()), testing::IsEmpty());
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    NotStarted, HardwareFailure,
    testing::Values(FailingWorker{"Led", {kCreate, 1, "once"}, 1, 2},
                    FailingWorker{"Valve", {kCreate, 2, "once"}, 1, 5},
                    FailingWorker{"Monitoring", {kCreate, 3, "once"}, 1, 3},
                    FailingWorker{"Stirring", {kCreate, kBeforeStep3 + 3, "once"}, 3, 0},
                    FailingWorker{"Pump", {kCreate, kBeforeStep11 + 1, "once"}, 11, 1}),
    [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(NotJoined, HardwareFailure,
                         testing::Values(FailingWorker{"Valve", {kJoin, 1, "once"}, 1, 5},
                                         FailingWorker{"Monitoring", {kJoin, 2, "once"}, 1, 3},
                                         FailingWorker{"Led", {kJoin, 3, "once"}, 1, 2},
                                         FailingWorker{
                                             "Stirring", {kJoin, kBeforeStep3 + 1, "once"}, 3, 0}),
                         [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(
    OfTwoTheLowerIndex, HardwareFailure,
    testing::Values(FailingWorker{"LedAndValve", {kCreate, 1, "forever"}, 1, 2},
                    FailingWorker{
                        "ValveAndStirring", {kCreate, kBeforeStep3 + 2, "forever"}, 3, 0}),
    [](const auto& instance) { return instance.param.name; });

TEST(HardwareFailureLine, CarriesZeroEvenAfterAMeasurement) {
    const RunResult run = RunInstrument(
        {.board = ScenarioOf({kCreate, kWorkersOfAMeasurement + 1, "once"}), .boardTime = 60});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_THAT(run.console, testing::EndsWith("TAVRELIN,2026-03-07 09:00.17,428.705,1,0.1.4.47\n"
                                               ",Verify Flag (Home Poisition)\n"
                                               "main.cpp, 889: 1, 0\n"
                                               "MeasurementCycle.cpp, 451, Elements: 1\n"
                                               "MeasurementCycle.cpp, 1096, success: 1\n"
                                               "Failed Index:  2\n"
                                               "TAVRELIN,2026-03-07 09:00.18,0.000,1,0.1.4.47\n"
                                               ",!!!Error: Hardware Failure!!!\n"));
    EXPECT_EQ(ResultLines(run.Log()).size(), 1U);
}

TEST(HardwareFailureLine, FollowsNoCountOfWorkersWhenTheValvesIsMissing) {
    const RunResult run =
        RunInstrument({.board = ScenarioOf({kCreate, 2, "once"}), .boardTime = 60});
    EXPECT_THAT(run.console, testing::Not(testing::HasSubstr("Elements")));
}

// The process ends as it is: lines and channels stay taken.
TEST(HardwareFailureLine, IsTheEndWithoutReleasingDevices) {
    const RunResult run =
        RunInstrument({.board = ScenarioOf({kCreate, 1, "once"}), .boardTime = 60});
    EXPECT_EQ(LinesWith(run.events, "/unexport ").size(), 1U); // the search's own line
}

} // namespace
} // namespace tavrelin
