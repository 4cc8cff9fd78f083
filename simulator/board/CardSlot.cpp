#include "simulator/board/CardSlot.h"

#include "simulator/board/BoardPaths.h"

#include <cerrno>

namespace sim {

void CardSlot::Remove(Nanoseconds now) {
    if (!present) {
        return;
    }
    present = false;
    removedAt_ = now;
    stale_ = mounted;
}

bool CardSlot::Listed(Nanoseconds now) const {
    return present || now - removedAt_ < kRemovalNoticed;
}

int CardSlot::Mount(std::string_view source, std::string_view target, std::string_view type) {
    if (source != kCardPartition || !present || !partitioned) {
        return ENOENT;
    }
    if (target != kMountPoint || !mountPointExists) {
        return ENOENT;
    }
    if (type != "vfat" || !vfatSupported) {
        return ENODEV;
    }
    if (mounted) {
        return EBUSY;
    }
    if (writeProtected) {
        return EACCES;
    }
    if (!fat) {
        return EINVAL;
    }
    mounted = true;
    stale_ = false;
    return 0;
}

int CardSlot::Unmount(std::string_view target, bool filesOpen) {
    if (target != kMountPoint || !mounted) {
        return EINVAL;
    }
    if (filesOpen) {
        return EBUSY;
    }
    mounted = false;
    stale_ = false;
    return 0;
}

int CardSlot::CreateFile() const {
    if (readOnly) {
        return EROFS;
    }
    return Healthy() && freeBytes != 0 ? 0 : ENOSPC;
}

int CardSlot::OpenForWriting() const {
    return readOnly ? EROFS : 0;
}

int CardSlot::Write(std::int64_t bytes) {
    if (!Healthy()) {
        return EIO;
    }
    if (freeBytes < 0) {
        return 0;
    }
    if (bytes > freeBytes) {
        return ENOSPC;
    }
    freeBytes -= bytes;
    return 0;
}

} // namespace sim
