// Cards that are missing, full, locked, pulled or slow. What reaches a log is whole records.

#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

std::size_t StepsOf(const RunResult& run) {
    return LinesWith(run.console, "main.cpp, 889: ").size();
}

constexpr const char* kFirstStep = "Verify Flag (Home Poisition)";

// A card that cannot be logged to keeps the first step waiting, with a sample every 250 ms.
void ExpectWaitsInStep1(const RunResult& run) {
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 1U);
    EXPECT_GT(LinesWith(run.events, " sleep - 250000 us").size(), 220U);
    EXPECT_EQ(run.Log(), "");
    EXPECT_THAT(run.mountPoint, testing::IsEmpty());
}

TEST(Card, KeepsTheFirstStepWaitingWhileItIsOut) {
    const RunResult run = RunInstrument({.board = "[card]\npresent = false\n", .boardTime = 60});
    ExpectWaitsInStep1(run);
    EXPECT_THAT(run.console, testing::HasSubstr(",0.000,0,0.1.4.47\n,Verify Flag"));
}

TEST(Card, KeepsTheFirstStepWaitingWhileItTakesNothing) {
    for (const char* card : {"read_only = true", "free_bytes = 0", "fat = false",
                             "partition = false", "write_protected = true"}) {
        SCOPED_TRACE(card);
        ExpectWaitsInStep1(
            RunInstrument({.board = std::string("[card]\n") + card + "\n", .boardTime = 60}));
    }
}

// The search ends after 2.8 s, the card comes at 8 s; nothing that was sampled between is lost.
TEST(Card, GetsAllSamplesOfTheStepThatWaitedForIt) {
    const RunResult run = RunInstrument({.scenario = "card-inserted-late", .measurements = 1});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(SamplesOf(kFirstStep, run.Log()), 21U);
    EXPECT_EQ(SamplesOf("Dark Count Measurement", run.Log()), 4U);
    EXPECT_EQ(ResultLines(run.Log()).size(), 1U);
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
    EXPECT_THAT(run.mountPoint, testing::IsEmpty());
}

// A pulled card comes in two cases. In one the day's file is gone when the kernel notices: the
// program unmounts, and waits for the card. In the other a write came between pull and notice, and
// the file stays visible: the program can neither write nor unmount while it has the file open, and
// loses every record until somebody unmounts.

std::string CardEvent(const std::string& seconds, const char* what) {
    return "[[card.event]]\nat = " + seconds + "\ndo = \"" + what + "\"\n";
}

TEST(PulledCard, ThatHadNoFileIsUnmountedAndItsSamplesAreKept) {
    const RunResult run =
        RunInstrument({.board = "[card]\nmounted = true\n" + CardEvent("1.0", "remove") +
                                CardEvent("8.0", "insert"),
                       .measurements = 1});
    EXPECT_EQ(LinesWith(run.events, " umount /mnt/sd-card ok").size(), 1U);
    EXPECT_EQ(SamplesOf(kFirstStep, run.Log()), 21U);
    EXPECT_EQ(ResultLines(run.Log()).size(), 1U);
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
    EXPECT_THAT(run.mountPoint, testing::IsEmpty());
}

TEST(PulledCard, WhoseFileStaysVisibleTakesNoMoreRecordsThoughEveryResultIsShown) {
    const RunResult run = RunInstrument({.scenario = "card-out-and-in", .measurements = 3});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 51U); // none waits
    EXPECT_EQ(LinesWith(run.console, ",Sanity Check").size(), 6U);
    EXPECT_EQ(LinesOf(run.Log()).size(), 8U); // of the two steps before it was pulled
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
    EXPECT_THAT(run.mountPoint, testing::IsEmpty());
    EXPECT_GT(LinesWith(run.events, " umount /mnt/sd-card EBUSY").size(), 0U);
    EXPECT_EQ(LinesWith(run.events, " mount /mnt/sd-card ").size(), 1U); // the first one
}

// Out for 0.3 s between the records of two steps: nothing was seen, and the day's file is gone.
TEST(PulledCard, PutBackBeforeItWasMissedKeepsAStepWaitingForGood) {
    const RunResult run = RunInstrument(
        {.board = CardEvent("5.05", "remove") + CardEvent("5.35", "insert"), .boardTime = 60});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 3U);
    EXPECT_EQ(LinesWith(run.events, "open /mnt/sd-card/2026-03-07_logfile.csv ok").size(), 2U);
    EXPECT_GT(LinesWith(run.events, "_logfile.csv ENOSPC").size(), 200U);
    EXPECT_EQ(LinesOf(run.Log()).size(), 8U); // of the two steps before
    EXPECT_EQ(LinesWith(run.events, "umount").size(), 0U);
}

// Back in after a second, but still the mount of before: no file of the new day can be made on it.
TEST(PulledCard, WhoseFileStaysVisibleKeepsAStepWaitingForGoodAfterMidnight) {
    const RunResult run =
        RunInstrument({.board = CardEvent("5.1", "remove") + CardEvent("6.05", "insert"),
                       .boardTime = 60,
                       .start = "2026-03-07 23:59:50"});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 8U); // the one that ends at midnight
    EXPECT_THAT(LinesOf(run.events).back(), testing::HasSubstr(" sleep - 250000 us"));
    EXPECT_THAT(run.card, testing::SizeIs(1)); // of the day before
}

class CardPulledAt : public testing::TestWithParam<int> {};

// Out for some three seconds, of which the kernel needs 0.7 s to notice. A record that is written
// meanwhile is the last that is tried: the card holds, for all of both measurements, what was
// written until it was pulled. Without one the step waits for the card, and nothing is lost.
TEST_P(CardPulledAt, TakesNoMoreOnceARecordWasWrittenBeforeTheKernelNoticed) {
    static const RunResult usual = RunInstrument({.measurements = 2});
    const std::string at = std::to_string(GetParam() / 10) + "." + std::to_string(GetParam() % 10);
    const RunResult run =
        RunInstrument({.board = CardEvent(at, "remove") +
                                CardEvent(std::to_string(GetParam() / 10 + 3) + ".05", "insert"),
                       .measurements = 2,
                       .boardTime = 120});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 34U);
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
    EXPECT_THAT(run.mountPoint, testing::IsEmpty());
    std::size_t linesBefore = 0;
    bool writtenUnnoticed = false;
    for (const std::string& write : LinesWith(usual.events, " write /mnt/sd-card/")) {
        const std::int64_t since = std::stoll(write) - GetParam() * 100'000;
        linesBefore += since < 0 ? Split(write, '\\').size() - 1 : 0;
        writtenUnnoticed = writtenUnnoticed || (since >= 0 && since < 700'000);
    }
    if (linesBefore != 0 && writtenUnnoticed) {
        EXPECT_THAT(LinesOf(run.Log()), testing::SizeIs(linesBefore));
        EXPECT_THAT(usual.Log(), testing::StartsWith(run.Log()));
    } else {
        EXPECT_GE(LinesOf(run.Log()).size(), 112U);
        EXPECT_EQ(ResultLines(run.Log()).size(), 2U);
    }
}

INSTANTIATE_TEST_SUITE_P(TenthsOfASecond, CardPulledAt, testing::Range(0, 200, 7));

TEST(NearlyFullCard, HoldsTheRecordsThatFitAndLosesTheOthersWhole) {
    const RunResult run =
        RunInstrument({.board = "[card]\nfree_bytes = 1000\n", .measurements = 2});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(StepsOf(run), 34U);
    EXPECT_LE(run.Log().size(), 1000U);
    EXPECT_EQ(SamplesOf(kFirstStep, run.Log()), 4U);
    EXPECT_THAT(TornLines(run.Log()), testing::IsEmpty());
    EXPECT_THAT(run.events, testing::HasSubstr(" ENOSPC"));
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
