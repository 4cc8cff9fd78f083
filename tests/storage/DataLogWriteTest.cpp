#include "tests/storage/CardEvents.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>

namespace tavrelin {
namespace {

using namespace std::string_literals;

void LogBatch(const Texts& records) {
    DataLog log(kLog);
    EXPECT_TRUE(log.open());
    for (const std::string& record : records) {
        EXPECT_TRUE(log.write(record));
    }
    log.close();
    EXPECT_FALSE(log.Failed());
}

TEST(Log, BeginsWithTheFirstRecordAndHasNoHeader) {
    const SimulatedBoard board;
    LogBatch({"2026-03-07 09:41.10,,,0.107906,185.04,20,3e+06,2.34e+06\n"});
    EXPECT_EQ(board.FileOnCard(kFile), "2026-03-07 09:41.10,,,0.107906,185.04,20,3e+06,2.34e+06\n");
}

TEST(Log, IsAppendedToAndNeverCut) {
    SimulatedBoard board;
    board.WriteFileOnCard(kFile, "of yesterday's card\n");
    LogBatch({"first\n", "second\n"});
    LogBatch({"third\n"});
    LogBatch({});
    EXPECT_EQ(board.FileOnCard(kFile), "of yesterday's card\nfirst\nsecond\nthird\n");
}

TEST(Log, HoldsTheBytesOfEachRecordUnchanged) {
    const SimulatedBoard board;
    const std::string bytes = "\0\xFF\r\n\"quoted\", comma;\xEF\xBB\xBF\x1A"s;
    LogBatch({bytes, "", "no newline", std::string(20000, 'x') + "\n"});
    EXPECT_EQ(board.FileOnCard(kFile), bytes + "no newline" + std::string(20000, 'x') + "\n");
}

TEST(Log, GetsARecordInOnePiece) {
    const SimulatedBoard board(WithMountedCard());
    LogBatch({"a result record\n"});
    EXPECT_EQ(board.Events().at(board.Events().size() - 2),
              "write " + kLog + " \"a result record\\n\"");
    EXPECT_EQ(board.Events().back(), "close " + kLog + " ok");
}

TEST(Log, GetsTheRestOfARecordThatTheKernelTookInPart) {
    SimulatedBoard board;
    board.CutShort("write", kLog, 3);
    LogBatch({"first\n", "second\n"});
    EXPECT_EQ(board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(Log, OfTwoWritersIsInTheOrderInWhichTheyClose) {
    const SimulatedBoard board;
    DataLog samples(kLog);
    DataLog results(kLog);
    EXPECT_TRUE(samples.open());
    EXPECT_TRUE(results.open());
    EXPECT_TRUE(samples.write("sample 1\n"));
    EXPECT_TRUE(results.write("result\n"));
    EXPECT_TRUE(samples.write("sample 2\n"));
    results.close();
    samples.close();
    EXPECT_EQ(board.FileOnCard(kFile), "result\nsample 1\nsample 2\n");
}

TEST(Log, IsClosedWithItsRecordsAtTheEndOfTheObject) {
    SimulatedBoard board;
    {
        DataLog log(kLog);
        EXPECT_TRUE(log.open());
        EXPECT_TRUE(log.write("first\n"));
    }
    EXPECT_EQ(board.FileOnCard(kFile), "first\n");
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(Log, ThatIsNotOpenClosesInSilence) {
    const SimulatedBoard board;
    DataLog log(kLog);
    log.close();
    EXPECT_FALSE(log.Failed());
    EXPECT_EQ(board.Events(), Texts{});
}

TEST(WritingARecord, LooksForTheCardAndItsMountEachTime) {
    SimulatedBoard board(WithMountedCard());
    DataLog log(kLog);
    EXPECT_TRUE(log.open());
    for (int record = 0; record < 2; ++record) {
        board.Forget();
        EXPECT_TRUE(log.write("record\n"));
        EXPECT_EQ(board.Events(), InOrder({kCardThere, kListed}));
    }
}

TEST(WritingARecord, ToALogThatIsNotOpenFails) {
    SimulatedBoard board(WithMountedCard());
    DataLog log(kLog);
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_EQ(board.Events(), InOrder({kCardThere, kListed}));
    EXPECT_EQ(board.FileOnCard(kFile), "");
}

TEST(WritingARecord, MountsACardThatCameLaterAndOpensTheLog) {
    SimulatedBoard board(WithoutCard());
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    board.InsertCard();
    board.Forget();
    EXPECT_TRUE(log.write("first\n"));
    EXPECT_EQ(board.Events(),
              InOrder({kCardThere, kNotListed, kCardThere, kNotListed, kMountPointThere, kMounted,
                       kNoFileYet, kCardThere, kListed, kOpened}));
    log.close();
    EXPECT_EQ(board.FileOnCard(kFile), "first\n");
}

TEST(WritingARecord, FailsOnceTheCardCannotBeMounted) {
    SimulatedBoard board;
    board.Card().partitioned = false;
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_EQ(board.Calls("mount"), 2U);
    board.Card().partitioned = true;
    EXPECT_TRUE(log.write("first\n"));
    log.close();
    EXPECT_EQ(board.FileOnCard(kFile), "first\n");
}

TEST(WritingARecord, FailsWhenTheLogCannotBeOpenedAfterMounting) {
    SimulatedBoard board;
    board.FailForever("open", kLog, EIO);
    DataLog log(kLog);
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_TRUE(IsMounted(board));
}

// A file of the day's name that lies below the mount point hides the missing mount from open; the
// write mounts the card, opens the open log once more, and that swallows the record.
TEST(WritingARecord, IntoALogBelowTheMountPointLosesItWhenTheCardIsMounted) {
    SimulatedBoard board;
    std::ofstream(board.Kernel().paths.MountPointFolder() + "/" + kFile) << "stray\n";
    DataLog log(kLog);
    EXPECT_TRUE(log.open());
    EXPECT_FALSE(IsMounted(board));
    EXPECT_TRUE(log.write("swallowed\n"));
    EXPECT_TRUE(IsMounted(board));
    EXPECT_TRUE(log.Failed());
    log.close();
    EXPECT_EQ(board.FileBelowMountPoint(kFile), "stray\n");
    EXPECT_EQ(board.FileOnCard(kFile), "");
}

} // namespace
} // namespace tavrelin
