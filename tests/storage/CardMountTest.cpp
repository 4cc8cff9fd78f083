#include "storage/DataLog.h"
#include "tests/storage/CardEvents.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <map>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

TEST(CardPresence, IsTheCardsDirectoryInSysfs) {
    SimulatedBoard board;
    EXPECT_TRUE(DataLog::is_sd_card_present());
    EXPECT_EQ(board.Events(), kCardThere);
    board.Forget();
    board.TakeAway("/sys/block/mmcblk0");
    EXPECT_FALSE(DataLog::is_sd_card_present());
    EXPECT_EQ(board.Events(), kCardGone);
    board.Restore("/sys/block/mmcblk0");
    board.ReplaceText("/sys/block/mmcblk0", "no directory");
    EXPECT_FALSE(DataLog::is_sd_card_present());
}

TEST(CardPresence, DoesNotLookAtThePartition) {
    Scenario scenario;
    scenario.board.card.partitioned = false;
    const SimulatedBoard board(scenario);
    EXPECT_TRUE(DataLog::is_sd_card_present());
}

TEST(CardPresence, EndsWhenTheKernelNoticesThatTheCardWasPulled) {
    SimulatedBoard board;
    board.RemoveCard();
    board.Elapse(sim::Milliseconds(699));
    EXPECT_TRUE(DataLog::is_sd_card_present());
    board.Elapse(sim::Milliseconds(1));
    EXPECT_FALSE(DataLog::is_sd_card_present());
    board.InsertCard();
    EXPECT_TRUE(DataLog::is_sd_card_present());
}

TEST(CardMounted, IsAskedAboutTheCardsMountPointUnlessAPathIsGiven) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_TRUE(DataLog::is_sd_card_mounted());
    EXPECT_TRUE(DataLog::is_sd_card_mounted(""));
    EXPECT_TRUE(DataLog::is_sd_card_mounted("/mnt/sd-card"));
    EXPECT_TRUE(DataLog::is_sd_card_mounted("/sys"));
    EXPECT_FALSE(DataLog::is_sd_card_mounted("/mnt/stick"));
    ASSERT_EQ(board.Card().Unmount("/mnt/sd-card", false), 0);
    EXPECT_FALSE(DataLog::is_sd_card_mounted());
    EXPECT_FALSE(DataLog::is_sd_card_mounted(""));
}

TEST(MountingTheCard, MountsItsFirstPartitionWithSynchronousWrites) {
    SimulatedBoard board;
    EXPECT_TRUE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events(), InOrder({kCardThere, kNotListed, kMountPointThere, kMounted}));
    EXPECT_TRUE(board.Card().mounted);
}

TEST(MountingTheCard, CreatesAMissingMountPointForItsOwnerOnly) {
    Scenario scenario;
    scenario.board.card.mountPointExists = false;
    SimulatedBoard board(scenario);
    EXPECT_TRUE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events(), InOrder({kCardThere,
                                       kNotListed,
                                       kMountPointMissing,
                                       {"mkdir /mnt/sd-card 0700 ok"},
                                       kMounted}));
    struct stat status {};
    ASSERT_EQ(stat(board.Kernel().paths.MountPointFolder().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFDIR | 0700U);
}

TEST(MountingTheCard, MountsNothingTwice) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_TRUE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events(), InOrder({kCardThere, kListed}));
}

TEST(MountingTheCard, TakesADirectoryOfASimilarNameForTheCard) {
    Scenario scenario;
    scenario.kernel.mounts.lines = {"/dev/sda1 /mnt/sd-card-old vfat rw 0 0"};
    const SimulatedBoard board(scenario);
    EXPECT_TRUE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Calls("mount"), 0U);
}

TEST(MountingTheCard, TouchesNothingWithoutACard) {
    SimulatedBoard board(WithMountedCard());
    PullCard(board);
    EXPECT_FALSE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events(), kCardGone);
    EXPECT_TRUE(board.Card().mounted);
}

TEST(MountingTheCard, TriesOnEvenIfTheMountPointCannotBeCreated) {
    Scenario scenario;
    scenario.board.card.mountPointExists = false;
    SimulatedBoard board(scenario);
    board.Fail("mkdir", "/mnt/sd-card", EROFS);
    EXPECT_FALSE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events(), InOrder({kCardThere,
                                       kNotListed,
                                       kMountPointMissing,
                                       {"mkdir /mnt/sd-card EROFS"},
                                       {"mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" ENOENT"}}));
}

TEST(MountingTheCard, FailsOnAMountPointThatIsAFile) {
    Scenario scenario;
    scenario.board.card.mountPointExists = false;
    SimulatedBoard board(scenario);
    std::ofstream(board.Kernel().paths.MountPointFolder()) << "no directory";
    EXPECT_FALSE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Calls("mkdir"), 1U);
    EXPECT_EQ(board.Calls("mount"), 1U);
}

TEST(MountingTheCard, FailsAndIsTriedAnewAtTheNextCall) {
    const std::map<std::string, std::function<void(SimulatedBoard&)>> troubles = {
        {"ENOENT", [](SimulatedBoard& board) { board.Card().partitioned = false; }},
        {"EINVAL", [](SimulatedBoard& board) { board.Card().fat = false; }},
        {"EACCES", [](SimulatedBoard& board) { board.Card().writeProtected = true; }},
        {"ENODEV", [](SimulatedBoard& board) { board.Card().vfatSupported = false; }},
    };
    for (const auto& [error, trouble] : troubles) {
        SimulatedBoard board;
        trouble(board);
        EXPECT_FALSE(DataLog::mount_sd_card());
        EXPECT_EQ(board.Events().back(), "mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" " + error);
        EXPECT_EQ(board.Calls("mount"), 1U);
        EXPECT_FALSE(DataLog::mount_sd_card());
        EXPECT_EQ(board.Calls("mount"), 2U);
    }
}

TEST(MountingTheCard, IsTriedWhenTheMountTableIsMissing) {
    Scenario scenario = WithMountedCard();
    scenario.kernel.mounts.tablePresent = false;
    const SimulatedBoard board(scenario);
    EXPECT_FALSE(DataLog::is_sd_card_mounted());
    EXPECT_FALSE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events().back(), "mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" EBUSY");
}

TEST(UnmountingTheCard, UnmountsWhatIsListed) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_EQ(board.Events(), InOrder({kListed, kUnmounted}));
    EXPECT_FALSE(board.Card().mounted);
}

TEST(UnmountingTheCard, DoesNothingWhenItIsNotListed) {
    const SimulatedBoard board;
    EXPECT_FALSE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_EQ(board.Events(), kNotListed);
}

TEST(UnmountingTheCard, FailsOnABusyCard) {
    SimulatedBoard board(WithMountedCard());
    std::ofstream open("/mnt/sd-card/open.csv");
    board.Forget();
    EXPECT_FALSE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_EQ(board.Events(), InOrder({kListed, {"umount /mnt/sd-card EBUSY"}}));
    open.close();
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
}

TEST(UnmountingTheCard, UnmountsThePathItIsGivenIfTheCardIsListed) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_FALSE(DataLog::umount_sd_card("/mnt/stick"));
    EXPECT_EQ(board.Events(), InOrder({kListed, {"umount /mnt/stick EINVAL"}}));
    EXPECT_TRUE(board.Card().mounted);
}

} // namespace
} // namespace tavrelin
