#include "app/RunCycleStep.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"
#include "tests/support/ConsoleOf.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavrelin {
namespace {

using sim::RunOptions;
using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

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

    void SetReadings(float dark, float reference, float reactedSample) {
        cycle.SetDarkCount(dark);
        cycle.SetReference(reference);
        cycle.SetReactedSample(reactedSample);
    }

    const TimeZone utc;
    SimulatedBoard board;
    MeasurementCycle cycle;
    StateTable table;
};

// A status line's two parts of the console, with the clock and the card of these tests.
std::string StatusLine(const std::string& value, const std::string& message) {
    return "TAVRELIN,2026-03-07 09:00.02," + value + ",0,0.1.4.47\n," + message + "\n";
}

const std::string kSanityCheckStep = "main.cpp, 889: 17, 0\n"
                                     "MeasurementCycle.cpp, 451, Elements: 2\n"
                                     "MeasurementCycle.cpp, 1096, success: 1\n";

TEST(RunCycleStep, DoesNothingWithoutTableOrCycle) {
    Instrument instrument;
    instrument.board.Forget();
    EXPECT_EQ(ConsoleOf([&] {
                  RunCycleStep(nullptr, &instrument.cycle);
                  RunCycleStep(&instrument.table, nullptr);
                  RunCycleStep(nullptr, nullptr);
              }),
              "");
    EXPECT_EQ(instrument.board.Events(), Texts{});
    EXPECT_EQ(instrument.table.Step(), 1);
}

TEST(RunCycleStep, AnnouncesTheStepAndTracesItsNumberAndValve) {
    Instrument instrument;
    EXPECT_EQ(instrument.RunStep().rfind(
                  StatusLine("0.000", "Verify Flag (Home Poisition)") + "main.cpp, 889: 1, 0\n", 0),
              0U);
    instrument.TurnTo(4);
    EXPECT_NE(instrument.RunStep().find("\n,Sample Flush & Delivery Verify Flow\n"
                                        "main.cpp, 889: 4, 1\n"),
              std::string::npos);
}

TEST(RunCycleStep, MovesTheTableOn) {
    Instrument instrument;
    for (const unsigned next : {2U, 3U, 4U}) {
        instrument.RunStep();
        EXPECT_EQ(instrument.table.Step(), next);
    }
}

TEST(RunCycleStep, AnnouncesZeroUntilTheFirstMeasurementIsDone) {
    Instrument instrument;
    for (unsigned step = 1; step <= 16; ++step) {
        EXPECT_NE(instrument.RunStep().find(",0.000,"), std::string::npos) << "step " << step;
    }
    EXPECT_EQ(lastChlorineConcentration, 0.0F);
}

TEST(RunCycleStep, AnnouncesAndLogsTheResultAfterTheLastStep) {
    Instrument instrument;
    instrument.TurnTo(17);
    instrument.SetReadings(20.0F, 3000000.0F, 2340000.0F);
    const std::string result = "TAVRELIN,2026-03-07 09:00.02,185.040,1,0.1.4.47\n,Sanity Check\n";
    EXPECT_EQ(instrument.RunStep(),
              StatusLine("0.000", "Sanity Check") + kSanityCheckStep + result);
    EXPECT_EQ(instrument.board.FileOnCard("2026-03-07_logfile.csv"),
              "2026-03-07 09:00.02,,,0.107906,185.04,20,3e+06,2.34e+06\n");
}

TEST(RunCycleStep, BeginsAgainWithTheFirstStepAndTheNewResult) {
    Instrument instrument;
    instrument.TurnTo(17);
    instrument.SetReadings(20.0F, 3000000.0F, 2340000.0F);
    instrument.RunStep();
    EXPECT_EQ(instrument.table.Step(), 1);
    EXPECT_EQ(instrument.RunStep().rfind("TAVRELIN,2026-03-07 09:00.02,185.040,1,0.1.4.47\n"
                                         ",Verify Flag (Home Poisition)\nmain.cpp, 889: 1, 0\n",
                                         0),
              0U);
}

TEST(RunCycleStep, AppendsTheRecordsOfADayToOneFile) {
    Instrument instrument;
    instrument.SetReadings(20.0F, 3000000.0F, 2340000.0F);
    for (int measurement = 0; measurement < 2; ++measurement) {
        instrument.TurnTo(17);
        instrument.RunStep();
    }
    const std::string record = "2026-03-07 09:00.02,,,0.107906,185.04,20,3e+06,2.34e+06\n";
    EXPECT_EQ(instrument.board.FileOnCard("2026-03-07_logfile.csv"), record + record);
}

// Steps 14 to 17, of which 14 ends half a second before midnight and 15 half a second after it.
TEST(RunCycleStep, LogsAMeasurementUnderTheDateOfItsEnd) {
    Instrument instrument({}, StartingAt("2026-03-07 23:59:56"));
    instrument.board.Elapse(sim::Milliseconds(500));
    instrument.SetReadings(20.0F, 3000000.0F, 2340000.0F);
    for (instrument.TurnTo(14); instrument.table.Step() != 1;) {
        instrument.RunStep();
    }
    const std::string before = instrument.board.FileOnCard("2026-03-07_logfile.csv");
    const std::string after = instrument.board.FileOnCard("2026-03-08_logfile.csv");
    EXPECT_EQ(before.rfind("2026-03-07 23:59:58, ", 0), 0U);
    EXPECT_EQ(before.find(",,,"), std::string::npos);
    EXPECT_NE(after.find("\n2026-03-08 00:00.00,,,"), std::string::npos);
}

TEST(RunCycleStep, LosesTheRecordWithoutACardButNotTheResult) {
    Scenario scenario;
    scenario.board.card.present = false;
    Instrument instrument(scenario);
    instrument.TurnTo(17);
    instrument.SetReadings(20.0F, 3000000.0F, 2340000.0F);
    EXPECT_EQ(instrument.RunStep(), StatusLine("0.000", "Sanity Check") + kSanityCheckStep +
                                        StatusLine("185.040", "Sanity Check"));
    EXPECT_EQ(instrument.table.Step(), 1);
    EXPECT_EQ(instrument.board.FileBelowMountPoint("2026-03-07_logfile.csv"), "");
}

TEST(RunCycleStep, RecordsTheSentinelsWhenSampleEqualsDark) {
    Instrument instrument;
    instrument.TurnTo(17);
    instrument.SetReadings(20.0F, 3000000.0F, 20.0F);
    EXPECT_NE(instrument.RunStep().find(",-1714.818,"), std::string::npos);
    EXPECT_EQ(instrument.board.FileOnCard("2026-03-07_logfile.csv"),
              "2026-03-07 09:00.02,,,-1,-1714.82,20,3e+06,20\n");
}

TEST(RunCycleStep, RecordsAReadingThatIsNaNWithConcentrationZero) {
    Instrument instrument;
    instrument.TurnTo(17);
    instrument.SetReadings(-std::numeric_limits<float>::quiet_NaN(), 3000000.0F, 2340000.0F);
    EXPECT_NE(instrument.RunStep().find(",0.000,1,0.1.4.47\n,Sanity Check\n"), std::string::npos);
    EXPECT_EQ(instrument.board.FileOnCard("2026-03-07_logfile.csv"),
              "2026-03-07 09:00.02,,,nan,0,nan,3e+06,2.34e+06\n");
}

TEST(RunCycleStep, RecordsNaNForAReferenceDarkerThanDark) {
    Instrument instrument;
    instrument.TurnTo(17);
    instrument.SetReadings(20.0F, 10.0F, 30.0F);
    EXPECT_NE(instrument.RunStep().find(", nan,1,0.1.4.47\n,Sanity Check\n"), std::string::npos);
    EXPECT_EQ(instrument.board.FileOnCard("2026-03-07_logfile.csv"),
              "2026-03-07 09:00.02,,,nan,nan,20,10,30\n");
}

} // namespace
} // namespace tavrelin
