#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

TEST(NoBoard, PrimesInVainSkipsTheSearchAndSamplesOnUntilSomebodyStopsIt) {
    const RunResult run = RunInstrument({.scenario = "no-board", .boardTime = 60});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(run.console, "StepperDriverBase: Setting up enable GPIO pin failed\n"
                           "StepperDriverBase: Setting up direction GPIO pin failed\n"
                           "Setting current limit GPIO pin(s) to outputs failed\n"
                           "TAVRELIN,2026-03-07 09:00.00,-0.000,0,0.1.4.47\n"
                           ",Priming\n"
                           "MeasurementCycle.cpp, 150, success: 1\n"
                           "ValvePWM::ValveOn: valve did not successfully turn on\n"
                           "MeasurementCycle.cpp, 152, success: 0\n"
                           "StepperDriverMotor::MoveAngle failed!\n"
                           "not locked yet\n"
                           "ValvePWM::ValveOff: error turning valve off\n"
                           "MeasurementCycle.cpp, 158, success: 0\n"
                           "TAVRELIN,2026-03-07 09:00.00,0.000,0,0.1.4.47\n"
                           ",Verify Flag (Home Poisition)\n"
                           "main.cpp, 889: 1, 0\n"
                           "MeasurementCycle.cpp, 451, Elements: 2\n"
                           "not locked yet\n"
                           "ValvePWM::ValveOff: error turning valve off\n"
                           "MeasurementCycle.cpp, 1096, success: 0\n");
    EXPECT_EQ(run.errors, "could not open SPI device"
                          "wrong pwm channel"
                          "unable to lock a gpio"
                          "not locked yet\n"
                          "unable to lock a gpio"
                          "not locked yet\n"
                          "unable to lock a gpio"
                          "unable to lock a gpio"
                          "unable to lock a gpio"
                          "not locked yet\n"
                          "wrong pwm channel"
                          "not locked yet\n"
                          "unable to set pwm frequency"
                          "not locked yet\n");
    // Without a card the first step's samples cannot be logged, and the step waits for one.
    EXPECT_EQ(LinesWith(run.events, " sleep - 250000 us").size(), 240U);
    EXPECT_THAT(run.card, testing::IsEmpty());
    EXPECT_THAT(run.mountPoint, testing::IsEmpty());
}

TEST(NoDevices, RunsWholeMeasurementsOfNothing) {
    const RunResult run = RunInstrument({.scenario = "no-devices", .measurements = 2});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(LinesWith(run.console, "main.cpp, 889: ").size(), 34U);
    // A converter that is not there reads as zeros, which stand for its lowest reading.
    const std::vector<std::string> results = ResultLines(run.Log());
    ASSERT_EQ(results.size(), 2U);
    EXPECT_THAT(results[0],
                testing::EndsWith(",,,-1,-1714.82,-1.67772e+07,-1.67772e+07,-1.67772e+07"));
    EXPECT_THAT(run.console, testing::HasSubstr(",-1714.818,1,0.1.4.47\n,Sanity Check\n"));
}

TEST(FailedPriming, LeavesOutTheSearchAndCyclesAtOnce) {
    const RunResult run = RunInstrument({.scenario = "pump-refuses-priming", .steps = 1});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(run.console, "TAVRELIN,2026-03-07 09:00.00,-0.000,0,0.1.4.47\n"
                           ",Priming\n"
                           "MeasurementCycle.cpp, 150, success: 1\n"
                           "MeasurementCycle.cpp, 152, success: 1\n"
                           "Stepper Driver: PWM enable or chip enable failed\n"
                           "StepperDriverMotor::MoveAngle failed!\n"
                           "MeasurementCycle.cpp, 158, success: 1\n"
                           "TAVRELIN,2026-03-07 09:00.00,0.000,0,0.1.4.47\n"
                           ",Verify Flag (Home Poisition)\n"
                           "main.cpp, 889: 1, 0\n"
                           "MeasurementCycle.cpp, 451, Elements: 2\n"
                           "MeasurementCycle.cpp, 1096, success: 1\n");
    EXPECT_EQ(run.errors, "unable to reset pwm duty cycle");
    EXPECT_THAT(run.events, testing::Not(testing::HasSubstr("pioB18")));
}

// The failed move left the motor locked, and so it stays: the reagent addition waits for it.
TEST(FailedPriming, BlocksThePumpForGoodWhenItHadLockedTheMotor) {
    const RunResult run = RunInstrument({.scenario = "pump-refuses-priming", .measurements = 1});
    EXPECT_EQ(run.status, kDeadlock);
    EXPECT_THAT(run.errors, testing::HasSubstr("waits for a mutex that thread 1 locked"));
    EXPECT_EQ(LinesWith(run.console, "main.cpp, 889: ").size(), 11U);
}

TEST(FailedPriming, LetsMeasurementsRunWithoutReagent) {
    const RunResult run = RunInstrument({.scenario = "no-pump-direction", .measurements = 1});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_THAT(run.console, testing::HasSubstr("StepperDriverMotor::MoveAngle failed!\n"));
    EXPECT_THAT(run.console, testing::Not(testing::HasSubstr("!!!Error")));
    EXPECT_EQ(LinesWith(run.console, "main.cpp, 889: ").size(), 17U);
    EXPECT_THAT(ResultLines(run.Log()),
                testing::ElementsAre(testing::EndsWith(",,,0,0,20000,3e+06,3e+06")));
}

const std::string kPrimed = "MeasurementCycle.cpp, 150, success: 1\n"
                            "MeasurementCycle.cpp, 152, success: 1\n"
                            "MeasurementCycle.cpp, 158, success: 1\n";

// Two seconds of priming, then two more until the search gives up.
TEST(FailedSearch, EndsWithOneErrorLineAndStatusZero) {
    const RunResult run = RunInstrument({.board = "[pump]\nflag_seen = false\n"});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(run.console, "TAVRELIN,2026-03-07 09:00.00,-0.000,0,0.1.4.47\n,Priming\n" + kPrimed +
                               "TAVRELIN,2026-03-07 09:00.04,-0.000,0,0.1.4.47\n"
                               ",!!!Error: Motor Find Start!!!\n");
    EXPECT_EQ(run.errors, "");
    // The process ends without releasing the devices; only the search gave its line back.
    EXPECT_THAT(LinesWith(run.events, "/unexport "),
                testing::ElementsAre(testing::EndsWith("write /sys/class/gpio/unexport \"50\"")));
    EXPECT_THAT(run.events, testing::HasSubstr("/pwm1/enable \"0\""));
    EXPECT_THAT(run.events, testing::Not(testing::HasSubstr("/pwm0/enable \"0\"")));
}

TEST(FailedSearch, ComesAtOnceWhenThePumpStandsOnTheFlag) {
    const RunResult run = RunInstrument({.board = "[pump]\non_flag_at_start = true\n"});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_THAT(run.console, testing::EndsWith("TAVRELIN,2026-03-07 09:00.02,-0.000,0,0.1.4.47\n"
                                               ",!!!Error: Motor Find Start!!!\n"));
}

/// The home sensor cannot be read from this look on.
std::string SensorLostAt(int look) {
    return "[[fault]]\ncall = \"open\"\npath = \"/sys/class/gpio/pioB18/value\"\nerrno = \"EIO\"\n"
           "repeat = \"forever\"\noccurrence = " +
           std::to_string(look) + "\n";
}

// Off the flag and seen there, but never ten times in a row: this wait has no limit.
TEST(SensorThatFallsBack, HoldsTheStartForGoodWithThePumpTurning) {
    const std::string usual =
        RunInstrument({.board = SensorLostAt(1000000), .steps = 1, .ioCost = "board"}).summary;
    const int looks = std::stoi(usual.substr(usual.find("met = ") + 6));
    const RunResult run =
        RunInstrument({.board = SensorLostAt(looks - 5), .boardTime = 20, .ioCost = "board"});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_THAT(run.console, testing::EndsWith(kPrimed));
    EXPECT_THAT(LinesWith(run.events, "/pwm1/enable").back(), testing::HasSubstr("\"1\""));
}

} // namespace
} // namespace tavrelin
