#include "storage/FileStatus.h"

#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <utility>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

/// Every kind that a path counts as, by the predicates' names.
Texts KindsOf(const std::string& path) {
    const std::pair<const char*, bool (FileStatus::*)(const std::string&)> predicates[] = {
        {"directory", &FileStatus::is_directory},
        {"regular file", &FileStatus::is_regular_file},
        {"block device", &FileStatus::is_block_device},
        {"character device", &FileStatus::is_character_device},
        {"fifo", &FileStatus::is_fifo},
        {"socket", &FileStatus::is_socket},
        {"symlink", &FileStatus::is_symlink}};
    FileStatus status(path);
    Texts kinds;
    for (const auto& [kind, is] : predicates) {
        if ((status.*is)(path)) {
            kinds.emplace_back(kind);
        }
    }
    return kinds;
}

TEST(FileStatus, TellsTheKindsOfFilesOnTheBoard) {
    const SimulatedBoard board;
    EXPECT_EQ(KindsOf("/mnt/sd-card"), (Texts{"directory"}));
    EXPECT_EQ(KindsOf("/dev/mmcblk0p1"), (Texts{"block device"}));
    EXPECT_EQ(KindsOf("/dev/spidev32765.1"), (Texts{"character device"}));
    EXPECT_EQ(KindsOf("/etc/mtab"), (Texts{"regular file"}));
}

TEST(FileStatus, TellsTheKindsOfFilesOnThisMachine) {
    const SimulatedBoard board;
    const std::string fifo = board.Root() + "/fifo";
    const std::string socket = board.Root() + "/socket";
    const std::string file = board.Root() + "/file";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(mknod(socket.c_str(), S_IFSOCK | 0600, 0), 0);
    std::ofstream(file) << "text";
    EXPECT_EQ(KindsOf(fifo), (Texts{"fifo"}));
    EXPECT_EQ(KindsOf(socket), (Texts{"socket"}));
    EXPECT_EQ(KindsOf(file), (Texts{"regular file"}));
    EXPECT_EQ(KindsOf(board.Root()), (Texts{"directory"}));
    EXPECT_EQ(KindsOf("/dev/null"), (Texts{"character device"}));
}

TEST(FileStatus, FollowsALinkExceptWhenAskedAboutIt) {
    const SimulatedBoard board;
    const std::string link = board.Root() + "/link";
    const std::string dangling = board.Root() + "/dangling";
    ASSERT_EQ(symlink(board.Root().c_str(), link.c_str()), 0);
    ASSERT_EQ(symlink("/nowhere/at/all", dangling.c_str()), 0);
    EXPECT_EQ(KindsOf(link), (Texts{"directory", "symlink"}));
    EXPECT_EQ(KindsOf(dangling), (Texts{"symlink"}));
    EXPECT_EQ(KindsOf("/sys/block/mmcblk0"), (Texts{"directory", "symlink"}));
}

TEST(FileStatus, OfWhatIsNotThereIsNothing) {
    const SimulatedBoard board;
    EXPECT_EQ(KindsOf("/mnt/sd-card/2026-03-07_logfile.csv"), Texts{});
    EXPECT_EQ(KindsOf(board.Root() + "/nothing"), Texts{});
}

TEST(FileStatus, OfAPathOfFiveCharactersIsNothing) {
    FileStatus status("/proc/");
    EXPECT_EQ(KindsOf("/proc"), Texts{});
    EXPECT_EQ(KindsOf("/dev"), Texts{});
    EXPECT_EQ(KindsOf("/"), Texts{});
    EXPECT_EQ(KindsOf(""), Texts{});
    EXPECT_FALSE(status.is_directory("/proc")); // nor is the constructor's path taken instead
    EXPECT_TRUE(status.is_directory("/proc/"));
}

TEST(FileStatus, LooksOnceWhenItIsMadeAndOncePerQuestion) {
    SimulatedBoard board;
    FileStatus status("/mnt/sd-card");
    EXPECT_EQ(board.Events(), (Texts{"stat /mnt/sd-card ok"}));
    board.Forget();
    EXPECT_FALSE(status.is_regular_file("/sys/block/mmcblk0"));
    EXPECT_TRUE(status.is_symlink("/sys/block/mmcblk0"));
    EXPECT_EQ(board.Events(), (Texts{"stat /sys/block/mmcblk0 ok", "lstat /sys/block/mmcblk0 ok"}));
}

TEST(FileStatus, AnswersNoWhenTheLookFails) {
    SimulatedBoard board;
    FileStatus status("/sys/block/mmcblk0");
    board.Fail("stat", "/sys/block/mmcblk0", EIO);
    board.Fail("lstat", "/sys/block/mmcblk0", EIO);
    EXPECT_FALSE(status.is_directory("/sys/block/mmcblk0"));
    EXPECT_FALSE(status.is_symlink("/sys/block/mmcblk0"));
    EXPECT_TRUE(status.is_directory("/sys/block/mmcblk0"));
    EXPECT_TRUE(status.is_symlink("/sys/block/mmcblk0"));
}

} // namespace
} // namespace tavrelin
