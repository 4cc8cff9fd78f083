#include "tests/support/InstrumentRun.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace tavrelin {
namespace {

// The call on a worker's thread that fails, by its number in the run.
std::string Failing(const std::string& call, int occurrence, const std::string& repeat = "once") {
    return "[[fault]]\ncall = \"" + call +
           "\"\nerrno = \"EAGAIN\"\noccurrence = " + std::to_string(occurrence) + "\nrepeat = \"" +
           repeat + "\"\n";
}

// Workers of a measurement: LED, valve and monitoring in steps 1 to 16, LED and valve in step 17,
// the stirrer in 3, 5, 10 and 13, the pump in 11. They start in the order pump, LED, valve,
// stirrer, monitoring and are joined in the order stirrer, valve, monitoring, LED, pump.
constexpr int kWorkersOfAMeasurement = 16 * 3 + 2 + 4 + 1;
constexpr int kBeforeStep3 = 2 * 3;
constexpr int kBeforeStep11 = 10 * 3 + 3;

struct FailingWorker {
    std::string name;
    std::string fault;
    int step;
    int index;
};

class HardwareFailure : public testing::TestWithParam<FailingWorker> {};

// The process ends as it is: only the search gave its line back.
TEST_P(HardwareFailure, ShowsTheIndexAndEndsWithStatusZeroWithoutReleasingDevices) {
    // A worker that cannot be joined may outlive the request that it works on. The thread sanitizer
    // is right to say so, and is not asked about runs with such a fault.
    std::optional<Environment> withoutRaceReports;
    if (GetParam().fault.find("pthread_join") != std::string::npos) {
        const char* options = std::getenv("TSAN_OPTIONS");
        withoutRaceReports.emplace("TSAN_OPTIONS", std::string(options == nullptr ? "" : options) +
                                                       ":report_bugs=0");
    }
    const RunResult run = RunInstrument({.board = GetParam().fault, .boardTime = 60});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_THAT(run.console,
                testing::ContainsRegex("\nFailed Index:  " + std::to_string(GetParam().index) +
                                       "\nTAVRELIN,2026-03-07 09:00.[0-9]{2},0.000,[01],0.1.4.47\n"
                                       ",!!!Error: Hardware Failure!!!\n$"));
    EXPECT_EQ(LinesWith(run.console, "Failed Index").size(), 1U);
    EXPECT_EQ(LinesWith(run.console, "main.cpp, 889: ").size(),
              static_cast<std::size_t>(GetParam().step));
    EXPECT_EQ(LinesWith(run.events, "/unexport ").size(), 1U);
    EXPECT_THAT(ResultLines(run.Log()), testing::IsEmpty());
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    OfThe, HardwareFailure,
    testing::Values(
        FailingWorker{"LedNotStarted", Failing("pthread_create", 1), 1, 2},
        FailingWorker{"ValveNotStarted", Failing("pthread_create", 2), 1, 5},
        FailingWorker{"MonitoringNotStarted", Failing("pthread_create", 3), 1, 3},
        FailingWorker{"StirringNotStarted", Failing("pthread_create", kBeforeStep3 + 3), 3, 0},
        FailingWorker{"PumpNotStarted", Failing("pthread_create", kBeforeStep11 + 1), 11, 1},
        FailingWorker{"ValveNotJoined", Failing("pthread_join", 1), 1, 5},
        FailingWorker{"MonitoringNotJoined", Failing("pthread_join", 2), 1, 3},
        FailingWorker{"LedNotJoined", Failing("pthread_join", 3), 1, 2},
        FailingWorker{"StirringNotJoined", Failing("pthread_join", kBeforeStep3 + 1), 3, 0},
        // Of two the lower index.
        FailingWorker{"LedAndValve", Failing("pthread_create", 1, "forever"), 1, 2},
        FailingWorker{"ValveAndStirring", Failing("pthread_create", kBeforeStep3 + 2, "forever"), 3,
                      0}),
    [](const auto& instance) { return instance.param.name; });

TEST(HardwareFailureLine, CarriesZeroEvenAfterAMeasurement) {
    const RunResult run = RunInstrument(
        {.board = Failing("pthread_create", kWorkersOfAMeasurement + 1), .boardTime = 60});
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
    const RunResult run = RunInstrument({.board = Failing("pthread_create", 2), .boardTime = 60});
    EXPECT_THAT(run.console, testing::Not(testing::HasSubstr("Elements")));
}

} // namespace
} // namespace tavrelin
