#include "simulator/board/CardSlot.h"

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

int CardSlot::Mount(bool forReadingOnly) {
    if (!present || !partitioned) {
        return ENOENT;
    }
    if (mounted) {
        return EBUSY;
    }
    if (writeProtected && !forReadingOnly) {
        return EACCES;
    }
    if (!fat) {
        return EINVAL;
    }
    mounted = true;
    mountedForReading_ = forReadingOnly;
    stale_ = false;
    return 0;
}

int CardSlot::Unmount(bool filesOpen) {
    if (!mounted) {
        return EINVAL;
    }
    if (filesOpen) {
        return EBUSY;
    }
    mounted = mountedForReading_ = stale_ = false;
    return 0;
}

int CardSlot::CreateFile() const {
    if (RefusesWriters()) {
        return EROFS;
    }
    return Healthy() && freeBytes != 0 ? 0 : ENOSPC;
}

int CardSlot::OpenForWriting() const {
    return RefusesWriters() ? EROFS : 0;
}

int CardSlot::Write(std::int64_t bytes) {
    if (!Healthy()) {
        return EIO;
    }
    if (freeBytes >= 0 && bytes > freeBytes) {
        return ENOSPC;
    }
    freeBytes -= freeBytes < 0 ? 0 : bytes;
    written_ += bytes;
    return 0;
}

} // namespace sim
