// One whole measurement from switching on, held against golden files that a person can read.

#include "tests/support/GoldenFile.h"
#include "tests/support/InstrumentRun.h"
#include "tests/system/EventLog.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <regex>

namespace tavrelin {
namespace {

// The stretches of a run up to the end of its first measurement.
constexpr std::size_t kInitPrimeSearch = 3;
constexpr std::size_t kSections = kInitPrimeSearch + 17;

const RunResult& FirstMeasurement() {
    static const RunResult result = RunInstrument({.measurements = 1});
    return result;
}

const std::vector<Section>& Sections() {
    static const std::vector<Section> sections =
        SplitIntoSections(ParseEvents(FirstMeasurement().events));
    return sections;
}

TEST(FirstDifference, TellsLineAndBothTexts) {
    EXPECT_EQ(FirstDifference("one\ntwo\n", "one\ntwo\n"), "");
    EXPECT_EQ(FirstDifference("one\ntwo\n", "one\nzwei\n"),
              "line 2\n  expected: two\n  found:    zwei");
    EXPECT_EQ(FirstDifference("one\n", "one\ntwo\n"),
              "line 2\n  expected: (no more lines)\n  found:    two");
    EXPECT_NE(FirstDifference("one\n", "one"), "");
}

TEST(Golden, ConsoleFromStartToTheEndOfTheFirstMeasurement) {
    EXPECT_EQ(FirstMeasurement().status, kEndedAsAsked);
    EXPECT_EQ(FirstMeasurement().errors, "");
    EXPECT_TRUE(MatchesGoldenFile(FirstMeasurement().console, "system/golden/console.txt"));
}

TEST(Golden, LogOfTheDay) {
    EXPECT_TRUE(MatchesGoldenFile(FirstMeasurement().Log(), "system/golden/log.csv"));
    EXPECT_EQ(FirstMeasurement().card.size(), 1U);
    EXPECT_TRUE(FirstMeasurement().mountPoint.empty());
}

// Beyond January 2038, where 32 bits of seconds end.
TEST(Golden, HoldsInTheYear2040ButForTheDate) {
    const RunResult later = RunInstrument({.measurements = 1, .start = "2040-03-07 09:00:00"});
    EXPECT_EQ(std::regex_replace(later.console, std::regex("2040-03-07"), "2026-03-07"),
              FirstMeasurement().console);
    EXPECT_EQ(std::regex_replace(later.Log("2040-03-07"), std::regex("2040-"), "2026-"),
              FirstMeasurement().Log());
    EXPECT_EQ(later.errors, "");
}

// "Init", "Prime", "Search", "Step 1" to "Step 17", and the files "init" to "step-17".
TEST(GoldenEvents, AreThoseOfInitPrimeSearchAndSeventeenSteps) {
    ASSERT_EQ(Sections().size(), kSections);
    const std::vector<std::string> start = {"Init", "Prime", "Search"};
    for (std::size_t index = 0; index < kSections; ++index) {
        const std::size_t step = index + 1 - std::min(index + 1, kInitPrimeSearch);
        EXPECT_EQ(Sections()[index].name,
                  step == 0 ? start[index] : "Step " + std::to_string(step));
        std::string file =
            step == 0 ? start[index] : std::to_string(100 + step).replace(0, 1, "step-");
        file[0] = static_cast<char>(std::tolower(file[0]));
        EXPECT_TRUE(MatchesGoldenFile(SectionText(Sections()[index]),
                                      "system/golden/events-" + file + ".txt"));
    }
}

// What the table's durations, the converter's 250 ms and the pump's speeds ask for, to the
// microsecond. A step of 1000 ms takes readings until more than 900 ms have passed: four.
TEST(StepTiming, IsExactlyWhatTheWaitsAskFor) {
    ASSERT_EQ(Sections().size(), kSections);
    constexpr std::int64_t second = 1000000;
    constexpr std::int64_t conversion = 250000;
    constexpr std::int64_t turn = 1600 * 1125; // steps of 1.125 ms, at 200 degrees per second
    const std::vector<std::int64_t> expected = {
        second, second, second, second, second, second, second,     conversion, conversion,
        second, turn,   second, second, second, second, conversion, 0};
    for (std::size_t step = 0; step < expected.size(); ++step) {
        EXPECT_EQ(Sections()[kInitPrimeSearch + step].Duration(), expected[step])
            << "step " << step + 1;
    }
}

TEST(StepTiming, SpendsNoTimeBetweenTheStretches) {
    ASSERT_EQ(Sections().size(), kSections);
    for (std::size_t index = 1; index < kSections; ++index) {
        const Section& before = Sections()[index - 1];
        EXPECT_EQ(Sections()[index].Begin(), before.Begin() + before.Duration())
            << Sections()[index].name;
    }
}

TEST(StepTiming, PrimesForTwoSecondsAndSearchesUntilTheFlagHasPassed) {
    ASSERT_EQ(Sections().size(), kSections);
    EXPECT_EQ(Sections()[0].Duration(), 0);
    EXPECT_EQ(Sections()[1].Duration(), 2000000);
    std::int64_t flagLeaves = 0;
    for (const BoardEvent& event : Sections()[2].events) {
        flagLeaves = event.what == "flag - leaves the sensor" ? event.at : flagLeaves;
    }
    EXPECT_GT(flagLeaves, Sections()[2].Begin());
    EXPECT_EQ(Sections()[2].Begin() + Sections()[2].Duration(), flagLeaves);
}

} // namespace
} // namespace tavrelin
