#include "simulator/kernel/Paths.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <cstdio>

namespace sim {
namespace {

long Fill(struct stat64* result, unsigned mode) {
    *result = {};
    result->st_mode = mode;
    result->st_nlink = 1;
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

long Paths::Access(const char* path) {
    long error = calls_.Admit("access", path);
    if (error == 0) {
        struct stat64 ignored {};
        if (Within(path, kSysfs)) {
            error = tree_.Find(path).kind == SysfsNode::Kind::Missing ? -ENOENT : 0;
        } else {
            error = StatusOutsideSysfs(path, &ignored);
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
    if (error != 0) {
        return error;
    }
    if (!Within(path, kSysfs)) {
        error = StatusOutsideSysfs(path, result);
    } else if (const SysfsNode node = tree_.Find(path); node.kind == SysfsNode::Kind::Missing) {
        error = -ENOENT;
    } else if (node.link && !followLinks) {
        Fill(result, S_IFLNK | 0777U);
    } else {
        Fill(result, node.kind == SysfsNode::Kind::Directory ? S_IFDIR | 0755U : S_IFREG | 0644U);
    }
    calls_.events.Add(call, path, Outcome(error));
    return error;
}

long Paths::StatusOutsideSysfs(const std::string& path, struct stat64* result) const {
    if (tree_.TakenAway(path)) {
        return -ENOENT;
    }
    if (path == kCardPartition || path == kCardDevice) {
        Fill(result, S_IFBLK | 0660U);
        return calls_.board.card.Listed(calls_.board.Now()) ? 0 : -ENOENT;
    }
    if (Within(path, kDevices)) {
        Fill(result, S_IFCHR | 0600U);
        return calls_.board.present ? 0 : -ENOENT;
    }
    if (path == kMountTable) {
        Fill(result, S_IFREG | 0444U);
        return mounts_.Present() ? 0 : -ENOENT;
    }
    if (real::stat(HostPath(path).c_str(), result) != 0) {
        return -errno;
    }
    return calls_.board.card.mounted ? AsOnVfat(result) : 0;
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

long Paths::MakeDirectory(const char* path, unsigned mode) {
    long error = calls_.Admit("mkdir", path);
    if (error != 0) {
        return error;
    }
    if (!Within(path, kMountPoint)) {
        calls_.Unmodelled(std::string("mkdir of ") + path);
    }
    error = calls_.board.card.mounted ? -calls_.board.card.CreateFile() : 0;
    if (error == 0) {
        error = real::mkdir(HostPath(path).c_str(), mode) == 0 ? 0 : -errno;
    }
    if (error == 0 && path == kMountPoint) {
        calls_.board.card.mountPointExists = true;
    }
    char octal[8];
    std::snprintf(octal, sizeof octal, "%04o ", mode);
    calls_.events.Add("mkdir", path, octal + Outcome(error));
    return error;
}

} // namespace sim
