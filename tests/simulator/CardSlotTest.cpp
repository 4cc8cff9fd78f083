// The SD card as the kernel shows it: mounting, pulling, putting back, filling, locking.

#include "tests/simulator/RawCalls.h"

#include "simulator/testing/SimulatedBoard.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace tavrelin {
namespace {

using sim::milliseconds;
using sim::Scenario;
using sim::SimulatedBoard;

constexpr const char* device = "/dev/mmcblk0p1";
constexpr const char* mountPoint = "/mnt/sd-card";
constexpr const char* logFile = "/mnt/sd-card/log.csv";
constexpr int append = O_WRONLY | O_CREAT | O_APPEND;

int mountCard(const char* from = device, const char* type = "vfat") {
    return ::mount(from, mountPoint, type, MS_SYNCHRONOUS, "") == 0 ? 0 : errno;
}
int unmountCard(const char* from = mountPoint) {
    return ::umount(from) == 0 ? 0 : errno;
}
bool listed() {
    struct stat status {};
    return ::stat("/sys/block/mmcblk0", &status) == 0 && S_ISDIR(status.st_mode);
}
unsigned permissions(const char* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 ? status.st_mode & 07777U : 0;
}

TEST(Mounting, WorksOnceUntilItIsUndone) {
    SimulatedBoard board;
    EXPECT_EQ(mountCard(), 0);
    EXPECT_EQ(mountCard(), EBUSY);
    EXPECT_EQ(unmountCard(), 0);
    EXPECT_EQ(unmountCard(), EINVAL);
    EXPECT_EQ(mountCard(), 0);
}

TEST(Mounting, RefusesACardThatIsNotThere) {
    SimulatedBoard board;
    board.removeCard();
    EXPECT_EQ(mountCard(), ENOENT);
}

TEST(Mounting, RefusesACardWithoutAPartition) {
    SimulatedBoard board;
    board.card().partitioned = false;
    EXPECT_EQ(mountCard(), ENOENT);
}

TEST(Mounting, RefusesAMountPointThatIsNotThere) {
    Scenario scenario;
    scenario.mountPointExists = false;
    SimulatedBoard board(scenario);
    EXPECT_EQ(mountCard(), ENOENT);
    EXPECT_EQ(::mkdir(mountPoint, 0700), 0);
    EXPECT_EQ(permissions(mountPoint), 0700U);
    EXPECT_EQ(mountCard(), 0);
}

TEST(Mounting, RefusesWhatIsNotAFatFileSystem) {
    SimulatedBoard board;
    EXPECT_EQ(mountCard(device, "ext4"), ENODEV);
    board.card().fat = false;
    EXPECT_EQ(mountCard(), EINVAL);
    board.card().vfatSupported = false;
    EXPECT_EQ(mountCard(), ENODEV);
}

TEST(Mounting, RefusesALockedCardForWriting) {
    SimulatedBoard board;
    board.card().writeProtected = true;
    EXPECT_EQ(mountCard(), EACCES);
}

TEST(Mounting, RefusesOtherDevicesAndPlaces) {
    SimulatedBoard board;
    EXPECT_EQ(mountCard("/dev/sda1"), ENOENT);
    EXPECT_EQ(mountCard(nullptr), ENOENT);
    EXPECT_EQ(::mount(device, "/mnt", "vfat", 0, nullptr), -1);
    EXPECT_EQ(unmountCard("/"), EINVAL);
}

TEST(Mounting, ShowsThePermissionsOfTheMount) {
    SimulatedBoard board;
    EXPECT_EQ(mountCard(), 0);
    EXPECT_EQ(permissions(mountPoint), 0755U);
    const Descriptor file(logFile, append);
    EXPECT_EQ(permissions(logFile), 0755U);
    struct stat status {};
    EXPECT_EQ(::fstat(file.number(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0755U);
}

TEST(Unmounting, WaitsForOpenFiles) {
    SimulatedBoard board;
    mountCard();
    Descriptor file(logFile, append);
    EXPECT_EQ(unmountCard(), EBUSY);
    file.close();
    EXPECT_EQ(unmountCard(), 0);
}

TEST(AnUnmountedMountPoint, TakesFilesOntoTheRootFileSystem) {
    SimulatedBoard board;
    EXPECT_EQ(store(logFile, "lost\n"), 0);
    EXPECT_EQ(board.fileBelowMountPoint("log.csv"), "lost\n");
    EXPECT_EQ(mountCard(), 0);
    EXPECT_EQ(openError(logFile, O_RDONLY), ENOENT) << "the card lies over it";
    EXPECT_EQ(store(logFile, "kept\n"), 0);
    EXPECT_EQ(board.fileOnCard("log.csv"), "kept\n");
    EXPECT_EQ(unmountCard(), 0);
    EXPECT_EQ(show(logFile), "lost\n");
}

TEST(APulledCard, IsGoneFromTheKernelsListAfterAWhile) {
    SimulatedBoard board;
    EXPECT_TRUE(listed());
    board.removeCard();
    board.elapse(milliseconds(500));
    EXPECT_TRUE(listed());
    board.elapse(milliseconds(400));
    EXPECT_FALSE(listed());
    board.insertCard();
    EXPECT_TRUE(listed());
}

TEST(APulledCard, StaysInTheMountTableAndTakesNoNewFile) {
    SimulatedBoard board;
    mountCard();
    board.removeCard();
    EXPECT_NE(board.kernel().mountTableText().find(mountPoint), std::string::npos);
    EXPECT_EQ(openError(logFile, append), ENOSPC);
    EXPECT_EQ(::mkdir("/mnt/sd-card/folder", 0755), -1);
    EXPECT_EQ(errno, ENOSPC);
}

TEST(APulledCard, FailsTheWritesOfAnOpenFileAndUnmountsAfterIt) {
    SimulatedBoard board;
    mountCard();
    Descriptor file(logFile, O_RDWR | O_CREAT);
    EXPECT_EQ(file.write("before\n"), 7);
    board.removeCard();
    EXPECT_EQ(file.write("after\n"), -EIO);
    EXPECT_EQ(file.readAgain(), "EIO");
    EXPECT_EQ(unmountCard(), EBUSY);
    file.close();
    EXPECT_EQ(unmountCard(), 0);
    EXPECT_EQ(board.fileOnCard("log.csv"), "before\n");
}

TEST(ACardPutBack, IsPresentAndListedAndTakesNothingUntilItIsUnmounted) {
    SimulatedBoard board;
    mountCard();
    store(logFile, "before\n");
    board.removeCard();
    board.insertCard();
    EXPECT_TRUE(listed());
    EXPECT_EQ(mountCard(), EBUSY);
    EXPECT_EQ(openError("/mnt/sd-card/new.csv", append), ENOSPC);
    {
        const Descriptor file(logFile, append);
        EXPECT_EQ(file.error(), 0);
        EXPECT_EQ(file.write("appended\n"), -EIO);
    }
    EXPECT_EQ(unmountCard(), 0);
    EXPECT_EQ(mountCard(), 0);
    const Descriptor file(logFile, append);
    EXPECT_EQ(file.write("appended\n"), 9);
    EXPECT_EQ(board.fileOnCard("log.csv"), "before\nappended\n");
}

TEST(AFullCard, RefusesTheWriteThatDoesNotFit) {
    SimulatedBoard board;
    mountCard();
    board.card().freeBytes = 10;
    const Descriptor file(logFile, append);
    EXPECT_EQ(file.write("sixbyte"), 7);
    EXPECT_EQ(file.write("four"), -ENOSPC);
    EXPECT_EQ(file.write("two"), 3);
    EXPECT_EQ(openError("/mnt/sd-card/new.csv", append), ENOSPC);
    EXPECT_EQ(board.fileOnCard("log.csv"), "sixbytetwo");
}

TEST(AReadOnlyCard, IsReadAndNotWritten) {
    SimulatedBoard board;
    mountCard();
    store(logFile, "old\n");
    board.card().readOnly = true;
    EXPECT_EQ(openError(logFile, append), EROFS);
    EXPECT_EQ(openError("/mnt/sd-card/new.csv", append), EROFS);
    EXPECT_EQ(show(logFile), "old\n");
}

} // namespace
} // namespace tavrelin
