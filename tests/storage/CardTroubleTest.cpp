#include "storage/DataLog.h"
#include "tests/storage/CardEvents.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

const std::string kLog = "/mnt/sd-card/2026-03-07_logfile.csv";
const std::string kFile = "2026-03-07_logfile.csv";

/// A mounted card with one record of the day.
struct CardWithLog {
    CardWithLog() { board.WriteFileOnCard(kFile, "first\n"); }

    SimulatedBoard board{WithMountedCard()};
    DataLog log{kLog};
};

TEST(PulledCard, IsUnmountedByTheNextWriteWhichAnswersTrueWithoutWriting) {
    SimulatedBoard board(WithMountedCard());
    DataLog log(kLog);
    PullCard(board);
    EXPECT_TRUE(log.write("lost\n"));
    EXPECT_EQ(board.Events(), InOrder({kCardGone, kListed, kListed, kUnmounted}));
    board.Forget();
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_EQ(board.Events(), InOrder({kCardGone, kNotListed}));
    EXPECT_EQ(board.FileOnCard(kFile), "");
    EXPECT_EQ(board.FileBelowMountPoint(kFile), "");
}

TEST(PulledCard, StaysMountedWhileTheLogIsOpen) {
    CardWithLog card;
    EXPECT_TRUE(card.log.open());
    PullCard(card.board);
    EXPECT_FALSE(card.log.write("lost\n"));
    EXPECT_EQ(card.board.Events().back(), "umount /mnt/sd-card EBUSY");
    card.log.close();
    EXPECT_TRUE(card.log.write("lost\n"));
    EXPECT_FALSE(card.board.Card().mounted);
    EXPECT_FALSE(card.log.write("lost\n"));
}

TEST(PulledCard, ThatCannotBeUnmountedMakesTheWriteAnswerFalse) {
    CardWithLog card;
    card.board.Fail("umount", "/mnt/sd-card", EIO);
    PullCard(card.board);
    EXPECT_FALSE(card.log.write("lost\n"));
    EXPECT_EQ(card.board.Calls("umount"), 1U);
}

TEST(PulledCard, LosesTheRecordThatTheLogHeld) {
    CardWithLog card;
    EXPECT_TRUE(card.log.open());
    EXPECT_TRUE(card.log.write("lost\n"));
    EXPECT_FALSE(card.log.failed());
    PullCard(card.board);
    card.log.close();
    EXPECT_TRUE(card.log.failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(PulledCard, IsWrittenToAsLongAsTheKernelHasNotNoticed) {
    CardWithLog card;
    EXPECT_TRUE(card.log.open());
    card.board.RemoveCard();
    card.board.Elapse(sim::Milliseconds(500));
    EXPECT_TRUE(card.log.write("lost\n"));
    card.log.close();
    EXPECT_TRUE(card.log.failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(PulledCard, StillShowsTheDaysLogWhichOpensAndTakesNothing) {
    CardWithLog card;
    PullCard(card.board);
    EXPECT_TRUE(card.log.open());
    EXPECT_FALSE(card.log.write("lost\n"));
    card.log.close();
    EXPECT_TRUE(card.board.Card().mounted);
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(PulledCard, PutBackAfterTheCleanUpIsMountedAndWrittenToAgain) {
    CardWithLog card;
    PullCard(card.board);
    EXPECT_TRUE(card.log.write("lost\n"));
    card.board.InsertCard();
    EXPECT_TRUE(card.log.open());
    EXPECT_TRUE(card.log.write("second\n"));
    card.log.close();
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(CardPutBackWhileMounted, IsNotMountedAgainAndLosesWhatIsAppended) {
    CardWithLog card;
    PullCard(card.board);
    card.board.InsertCard();
    EXPECT_TRUE(card.log.open());
    EXPECT_TRUE(card.log.write("lost\n"));
    card.log.close();
    EXPECT_TRUE(card.log.failed());
    EXPECT_EQ(card.board.Calls("mount"), 0U);
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(CardPutBackWhileMounted, TakesNoNewLog) {
    SimulatedBoard board(WithMountedCard());
    PullCard(board);
    board.InsertCard();
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    EXPECT_TRUE(log.failed());
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_EQ(board.Calls("mount"), 0U);
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_TRUE(log.write("first\n"));
    log.close();
    EXPECT_EQ(board.FileOnCard(kFile), "first\n");
}

TEST(FullCard, TakesNoNewLog) {
    Scenario scenario = WithMountedCard();
    scenario.board.card.freeBytes = 0;
    SimulatedBoard board(scenario);
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    EXPECT_EQ(board.Events().back(), "open " + kLog + " ENOSPC");
    EXPECT_FALSE(log.write("lost\n"));
}

TEST(FullCard, ShowsTheLossOfARecordOnlyAtTheClose) {
    CardWithLog card;
    card.board.Card().freeBytes = 0;
    EXPECT_TRUE(card.log.open());
    EXPECT_TRUE(card.log.write("lost\n"));
    EXPECT_FALSE(card.log.failed());
    card.log.close();
    EXPECT_TRUE(card.log.failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(FullCard, KeepsWholeRecords) {
    CardWithLog card;
    card.board.Card().freeBytes = 10;
    for (const char* record : {"second\n", "third\n"}) {
        EXPECT_TRUE(card.log.open());
        EXPECT_TRUE(card.log.write(record));
        card.log.close();
    }
    EXPECT_TRUE(card.log.failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(FullCard, WithSpaceAgainIsWrittenToAgain) {
    CardWithLog card;
    card.board.Card().freeBytes = 0;
    EXPECT_TRUE(card.log.open());
    EXPECT_TRUE(card.log.write("lost\n"));
    card.log.close();
    card.board.Card().freeBytes = -1;
    EXPECT_TRUE(card.log.open());
    EXPECT_FALSE(card.log.failed());
    EXPECT_TRUE(card.log.write("second\n"));
    card.log.close();
    EXPECT_FALSE(card.log.failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(ReadOnlyCard, TakesNeitherNewNorOldLog) {
    CardWithLog card;
    card.board.Card().readOnly = true;
    EXPECT_FALSE(card.log.open());
    EXPECT_EQ(card.board.Events().back(), "open " + kLog + " EROFS");
    EXPECT_FALSE(card.log.set_file_name("/mnt/sd-card/2026-03-08_logfile.csv"));
    EXPECT_TRUE(card.log.failed());
    EXPECT_FALSE(card.log.write("lost\n"));
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(WriteProtectedCard, CannotBeMountedAndTakesNothing) {
    Scenario scenario;
    scenario.board.card.writeProtected = true;
    SimulatedBoard board(scenario);
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_EQ(board.Calls("mount"), 2U);
    EXPECT_EQ(board.FileBelowMountPoint(kFile), "");
}

TEST(FailingClose, MarksTheStreamFailed) {
    CardWithLog card;
    card.board.Fail("close", kLog, EIO);
    EXPECT_TRUE(card.log.open());
    EXPECT_TRUE(card.log.write("second\n"));
    card.log.close();
    EXPECT_TRUE(card.log.failed());
    EXPECT_EQ(card.board.Kernel().Held(), 0U);
    EXPECT_TRUE(card.log.open());
    EXPECT_FALSE(card.log.failed());
}

TEST(FailingCard, ShowsTheLossOfARecordOnlyAtTheClose) {
    CardWithLog card;
    card.board.Fail("write", kLog, EIO);
    EXPECT_TRUE(card.log.open());
    EXPECT_TRUE(card.log.write("lost\n"));
    EXPECT_FALSE(card.log.failed());
    card.log.close();
    EXPECT_TRUE(card.log.failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(Storage, ReportsNothingOnTheConsole) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        CardWithLog card;
        card.board.Card().freeBytes = 0;
        EXPECT_TRUE(card.log.open());
        EXPECT_TRUE(card.log.write("lost\n"));
        card.log.close();
        PullCard(card.board);
        EXPECT_TRUE(card.log.write("lost\n"));
        EXPECT_FALSE(card.log.open());
        card.board.Card().fat = false;
        card.board.InsertCard();
        EXPECT_FALSE(card.log.open());
        EXPECT_FALSE(DataLog::umount_sd_card("/mnt/sd-card"));
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace tavrelin
