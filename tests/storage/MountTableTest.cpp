#include "storage/MountTable.h"

#include "storage/DataLog.h"
#include "storage/MountQuery.h"

#include "simulator/testing/SimulatedBoard.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;
using namespace std::string_literals;

constexpr const char* kMountPoint = "/mnt/sd-card";

Scenario WithTable(const std::vector<std::string>& lines) {
    Scenario scenario;
    scenario.kernel.mounts.lines = lines;
    return scenario;
}

bool Listed(const std::string& path) {
    const mntent* entry = nullptr;
    return is_mounted(entry, path);
}

TEST(MountTable, ListsTheMountedCard) {
    SimulatedBoard board;
    EXPECT_FALSE(Listed(kMountPoint));
    ASSERT_EQ(board.Card().Mount("/dev/mmcblk0p1", kMountPoint, "vfat"), 0);
    EXPECT_TRUE(Listed(kMountPoint));
    EXPECT_EQ(board.Events(),
              (Texts{"setmntent /etc/mtab card not listed", "setmntent /etc/mtab card listed"}));
}

TEST(MountTable, ListsAnyDirectoryThatContainsThePath) {
    for (const char* directory : {"/mnt/sd-card", "/mnt/sd-card-old", "/mnt/sd-card2",
                                  "/x/mnt/sd-card", "/x/mnt/sd-card/y"}) {
        const SimulatedBoard board(
            WithTable({"/dev/sda1 " + std::string(directory) + " ext4 rw 0 0"}));
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
        const SimulatedBoard board(WithTable({line}));
        EXPECT_FALSE(Listed(kMountPoint)) << line;
    }
}

TEST(MountTable, KnowsDirectoriesWithSpaces) {
    const SimulatedBoard board(WithTable({"/dev/sda1 /my\\040stick ext4 rw 0 0"}));
    EXPECT_TRUE(Listed("/my stick"));
    EXPECT_FALSE(Listed("/my\\040stick"));
}

TEST(MountTable, IsReadToItsEndHoweverLong) {
    std::vector<std::string> lines(10000, "tmpfs /run/user tmpfs rw,nosuid,nodev 0 0");
    {
        const SimulatedBoard board(WithTable(lines));
        EXPECT_FALSE(Listed(kMountPoint));
    }
    lines.back() = "/dev/sda1 /mnt/sd-card vfat rw 0 0";
    const SimulatedBoard board(WithTable(lines));
    EXPECT_TRUE(Listed(kMountPoint));
}

TEST(MountTable, BearsALineOf5000Characters) {
    const std::string options(5000, 'o');
    const SimulatedBoard board(WithTable(
        {"/dev/sda1 /mnt/long ext4 " + options + " 0 0", "/dev/sda2 /" + options + " ext4 rw 0 0",
         options + " /mnt/late ext4 rw 0 0", "/dev/sda4 /mnt/after ext4 rw 0 0"}));
    EXPECT_TRUE(Listed("/mnt/long"));
    EXPECT_TRUE(Listed("/mnt/after"));
    EXPECT_FALSE(Listed("/mnt/late")); // cut off with the rest of its line
    EXPECT_FALSE(Listed(kMountPoint));
}

TEST(MountTable, HasRoomForEntriesOf4096Characters) {
    const auto deep = [](std::size_t characters) {
        return "/dev/sda1 /" + std::string(characters, 'd') + "/mnt/deep ext4 rw 0 0";
    };
    {
        const SimulatedBoard board(WithTable({deep(4000)}));
        EXPECT_TRUE(Listed("/mnt/deep"));
    }
    const SimulatedBoard board(WithTable({deep(4096)}));
    EXPECT_FALSE(Listed("/mnt/deep"));
}

TEST(MountTable, BearsRubbish) {
    SimulatedBoard board;
    board.ReplaceText("/etc/mtab", "\0\1\xFF /mnt/sd-car\n\n   \n\t\n/mnt"s);
    EXPECT_FALSE(Listed(kMountPoint));
}

TEST(MountTable, ThatIsEmptyListsNothing) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    SimulatedBoard board(scenario);
    board.ReplaceText("/etc/mtab", "");
    EXPECT_FALSE(Listed(kMountPoint));
    EXPECT_FALSE(Listed(""));
}

TEST(MountTable, ThatIsMissingListsNothing) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    scenario.kernel.mounts.tablePresent = false;
    const SimulatedBoard board(scenario);
    EXPECT_FALSE(Listed(kMountPoint));
    EXPECT_EQ(board.Calls("endmntent"), 0U);
}

TEST(MountTable, IsClosedAfterEveryScan) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    SimulatedBoard board(scenario);
    EXPECT_TRUE(Listed(kMountPoint));
    EXPECT_FALSE(Listed("/mnt/stick"));
    EXPECT_EQ(board.Calls("setmntent"), 2U);
    EXPECT_EQ(board.Calls("endmntent"), 2U);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST(MountTable, NotesTheEntryOnlyWhenItIsFound) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    const SimulatedBoard board(scenario);
    const mntent nowhere{};
    const mntent* entry = nullptr;
    EXPECT_TRUE(is_mounted(entry, kMountPoint));
    EXPECT_NE(entry, nullptr);
    entry = &nowhere;
    EXPECT_FALSE(is_mounted(entry, "/mnt/stick"));
    EXPECT_EQ(entry, nullptr);
}

TEST(MountQuery, AsksAboutItsMountPoint) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    const SimulatedBoard board(scenario);
    MountQuery query;
    EXPECT_EQ(query.entry(), nullptr);
    EXPECT_TRUE(query.SetMountPoint(kMountPoint));
    EXPECT_TRUE(query.IsListed());
    EXPECT_NE(query.entry(), nullptr);
    EXPECT_TRUE(query.SetMountPoint("/mnt/stick"));
    EXPECT_FALSE(query.IsListed());
    EXPECT_EQ(query.entry(), nullptr);
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
    EXPECT_EQ(query.device(), "/dev/sda1");
    EXPECT_EQ(query.FileSystem(), "ext4");
    EXPECT_EQ(query.options(), "rw");
}

} // namespace
} // namespace tavrelin
