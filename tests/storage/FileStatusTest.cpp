#include "storage/FileStatus.h"

#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

/// Every kind that a path counts as, by the predicates' names.
Texts KindsOf(const std::string& path) {
    FileStatus status(path);
    Texts kinds;
    const auto note = [&](bool is, const char* kind) {
        if (is) {
            kinds.emplace_back(kind);
        }
    };
    note(status.is_directory(path), "directory");
    note(status.is_regular_file(path), "regular file");
    note(status.is_block_device(path), "block device");
    note(status.is_character_device(path), "character device");
    note(status.is_fifo(path), "fifo");
    note(status.is_socket(path), "socket");
    note(status.is_symlink(path), "symlink");
    return kinds;
}

/// A socket that lives as long as this object.
class BoundSocket {
  public:
    explicit BoundSocket(const std::string& path) : descriptor_(socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(path.begin(), path.end(), std::begin(address.sun_path));
        EXPECT_EQ(bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  0);
    }
    BoundSocket(const BoundSocket&) = delete;
    BoundSocket& operator=(const BoundSocket&) = delete;
    ~BoundSocket() { close(descriptor_); }

  private:
    int descriptor_;
};

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
    const BoundSocket bound(socket);
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
