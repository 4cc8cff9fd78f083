// One whole measurement from switching on, held against golden files that a person can read.

#include "tests/support/GoldenFile.h"
#include "tests/system/EventLog.h"
#include "tests/system/InstrumentRun.h"

#include <cstddef>
#include <iomanip>
#include <sstream>

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

TEST(GoldenEvents, InitPrimeAndSearchThenSeventeenSteps) {
    ASSERT_EQ(Sections().size(), kSections);
    EXPECT_EQ(Sections()[0].name, "Init");
    EXPECT_EQ(Sections()[1].name, "Prime");
    EXPECT_EQ(Sections()[2].name, "Search");
    for (std::size_t index = kInitPrimeSearch; index < kSections; ++index) {
        EXPECT_EQ(Sections()[index].name, "Step " + std::to_string(index - kInitPrimeSearch + 1));
    }
}

TEST(GoldenEvents, Init) {
    EXPECT_TRUE(MatchesGoldenFile(SectionText(Sections().at(0)), "system/golden/events-init.txt"));
}

TEST(GoldenEvents, Prime) {
    EXPECT_TRUE(MatchesGoldenFile(SectionText(Sections().at(1)), "system/golden/events-prime.txt"));
}

TEST(GoldenEvents, Search) {
    EXPECT_TRUE(
        MatchesGoldenFile(SectionText(Sections().at(2)), "system/golden/events-search.txt"));
}

class GoldenEventsOfStep : public ::testing::TestWithParam<std::size_t> {};

TEST_P(GoldenEventsOfStep, InOrderAndTime) {
    std::ostringstream name;
    name << "system/golden/events-step-" << std::setw(2) << std::setfill('0') << GetParam()
         << ".txt";
    EXPECT_TRUE(MatchesGoldenFile(SectionText(Sections().at(kInitPrimeSearch + GetParam() - 1)),
                                  name.str()));
}

INSTANTIATE_TEST_SUITE_P(, GoldenEventsOfStep, ::testing::Range<std::size_t>(1, 18));

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
