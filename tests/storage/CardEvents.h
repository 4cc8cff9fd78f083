#pragma once

#include "simulator/testing/SimulatedBoard.h"
#include "storage/DataLog.h"
#include "tests/support/InOrder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavrelin {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

/// The day's log on the simulated board, and its name on the card.
inline const std::string kFile = "2026-03-07_logfile.csv";
inline const std::string kLog = "/mnt/sd-card/" + kFile;

// What the board sees of each look and act of the card operations. A file's status is looked at
// once when its question is put together and once when it is answered.

inline Texts Twice(const std::string& look) {
    return {look, look};
}
inline const Texts kCardThere = Twice("stat /sys/block/mmcblk0 ok");
inline const Texts kCardGone = Twice("stat /sys/block/mmcblk0 ENOENT");
inline const Texts kListed = {"setmntent /etc/mtab card listed"};
inline const Texts kNotListed = {"setmntent /etc/mtab card not listed"};
inline const Texts kMountPointThere = Twice("stat /mnt/sd-card ok");
inline const Texts kMountPointMissing = Twice("stat /mnt/sd-card ENOENT");
inline const Texts kNoFileYet = Twice("stat " + kLog + " ENOENT");
inline const Texts kFileThere = Twice("stat " + kLog + " ok");
inline const Texts kOpened = {"open " + kLog + " ok"};
inline const Texts kUnmounted = {"umount /mnt/sd-card ok"};

/// The attempt to mount the card, and what came of it.
inline std::string Mounting(const std::string& result) {
    return "mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" " + result;
}
inline const Texts kMounted = {Mounting("ok")};

inline Scenario WithMountedCard() {
    Scenario scenario;
    scenario.board.card.mounted = true;
    return scenario;
}
inline Scenario WithoutCard() {
    Scenario scenario;
    scenario.board.card.present = false;
    return scenario;
}
inline Scenario WithoutMountPoint() {
    Scenario scenario;
    scenario.board.card.mountPointExists = false;
    return scenario;
}
inline Scenario WithMountTable(const Texts& lines, Scenario scenario = {}) {
    scenario.kernel.mounts.lines = lines;
    return scenario;
}
inline Scenario WithFileSystems(const std::vector<sim::FileSystem>& systems) {
    Scenario scenario;
    scenario.kernel.mounts.fileSystems = systems;
    return scenario;
}

inline bool IsMounted(SimulatedBoard& board) {
    return board.Card().mounted;
}
/// What somebody does at the board's console.
inline void MountByHand(SimulatedBoard& board) {
    ASSERT_EQ(board.Card().Mount(false), 0);
}
inline void UnmountByHand(SimulatedBoard& board) {
    ASSERT_EQ(board.Card().Unmount(false), 0);
}

/// Pulls the card and lets the kernel notice.
inline void PullCard(SimulatedBoard& board) {
    board.RemoveCard();
    board.Elapse(sim::Milliseconds(700));
}

/// A mounted card with one record of the day.
struct CardWithLog {
    CardWithLog() { board.WriteFileOnCard(kFile, "first\n"); }

    SimulatedBoard board{WithMountedCard()};
    DataLog log{kLog};
};

} // namespace tavrelin
