// Cards that are missing, full, locked, pulled or slow. What reaches a log is whole records.

#include "tests/support/Text.h"
#include "tests/system/InstrumentRun.h"
#include "tests/system/LogFile.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

std::size_t StepsOf(const RunResult& run) {
    return LinesWith(run.console, "main.cpp, 889: ").size();
}

// A card that cannot be logged to keeps the first step waiting, with a sample every 250 ms.
void ExpectWaitsInStep1(const RunResult& run) {
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 1U);
    EXPECT_GT(LinesWith(run.events, " sleep - 250000 us").size(), 220U);
    EXPECT_EQ(run.Log(), "");
    EXPECT_TRUE(run.mountPoint.empty());
}

TEST(Card, KeepsTheFirstStepWaitingWhileItIsOut) {
    const RunResult run = RunInstrument({.board = "[card]\npresent = false\n", .boardTime = 60});
    ExpectWaitsInStep1(run);
    EXPECT_TRUE(Contains(run.console, ",0.000,0,0.1.4.47\n,Verify Flag"));
}

TEST(Card, KeepsTheFirstStepWaitingWhileNobodyMayWrite) {
    ExpectWaitsInStep1(RunInstrument({.scenario = "card-read-only", .boardTime = 60}));
}

TEST(Card, KeepsTheFirstStepWaitingWhileItIsFull) {
    ExpectWaitsInStep1(RunInstrument({.scenario = "card-full", .boardTime = 60}));
}

TEST(Card, KeepsTheFirstStepWaitingWhileItCannotBeMounted) {
    for (const char* card : {"fat = false", "partition = false", "write_protected = true"}) {
        SCOPED_TRACE(card);
        ExpectWaitsInStep1(
            RunInstrument({.board = std::string("[card]\n") + card + "\n", .boardTime = 60}));
    }
}

// The search ends after 2.8 s, the card comes at 8 s; nothing that was sampled between is lost.
TEST(Card, GetsAllSamplesOfTheStepThatWaitedForIt) {
    const RunResult run = RunInstrument({.scenario = "card-inserted-late", .measurements = 1});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(SamplesOf("Verify Flag (Home Poisition)", run.Log()), 21U);
    EXPECT_EQ(SamplesOf("Dark Count Measurement", run.Log()), 4U);
    EXPECT_EQ(ResultLines(run.Log()).size(), 1U);
    EXPECT_TRUE(TornLines(run.Log()).empty());
    EXPECT_TRUE(run.mountPoint.empty());
}

TEST(Card, MayBePulledAndPutBackAtAnyTime) {
    const RunResult run = RunInstrument({.scenario = "card-out-and-in", .measurements = 3});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 51U);
    EXPECT_EQ(SamplesOf("Verify Flag (Home Poisition)", run.Log()) % 4, 0U);
    EXPECT_TRUE(TornLines(run.Log()).empty());
    EXPECT_TRUE(run.mountPoint.empty());
    EXPECT_EQ(LinesWith(run.console, ",Sanity Check").size(), 6U); // the results were shown
}

// Out for as long as the step of that moment lasts, wherever in the measurement.
class CardPulledAt : public ::testing::TestWithParam<int> {};

TEST_P(CardPulledAt, LeavesWholeRecordsAndResults) {
    const std::string at = std::to_string(GetParam() / 10) + "." + std::to_string(GetParam() % 10);
    const std::string back = std::to_string(GetParam() / 10 + 3) + ".05";
    const RunResult run = RunInstrument(
        {.board = "[[card.event]]\nat = " + at + "\ndo = \"remove\"\n[[card.event]]\nat = " + back +
                  "\ndo = \"insert\"\n",
         .measurements = 2,
         .boardTime = 120});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 34U);
    EXPECT_TRUE(TornLines(run.Log()).empty());
    EXPECT_TRUE(run.mountPoint.empty());
}

INSTANTIATE_TEST_SUITE_P(TenthsOfASecond, CardPulledAt, ::testing::Range(0, 200, 7));

TEST(NearlyFullCard, HoldsTheRecordsThatFitAndLosesTheOthersWhole) {
    const RunResult run = RunInstrument({.scenario = "card-nearly-full", .measurements = 2});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 34U);
    EXPECT_LE(run.Log().size(), 1000U);
    EXPECT_EQ(SamplesOf("Verify Flag (Home Poisition)", run.Log()), 4U);
    EXPECT_TRUE(TornLines(run.Log()).empty());
    EXPECT_TRUE(Contains(run.events, " ENOSPC"));
    // The first result, the 17 steps after it and the second result.
    EXPECT_EQ(LinesWith(run.console, ",428.705,").size(), 19U);
}

TEST(SlowCard, GetsTheSameLogTenBytesAtATime) {
    const RunResult slow = RunInstrument({.scenario = "card-takes-ten-bytes", .measurements = 1});
    const RunResult usual = RunInstrument({.measurements = 1});
    EXPECT_NE(usual.Log(), "");
    EXPECT_EQ(slow.Log(), usual.Log());
}

} // namespace
} // namespace tavrelin
