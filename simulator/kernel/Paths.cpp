#include "simulator/kernel/Paths.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/kernel/FatNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace sim {
namespace {

constexpr unsigned kSysfsDevice = 22; // anonymous ones, as the kernel numbers them
constexpr unsigned kDevicesDevice = 6;
constexpr unsigned kCardMajor = 179;

/// A number for each path, the same on every machine.
std::uint32_t InodeOf(std::string_view path) {
    std::uint32_t hash = 2166136261U;
    for (const char c : path.substr(0, path.find_last_not_of('/') + 1)) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    }
    return hash;
}

long Fill(struct stat64* result, std::string_view path, unsigned mode, std::int64_t size = 0) {
    *result = {};
    result->st_mode = mode;
    result->st_ino = InodeOf(path);
    result->st_dev = makedev(0, Within(path, kSysfs) ? kSysfsDevice : kDevicesDevice);
    result->st_blksize = kAttributeSize;
    result->st_nlink = 1;
    result->st_size = static_cast<decltype(result->st_size)>(size);
    return 0;
}

/// Every file of a mounted card shows the permissions that the mount gave.
long AsOnVfat(struct stat64* status) {
    status->st_mode = (status->st_mode & S_IFMT) | 0755U;
    status->st_dev = makedev(kCardMajor, 1);
    return 0;
}

} // namespace

Paths::Paths(const std::string& root, Calls& calls, const SysfsTree& tree, const MountTable& mounts,
             CardCache& cache)
    : root_(root), calls_(calls), tree_(tree), mounts_(mounts), cache_(cache) {
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
    const std::string_view below = std::string_view(path).substr(kMountPoint.size());
    return calls_.board.card.mounted ? FindOnFat(CardFolder(), below)
                                     : MountPointFolder() + std::string(below);
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
        Fill(result, path, node.Mode(followLinks), attribute ? kAttributeSize : 0);
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
    const std::string name = host.substr(0, host.find_last_not_of('/') + 1);
    if (card.mounted && name != CardFolder() && !card.Shows(name)) {
        return -ENOENT;
    }
    if (real::stat(host.c_str(), result) != 0) {
        return -errno;
    }
    if (!card.mounted) {
        return 0;
    }
    result->st_size = static_cast<decltype(result->st_size)>(card.SizeOf(name, result->st_size));
    return AsOnVfat(result);
}

long Paths::LookAtDevice(const std::string& path, struct stat64* result) const {
    const CardSlot& card = calls_.board.card;
    const bool listed = card.Listed(calls_.board.Now());
    long error = -ENOENT;
    const auto stands = [&](std::string_view name, unsigned mode, bool there, dev_t number) {
        if (Within(path, name)) {
            Fill(result, path, mode);
            result->st_rdev = number;
            error = !there ? -ENOENT : path != name ? -ENOTDIR : 0;
        }
    };
    stands(kCardDevice, S_IFBLK | 0660U, listed, makedev(kCardMajor, 0));
    stands(kCardPartition, S_IFBLK | 0660U, listed && card.partitioned, makedev(kCardMajor, 1));
    stands(kMountTable, S_IFREG | 0444U, mounts_.Present(), 0);
    stands(kMountInformation, S_IFREG | 0444U, true, 0);
    stands(kMemoryDevice, S_IFCHR | 0600U, calls_.board.present, makedev(1, 1));
    stands(kSpiDevice, S_IFCHR | 0600U, calls_.board.present, makedev(153, 0));
    return error;
}

long Paths::StatusOf(const OpenFile& file, struct stat64* result) {
    if (const long error = calls_.Admit("fstat", file.Path()); error != 0) {
        return error;
    }
    if (Within(file.Path(), kDevices)) {
        return LookAtDevice(file.Path(), result);
    }
    if (file.HostDescriptor() < 0) {
        return Fill(result, file.Path(), file.Mode(), S_ISREG(file.Mode()) ? kAttributeSize : 0);
    }
    if (real::DescriptorStatus(file.HostDescriptor(), result) != 0) {
        return -errno;
    }
    return file.OnCard() ? AsOnVfat(result) : 0;
}

} // namespace sim
