#include "simulator/board/CardSlot.h"

#include <cerrno>

namespace sim {

void CardSlot::Insert(Nanoseconds /*now*/) {
    present = true;
}

void CardSlot::Remove(Nanoseconds now) {
    if (!present) {
        return;
    }
    present = false;
    removedAt_ = now;
    stale_ = mounted_;
}

bool CardSlot::Listed(Nanoseconds now) const {
    return present || now - removedAt_ < kRemovalNoticed;
}

int CardSlot::Mount(std::string_view source, std::string_view target, std::string_view type) {
    if (source != "/dev/mmcblk0p1" || !present || !partitioned) {
        return ENOENT;
    }
    if (target != "/mnt/sd-card" || !mountPointExists) {
        return ENOENT;
    }
    if (type != "vfat" || !vfatSupported) {
        return ENODEV;
    }
    if (mounted_) {
        return EBUSY;
    }
    if (writeProtected) {
        return EACCES;
    }
    if (!fat) {
        return EINVAL;
    }
    mounted_ = true;
    stale_ = false;
    return 0;
}

int CardSlot::Unmount(std::string_view target, bool filesOpen) {
    if (target != "/mnt/sd-card" || !mounted_) {
        return EINVAL;
    }
    if (filesOpen) {
        return EBUSY;
    }
    mounted_ = false;
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
