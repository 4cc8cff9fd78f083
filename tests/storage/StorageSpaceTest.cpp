#include "storage/StorageSpace.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <streambuf>

namespace tavrelin {
namespace {

using sim::FileSystem;
using sim::Scenario;
using sim::SimulatedBoard;

const mntent kSentinel{};

/// The board whose mount table is this text; its file systems are those of /mnt/a, /mnt/b and
/// /mnt/c, of 1000, 2000 and 3000 blocks.
struct BoardWithTable {
    explicit BoardWithTable(const std::string& table) : board(FileSystems()) {
        board.ReplaceText("/etc/mtab", table);
    }

    static Scenario FileSystems() {
        Scenario scenario;
        scenario.kernel.mounts.fileSystems = {{"/mnt/a", 4096, 1000, 500, 400},
                                              {"/mnt/b", 1024, 2000, 0, 0},
                                              {"/mnt/c", 512, 3000, 3000, 2999}};
        return scenario;
    }

    SimulatedBoard board;
};

std::string Listing() {
    CapturedConsole console;
    const mntent* entry = &kSentinel;
    print_storage_space(entry);
    EXPECT_EQ(entry, nullptr);
    EXPECT_EQ(console.Error(), "");
    return console.Output();
}

std::string ListingOf(const FileSystem& system) {
    Scenario scenario;
    scenario.kernel.mounts.fileSystems = {system};
    SimulatedBoard board(scenario);
    board.ReplaceText("/etc/mtab", "/dev/x " + system.directory + " ext4 rw 0 0\n");
    return Listing();
}

constexpr const char* kLineOfA = "/dev/a /mnt/a size=4096000 free=2048000 avail=1638400\n";
constexpr const char* kLineOfB = "/dev/b /mnt/b size=2048000 free=0 avail=0\n";
constexpr const char* kLineOfC = "/dev/c /mnt/c size=1536000 free=1536000 avail=1535488\n";

constexpr const char* kThreeEntries = "/dev/a /mnt/a ext4 rw 0 0\n"
                                      "/dev/b /mnt/b vfat rw 0 0\n"
                                      "/dev/c /mnt/c ext4 ro 0 0\n";

TEST(StorageSpace, IsALineForEachEntryInTheTablesOrder) {
    BoardWithTable given(kThreeEntries);
    EXPECT_EQ(Listing(), std::string(kLineOfA) + kLineOfB + kLineOfC);
    EXPECT_EQ(given.board.Calls("setmntent"), 1U);
    EXPECT_EQ(given.board.Calls("endmntent"), 1U);
    EXPECT_EQ(given.board.Kernel().Held(), 0U);
}

TEST(StorageSpace, LeavesOutAnEntryThatIsRefused) {
    BoardWithTable given(kThreeEntries);
    given.board.Fail("statfs", "/mnt/b", EACCES);
    EXPECT_EQ(Listing(), std::string(kLineOfA) + kLineOfC);
}

TEST(StorageSpace, LeavesOutTheFirstAndTheLastAsWell) {
    BoardWithTable given(kThreeEntries);
    given.board.Fail("statfs", "/mnt/a", ENOENT);
    given.board.Fail("statfs", "/mnt/c", ENOSYS);
    EXPECT_EQ(Listing(), kLineOfB);
}

TEST(StorageSpace, OfTheCardIsItsUsualLine) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    const SimulatedBoard board(scenario);
    const std::string listing = Listing();
    const std::string card =
        "/dev/mmcblk0p1 /mnt/sd-card size=7948206080 free=7001178112 avail=7001178112\n";
    ASSERT_GT(listing.size(), card.size());
    EXPECT_EQ(listing.substr(listing.size() - card.size()), card);
}

TEST(StorageSpace, OfThousandBlocksOf4096BytesIs4096000Bytes) {
    EXPECT_EQ(ListingOf({"/d", 4096, 1000, 1, 0}), "/dev/x /d size=4096000 free=4096 avail=0\n");
}

TEST(StorageSpace, OfLargeFileSystemsKeepsEveryDigit) {
    EXPECT_EQ(ListingOf({"/d", 4096, 4'294'967'296, 1'099'511'627'777, 1}),
              "/dev/x /d size=17592186044416 free=4503599627374592 avail=4096\n");
    EXPECT_EQ(ListingOf({"/d", 2'147'483'647, 4'294'967'297, 0, 0}),
              "/dev/x /d size=9223372034707292159 free=0 avail=0\n");
}

// A block size of 32 bits keeps its sign when it is widened; the product has no sign.
TEST(StorageSpace, TakesANegativeBlockSizeAsItIs) {
    EXPECT_EQ(ListingOf({"/d", -4096, 1000, 1, 0}),
              "/dev/x /d size=18446744073705455616 free=18446744073709547520 avail=0\n");
}

TEST(StorageSpace, KnowsDirectoriesWithSpaces) {
    Scenario scenario;
    scenario.kernel.mounts.fileSystems = {{"/my stick", 1, 7, 6, 5}};
    SimulatedBoard board(scenario);
    board.ReplaceText("/etc/mtab", "my\\040device /my\\040stick ext4 rw 0 0\n");
    EXPECT_EQ(Listing(), "my device /my stick size=7 free=6 avail=5\n");
}

TEST(StorageSpace, SkipsAnEntryWithoutADirectory) {
    const BoardWithTable given("/dev/a /mnt/a ext4 rw 0 0\n"
                               "/dev/b (missing) vfat rw 0 0\n"
                               "(missing) (missing) vfat rw 0 0\n"
                               "/dev/c /mnt/c ext4 ro 0 0\n");
    EXPECT_EQ(Listing(), std::string(kLineOfA) + kLineOfC);
    EXPECT_TRUE(std::cout.good());
    EXPECT_EQ(given.board.Calls("statfs"), 2U);
}

TEST(StorageSpace, TurnsTheConsoleBadAtAnEntryWithoutADevice) {
    const BoardWithTable given("/dev/a /mnt/a ext4 rw 0 0\n"
                               "(missing) /mnt/b vfat rw 0 0\n"
                               "/dev/c /mnt/c ext4 ro 0 0\n");
    CapturedConsole console;
    const mntent* entry = &kSentinel;
    print_storage_space(entry);
    std::cout << "dropped like the rest" << std::flush;
    EXPECT_TRUE(std::cout.bad());
    EXPECT_EQ(console.Output(), kLineOfA);
    EXPECT_EQ(console.Error(), "");
    EXPECT_EQ(entry, nullptr);
    EXPECT_EQ(given.board.Calls("statfs"), 3U); // goes on to the end all the same
    std::cout.clear();
}

TEST(StorageSpace, OfNoTableIsNothing) {
    Scenario scenario;
    scenario.kernel.mounts.tablePresent = false;
    const SimulatedBoard board(scenario);
    EXPECT_EQ(Listing(), "");
    EXPECT_EQ(board.Calls("statfs"), 0U);
    EXPECT_EQ(board.Calls("endmntent"), 0U);
}

TEST(StorageSpace, OfAnEmptyTableIsNothing) {
    const BoardWithTable given("");
    EXPECT_EQ(Listing(), "");
    EXPECT_EQ(given.board.Calls("endmntent"), 1U);
}

/// Keeps what is inserted, with a mark where the stream is flushed.
class MarkedBuffer : public std::streambuf {
  public:
    MarkedBuffer() : before_(std::cout.rdbuf(this)) {}
    MarkedBuffer(const MarkedBuffer&) = delete;
    MarkedBuffer& operator=(const MarkedBuffer&) = delete;
    ~MarkedBuffer() override { std::cout.rdbuf(before_); }

    std::string text;

  protected:
    int overflow(int character) override {
        text += static_cast<char>(character);
        return character;
    }
    int sync() override {
        text += "<flush>";
        return 0;
    }

  private:
    std::streambuf* before_;
};

TEST(StorageSpace, IsFlushedAfterEachLine) {
    const BoardWithTable given("/dev/a /mnt/a ext4 rw 0 0\n/dev/b /mnt/b vfat rw 0 0\n");
    const MarkedBuffer console;
    const mntent* entry = nullptr;
    print_storage_space(entry);
    EXPECT_EQ(console.text, std::string(kLineOfA) + "<flush>" + kLineOfB + "<flush>");
}

TEST(CanOpenMountTable, IsTrueWithTheTable) {
    const SimulatedBoard board;
    EXPECT_TRUE(can_open_mount_table("", ""));
    EXPECT_EQ(board.Calls("setmntent"), 1U);
    EXPECT_EQ(board.Calls("endmntent"), 1U);
}

TEST(CanOpenMountTable, IsTrueWithoutTheTable) {
    Scenario scenario;
    scenario.kernel.mounts.tablePresent = false;
    const SimulatedBoard board(scenario);
    EXPECT_TRUE(can_open_mount_table("", ""));
    EXPECT_TRUE(can_open_mount_table("", "r"));
    EXPECT_TRUE(can_open_mount_table("/etc/mtab", ""));
    EXPECT_EQ(board.Calls("setmntent"), 3U);
    EXPECT_EQ(board.Calls("endmntent"), 0U);
}

TEST(CanOpenMountTable, IsTrueForAnyFile) {
    const TemporaryFolder folder;
    EXPECT_TRUE(can_open_mount_table(folder.File("none/such"), ""));
    EXPECT_TRUE(can_open_mount_table(folder.File("none/such"), "nonsense"));
}

TEST(CanOpenMountTable, OpensTheFileInTheModeThatItIsGiven) {
    const TemporaryFolder folder;
    EXPECT_TRUE(can_open_mount_table(folder.File("table"), ""));
    EXPECT_FALSE(std::filesystem::exists(folder.File("table"))); // for reading only
    EXPECT_TRUE(can_open_mount_table(folder.File("table"), "w"));
    EXPECT_TRUE(std::filesystem::exists(folder.File("table")));
}

TEST(CanOpenMountTable, PrintsNothing) {
    CapturedConsole console;
    can_open_mount_table("/no/such/table", "");
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "");
}

} // namespace
} // namespace tavrelin
