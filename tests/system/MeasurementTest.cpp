#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace tavrelin {
namespace {

constexpr double kDark = 20000.0;
constexpr double kReference = 3000000.0;
constexpr double kSlope = 1714.8182373046875;

// By how much a reading may be off: half a count where the detector rounds to a whole one, and one
// more because readings of 0 and above pass through a 25-bit number in single precision, which
// holds even ones only.
constexpr double kCounts = 1.5;
// Six significant digits of a printed figure, and single precision before that.
constexpr double kDigits = 5e-6 + 1e-6;

struct Range {
    double low;
    double high;
};

// What may be printed for a sample of this absorbance when each reading is off by so many counts;
// dark count and reference are even numbers and exact without noise.
Range PrintedAbsorbance(double truth, double readingsOff, double sampleOff) {
    const double light = (kReference - kDark) * std::pow(10.0, -truth);
    const double full = kReference - kDark;
    const double low = std::log10((full - 2 * readingsOff) / (light + sampleOff + readingsOff));
    const double high = std::log10((full + 2 * readingsOff) / (light - sampleOff - readingsOff));
    const double printed = kDigits * std::max(std::abs(low), std::abs(high)) + 1e-7;
    return {.low = low - printed, .high = high + printed};
}

void ExpectResult(const LoggedResult& result, const Range& absorbance) {
    EXPECT_GE(result.absorbance, absorbance.low);
    EXPECT_LE(result.absorbance, absorbance.high);
    EXPECT_NEAR(result.chlorine, result.absorbance * kSlope,
                2 * kDigits * std::abs(result.absorbance) * kSlope);
}

TEST(Measurement, GivesEverySampleItsOwnAtTheCostsOfABoard) {
    const RunResult run =
        RunInstrument({.scenario = "samples", .measurements = 3, .ioCost = "board"});
    const std::vector<LoggedResult> results = ResultsIn(run.Log());
    ASSERT_EQ(results.size(), 3U);
    for (const std::size_t i : {0U, 1U, 2U}) {
        ExpectResult(results[i], PrintedAbsorbance(std::array{0.0, 0.1, 0.25}.at(i), 0.0, kCounts));
    }
}

TEST(Measurement, GivesTheTrueAbsorbanceOfEverySample) {
    const std::vector<double> truths = {0.0, 0.1, 0.25, 0.5, 1.0, 2.0, 3.0, -0.1, -0.5};
    const RunResult run = RunInstrument({.scenario = "samples", .measurements = 9});
    const std::vector<LoggedResult> results = ResultsIn(run.Log());
    ASSERT_EQ(results.size(), truths.size());
    EXPECT_THAT(ResultLines(run.Log())[0],
                testing::EndsWith(",,,0,0,20000,3e+06,3e+06")); // exactly
    for (std::size_t i = 0; i < truths.size(); ++i) {
        SCOPED_TRACE("absorbance " + std::to_string(truths[i]));
        ExpectResult(results[i], PrintedAbsorbance(truths[i], 0.0, kCounts));
        EXPECT_EQ(results[i].dark, kDark);
        EXPECT_EQ(results[i].reference, kReference);
    }
}

TEST(Measurement, ShowsTheConcentrationItLogged) {
    const RunResult run = RunInstrument({.scenario = "samples", .measurements = 9});
    std::vector<std::string> shown;
    std::string before;
    for (const std::string& line : LinesOf(run.console)) {
        if (line == ",Sanity Check") {
            shown.push_back(Split(before, ',').at(2));
        }
        before = line;
    }
    const std::vector<LoggedResult> results = ResultsIn(run.Log());
    ASSERT_EQ(shown.size(), 2 * results.size()); // each step 17 is announced, then its result
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_NEAR(std::stod(shown[2 * i + 1]), results[i].chlorine,
                    kDigits * std::abs(results[i].chlorine) + 0.0005);
        EXPECT_EQ(shown[2 * i], i == 0 ? "0.000" : shown[2 * i - 1]);
    }
}

TEST(Measurement, StaysWithinTheNoiseOfTheDetector) {
    const double noise = 6.0 * 50.0;
    const RunResult run = RunInstrument({.scenario = "noisy-detector", .measurements = 4});
    const std::vector<double> truths = {0.0, 0.25, 1.0, 3.0};
    const std::vector<LoggedResult> results = ResultsIn(run.Log());
    ASSERT_EQ(results.size(), truths.size());
    for (std::size_t i = 0; i < truths.size(); ++i) {
        SCOPED_TRACE("absorbance " + std::to_string(truths[i]));
        ExpectResult(results[i], PrintedAbsorbance(truths[i], noise + kCounts, noise + kCounts));
    }
    EXPECT_NE(results[0].absorbance, 0.0);
}

TEST(Measurement, StartsOverAfterTheSeventeenthStep) {
    const RunResult run = RunInstrument({.steps = 35});
    std::string steps;
    for (const std::string& line : LinesWith(run.console, "main.cpp, 889: ")) {
        steps += line.substr(15, line.find(',', 15) - 15) + " ";
    }
    const std::string once = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 ";
    EXPECT_EQ(steps, once + once + "1 ");
}

// The measurement starts ten seconds before midnight. A step's samples go to the day of its last
// sample, the result to the day on which the measurement ended.
TEST(LocalTime, IsThatOfTheScenariosZone) {
    const RunResult run = RunInstrument({.board = "clock.zone = 'Europe/Berlin'\n",
                                         .measurements = 1,
                                         .start = "2026-03-29 00:59:59"});
    EXPECT_THAT(run.console, testing::StartsWith("TAVRELIN,2026-03-29 01:59.59,"));
    EXPECT_THAT(run.console, testing::HasSubstr("TAVRELIN,2026-03-29 03:00.01,"));
}

TEST(Midnight, SplitsAMeasurementIntoTheLogsOfTwoDays) {
    const RunResult run = RunInstrument({.measurements = 1, .start = "2026-03-07 23:59:50"});
    EXPECT_EQ(run.card.size(), 2U);
    const std::string before = run.Log("2026-03-07");
    const std::string after = run.Log("2026-03-08");
    EXPECT_THAT(TornLines(before), testing::IsEmpty());
    EXPECT_THAT(TornLines(after), testing::IsEmpty());
    EXPECT_EQ(SamplesOf("Verify Flag (Home Poisition)", before), 4U);
    EXPECT_EQ(SamplesOf("Reacted Sample Optical Measurement", after), 4U);
    EXPECT_THAT(ResultLines(before), testing::IsEmpty());
    ASSERT_EQ(ResultLines(after).size(), 1U);
    EXPECT_THAT(ResultLines(after)[0], testing::StartsWith("2026-03-08 00:00.07,,,"));
    EXPECT_EQ(LinesOf(before).size() + LinesOf(after).size(), 56U);
}

} // namespace
} // namespace tavrelin
