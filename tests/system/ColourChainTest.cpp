// Light, sample, reagent and stirring all have a part in a result: what fails shows in it.

#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

// What follows the three empty fields of each result.
std::vector<std::string> Figures(const RunResult& run) {
    std::vector<std::string> figures;
    for (const std::string& line : ResultLines(run.Log())) {
        figures.push_back(line.substr(line.find(",,,") + 3));
    }
    return figures;
}

using Lines = std::vector<std::string>;

const std::string kTrue = "0.25,428.705,20000,3e+06,1.69578e+06"; // of the sample as it should be

TEST(ColourChain, GivesTheSampleItsColour) {
    EXPECT_EQ(Figures(RunInstrument({.measurements = 2})), (Lines{kTrue, kTrue}));
}

TEST(ColourChain, NeedsTheReagentOfItsOwnMeasurement) {
    const RunResult run =
        RunInstrument({.scenario = "pump-misses-one-addition", .measurements = 2});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_THAT(run.console, testing::HasSubstr("Stepper Driver: PWM enable or chip enable failed\n"
                                                "StepperDriverMotor: Start operation failed\n"));
    EXPECT_EQ(Figures(run), (Lines{"0,0,20000,3e+06,3e+06", kTrue}));
}

TEST(ColourChain, NeedsStirrerLightAndDark) {
    const auto result = [](const std::string& scenario, const std::string& shown) {
        const RunResult run = RunInstrument({.scenario = scenario, .measurements = 1});
        EXPECT_THAT(run.console, testing::EndsWith("," + shown + ",1,0.1.4.47\n,Sanity Check\n"));
        return Figures(run);
    };
    EXPECT_EQ(result("stirrer-stuck", "0.000"), Lines{"0,0,20000,3e+06,3e+06"});
    EXPECT_EQ(result("lamp-stays-dark", "-1714.818"), Lines{"-1,-1714.82,20000,20000,20000"});
    EXPECT_EQ(result("lamp-stays-on", "-inf"), Lines{"-inf,-inf,3e+06,3e+06,1.69578e+06"});
}

// The second measurement finds the first one's colour in its reference.
TEST(ColourChain, NeedsAFreshSample) {
    const RunResult run = RunInstrument({.scenario = "valve-sticks", .measurements = 2});
    EXPECT_EQ(Figures(run), (Lines{kTrue, "0,0,20000,1.69578e+06,1.69578e+06"}));
}

} // namespace
} // namespace tavrelin
