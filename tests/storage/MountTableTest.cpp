#include "storage/MountTable.h"

#include "storage/MountQuery.h"
#include "tests/storage/CardEvents.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

using namespace std::string_literals;

constexpr const char* kMountPoint = "/mnt/sd-card";

bool Listed(const std::string& path) {
    const mntent* entry = nullptr;
    return is_mounted(entry, path);
}

TEST(MountTable, ListsTheMountedCard) {
    SimulatedBoard board;
    EXPECT_FALSE(Listed(kMountPoint));
    MountByHand(board);
    EXPECT_TRUE(Listed(kMountPoint));
    EXPECT_EQ(board.Events(),
              (Texts{"setmntent /etc/mtab card not listed", "setmntent /etc/mtab card listed"}));
}

TEST(MountTable, ListsAnyDirectoryThatContainsThePath) {
    for (const char* directory : {"/mnt/sd-card", "/mnt/sd-card-old", "/mnt/sd-card2",
                                  "/x/mnt/sd-card", "/x/mnt/sd-card/y"}) {
        const SimulatedBoard board(
            WithMountTable({"/dev/sda1 " + std::string(directory) + " ext4 rw 0 0"}));
        EXPECT_TRUE(Listed(kMountPoint)) << directory;
        EXPECT_TRUE(DataLog::is_sd_card_mounted()) << directory;
    }
}

TEST(MountTable, ListsNoOtherDirectory) {
    for (const char* line :
         {"/dev/sda1 /mnt/sd-car ext4 rw 0 0", "/dev/sda1 /mnt/SD-card ext4 rw 0 0",
          "/mnt/sd-card /mnt/stick ext4 rw 0 0", "/dev/sda1 /mnt/stick /mnt/sd-card rw 0 0",
          "/dev/sda1 /mnt/stick ext4 /mnt/sd-card 0 0", "# /mnt/sd-card ext4 rw 0 0",
          "/mnt/sd-card", ""}) {
        const SimulatedBoard board(WithMountTable({line}));
        EXPECT_FALSE(Listed(kMountPoint)) << line;
    }
}

TEST(MountTable, KnowsDirectoriesWithSpaces) {
    const SimulatedBoard board(WithMountTable({"/dev/sda1 /my\\040stick ext4 rw 0 0"}));
    EXPECT_TRUE(Listed("/my stick"));
    EXPECT_FALSE(Listed("/my\\040stick"));
}

TEST(MountTable, IsReadToItsEndHoweverLong) {
    Texts lines(10000, "tmpfs /run/user tmpfs rw,nosuid,nodev 0 0");
    {
        const SimulatedBoard board(WithMountTable(lines));
        EXPECT_FALSE(Listed(kMountPoint));
    }
    lines.back() = "/dev/sda1 /mnt/sd-card vfat rw 0 0";
    const SimulatedBoard board(WithMountTable(lines));
    EXPECT_TRUE(Listed(kMountPoint));
}

TEST(MountTable, BearsALineOf5000Characters) {
    const std::string options(5000, 'o');
    const SimulatedBoard board(WithMountTable(
        {"/dev/sda1 /mnt/long ext4 " + options + " 0 0", "/dev/sda2 /" + options + " ext4 rw 0 0",
         options + " /mnt/late ext4 rw 0 0", "/dev/sda4 /mnt/after ext4 rw 0 0"}));
    EXPECT_TRUE(Listed("/mnt/long"));
    EXPECT_TRUE(Listed("/mnt/after"));
    EXPECT_FALSE(Listed("/mnt/late")); // cut off with the rest of its line
    EXPECT_FALSE(Listed(kMountPoint));
}

// The buffer holds 4096 characters, of which the last ends the text.
TEST(MountTable, HasRoomForEntriesOf4095Characters) {
    const auto lists = [](std::size_t characters) {
        const std::string begin = "/dev/sda1 /";
        const std::string end = "/mnt/deep";
        const std::string middle(characters - begin.size() - end.size(), 'd');
        const SimulatedBoard board(WithMountTable({begin + middle + end + " ext4 rw 0 0"}));
        return Listed(end);
    };
    EXPECT_TRUE(lists(4095));
    EXPECT_FALSE(lists(4096)); // cut off before its last character
}

TEST(MountTable, BearsRubbish) {
    SimulatedBoard board;
    board.ReplaceText("/etc/mtab", "\0\1\xFF /mnt/sd-car\n\n   \n\t\n/mnt"s);
    EXPECT_FALSE(Listed(kMountPoint));
}

TEST(MountTable, ThatIsEmptyOrMissingListsNothing) {
    SimulatedBoard board(WithMountedCard());
    board.ReplaceText("/etc/mtab", "");
    EXPECT_FALSE(Listed(kMountPoint));
    EXPECT_FALSE(Listed(""));
    EXPECT_EQ(board.Calls("endmntent"), 2U);
    board.Restore("/etc/mtab");
    board.TakeAway("/etc/mtab");
    EXPECT_FALSE(Listed(kMountPoint));
    EXPECT_EQ(board.Calls("endmntent"), 2U); // only what was opened
}

TEST(MountTable, IsClosedAfterEveryScan) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_TRUE(Listed(kMountPoint));
    EXPECT_FALSE(Listed("/mnt/stick"));
    EXPECT_EQ(board.Calls("setmntent"), 2U);
    EXPECT_EQ(board.Calls("endmntent"), 2U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(MountTable, NotesTheEntryOnlyWhenItIsFound) {
    const SimulatedBoard board(WithMountedCard());
    const mntent nowhere{};
    const mntent* entry = nullptr;
    EXPECT_TRUE(is_mounted(entry, kMountPoint));
    EXPECT_NE(entry, nullptr);
    entry = &nowhere;
    EXPECT_FALSE(is_mounted(entry, "/mnt/stick"));
    EXPECT_EQ(entry, nullptr);
}

TEST(MountQuery, AsksAboutItsMountPoint) {
    const SimulatedBoard board(WithMountedCard());
    MountQuery query;
    EXPECT_EQ(query.Entry(), nullptr);
    EXPECT_TRUE(query.SetMountPoint(kMountPoint));
    EXPECT_TRUE(query.IsListed());
    EXPECT_NE(query.Entry(), nullptr);
    EXPECT_TRUE(query.SetMountPoint("/mnt/stick"));
    EXPECT_FALSE(query.IsListed());
    EXPECT_EQ(query.Entry(), nullptr);
}

TEST(MountQuery, KeepsItsFieldsWhenGivenAnEmptyText) {
    MountQuery query;
    EXPECT_TRUE(query.SetMountPoint("/mnt/stick"));
    EXPECT_TRUE(query.SetDevice("/dev/sda1"));
    EXPECT_TRUE(query.SetFileSystem("ext4"));
    EXPECT_TRUE(query.SetOptions("rw"));
    EXPECT_FALSE(query.SetMountPoint(""));
    EXPECT_FALSE(query.SetDevice(""));
    EXPECT_FALSE(query.SetFileSystem(""));
    EXPECT_FALSE(query.SetOptions(""));
    EXPECT_EQ(query.MountPoint(), "/mnt/stick");
    EXPECT_EQ(query.Device(), "/dev/sda1");
    EXPECT_EQ(query.FileSystem(), "ext4");
    EXPECT_EQ(query.Options(), "rw");
}

} // namespace
} // namespace tavrelin
