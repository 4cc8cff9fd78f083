#include "service/BufferedLog.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

constexpr std::size_t kBatch = 240;
constexpr const char* kLogFile = "2026-03-07_logfile.csv";

Scenario WithMountedCard() {
    Scenario scenario;
    scenario.board.card.mounted = true;
    return scenario;
}

// The messages wait for as long as the process lives: lets those of an earlier test go.
void ForgetWaitingMessages() {
    const SimulatedBoard board(WithMountedCard());
    while (BufferedLogPending() > 0) {
        BufferedLogWrite("");
    }
}

std::string Message(std::size_t number) {
    return "message " + std::to_string(number) + ";";
}

/// A board whose card is mounted, and no message waiting.
class BufferedLog : public testing::Test {
  protected:
    BufferedLog() : board((ForgetWaitingMessages(), WithMountedCard())) {}

    // The messages first to last, all accepted.
    void Write(std::size_t first, std::size_t last) {
        for (std::size_t number = first; number <= last; ++number) {
            EXPECT_TRUE(BufferedLogWrite(Message(number))) << number;
        }
    }

    static std::string Messages(std::size_t first, std::size_t last) {
        std::string text;
        for (std::size_t number = first; number <= last; ++number) {
            text += Message(number);
        }
        return text;
    }

    [[nodiscard]] std::string Log() const { return board.FileOnCard(kLogFile); }

    void PullCard() {
        board.RemoveCard();
        board.Elapse(sim::Seconds(1));
    }

    SimulatedBoard board;
    CapturedConsole console;
};

TEST_F(BufferedLog, Keeps239Messages) {
    Write(1, kBatch - 1);
    EXPECT_EQ(BufferedLogPending(), kBatch - 1);
    EXPECT_EQ(Log(), "");
    EXPECT_EQ(board.Calls("open"), 0U);
}

TEST_F(BufferedLog, WritesThemInTheirOrderAtThe240th) {
    Write(1, kBatch);
    EXPECT_EQ(BufferedLogPending(), 0U);
    EXPECT_EQ(Log(), Messages(1, kBatch));
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(BufferedLog, BeginsAnewWithThe241st) {
    Write(1, kBatch + 1);
    EXPECT_EQ(BufferedLogPending(), 1U);
    EXPECT_EQ(Log(), Messages(1, kBatch));
}

TEST_F(BufferedLog, AppendsEachFurther240) {
    Write(1, 2 * kBatch);
    EXPECT_EQ(BufferedLogPending(), 0U);
    EXPECT_EQ(Log(), Messages(1, 2 * kBatch));
}

TEST_F(BufferedLog, AppendsToWhatTheDaysLogHolds) {
    board.WriteFileOnCard(kLogFile, "a record\n");
    Write(1, kBatch);
    EXPECT_EQ(Log(), "a record\n" + Messages(1, kBatch));
}

TEST_F(BufferedLog, AddsNeitherSeparatorNorNewline) {
    for (std::size_t number = 1; number <= kBatch; ++number) {
        EXPECT_TRUE(BufferedLogWrite(number % 2 == 0 ? "b\n" : "a, "));
    }
    std::string text;
    for (std::size_t pair = 0; pair < kBatch / 2; ++pair) {
        text += "a, b\n";
    }
    EXPECT_EQ(Log(), text);
}

TEST_F(BufferedLog, SaysNothing) {
    Write(1, kBatch);
    EXPECT_FALSE(BufferedLogWrite(std::string(30, 'x')));
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "");
}

TEST_F(BufferedLog, TakesMessagesOfUpTo29Characters) {
    EXPECT_TRUE(BufferedLogWrite(""));
    EXPECT_TRUE(BufferedLogWrite("x"));
    EXPECT_TRUE(BufferedLogWrite(std::string(29, 'y')));
    EXPECT_EQ(BufferedLogPending(), 3U);
    EXPECT_FALSE(BufferedLogWrite(std::string(30, 'z')));
    EXPECT_FALSE(BufferedLogWrite(std::string(5000, 'z')));
    EXPECT_EQ(BufferedLogPending(), 3U);
    for (std::size_t more = 3; more < kBatch; ++more) {
        EXPECT_TRUE(BufferedLogWrite(""));
    }
    EXPECT_EQ(Log(), "x" + std::string(29, 'y'));
}

TEST_F(BufferedLog, TakesAnyCharacters) {
    const std::string bytes("\0\n\xFF", 3);
    for (std::size_t number = 0; number < kBatch; ++number) {
        EXPECT_TRUE(BufferedLogWrite(bytes));
    }
    EXPECT_EQ(Log().substr(0, 6), bytes + bytes);
    EXPECT_EQ(Log().size(), 3 * kBatch);
}

TEST_F(BufferedLog, LooksAtTheLengthBeforeTheCard) {
    EXPECT_FALSE(BufferedLogWrite(std::string(30, 'z')));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_TRUE(BufferedLogWrite(std::string(29, 'z')));
    EXPECT_EQ(board.Events(), Texts{"setmntent /etc/mtab card listed"});
}

TEST_F(BufferedLog, RefusesMessagesWhileTheCardIsNotMounted) {
    Write(1, kBatch - 1);
    ASSERT_EQ(board.Card().Unmount("/mnt/sd-card", false), 0);
    EXPECT_FALSE(BufferedLogWrite(Message(kBatch)));
    EXPECT_EQ(BufferedLogPending(), kBatch - 1);
    EXPECT_EQ(board.Calls("mount"), 0U); // does not mount it
    board.Card().mounted = true;
    Write(kBatch, kBatch);
    EXPECT_EQ(BufferedLogPending(), 0U);
    EXPECT_EQ(Log(), Messages(1, kBatch));
}

TEST_F(BufferedLog, RefusesMessagesWithoutAMountTable) {
    board.TakeAway("/etc/mtab");
    EXPECT_FALSE(BufferedLogWrite("x"));
    board.Restore("/etc/mtab");
    EXPECT_TRUE(BufferedLogWrite("x"));
}

// A card that was pulled stays listed until somebody unmounts it.
TEST_F(BufferedLog, TakesMessagesWhileAPulledCardIsStillListed) {
    Write(1, 100);
    PullCard();
    Write(101, kBatch - 1);
    board.InsertCard();
    EXPECT_EQ(BufferedLogPending(), kBatch - 1);
}

TEST_F(BufferedLog, LosesTheMessagesOfACardThatIsPulledAtThe240th) {
    Write(1, kBatch - 1);
    PullCard();
    EXPECT_TRUE(BufferedLogWrite(Message(kBatch))); // accepted all the same
    EXPECT_EQ(BufferedLogPending(), 0U);
    EXPECT_FALSE(BufferedLogWrite("x")); // the log has unmounted what was not there
    board.InsertCard();
    EXPECT_EQ(Log(), "");
    EXPECT_EQ(board.FileBelowMountPoint(kLogFile), "");
}

TEST_F(BufferedLog, GoesOnWithACardThatIsBackAndMounted) {
    Write(1, kBatch - 1);
    PullCard();
    Write(kBatch, kBatch);
    board.InsertCard();
    ASSERT_EQ(board.Card().Mount("/dev/mmcblk0p1", "/mnt/sd-card", "vfat"), 0);
    Write(kBatch + 1, 2 * kBatch);
    EXPECT_EQ(Log(), Messages(kBatch + 1, 2 * kBatch));
}

TEST_F(BufferedLog, AnswersTrueThoughTheLogCannotBeOpened) {
    Write(1, kBatch - 1);
    board.Fail("open", "/mnt/sd-card/*", ENOSPC);
    Write(kBatch, kBatch);
    EXPECT_EQ(BufferedLogPending(), 0U);
    EXPECT_EQ(Log(), "");
    Write(1, kBatch);
    EXPECT_EQ(Log(), Messages(1, kBatch));
}

TEST_F(BufferedLog, OpensTheDaysLogOnceForAllMessages) {
    Write(1, kBatch);
    EXPECT_EQ(board.Calls("open"), 1U);
    const Texts events = board.Events();
    EXPECT_EQ(std::count_if(events.begin(), events.end(),
                            [](const std::string& event) {
                                return event.substr(0, 5) == "open " &&
                                       event.find(kLogFile) != std::string::npos;
                            }),
              1);
}

TEST_F(BufferedLog, WritesToTheLogOfTheDayOfThe240th) {
    Write(1, kBatch - 1);
    board.Elapse(sim::Seconds(24 * 3600));
    Write(kBatch, kBatch);
    EXPECT_EQ(Log(), "");
    EXPECT_EQ(board.FileOnCard("2026-03-08_logfile.csv"), Messages(1, kBatch));
}

} // namespace
} // namespace tavrelin
