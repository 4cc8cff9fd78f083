// The shell's own opinion on whether the card is mounted. The shell is real; `mount` shows the
// simulated board's table.

#include "storage/StorageSpace.h"

#include "tests/storage/CardEvents.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavrelin {
namespace {

// grep ended well: the raw status is 0.
TEST(MountedByShell, IsFalseWithTheCardMountedThoughItIsCounted) {
    const SimulatedBoard board(WithMountedCard());
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "1\n");
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{"system - \"mount | grep -c mmcblk0p1\" 0"});
}

// grep found nothing and ended with 1: the raw status is 256.
TEST(MountedByShell, IsFalseWithoutTheCardMounted) {
    const SimulatedBoard board;
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "0\n");
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{"system - \"mount | grep -c mmcblk0p1\" 256"});
}

TEST(MountedByShell, PrintsTheCountAfterWhatWasPrintedBefore) {
    const SimulatedBoard board(WithMountedCard());
    CapturedConsole console;
    std::cout << "before ";
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    std::cout << "after";
    EXPECT_EQ(console.Output(), "before 1\nafter");
}

TEST(MountedByShell, CountsEveryLineThatNamesThePartition) {
    const SimulatedBoard board(WithMountTable(
        {"/dev/mmcblk0p1 /mnt/twin vfat rw 0 0", "/dev/mmcblk0p2 /mnt/other ext4 rw 0 0"},
        WithMountedCard()));
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "2\n");
}

TEST(MountedByShell, IsFalseWithoutAShell) {
    SimulatedBoard board(WithMountedCard());
    board.Fail("system", "", ENOMEM);
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "");
}

// The one raw status that is 1 is that of a shell which was hung up, whatever the count.
TEST(MountedByShell, IsTrueWhenTheShellIsHungUp) {
    const TestTools tools;
    tools.Install("grep", "kill -HUP $PPID");
    const SimulatedBoard board;
    CapturedConsole console;
    EXPECT_TRUE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(board.Events(), Texts{"system - \"mount | grep -c mmcblk0p1\" 1"});
}

} // namespace
} // namespace tavrelin
