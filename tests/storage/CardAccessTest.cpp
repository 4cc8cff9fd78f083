#include "storage/CardAccess.h"

#include "base/Trace.h"
#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavrelin {

namespace {

int traces = 0;

} // namespace

// In the place of the shipped one, which does nothing.
void Trace(const char* /*module*/, const char* /*operation*/, int /*line*/) {
    ++traces;
}

namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

// The operations that change something, among all that the board was asked.
Texts Changes(const SimulatedBoard& board) {
    Texts changes;
    for (const std::string& event : board.Events()) {
        if (event.substr(0, 4) != "stat" && event.substr(0, 9) != "setmntent") {
            changes.push_back(event);
        }
    }
    return changes;
}

Scenario WithMountTable(const char* line) {
    Scenario scenario;
    scenario.kernel.mounts.lines = {line};
    return scenario;
}

TEST(CardPresence, IsTheDirectoryOfTheWholeCard) {
    SimulatedBoard board;
    EXPECT_TRUE(IsCardPresent());
    board.RemoveCard();
    board.Elapse(sim::Seconds(1));
    EXPECT_FALSE(IsCardPresent());
    board.InsertCard();
    EXPECT_TRUE(IsCardPresent());
    board.ReplaceText("/sys/block/mmcblk0", "a file");
    EXPECT_FALSE(IsCardPresent());
}

TEST(CardPresence, DoesNotAskForThePartition) {
    Scenario scenario;
    scenario.board.card.partitioned = false;
    const SimulatedBoard board(scenario);
    EXPECT_TRUE(IsCardPresent());
}

TEST(CardMounted, IsWhatTheMountTableSays) {
    SimulatedBoard board;
    EXPECT_FALSE(IsCardMounted());
    board.Card().mounted = true;
    EXPECT_TRUE(IsCardMounted());
    board.RemoveCard();
    board.Elapse(sim::Seconds(1));
    EXPECT_TRUE(IsCardMounted()); // listed until it is unmounted
}

TEST(CardMounted, IsTrueForAnyDirectoryThatContainsTheMountPoint) {
    for (const char* line :
         {"/dev/sda1 /mnt/sd-card-old ext4 rw 0 0", "/dev/sda1 /x/mnt/sd-card/y ext4 rw 0 0"}) {
        const SimulatedBoard board(WithMountTable(line));
        EXPECT_TRUE(IsCardMounted()) << line;
    }
}

TEST(CardMounted, IsFalseForADeviceOfThatName) {
    const SimulatedBoard board(WithMountTable("/mnt/sd-card /media ext4 rw 0 0"));
    EXPECT_FALSE(IsCardMounted());
}

TEST(CardMounted, IsFalseWithoutAMountTable) {
    SimulatedBoard board;
    board.Card().mounted = true;
    board.TakeAway("/etc/mtab");
    EXPECT_FALSE(IsCardMounted());
}

TEST(MountCard, MountsThePartitionWithSynchronousWrites) {
    const SimulatedBoard board;
    EXPECT_TRUE(MountCard());
    EXPECT_TRUE(IsCardMounted());
    EXPECT_EQ(Changes(board), (Texts{"mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" ok"}));
}

TEST(MountCard, LeavesAMountedCardAlone) {
    SimulatedBoard board;
    board.Card().mounted = true;
    EXPECT_TRUE(MountCard());
    EXPECT_EQ(Changes(board), Texts{});
}

TEST(MountCard, TouchesNothingWithoutACard) {
    Scenario scenario;
    scenario.board.card.present = false;
    const SimulatedBoard board(scenario);
    EXPECT_FALSE(MountCard());
    EXPECT_EQ(Changes(board), Texts{});
}

TEST(MountCard, AsksForTheCardFirstEvenWhenItIsStillListed) {
    SimulatedBoard board;
    board.Card().mounted = true;
    board.RemoveCard();
    board.Elapse(sim::Seconds(1));
    EXPECT_FALSE(MountCard());
}

TEST(MountCard, NeverMakesTheMountPoint) {
    Scenario scenario;
    scenario.board.card.mountPointExists = false;
    const SimulatedBoard board(scenario);
    EXPECT_FALSE(MountCard());
    EXPECT_EQ(Changes(board), (Texts{"mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" ENOENT"}));
}

TEST(MountCard, LeavesNoTrace) {
    SimulatedBoard board;
    traces = 0;
    MountCard();
    MountCard();
    board.RemoveCard();
    board.Elapse(sim::Seconds(1));
    MountCard();
    EXPECT_EQ(traces, 0);
}

TEST(UnmountCard, LeavesAListedCardAlone) {
    SimulatedBoard board;
    board.Card().mounted = true;
    EXPECT_FALSE(UnmountCard());
    EXPECT_TRUE(board.Card().mounted);
    EXPECT_EQ(Changes(board), Texts{});
}

TEST(UnmountCard, UnmountsWhatIsNotListed) {
    SimulatedBoard board;
    board.Card().mounted = true;
    board.TakeAway("/etc/mtab");
    EXPECT_TRUE(UnmountCard());
    EXPECT_FALSE(board.Card().mounted);
    EXPECT_EQ(Changes(board), (Texts{"umount /mnt/sd-card ok"}));
}

TEST(UnmountCard, TellsThatNothingWasMounted) {
    const SimulatedBoard board;
    EXPECT_FALSE(UnmountCard());
    EXPECT_EQ(Changes(board), (Texts{"umount /mnt/sd-card EINVAL"}));
}

} // namespace
} // namespace tavrelin
