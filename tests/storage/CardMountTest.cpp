#include "storage/CardAccess.h"
#include "tests/storage/CardEvents.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <map>
#include <ostream>

namespace tavrelin {
namespace {

/// The same operations stand twice: the data log's and the application's.
struct CardOperations {
    const char* owner;
    bool (*isPresent)();
    bool (*isMounted)();
    bool (*mount)();
    Texts looksAtMountPoint;
};

void PrintTo(const CardOperations& operations, std::ostream* out) {
    *out << operations.owner;
}

class Card : public testing::TestWithParam<CardOperations> {};

INSTANTIATE_TEST_SUITE_P(
    Of, Card,
    testing::Values(CardOperations{"DataLog", DataLog::is_sd_card_present,
                                   [] { return DataLog::is_sd_card_mounted(); },
                                   DataLog::mount_sd_card, kMountPointThere},
                    CardOperations{"Application", IsCardPresent, IsCardMounted, MountCard, {}}),
    [](const auto& test) { return std::string(test.param.owner); });

TEST_P(Card, IsPresentWhileItsDirectoryIsInSysfs) {
    SimulatedBoard board;
    EXPECT_TRUE(GetParam().isPresent());
    EXPECT_EQ(board.Events(), kCardThere);
    board.Forget();
    board.TakeAway("/sys/block/mmcblk0");
    EXPECT_FALSE(GetParam().isPresent());
    EXPECT_EQ(board.Events(), kCardGone);
    board.Restore("/sys/block/mmcblk0");
    board.ReplaceText("/sys/block/mmcblk0", "no directory");
    EXPECT_FALSE(GetParam().isPresent());
}

TEST_P(Card, IsPresentWithoutItsPartition) {
    SimulatedBoard board;
    board.Card().partitioned = false;
    EXPECT_TRUE(GetParam().isPresent());
}

TEST_P(Card, IsPresentUntilTheKernelNoticesThatItWasPulled) {
    SimulatedBoard board;
    board.RemoveCard();
    board.Elapse(sim::Milliseconds(699));
    EXPECT_TRUE(GetParam().isPresent());
    board.Elapse(sim::Milliseconds(1));
    EXPECT_FALSE(GetParam().isPresent());
    board.InsertCard();
    EXPECT_TRUE(GetParam().isPresent());
}

TEST_P(Card, IsMountedAsLongAsTheTableListsIt) {
    SimulatedBoard board;
    EXPECT_FALSE(GetParam().isMounted());
    MountByHand(board);
    EXPECT_TRUE(GetParam().isMounted());
    PullCard(board);
    EXPECT_TRUE(GetParam().isMounted());
    UnmountByHand(board);
    EXPECT_FALSE(GetParam().isMounted());
}

TEST_P(Card, IsMountedWithSynchronousWrites) {
    SimulatedBoard board;
    EXPECT_TRUE(GetParam().mount());
    EXPECT_EQ(board.Events(),
              InOrder({kCardThere, kNotListed, GetParam().looksAtMountPoint, kMounted}));
    EXPECT_TRUE(IsMounted(board));
}

TEST_P(Card, IsNotMountedTwice) {
    const SimulatedBoard board(WithMountedCard());
    EXPECT_TRUE(GetParam().mount());
    EXPECT_EQ(board.Events(), InOrder({kCardThere, kListed}));
}

TEST_P(Card, ThatIsGoneIsNotMountedThoughItIsStillListed) {
    SimulatedBoard board(WithMountedCard());
    PullCard(board);
    EXPECT_FALSE(GetParam().mount());
    EXPECT_EQ(board.Events(), kCardGone);
    EXPECT_TRUE(IsMounted(board));
}

TEST_P(Card, ThatCannotBeMountedIsTriedAnewAtTheNextCall) {
    const std::map<std::string, std::function<void(SimulatedBoard&)>> troubles = {
        {"ENOENT", [](SimulatedBoard& board) { board.Card().partitioned = false; }},
        {"EINVAL", [](SimulatedBoard& board) { board.Card().fat = false; }},
        {"EACCES", [](SimulatedBoard& board) { board.Card().writeProtected = true; }},
        {"ENODEV", [](SimulatedBoard& board) { board.Card().vfatSupported = false; }},
    };
    for (const auto& [error, trouble] : troubles) {
        SimulatedBoard board;
        trouble(board);
        for (const unsigned calls : {1U, 2U}) {
            EXPECT_FALSE(GetParam().mount());
            EXPECT_EQ(board.Events().back(), Mounting(error));
            EXPECT_EQ(board.Calls("mount"), calls);
        }
    }
}

TEST(CardOfTheLog, IsAskedAboutAtItsMountPointUnlessAPathIsGiven) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_TRUE(DataLog::is_sd_card_mounted(""));
    EXPECT_TRUE(DataLog::is_sd_card_mounted("/mnt/sd-card"));
    EXPECT_TRUE(DataLog::is_sd_card_mounted("/sys"));
    EXPECT_FALSE(DataLog::is_sd_card_mounted("/mnt/stick"));
    UnmountByHand(board);
    EXPECT_FALSE(DataLog::is_sd_card_mounted(""));
}

TEST(CardOfTheLog, GetsAMissingMountPointForItsOwnerOnly) {
    SimulatedBoard board(WithoutMountPoint());
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

TEST(CardOfTheLog, TakesADirectoryOfASimilarNameForItself) {
    const SimulatedBoard board(WithMountTable({"/dev/sda1 /mnt/sd-card-old vfat rw 0 0"}));
    EXPECT_TRUE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Calls("mount"), 0U);
}

TEST(CardOfTheLog, IsTriedEvenIfTheMountPointCannotBeCreated) {
    SimulatedBoard board(WithoutMountPoint());
    board.Fail("mkdir", "/mnt/sd-card", EROFS);
    EXPECT_FALSE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events(), InOrder({kCardThere,
                                       kNotListed,
                                       kMountPointMissing,
                                       {"mkdir /mnt/sd-card EROFS", Mounting("ENOENT")}}));
}

TEST(CardOfTheLog, IsNotMountedOnAFile) {
    SimulatedBoard board(WithoutMountPoint());
    std::ofstream(board.Kernel().paths.MountPointFolder()) << "no directory";
    EXPECT_FALSE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Calls("mkdir"), 1U);
    EXPECT_EQ(board.Calls("mount"), 1U);
}

TEST(CardOfTheLog, IsMountedAgainWhenTheMountTableIsMissing) {
    SimulatedBoard board(WithMountedCard());
    board.TakeAway("/etc/mtab");
    EXPECT_FALSE(DataLog::is_sd_card_mounted());
    EXPECT_FALSE(DataLog::mount_sd_card());
    EXPECT_EQ(board.Events().back(), Mounting("EBUSY"));
}

TEST(CardOfTheLog, IsUnmountedWhenItIsListed) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_EQ(board.Events(), InOrder({kListed, kUnmounted}));
    EXPECT_FALSE(IsMounted(board));
    board.Forget();
    EXPECT_FALSE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_EQ(board.Events(), kNotListed);
}

TEST(CardOfTheLog, IsNotUnmountedWhileAFileIsOpen) {
    SimulatedBoard board(WithMountedCard());
    std::ofstream open("/mnt/sd-card/open.csv");
    board.Forget();
    EXPECT_FALSE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_EQ(board.Events(), InOrder({kListed, {"umount /mnt/sd-card EBUSY"}}));
    open.close();
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
}

TEST(CardOfTheLog, HasAnyPathUnmountedIfItIsListed) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_FALSE(DataLog::umount_sd_card("/mnt/stick"));
    EXPECT_EQ(board.Events(), InOrder({kListed, {"umount /mnt/stick ENOENT"}}));
    EXPECT_TRUE(IsMounted(board));
}

TEST(CardOfTheApplication, GetsNoMountPoint) {
    const SimulatedBoard board(WithoutMountPoint());
    EXPECT_FALSE(MountCard());
    EXPECT_EQ(board.Events(), InOrder({kCardThere, kNotListed, {Mounting("ENOENT")}}));
}

TEST(CardOfTheApplication, IsUnmountedOnlyWhenItIsNotListed) {
    SimulatedBoard board(WithMountedCard());
    EXPECT_FALSE(UnmountCard());
    EXPECT_EQ(board.Events(), kListed);
    board.TakeAway("/etc/mtab");
    EXPECT_TRUE(UnmountCard());
    EXPECT_FALSE(IsMounted(board));
    EXPECT_FALSE(UnmountCard());
    EXPECT_EQ(board.Events().back(), "umount /mnt/sd-card EINVAL");
}

} // namespace
} // namespace tavrelin
