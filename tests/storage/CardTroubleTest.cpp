// Cards that are pulled, full, locked or broken, as the data log meets them. Of a card that was
// pulled the day's log stays visible where it was open when the kernel noticed, and is gone else.

#include "tests/storage/CardEvents.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <map>

namespace tavrelin {
namespace {

void LogRecord(DataLog& log, const std::string& record) {
    EXPECT_TRUE(log.open());
    EXPECT_TRUE(log.write(record));
    EXPECT_FALSE(log.Failed());
    log.close();
}

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

TEST(PulledCard, WhoseLogNobodyHasOpenIsUnmountedByTheNextOpening) {
    CardWithLog card;
    PullCard(card.board);
    EXPECT_FALSE(card.log.open());
    EXPECT_EQ(card.board.Events(), InOrder({kNoFileYet, kCardGone, kListed, kListed, kUnmounted}));
    card.board.InsertCard();
    LogRecord(card.log, "second\n");
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(PulledCard, WhoseLogIsOpenStaysMountedAndTakesNothing) {
    CardWithLog card;
    EXPECT_TRUE(card.log.open());
    PullCard(card.board);
    EXPECT_FALSE(card.log.write("lost\n"));
    EXPECT_EQ(card.board.Events().back(), "umount /mnt/sd-card EBUSY");
    card.log.close();
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
    EXPECT_TRUE(card.log.write("lost\n")); // closed, it is unmounted
    EXPECT_FALSE(IsMounted(card.board));
}

TEST(PulledCard, ThatCannotBeUnmountedMakesTheWriteAnswerFalse) {
    CardWithLog card;
    card.board.Fail("umount", "/mnt/sd-card", EIO);
    PullCard(card.board);
    EXPECT_FALSE(card.log.write("lost\n"));
    EXPECT_EQ(card.board.Calls("umount"), 1U);
}

TEST(PulledCard, PutBackAfterTheCleanUpIsMountedAndWrittenToAgain) {
    CardWithLog card;
    PullCard(card.board);
    EXPECT_TRUE(card.log.write("lost\n"));
    card.board.InsertCard();
    LogRecord(card.log, "second\n");
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(CardPutBackWhileMounted, LosesAllThatIsAppendedUntilSomebodyUnmountsIt) {
    CardWithLog card;
    EXPECT_TRUE(card.log.open());
    PullCard(card.board);
    card.log.close();
    card.board.InsertCard();
    for (int record = 0; record < 3; ++record) {
        LogRecord(card.log, "lost\n");
        EXPECT_TRUE(card.log.Failed());
    }
    EXPECT_EQ(card.board.Calls("mount") + card.board.Calls("umount"), 0U);
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
    UnmountByHand(card.board);
    LogRecord(card.log, "second\n");
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(CardPutBackWhileMounted, TakesNoRecordThoughItsRemovalWasNeverSeen) {
    CardWithLog card;
    card.board.RemoveCard();
    card.board.Elapse(sim::Milliseconds(300));
    card.board.InsertCard();
    card.board.Elapse(sim::Milliseconds(400));
    EXPECT_FALSE(card.log.open());
    EXPECT_EQ(card.board.Events(),
              InOrder({kNoFileYet, kCardThere, kListed, {"open " + kLog + " ENOSPC"}}));
    UnmountByHand(card.board);
    LogRecord(card.log, "second\n");
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(CardPutBackWhileMounted, TakesNoNewLogUntilSomebodyUnmountsIt) {
    SimulatedBoard board(WithMountedCard());
    PullCard(board);
    board.InsertCard();
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    EXPECT_TRUE(log.Failed());
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_EQ(board.Calls("mount"), 0U);
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_TRUE(log.write("first\n"));
    log.close();
    EXPECT_EQ(board.FileOnCard(kFile), "first\n");
}

// Whatever becomes of the card after a record was handed over, and before it is closed.
TEST(Record, IsLostWithoutAWordUntilTheClose) {
    const std::map<std::string, std::function<void(SimulatedBoard&)>> troubles = {
        {"full", [](SimulatedBoard& board) { board.Card().freeBytes = 0; }},
        {"broken", [](SimulatedBoard& board) { board.Fail("write", kLog, EIO); }},
        {"pulled", PullCard},
        {"pulled, not noticed", [](SimulatedBoard& board) { board.RemoveCard(); }},
    };
    for (const auto& [name, trouble] : troubles) {
        SCOPED_TRACE(name);
        CardWithLog card;
        EXPECT_TRUE(card.log.open());
        EXPECT_TRUE(card.log.write("lost\n"));
        trouble(card.board);
        EXPECT_FALSE(card.log.Failed());
        card.log.close();
        EXPECT_TRUE(card.log.Failed());
        EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
    }
}

TEST(Record, IsTakenFromAPulledCardAsLongAsTheKernelHasNotNoticed) {
    CardWithLog card;
    card.board.RemoveCard();
    card.board.Elapse(sim::Milliseconds(500));
    LogRecord(card.log, "lost\n");
    EXPECT_TRUE(card.log.Failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
    card.board.Elapse(sim::Milliseconds(200));
    EXPECT_TRUE(card.log.open()) << "what was being written stays visible";
}

TEST(FullCard, TakesNoNewLog) {
    SimulatedBoard board(WithMountedCard());
    board.Card().freeBytes = 0;
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    EXPECT_EQ(board.Events().back(), "open " + kLog + " ENOSPC");
    EXPECT_FALSE(log.write("lost\n"));
}

TEST(FullCard, KeepsWholeRecords) {
    CardWithLog card;
    card.board.Card().freeBytes = 10;
    LogRecord(card.log, "second\n");
    LogRecord(card.log, "third\n");
    EXPECT_TRUE(card.log.Failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(FullCard, WithSpaceAgainIsWrittenToAgain) {
    CardWithLog card;
    card.board.Card().freeBytes = 0;
    LogRecord(card.log, "lost\n");
    card.board.Card().freeBytes = -1;
    LogRecord(card.log, "second\n");
    EXPECT_FALSE(card.log.Failed());
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\nsecond\n");
}

TEST(ReadOnlyCard, TakesNeitherNewNorOldLog) {
    CardWithLog card;
    card.board.Card().readOnly = true;
    EXPECT_FALSE(card.log.open());
    EXPECT_EQ(card.board.Events().back(), "open " + kLog + " EROFS");
    EXPECT_FALSE(card.log.set_file_name("/mnt/sd-card/2026-03-08_logfile.csv"));
    EXPECT_TRUE(card.log.Failed());
    EXPECT_FALSE(card.log.write("lost\n"));
    EXPECT_EQ(card.board.FileOnCard(kFile), "first\n");
}

TEST(WriteProtectedCard, CannotBeMountedAndTakesNothing) {
    SimulatedBoard board;
    board.Card().writeProtected = true;
    DataLog log(kLog);
    EXPECT_FALSE(log.open());
    EXPECT_FALSE(log.write("lost\n"));
    EXPECT_EQ(board.Calls("mount"), 2U);
    EXPECT_EQ(board.FileBelowMountPoint(kFile), "");
}

TEST(FailingClose, MarksTheStreamFailed) {
    CardWithLog card;
    card.board.Fail("close", kLog, EIO);
    LogRecord(card.log, "second\n");
    EXPECT_TRUE(card.log.Failed());
    EXPECT_EQ(card.board.Kernel().Held(), 0U);
    EXPECT_TRUE(card.log.open());
    EXPECT_FALSE(card.log.Failed());
}

TEST(Storage, ReportsNothingOnTheConsole) {
    CapturedConsole console;
    {
        CardWithLog card;
        card.board.Card().freeBytes = 0;
        LogRecord(card.log, "lost\n");
        PullCard(card.board);
        EXPECT_TRUE(card.log.write("lost\n"));
        EXPECT_FALSE(card.log.open());
        card.board.Card().fat = false;
        card.board.InsertCard();
        EXPECT_FALSE(card.log.open());
        EXPECT_FALSE(DataLog::umount_sd_card("/mnt/sd-card"));
    }
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "");
}

} // namespace
} // namespace tavrelin
