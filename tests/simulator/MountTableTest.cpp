// The mount table as the C library reads it.

#include "simulator/testing/SimulatedBoard.h"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <mntent.h>
#include <sys/mount.h>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

/// "device directory type options" of each entry.
Texts Entries() {
    Texts found;
    FILE* table = setmntent("/etc/mtab", "r");
    if (table == nullptr) {
        return {"errno " + std::to_string(errno)};
    }
    mntent entry{};
    std::array<char, 4096> buffer{};
    while (getmntent_r(table, &entry, buffer.data(), buffer.size()) != nullptr) {
        found.push_back(std::string(entry.mnt_fsname) + " " + entry.mnt_dir + " " + entry.mnt_type +
                        " " + entry.mnt_opts);
    }
    endmntent(table);
    return found;
}

const Texts kOfTheBoard{"ubi0:rootfs / ubifs rw,relatime",
                        "proc /proc proc rw,nosuid,nodev,noexec,relatime",
                        "sysfs /sys sysfs rw,nosuid,nodev,noexec,relatime",
                        "tmpfs /run tmpfs rw,nosuid,nodev,mode=755"};

TEST(MountTable, ListsWhatTheBoardMounts) {
    SimulatedBoard board;
    EXPECT_EQ(Entries(), kOfTheBoard);
}

TEST(MountTable, ListsTheCardWhileItIsMounted) {
    SimulatedBoard board;
    ::mount("/dev/mmcblk0p1", "/mnt/sd-card", "vfat", MS_SYNCHRONOUS, "");
    Texts expected = kOfTheBoard;
    expected.push_back("/dev/mmcblk0p1 /mnt/sd-card vfat rw,sync,relatime,fmask=0022,dmask=0022");
    EXPECT_EQ(Entries(), expected);
    board.RemoveCard();
    EXPECT_EQ(Entries(), expected) << "pulling a card does not unmount it";
    ::umount("/mnt/sd-card");
    EXPECT_EQ(Entries(), kOfTheBoard);
}

TEST(MountTable, ListsFurtherLinesBeforeTheCard) {
    Scenario scenario;
    scenario.kernel.mounts.lines = {"/dev/sdb1 /mnt/sd-card-old vfat rw 0 0"};
    scenario.board.card.mounted = true;
    SimulatedBoard board(scenario);
    const Texts found = Entries();
    ASSERT_EQ(found.size(), 6U);
    EXPECT_EQ(found[4], "/dev/sdb1 /mnt/sd-card-old vfat rw");
    EXPECT_EQ(found[5].substr(0, 14), "/dev/mmcblk0p1");
}

TEST(MountTable, MayBeLongAndHoldLongLines) {
    Scenario scenario;
    scenario.kernel.mounts.lines.assign(10'000, "none /a tmpfs rw 0 0");
    scenario.kernel.mounts.lines.push_back("none /" + std::string(5000, 'x') + " tmpfs rw 0 0");
    SimulatedBoard board(scenario);
    EXPECT_GE(Entries().size(), 10'004U);
}

TEST(MountTable, MayBeAbsent) {
    Scenario scenario;
    scenario.kernel.mounts.tablePresent = false;
    SimulatedBoard board(scenario);
    EXPECT_EQ(Entries(), (Texts{"errno " + std::to_string(ENOENT)}));
}

TEST(MountTable, CanBeMadeToFail) {
    SimulatedBoard board;
    board.Fail("setmntent", "/etc/mtab", EMFILE);
    EXPECT_EQ(Entries(), (Texts{"errno " + std::to_string(EMFILE)}));
    EXPECT_EQ(Entries(), kOfTheBoard);
}

TEST(MountTable, IsGivenBack) {
    SimulatedBoard board;
    FILE* table = setmntent("/etc/mtab", "r");
    EXPECT_EQ(board.Kernel().Held(), 1U);
    endmntent(table);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

} // namespace
} // namespace tavrelin
