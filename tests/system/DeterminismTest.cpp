// Same program, scenario and seed: the same bytes, whatever the machine does besides.

#include "tests/support/Command.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavrelin {
namespace {

const Conditions kNoisy = {
    .scenario = "noisy-detector", .measurements = 2, .seed = 7, .ioCost = "board", .waves = true};
// Told apart, so that a difference shows where it lies.
void ExpectSame(const RunResult& run, const RunResult& other) {
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(FirstDifference(other.console, run.console), "");
    EXPECT_EQ(FirstDifference(other.errors, run.errors), "");
    EXPECT_EQ(FirstDifference(other.events, run.events), "");
    EXPECT_EQ(FirstDifference(other.waves, run.waves), "");
    EXPECT_EQ(run.card, other.card);
    EXPECT_TRUE(run == other);
}

TEST(Determinism, RepeatsARunByteForByteAlsoOnOneCoreUnderLoad) {
    Conditions freeCalls = kNoisy;
    freeCalls.ioCost = "none";
    for (const Conditions& conditions : {kNoisy, freeCalls}) {
        const RunResult first = RunInstrument(conditions);
        EXPECT_EQ(ResultLines(first.Log()).size(), 2U);
        ExpectSame(RunInstrument(conditions), first);
        const OneCore shared;
        const BusyProcess busy;
        ExpectSame(RunInstrument(conditions), first);
        EXPECT_TRUE(busy.IsRunning());
    }
}

TEST(Determinism, GivesOtherNoiseForAnotherSeed) {
    Conditions other = kNoisy;
    other.seed = 8;
    EXPECT_NE(RunInstrument(other).Log(), RunInstrument(kNoisy).Log());
}

std::vector<std::string> Sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

// Workers of a step may come in any order; a measurement must not depend on it.
class ThreadOrder : public testing::TestWithParam<std::uint64_t> {};

TEST_P(ThreadOrder, ChangesNeitherResultsNorLog) {
    const RunResult usual = RunInstrument({.measurements = 2});
    const Conditions conditions = {
        .scenario = "seeded-threads", .measurements = 2, .seed = GetParam()};
    const RunResult run = RunInstrument(conditions);
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(run.Log(), usual.Log());
    EXPECT_EQ(Sorted(LinesOf(run.console)), Sorted(LinesOf(usual.console)));
    EXPECT_NE(run.events, usual.events);
    ExpectSame(RunInstrument(conditions), run);
}

INSTANTIATE_TEST_SUITE_P(Seed, ThreadOrder, testing::Range<std::uint64_t>(1, 9));

TEST(ThreadOrders, DifferFromSeedToSeed) {
    EXPECT_NE(RunInstrument({.scenario = "seeded-threads", .measurements = 1, .seed = 1}).events,
              RunInstrument({.scenario = "seeded-threads", .measurements = 1, .seed = 2}).events);
}

} // namespace
} // namespace tavrelin
