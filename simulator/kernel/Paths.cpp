#include "simulator/kernel/Paths.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <unistd.h>

namespace sim {
namespace {

long Fill(struct stat64* result, unsigned mode, std::int64_t size = 0) {
    *result = {};
    result->st_mode = mode;
    result->st_nlink = 1;
    result->st_size = static_cast<decltype(result->st_size)>(size);
    return 0;
}

/// Every file of a mounted card shows the permissions that the mount gave.
long AsOnVfat(struct stat64* status) {
    status->st_mode = (status->st_mode & S_IFMT) | 0755U;
    return 0;
}

} // namespace

Paths::Paths(const std::string& root, Calls& calls, const SysfsTree& tree, const MountTable& mounts)
    : root_(root), calls_(calls), tree_(tree), mounts_(mounts) {
    for (const std::string& folder : {root + "/rootfs", root + "/rootfs/mnt", CardFolder()}) {
        real::mkdir(folder.c_str(), 0755);
    }
    if (calls.board.card.mountPointExists) {
        real::mkdir(MountPointFolder().c_str(), 0755);
    }
}

std::string Paths::MountPointFolder() const {
    return root_ + "/rootfs" + std::string(kMountPoint);
}

std::string Paths::HostPath(const std::string& path) const {
    return (calls_.board.card.mounted ? CardFolder() : MountPointFolder()) +
           path.substr(kMountPoint.size());
}

long Paths::Access(const char* path, int wanted) {
    long error = calls_.Admit("access", path);
    if (error == 0) {
        const CardSlot& card = calls_.board.card;
        const long mode = Mode(path);
        if ((wanted & ~(R_OK | W_OK | X_OK)) != 0) {
            error = -EINVAL;
        } else if (mode < 0) {
            error = mode;
        } else if ((wanted & X_OK) != 0 && (mode & 0111) == 0) {
            error = -EACCES; // what else it may, it may as root
        } else if ((wanted & W_OK) != 0 && Within(path, kMountPoint) && card.mounted &&
                   card.RefusesWriters()) {
            error = -EROFS;
        }
        if (error != 0) {
            calls_.events.Add("access", path, Outcome(error));
        }
    }
    return error;
}

long Paths::Status(const char* path, bool followLinks, struct stat64* result) {
    const char* call = followLinks ? "stat" : "lstat";
    long error = calls_.Admit(call, path);
    if (error == 0) {
        error = Look(path, followLinks, result);
        calls_.events.Add(call, path, Outcome(error));
    }
    return error;
}

long Paths::Mode(const std::string& path) const {
    struct stat64 status {};
    const long error = Look(path, true, &status);
    return error != 0 ? error : static_cast<long>(status.st_mode);
}

bool Paths::IsLink(const std::string& path) const {
    struct stat64 status {};
    return Look(path, false, &status) == 0 && S_ISLNK(status.st_mode);
}

long Paths::BoardMode(const char* path) const {
    return path != nullptr && IsBoardPath(path) ? Mode(path) : -ENOENT;
}

long Paths::Look(const std::string& path, bool followLinks, struct stat64* result) const {
    if (Within(path, kSysfs)) {
        const SysfsNode node = tree_.Find(path);
        const bool attribute = node.kind == SysfsNode::Kind::Attribute;
        Fill(result, node.Mode(followLinks), attribute ? kAttributeSize : 0);
        return -node.Error();
    }
    if (tree_.TakenAway(path)) {
        return -ENOENT;
    }
    if (Within(path, kDevices) || Within(path, kMountTable) || Within(path, kMountInformation)) {
        return LookAtDevice(path, result);
    }
    if (!Within(path, kMountPoint)) {
        return real::stat(path.c_str(), result) == 0 ? 0 : -errno;
    }
    return LookAtCard(HostPath(path), result);
}

long Paths::LookAtCard(const std::string& host, struct stat64* result) const {
    const CardSlot& card = calls_.board.card;
    if (card.mounted && host != CardFolder() && !card.Shows(host)) {
        return -ENOENT;
    }
    if (real::stat(host.c_str(), result) != 0) {
        return -errno;
    }
    return card.mounted ? AsOnVfat(result) : 0;
}

long Paths::LookAtDevice(const std::string& path, struct stat64* result) const {
    const CardSlot& card = calls_.board.card;
    const bool listed = card.Listed(calls_.board.Now());
    const auto stands = [&](std::string_view name, unsigned mode, bool there, long& error) {
        if (Within(path, name)) {
            Fill(result, mode);
            error = !there ? -ENOENT : path != name ? -ENOTDIR : 0;
        }
    };
    long error = -ENOENT;
    stands(kCardDevice, S_IFBLK | 0660U, listed, error);
    stands(kCardPartition, S_IFBLK | 0660U, listed && card.partitioned, error);
    stands(kMountTable, S_IFREG | 0444U, mounts_.Present(), error);
    stands(kMountInformation, S_IFREG | 0444U, true, error);
    stands(kMemoryDevice, S_IFCHR | 0600U, calls_.board.present, error);
    stands(kSpiDevice, S_IFCHR | 0600U, calls_.board.present, error);
    return error;
}

long Paths::StatusOf(const OpenFile& file, struct stat64* result) {
    if (const long error = calls_.Admit("fstat", file.Path()); error != 0) {
        return error;
    }
    if (file.HostDescriptor() < 0) {
        return Fill(result, file.Mode());
    }
    if (real::DescriptorStatus(file.HostDescriptor(), result) != 0) {
        return -errno;
    }
    return file.OnCard() ? AsOnVfat(result) : 0;
}

} // namespace sim
