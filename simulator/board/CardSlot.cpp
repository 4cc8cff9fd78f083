#include "simulator/board/CardSlot.h"

#include "simulator/board/BoardPaths.h"

#include <algorithm>
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

void CardSlot::NoticeRemoval(Nanoseconds now) {
    if (stale_ && !gone_ && now - removedAt_ >= kRemovalNoticed) {
        gone_ = true;
        kept_.insert(open_.begin(), open_.end());
    }
}

bool CardSlot::Shows(std::string_view name) const {
    return !gone_ ||
           std::ranges::any_of(kept_, [&](const std::string& file) { return Within(file, name); });
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
    return 0;
}

int CardSlot::Unmount(bool filesOpen) {
    if (!mounted) {
        return EINVAL;
    }
    if (filesOpen) {
        return EBUSY;
    }
    mounted = mountedForReading_ = stale_ = gone_ = false;
    kept_.clear();
    cut_.clear();
    return 0;
}

int CardSlot::Remount(bool forReadingOnly) {
    if (!mounted) {
        return EINVAL;
    }
    if (forReadingOnly && writers_ != 0) {
        return EBUSY;
    }
    if (writeProtected && !forReadingOnly) {
        return EACCES;
    }
    mountedForReading_ = forReadingOnly;
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
