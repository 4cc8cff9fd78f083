// Where a run ends: exactly at the first limit reached.

#include "tests/simulator/Launcher.h"

#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <chrono>
#include <cmath>
#include <gmock/gmock.h>

namespace tavrelin {
namespace {

CommandResult Instrument(const Words& options) {
    CommandResult run = Simulate(options, {Binary("tavrelin")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
    return run;
}

std::size_t StepsIn(const std::string& console) {
    return LinesWith(console, "main.cpp, 889: ").size();
}

TEST(StepLimit, EndsBeforeTheNextStepIsAnnounced) {
    const std::string three = Instrument({"--steps", "3"}).output;
    const std::string four = Instrument({"--steps", "4"}).output;
    EXPECT_EQ(StepsIn(three), 3U);
    EXPECT_EQ(four.substr(0, three.size()), three);
    EXPECT_EQ(four.substr(three.size(), 9), "TAVRELIN,");
}

TEST(StepLimit, MayLieBeyondAMeasurement) {
    const std::string text = Instrument({"--steps", "18"}).output;
    EXPECT_EQ(StepsIn(text), 18U);
    EXPECT_EQ(LinesWith(text, ",Sanity Check").size(), 2U);
}

TEST(MeasurementLimit, EndsWithTheResult) {
    const std::string one = Instrument({"--measurements", "1"}).output;
    EXPECT_EQ(StepsIn(one), 17U);
    EXPECT_THAT(one, testing::EndsWith("\n,Sanity Check\n"));
    const std::string two = Instrument({"--measurements", "2"}).output;
    EXPECT_EQ(two.substr(0, one.size()), one);
    EXPECT_EQ(StepsIn(two), 34U);
}

TEST(MeasurementLimit, WinsOrLosesAgainstAStepLimit) {
    EXPECT_EQ(Instrument({"--measurements", "1", "--steps", "18"}).output,
              Instrument({"--measurements", "1"}).output);
    EXPECT_EQ(Instrument({"--measurements", "1", "--steps", "5"}).output,
              Instrument({"--steps", "5"}).output);
}

TEST(CallLimit, EndsBeforeTheCallThatWouldBeOneTooMany) {
    const TestFolder folder;
    const auto events = [&](const std::string& calls) {
        const std::string file = folder.Path("events");
        SimulateTrouble({"sleep-again", "300"}, {"--calls", calls, "--events", file});
        return LinesOf(TextOf(file)).size();
    };
    EXPECT_EQ(events("1"), 1U);
    EXPECT_EQ(events("250"), 250U);
}

TEST(BoardTimeLimit, EndsAtTheVeryMicrosecond) {
    const TestFolder folder;
    const std::string summary = folder.Path("summary");
    for (const std::string limit : {"0.000001", "2.345678", "5"}) {
        Instrument({"--board-time", limit, "--summary", summary});
        const long expected = std::lround(std::stod(limit) * 1e6);
        EXPECT_THAT(TextOf(summary),
                    testing::HasSubstr("board_time_us = " + std::to_string(expected) + "\n"))
            << limit;
    }
}

TEST(BoardTimeLimit, ComesBetweenTwoSleepsAndNotAfterThem) {
    const TestFolder folder;
    const std::string events = folder.Path("events");
    SimulateTrouble({"sleep-again", "300"}, {"--board-time", "1", "--events", events});
    EXPECT_EQ(TextOf(events), "0 1 sleep - 300000 us\n"
                              "300000 1 sleep - 300000 us\n"
                              "600000 1 sleep - 300000 us\n"
                              "900000 1 sleep - 300000 us\n");
}

TEST(Limits, TheEndOfTheProgramComesFirst) {
    EXPECT_EQ(SimulateTrouble({"sleep", "100"}, {"--board-time", "5", "--steps", "3"}).status, 0);
}

/// Real seconds of a program that sleeps on the board.
double SecondsOf(const std::string& milliseconds, const std::string& pace) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(SimulateTrouble({"sleep", milliseconds}, {"--pace", pace}).status, 0);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(Pace, IsAtMostWhatWasAskedFor) {
    EXPECT_GE(SecondsOf("100", "real"), 0.1);
    EXPECT_GE(SecondsOf("20000", "200"), 0.1);
    EXPECT_GE(SecondsOf("50", "0.5"), 0.1);
}

TEST(Pace, IsNotHeldAtMax) {
    // A day of board time; a run at any pace but max would outlast the test.
    EXPECT_EQ(SimulateTrouble({"sleep", "86400000"}, {"--pace", "max", "--real-time", "60"}).status,
              0);
}

} // namespace
} // namespace tavrelin
