// The SD card as the kernel shows it: mounting, pulling, putting back, filling, locking.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Scenario;
using sim::SimulatedBoard;

constexpr const char* kDevice = "/dev/mmcblk0p1";
constexpr const char* kMountPoint = "/mnt/sd-card";
constexpr const char* kLogFile = "/mnt/sd-card/log.csv";
constexpr int kAppend = O_WRONLY | O_CREAT | O_APPEND;

int MountCard(const char* from = kDevice, const char* type = "vfat") {
    return ::mount(from, kMountPoint, type, MS_SYNCHRONOUS, "") == 0 ? 0 : errno;
}
int UnmountCard(const char* from = kMountPoint) {
    return ::umount(from) == 0 ? 0 : errno;
}
bool Listed() {
    struct stat status {};
    return ::stat("/sys/block/mmcblk0", &status) == 0 && S_ISDIR(status.st_mode);
}
unsigned Permissions(const char* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 ? status.st_mode & 07777U : 0;
}

class Mounting : public testing::Test {
  protected:
    SimulatedBoard board;
};

class AMountedCard : public Mounting {
  protected:
    AMountedCard() { EXPECT_EQ(MountCard(), 0); }
};
using AnUnmountedMountPoint = Mounting;
using APulledCard = AMountedCard;
using ACardPutBack = AMountedCard;
using AFullCard = AMountedCard;
using AReadOnlyCard = AMountedCard;

TEST_F(Mounting, WorksOnceUntilItIsUndone) {
    EXPECT_EQ(MountCard(), 0);
    EXPECT_EQ(MountCard(), EBUSY);
    EXPECT_EQ(UnmountCard(), 0);
    EXPECT_EQ(UnmountCard(), EINVAL);
    EXPECT_EQ(MountCard(), 0);
}

TEST_F(Mounting, RefusesALockedCardAndOneWithoutAPartitionAndNone) {
    board.Card().writeProtected = true;
    EXPECT_EQ(MountCard(), EACCES);
    board.Card().partitioned = false;
    EXPECT_EQ(MountCard(), ENOENT);
    board.Card().partitioned = true;
    board.RemoveCard();
    EXPECT_EQ(MountCard(), ENOENT);
}

TEST(MountingWithoutAMountPoint, IsRefusedUntilItIsMade) {
    Scenario scenario;
    scenario.board.card.mountPointExists = false;
    SimulatedBoard board(scenario);
    EXPECT_EQ(MountCard(), ENOENT);
    EXPECT_EQ(::mkdir(kMountPoint, 0700), 0);
    EXPECT_EQ(Permissions(kMountPoint), 0700U);
    EXPECT_EQ(MountCard(), 0);
}

TEST_F(Mounting, RefusesWhatIsNotAFatFileSystem) {
    EXPECT_EQ(MountCard(kDevice, "ext4"), ENODEV);
    board.Card().fat = false;
    EXPECT_EQ(MountCard(), EINVAL);
    board.Card().vfatSupported = false;
    EXPECT_EQ(MountCard(), ENODEV);
}

TEST_F(Mounting, RefusesOtherDevicesAndPlaces) {
    EXPECT_EQ(MountCard("/dev/sda1"), ENOENT);
    EXPECT_EQ(MountCard(nullptr), EINVAL);
    EXPECT_EQ(::mount(kDevice, "/mnt", "vfat", 0, nullptr), -1);
    EXPECT_EQ(UnmountCard("/"), EINVAL);
}

TEST_F(AMountedCard, ShowsThePermissionsOfTheMount) {
    EXPECT_EQ(Permissions(kMountPoint), 0755U);
    const Descriptor file(kLogFile, kAppend);
    EXPECT_EQ(Permissions(kLogFile), 0755U);
    struct stat status {};
    EXPECT_EQ(::fstat(file.Number(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0755U);
}

TEST_F(AMountedCard, IsNotUnmountedUnderOpenFiles) {
    Descriptor file(kLogFile, kAppend);
    EXPECT_EQ(UnmountCard(), EBUSY);
    file.Close();
    EXPECT_EQ(UnmountCard(), 0);
}

TEST_F(AnUnmountedMountPoint, TakesFilesOntoTheRootFileSystem) {
    EXPECT_EQ(Store(kLogFile, "lost\n"), 0);
    EXPECT_EQ(board.FileBelowMountPoint("log.csv"), "lost\n");
    EXPECT_EQ(MountCard(), 0);
    EXPECT_EQ(OpenError(kLogFile, O_RDONLY), ENOENT) << "the card lies over it";
    EXPECT_EQ(Store(kLogFile, "kept\n"), 0);
    EXPECT_EQ(board.FileOnCard("log.csv"), "kept\n");
    EXPECT_EQ(UnmountCard(), 0);
    EXPECT_EQ(Show(kLogFile), "lost\n");
}

TEST_F(APulledCard, IsGoneFromTheKernelsListAfterAWhile) {
    EXPECT_TRUE(Listed());
    board.RemoveCard();
    board.Elapse(Milliseconds(500));
    EXPECT_TRUE(Listed());
    board.Elapse(Milliseconds(400));
    EXPECT_FALSE(Listed());
    board.InsertCard();
    EXPECT_TRUE(Listed());
}

TEST_F(APulledCard, StaysInTheMountTableAndTakesNoNewFile) {
    board.RemoveCard();
    EXPECT_THAT(board.Kernel().mounts.Text(), testing::HasSubstr(kMountPoint));
    EXPECT_EQ(OpenError(kLogFile, kAppend), ENOSPC);
    EXPECT_EQ(::mkdir("/mnt/sd-card/folder", 0755), -1);
    EXPECT_EQ(errno, EIO);
}

TEST_F(APulledCard, TakesAllThatNobodyHasOpenWithIt) {
    Store(kLogFile, "before\n");
    const Descriptor held("/mnt/sd-card/held.csv", kAppend);
    board.RemoveCard();
    board.Elapse(Milliseconds(699));
    EXPECT_EQ(OpenError(kLogFile, kAppend), 0) << "not noticed yet";
    board.Elapse(Milliseconds(1));
    EXPECT_EQ(Permissions(kLogFile), 0U);
    EXPECT_EQ(OpenError(kLogFile, O_RDONLY), ENOENT);
    EXPECT_EQ(OpenError(kLogFile, kAppend), ENOSPC);
    EXPECT_EQ(OpenError("/mnt/sd-card/held.csv", kAppend), 0);
    EXPECT_EQ(Permissions(kMountPoint), 0755U);
    EXPECT_EQ(board.FileOnCard("log.csv"), "before\n");
}

TEST_F(APulledCard, IsUnmountedWhenNothingOfItIsOpen) {
    Store(kLogFile, "before\n");
    board.RemoveCard();
    board.Elapse(Milliseconds(700));
    EXPECT_EQ(UnmountCard(), 0);
    board.InsertCard();
    EXPECT_EQ(MountCard(), 0);
    EXPECT_EQ(Show(kLogFile), "before\n");
}

TEST_F(APulledCard, KeepsAFileVisibleThatAWriteMetBeforeItWasMissed) {
    Descriptor file(kLogFile, kAppend);
    board.RemoveCard();
    EXPECT_EQ(file.Write("lost\n"), -EIO);
    file.Close();
    board.Elapse(Milliseconds(700));
    EXPECT_EQ(OpenError(kLogFile, kAppend), 0);
    EXPECT_EQ(UnmountCard(), 0);
}

TEST_F(APulledCard, IsNotCutShortByWhatTheKernelStillHoldsOfIt) {
    Descriptor file(kLogFile, kAppend);
    EXPECT_EQ(file.Write("before\n"), 7);
    board.RemoveCard();
    EXPECT_EQ(OpenError(kLogFile, O_WRONLY | O_TRUNC), 0);
    EXPECT_EQ(::ftruncate(file.Number(), 0), 0);
    file.Close();
    EXPECT_EQ(UnmountCard(), 0);
    EXPECT_EQ(board.FileOnCard("log.csv"), "before\n");
}

TEST_F(APulledCard, FailsTheWritesOfAnOpenFileAndUnmountsAfterIt) {
    Descriptor file(kLogFile, O_RDWR | O_CREAT);
    EXPECT_EQ(file.Write("before\n"), 7);
    board.RemoveCard();
    EXPECT_EQ(file.Write("after\n"), -EIO);
    EXPECT_EQ(file.ReadAgain(), "EIO");
    board.Elapse(Milliseconds(700));
    EXPECT_EQ(UnmountCard(), EBUSY);
    EXPECT_EQ(Permissions(kLogFile), 0755U);
    file.Close();
    EXPECT_EQ(UnmountCard(), 0);
    EXPECT_EQ(board.FileOnCard("log.csv"), "before\n");
}

TEST_F(ACardPutBack, IsPresentAndListedAndTakesNothingUntilItIsUnmounted) {
    Store(kLogFile, "before\n");
    board.RemoveCard();
    board.InsertCard();
    EXPECT_TRUE(Listed());
    EXPECT_EQ(MountCard(), EBUSY);
    EXPECT_EQ(OpenError("/mnt/sd-card/new.csv", kAppend), ENOSPC);
    {
        const Descriptor file(kLogFile, kAppend);
        EXPECT_EQ(file.Error(), 0);
        EXPECT_EQ(file.Write("appended\n"), -EIO);
    }
    EXPECT_EQ(UnmountCard(), 0);
    EXPECT_EQ(MountCard(), 0);
    const Descriptor file(kLogFile, kAppend);
    EXPECT_EQ(file.Write("appended\n"), 9);
    EXPECT_EQ(board.FileOnCard("log.csv"), "before\nappended\n");
}

TEST_F(AFullCard, RefusesTheWriteThatDoesNotFit) {
    board.Card().freeBytes = 10;
    const Descriptor file(kLogFile, kAppend);
    EXPECT_EQ(file.Write("sixbyte"), 7);
    EXPECT_EQ(file.Write("four"), -ENOSPC);
    EXPECT_EQ(file.Write("two"), 3);
    EXPECT_EQ(OpenError("/mnt/sd-card/new.csv", kAppend), ENOSPC);
    EXPECT_EQ(board.FileOnCard("log.csv"), "sixbytetwo");
}

TEST_F(AFullCard, TellsTheFreeSpaceOfTheScenario) {
    board.Card().freeBytes = 65536;
    struct statfs system {};
    EXPECT_EQ(::statfs(kMountPoint, &system), 0);
    EXPECT_EQ(system.f_bavail * static_cast<std::uint64_t>(system.f_bsize), 65536U);
}

TEST_F(AReadOnlyCard, IsReadAndNotWritten) {
    Store(kLogFile, "old\n");
    board.Card().readOnly = true;
    EXPECT_EQ(OpenError(kLogFile, kAppend), EROFS);
    EXPECT_EQ(OpenError("/mnt/sd-card/new.csv", kAppend), EROFS);
    EXPECT_EQ(Show(kLogFile), "old\n");
}

} // namespace
} // namespace tavrelin
