#pragma once

#include "simulator/testing/SimulatedBoard.h"

namespace tavrelin {

// What the board sees of each look and act of the card operations. A file's status is looked at
// once when its question is put together and once when it is answered.

inline const sim::Texts kCardThere = {"stat /sys/block/mmcblk0 ok", "stat /sys/block/mmcblk0 ok"};
inline const sim::Texts kCardGone = {"stat /sys/block/mmcblk0 ENOENT",
                                     "stat /sys/block/mmcblk0 ENOENT"};
inline const sim::Texts kListed = {"setmntent /etc/mtab card listed"};
inline const sim::Texts kNotListed = {"setmntent /etc/mtab card not listed"};
inline const sim::Texts kMountPointThere = {"stat /mnt/sd-card ok", "stat /mnt/sd-card ok"};
inline const sim::Texts kMountPointMissing = {"stat /mnt/sd-card ENOENT",
                                              "stat /mnt/sd-card ENOENT"};
inline const sim::Texts kMounted = {"mount /mnt/sd-card /dev/mmcblk0p1 vfat 16 \"\" ok"};
inline const sim::Texts kUnmounted = {"umount /mnt/sd-card ok"};

/// One after the other.
inline sim::Texts InOrder(std::initializer_list<sim::Texts> parts) {
    sim::Texts whole;
    for (const sim::Texts& part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

/// A board whose card is mounted.
inline sim::Scenario WithMountedCard() {
    sim::Scenario scenario;
    scenario.board.card.mounted = true;
    return scenario;
}

/// Pulls the card and lets the kernel notice.
inline void PullCard(sim::SimulatedBoard& board) {
    board.RemoveCard();
    board.Elapse(sim::Milliseconds(700));
}

} // namespace tavrelin
