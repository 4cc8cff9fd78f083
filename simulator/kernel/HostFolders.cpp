#include "simulator/kernel/HostFolders.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/libc/Real.h"

namespace sim {

HostFolders::HostFolders(const std::string& root, const CardSlot& card) : root_(root), card_(card) {
    for (const std::string& folder : {root + "/rootfs", root + "/rootfs/mnt", Card()}) {
        real::mkdir(folder.c_str(), 0755);
    }
    if (card.mountPointExists) {
        real::mkdir(MountPoint().c_str(), 0755);
    }
}

std::string HostFolders::MountPoint() const {
    return root_ + "/rootfs" + std::string(kMountPoint);
}

std::string HostFolders::Of(std::string_view path) const {
    return (card_.mounted ? Card() : MountPoint()) + std::string(path.substr(kMountPoint.size()));
}

} // namespace sim
