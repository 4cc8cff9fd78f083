// The shell's own opinion on whether the card is mounted. The shell is real; `mount` shows the
// simulated board's table.

#include "storage/StorageSpace.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

Scenario WithCard(bool mounted) {
    Scenario scenario;
    scenario.board.card.mounted = mounted;
    return scenario;
}

// grep ended well: the raw status is 0.
TEST(MountedByShell, IsFalseWithTheCardMountedThoughItIsCounted) {
    const SimulatedBoard board(WithCard(true));
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "1\n");
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{"system - \"mount | grep -c mmcblk0p1\" 0"});
}

// grep found nothing and ended with 1: the raw status is 256.
TEST(MountedByShell, IsFalseWithoutTheCardMounted) {
    const SimulatedBoard board(WithCard(false));
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "0\n");
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(board.Events(), Texts{"system - \"mount | grep -c mmcblk0p1\" 256"});
}

TEST(MountedByShell, PrintsTheCountAfterWhatWasPrintedBefore) {
    const SimulatedBoard board(WithCard(true));
    CapturedConsole console;
    std::cout << "before ";
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    std::cout << "after";
    EXPECT_EQ(console.Output(), "before 1\nafter");
}

TEST(MountedByShell, CountsEveryLineThatNamesThePartition) {
    Scenario scenario = WithCard(true);
    scenario.kernel.mounts.lines = {"/dev/mmcblk0p1 /mnt/twin vfat rw 0 0",
                                    "/dev/mmcblk0p2 /mnt/other ext4 rw 0 0"};
    const SimulatedBoard board(scenario);
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "2\n");
}

TEST(MountedByShell, IsFalseWithoutAShell) {
    SimulatedBoard board(WithCard(true));
    board.Fail("system", "", ENOMEM);
    CapturedConsole console;
    EXPECT_FALSE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "");
}

// The one raw status that is 1 is that of a shell which was hung up, whatever the count.
TEST(MountedByShell, IsTrueWhenTheShellIsHungUp) {
    const TestFolder tools;
    const Environment path("PATH", tools.Path() + ":" + std::getenv("PATH"));
    std::ofstream(tools.Path("grep")) << "#!/bin/sh\nkill -HUP $PPID\n";
    std::filesystem::permissions(tools.Path("grep"), std::filesystem::perms::owner_all);
    const SimulatedBoard board(WithCard(false));
    CapturedConsole console;
    EXPECT_TRUE(is_mmc_partition_mounted_by_shell());
    EXPECT_EQ(board.Events(), Texts{"system - \"mount | grep -c mmcblk0p1\" 1"});
}

} // namespace
} // namespace tavrelin
