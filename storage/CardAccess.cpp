#include "storage/CardAccess.h"

#include "storage/CardSettings.h"
#include "storage/FileStatus.h"
#include "storage/MountQuery.h"

#include <sys/mount.h>

namespace tavrelin {

bool IsCardPresent() {
    FileStatus card(card::kPresenceDirectory);
    return card.is_directory(card::kPresenceDirectory);
}

bool IsCardMounted() {
    MountQuery query;
    query.SetMountPoint(card::kMountPoint);
    return query.IsListed();
}

bool MountCard() {
    if (!IsCardPresent()) {
        return false;
    }
    if (IsCardMounted()) {
        return true;
    }
    return ::mount(card::kPartition, card::kMountPoint, card::kFileSystem, card::kMountFlags,
                   card::kMountData) == 0;
}

bool UnmountCard() {
    // The reverse of what the data log does, by design: a listed card is the log's to unmount.
    return !IsCardMounted() && ::umount(card::kMountPoint) == 0;
}

} // namespace tavrelin
