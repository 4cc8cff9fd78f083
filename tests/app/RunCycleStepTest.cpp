#include "app/RunCycleStep.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/FlushedConsole.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::RunOptions;
using sim::Scenario;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// An instrument that was just switched on, and its table.
class Instrument {
  public:
    explicit Instrument(const Scenario& scenario = {}, const RunOptions& options = {})
        : board(scenario, options) {
        lastChlorineConcentration = 0.0F;
        ConsoleOf([&] {
            cycle.Init();
            cycle.Prime();
        });
    }

    /// Moves the table to this step without running those before.
    void TurnTo(unsigned step) {
        while (table.Step() != step) {
            table.Next();
        }
    }

    /// What the console shows while the current step runs.
    std::string RunStep() {
        return ConsoleOf([&] { RunCycleStep(&table, &cycle); });
    }

    /// Runs the last step after a measurement that gave these readings.
    std::string Finish(float dark = 20.0F, float reference = 3000000.0F,
                       float reactedSample = 2340000.0F) {
        TurnTo(17);
        cycle.SetDarkCount(dark);
        cycle.SetReference(reference);
        cycle.SetReactedSample(reactedSample);
        return RunStep();
    }

    [[nodiscard]] std::string Log(const std::string& date = "2026-03-07") const {
        return board.FileOnCard(date + "_logfile.csv");
    }

    const TimeZone utc;
    sim::SimulatedBoard board;
    MeasurementCycle cycle;
    StateTable table;
};

// A status line's two parts of the console, with the clock of these tests.
std::string StatusLine(const std::string& value, const std::string& card,
                       const std::string& message) {
    return "TAVRELIN,2026-03-07 09:00.02," + value + "," + card + ",0.1.4.47\n," + message + "\n";
}

// What the last step shows up to its result.
const std::string kSanityCheck = StatusLine("0.000", "0", "Sanity Check") +
                                 "main.cpp, 889: 17, 0\n"
                                 "MeasurementCycle.cpp, 451, Elements: 2\n"
                                 "MeasurementCycle.cpp, 1096, success: 1\n";

const std::string kRecord = "2026-03-07 09:00.02,,,0.107906,185.04,20,3e+06,2.34e+06\n";

TEST(RunCycleStep, DoesNothingWithoutTableOrCycle) {
    Instrument instrument;
    instrument.board.Forget();
    EXPECT_EQ(ConsoleOf([&] {
                  RunCycleStep(nullptr, &instrument.cycle);
                  RunCycleStep(&instrument.table, nullptr);
                  RunCycleStep(nullptr, nullptr);
              }),
              "");
    EXPECT_EQ(instrument.board.Events(), sim::Texts{});
    EXPECT_EQ(instrument.table.Step(), 1);
}

TEST(RunCycleStep, AnnouncesTheStepAndTracesItsNumberAndValve) {
    Instrument instrument;
    EXPECT_THAT(instrument.RunStep(),
                StartsWith(StatusLine("0.000", "0", "Verify Flag (Home Poisition)") +
                           "main.cpp, 889: 1, 0\n"));
    instrument.TurnTo(4);
    EXPECT_THAT(instrument.RunStep(), HasSubstr("\n,Sample Flush & Delivery Verify Flow\n"
                                                "main.cpp, 889: 4, 1\n"));
}

[[noreturn]] void ShowWhatIsOutDuringAStepWithoutValveWorker() {
    Instrument instrument;
    instrument.TurnTo(3);
    instrument.board.Fail("pthread_create", "", EAGAIN, 2);
    const FlushedConsole console;
    instrument.board.Model().At(instrument.board.Now() + Milliseconds(500), [&] {
        std::cerr << console.Text();
        std::_Exit(0);
    });
    RunCycleStep(&instrument.table, &instrument.cycle);
    std::abort();
}

TEST(RunCycleStepDeathTest, HasItsTraceOutWhileTheStepRuns) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(ShowWhatIsOutDuringAStepWithoutValveWorker(), testing::ExitedWithCode(0),
                HasSubstr("\n,Verify Flag (No Light)\nmain.cpp, 889: 3, 1\n"));
}

TEST(RunCycleStep, MovesTheTableOnAndAnnouncesZeroUntilTheFirstMeasurementIsDone) {
    Instrument instrument;
    for (unsigned step = 1; step <= 16; ++step) {
        EXPECT_EQ(instrument.table.Step(), step);
        EXPECT_THAT(instrument.RunStep(), HasSubstr(",0.000,"));
    }
    EXPECT_EQ(lastChlorineConcentration, 0.0F);
}

TEST(RunCycleStep, AnnouncesAndLogsTheResultAfterTheLastStepAndBeginsAgain) {
    Instrument instrument;
    EXPECT_EQ(instrument.Finish(), kSanityCheck + StatusLine("185.040", "1", "Sanity Check"));
    EXPECT_EQ(instrument.Log(), kRecord);
    EXPECT_EQ(instrument.table.Step(), 1);
    EXPECT_THAT(instrument.RunStep(),
                StartsWith(StatusLine("185.040", "1", "Verify Flag (Home Poisition)") +
                           "main.cpp, 889: 1, 0\n"));
}

TEST(RunCycleStep, AppendsTheRecordsOfADayToOneFile) {
    Instrument instrument;
    instrument.Finish();
    instrument.Finish();
    EXPECT_EQ(instrument.Log(), kRecord + kRecord);
}

// Mounting the card takes 45 ms of board time here.
TEST(RunCycleStep, DatesTheRecordAfterTheLogWasOpened) {
    RunOptions options = StartingAt("2026-03-07 09:00:00");
    options.ioCosts = true;
    Instrument instrument({}, options);
    instrument.board.Elapse(Milliseconds(4990) - instrument.board.Now());
    instrument.Finish();
    EXPECT_THAT(instrument.Log(), StartsWith("2026-03-07 09:00.05,,,"));
}

// Steps 14 to 17, of which 14 ends half a second before midnight and 15 half a second after it.
TEST(RunCycleStep, LogsAMeasurementUnderTheDateOfItsEnd) {
    Instrument instrument({}, StartingAt("2026-03-07 23:59:56"));
    instrument.board.Elapse(Milliseconds(500));
    for (instrument.TurnTo(14); instrument.table.Step() != 1;) {
        instrument.RunStep();
    }
    EXPECT_THAT(instrument.Log(), StartsWith("2026-03-07 23:59:58, "));
    EXPECT_THAT(instrument.Log(), Not(HasSubstr(",,,")));
    EXPECT_THAT(instrument.Log("2026-03-08"), HasSubstr("\n2026-03-08 00:00.00,,,"));
}

TEST(RunCycleStep, LosesTheRecordWithoutACardButNotTheResult) {
    Scenario scenario;
    scenario.board.card.present = false;
    Instrument instrument(scenario);
    EXPECT_EQ(instrument.Finish(), kSanityCheck + StatusLine("185.040", "0", "Sanity Check"));
    EXPECT_EQ(instrument.table.Step(), 1);
    EXPECT_EQ(instrument.board.FileBelowMountPoint("2026-03-07_logfile.csv"), "");
}

void ExpectResult(float dark, float reference, float sample, const std::string& shown,
                  const std::string& recorded) {
    Instrument instrument;
    EXPECT_EQ(instrument.Finish(dark, reference, sample),
              kSanityCheck + StatusLine(shown, "1", "Sanity Check"));
    EXPECT_EQ(instrument.Log(), "2026-03-07 09:00.02,,," + recorded + "\n");
}

TEST(RunCycleStep, RecordsWhatReadingsGiveThatAreNoMeasurement) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    ExpectResult(20.0F, 3000000.0F, 20.0F, "-1714.818", "-1,-1714.82,20,3e+06,20");
    ExpectResult(-nan, 3000000.0F, 2340000.0F, "0.000", "nan,0,nan,3e+06,2.34e+06");
    ExpectResult(20.0F, 10.0F, 30.0F, " nan", "nan,nan,20,10,30");
}

} // namespace
} // namespace tavrelin
