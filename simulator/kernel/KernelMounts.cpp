#include "simulator/kernel/Kernel.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/libc/Real.h"
#include "simulator/scenario/ErrnoNames.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/statfs.h>

namespace sim {
namespace {

constexpr std::string_view kMountPoint = "/mnt/sd-card";
constexpr std::string_view kPartition = "/dev/mmcblk0p1";

std::string Outcome(long error) {
    return error == 0 ? "ok" : ErrnoName(static_cast<int>(-error));
}

void Fill(struct stat64* result, unsigned mode) {
    *result = {};
    result->st_mode = mode;
    result->st_nlink = 1;
}

/// Every file of a mounted card shows the permissions that the mount gave.
void AsOnVfat(struct stat64& status) {
    status.st_mode = (status.st_mode & S_IFMT) | 0755U;
}

} // namespace

long Kernel::Access(const char* path, int /*wanted*/) {
    long error = Enter("access", path);
    if (error == 0) {
        struct stat64 ignored {};
        if (std::string_view(path).substr(0, 5) == "/sys/") {
            error = sysfs_.Find(path).kind == SysfsNode::Kind::Missing ? -ENOENT : 0;
        } else {
            error = HostStatus(path, &ignored);
        }
        if (error != 0) {
            events_.Add("access", path, ErrnoName(static_cast<int>(-error)));
        }
    }
    return error;
}

long Kernel::Status(const char* path, bool followLinks, struct stat64* result) {
    const char* call = followLinks ? "stat" : "lstat";
    if (const long error = Enter(call, path); error != 0) {
        return error;
    }
    if (std::string_view(path).substr(0, 5) != "/sys/") {
        const long error = HostStatus(path, result);
        events_.Add(call, path, Outcome(error));
        return error;
    }
    const SysfsNode node = sysfs_.Find(path);
    if (node.kind == SysfsNode::Kind::Missing) {
        events_.Add(call, path, "ENOENT");
        return -ENOENT;
    }
    const unsigned whole =
        node.kind == SysfsNode::Kind::Directory ? S_IFDIR | 0755U : S_IFREG | 0644U;
    Fill(result, node.link && !followLinks ? S_IFLNK | 0777U : whole);
    events_.Add(call, path, "ok");
    return 0;
}

long Kernel::HostStatus(const std::string& path, struct stat64* result) const {
    if (sysfs_.Taken(path)) {
        return -ENOENT;
    }
    if (path == kPartition || path == "/dev/mmcblk0") {
        Fill(result, S_IFBLK | 0660U);
        return board_.card.Listed(board_.Now()) ? 0 : -ENOENT;
    }
    if (path.substr(0, 5) == "/dev/") {
        Fill(result, S_IFCHR | 0600U);
        return boardPresent_ ? 0 : -ENOENT;
    }
    if (path == "/etc/mtab") {
        Fill(result, S_IFREG | 0444U);
        return mountTableExists_ ? 0 : -ENOENT;
    }
    if (real::stat(HostPath(path).c_str(), result) != 0) {
        return -errno;
    }
    if (board_.card.Mounted()) {
        AsOnVfat(*result);
    }
    return 0;
}

long Kernel::DescriptorStatus(int descriptor, struct stat64* result) {
    const OpenFile* file = files_.Find(descriptor);
    if (const long error = Enter("fstat", file->Path()); error != 0) {
        return error;
    }
    if (file->HostDescriptor() < 0) {
        Fill(result, file->Mode());
        return 0;
    }
    if (real::DescriptorStatus(file->HostDescriptor(), result) != 0) {
        return -errno;
    }
    if (static_cast<const CardFile*>(file)->OnCard()) {
        AsOnVfat(*result);
    }
    return 0;
}

long Kernel::MakeDirectory(const char* path, unsigned mode) {
    long error = Enter("mkdir", path);
    if (error != 0) {
        return error;
    }
    if (!Within(path, kMountPoint)) {
        unmodelled(std::string("mkdir of ") + path);
    }
    error = board_.card.Mounted() ? -board_.card.CreateFile() : 0;
    if (error == 0) {
        error = real::mkdir(HostPath(path).c_str(), mode) == 0 ? 0 : -errno;
    }
    if (error == 0 && path == kMountPoint) {
        board_.card.mountPointExists = true;
    }
    char octal[8];
    std::snprintf(octal, sizeof octal, "%04o ", mode);
    events_.Add("mkdir", path, octal + Outcome(error));
    return error;
}

long Kernel::Mount(const char* source, const char* target, const char* type, unsigned long flags,
                   const void* data) {
    long error = Enter("mount", target);
    if (error != 0) {
        return error;
    }
    error = -board_.card.Mount(source, target, type);
    events_.Add("mount", target,
                std::string(source) + " " + type + " " + std::to_string(flags) + " " +
                    EventLog::Quoted(data != nullptr ? static_cast<const char*>(data) : "") + " " +
                    Outcome(error));
    return error;
}

long Kernel::Unmount(const char* target) {
    long error = Enter("umount", target);
    if (error == 0) {
        error = -board_.card.Unmount(target, CardFilesOpen());
        events_.Add("umount", target, Outcome(error));
    }
    return error;
}

long Kernel::FileSystemStatus(const char* path, struct statfs64* result) {
    if (const long error = Enter("statfs", path); error != 0) {
        return error;
    }
    std::vector<FileSystem> known = fileSystems_;
    known.push_back({"/", 4096, 49'152, 20'480, 18'432});
    known.push_back({"/proc", 4096, 0, 0, 0});
    known.push_back({"/sys", 4096, 0, 0, 0});
    known.push_back({"/run", 4096, 14'336, 14'300, 14'300});
    if (board_.card.Mounted()) {
        known.push_back({std::string(kMountPoint), 4096, 1'940'480, 1'709'272, 1'709'272});
    }
    for (const FileSystem& system : known) {
        if (system.directory == path) {
            *result = {};
            result->f_bsize = static_cast<decltype(result->f_bsize)>(system.blockSize);
            result->f_blocks = system.blocks;
            result->f_bfree = system.freeBlocks;
            result->f_bavail = system.availableBlocks;
            events_.Add("statfs", path, "ok");
            return 0;
        }
    }
    events_.Add("statfs", path, "ENOENT");
    return -ENOENT;
}

std::string Kernel::MountTableText() const {
    if (const std::string* replaced = sysfs_.Replacement("/etc/mtab")) {
        return *replaced;
    }
    std::string text = "ubi0:rootfs / ubifs rw,relatime 0 0\n"
                       "proc /proc proc rw,nosuid,nodev,noexec,relatime 0 0\n"
                       "sysfs /sys sysfs rw,nosuid,nodev,noexec,relatime 0 0\n"
                       "tmpfs /run tmpfs rw,nosuid,nodev,mode=755 0 0\n";
    for (const std::string& line : mountTable_) {
        text += line + "\n";
    }
    if (board_.card.Mounted()) {
        text += "/dev/mmcblk0p1 /mnt/sd-card vfat rw,sync,relatime,fmask=0022,dmask=0022 0 0\n";
    }
    return text;
}

std::string Kernel::WriteTools() const {
    std::string folder = root_ + "/bin";
    const std::string script = "#!/bin/sh\ncat <<'TABLE'\n" + MountTableText() + "TABLE\n";
    real::mkdir(folder.c_str(), 0755);
    const int file = real::open((folder + "/mount").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0755);
    if (file >= 0) {
        static_cast<void>(real::write(file, script.data(), script.size()) == 0);
        real::close(file);
    }
    return folder;
}

FILE* Kernel::OpenMountTable(const char* path) {
    const long fault = Enter("setmntent", path);
    if (fault != 0 || !mountTableExists_ || sysfs_.Taken(path)) {
        errno = fault != 0 ? static_cast<int>(-fault) : ENOENT;
        if (fault == 0) {
            events_.Add("setmntent", path, "ENOENT");
        }
        return nullptr;
    }
    std::string text = MountTableText();
    FILE* table = fmemopen(nullptr, text.size() + 1, "w+");
    if (table != nullptr) {
        real::fwrite(text.data(), 1, text.size(), table);
        rewind(table);
        events_.Add("setmntent", path, board_.card.Mounted() ? "card listed" : "card not listed");
        tables_.insert(table);
    }
    return table;
}

void Kernel::CloseMountTable(FILE* table) {
    if (tables_.erase(table) != 0) {
        Enter("endmntent", "/etc/mtab");
    }
}

} // namespace sim
