#include "simulator/kernel/Kernel.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/libc/Real.h"
#include "simulator/scenario/ErrnoNames.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/statfs.h>

namespace sim {
namespace {

constexpr std::string_view mountPoint = "/mnt/sd-card";
constexpr std::string_view partition = "/dev/mmcblk0p1";

std::string outcome(long error) {
    return error == 0 ? "ok" : errnoName(static_cast<int>(-error));
}

void fill(struct stat64* result, unsigned mode) {
    *result = {};
    result->st_mode = mode;
    result->st_nlink = 1;
}

/// Every file of a mounted card shows the permissions that the mount gave.
void asOnVfat(struct stat64& status) {
    status.st_mode = (status.st_mode & S_IFMT) | 0755U;
}

} // namespace

long Kernel::access(const char* path, int /*wanted*/) {
    long error = enter("access", path);
    if (error == 0) {
        struct stat64 ignored {};
        if (std::string_view(path).substr(0, 5) == "/sys/") {
            error = sysfs_.find(path).kind == SysfsNode::Kind::missing ? -ENOENT : 0;
        } else {
            error = hostStatus(path, &ignored);
        }
        if (error != 0) {
            events_.add("access", path, errnoName(static_cast<int>(-error)));
        }
    }
    return error;
}

long Kernel::status(const char* path, bool followLinks, struct stat64* result) {
    const char* call = followLinks ? "stat" : "lstat";
    if (const long error = enter(call, path); error != 0) {
        return error;
    }
    if (std::string_view(path).substr(0, 5) != "/sys/") {
        const long error = hostStatus(path, result);
        events_.add(call, path, outcome(error));
        return error;
    }
    const SysfsNode node = sysfs_.find(path);
    if (node.kind == SysfsNode::Kind::missing) {
        events_.add(call, path, "ENOENT");
        return -ENOENT;
    }
    const unsigned whole =
        node.kind == SysfsNode::Kind::directory ? S_IFDIR | 0755U : S_IFREG | 0644U;
    fill(result, node.link && !followLinks ? S_IFLNK | 0777U : whole);
    events_.add(call, path, "ok");
    return 0;
}

long Kernel::hostStatus(const std::string& path, struct stat64* result) const {
    if (sysfs_.taken(path)) {
        return -ENOENT;
    }
    if (path == partition || path == "/dev/mmcblk0") {
        fill(result, S_IFBLK | 0660U);
        return board_.card.listed(board_.now()) ? 0 : -ENOENT;
    }
    if (path.substr(0, 5) == "/dev/") {
        fill(result, S_IFCHR | 0600U);
        return boardPresent_ ? 0 : -ENOENT;
    }
    if (path == "/etc/mtab") {
        fill(result, S_IFREG | 0444U);
        return mountTableExists_ ? 0 : -ENOENT;
    }
    if (real::stat(hostPath(path).c_str(), result) != 0) {
        return -errno;
    }
    if (board_.card.mounted()) {
        asOnVfat(*result);
    }
    return 0;
}

long Kernel::descriptorStatus(int descriptor, struct stat64* result) {
    const OpenFile* file = files_.find(descriptor);
    if (const long error = enter("fstat", file->path()); error != 0) {
        return error;
    }
    if (file->hostDescriptor() < 0) {
        fill(result, file->mode());
        return 0;
    }
    if (real::descriptorStatus(file->hostDescriptor(), result) != 0) {
        return -errno;
    }
    if (static_cast<const CardFile*>(file)->onCard()) {
        asOnVfat(*result);
    }
    return 0;
}

long Kernel::makeDirectory(const char* path, unsigned mode) {
    long error = enter("mkdir", path);
    if (error != 0) {
        return error;
    }
    if (!within(path, mountPoint)) {
        unmodelled(std::string("mkdir of ") + path);
    }
    error = board_.card.mounted() ? -board_.card.createFile() : 0;
    if (error == 0) {
        error = real::mkdir(hostPath(path).c_str(), mode) == 0 ? 0 : -errno;
    }
    if (error == 0 && path == mountPoint) {
        board_.card.mountPointExists = true;
    }
    char octal[8];
    std::snprintf(octal, sizeof octal, "%04o ", mode);
    events_.add("mkdir", path, octal + outcome(error));
    return error;
}

long Kernel::mount(const char* source, const char* target, const char* type, unsigned long flags,
                   const void* data) {
    long error = enter("mount", target);
    if (error != 0) {
        return error;
    }
    error = -board_.card.mount(source, target, type);
    events_.add("mount", target,
                std::string(source) + " " + type + " " + std::to_string(flags) + " " +
                    EventLog::quoted(data != nullptr ? static_cast<const char*>(data) : "") + " " +
                    outcome(error));
    return error;
}

long Kernel::unmount(const char* target) {
    long error = enter("umount", target);
    if (error == 0) {
        error = -board_.card.unmount(target, cardFilesOpen());
        events_.add("umount", target, outcome(error));
    }
    return error;
}

long Kernel::fileSystemStatus(const char* path, struct statfs64* result) {
    if (const long error = enter("statfs", path); error != 0) {
        return error;
    }
    std::vector<FileSystem> known = fileSystems_;
    known.push_back({"/", 4096, 49'152, 20'480, 18'432});
    known.push_back({"/proc", 4096, 0, 0, 0});
    known.push_back({"/sys", 4096, 0, 0, 0});
    known.push_back({"/run", 4096, 14'336, 14'300, 14'300});
    if (board_.card.mounted()) {
        known.push_back({std::string(mountPoint), 4096, 1'940'480, 1'709'272, 1'709'272});
    }
    for (const FileSystem& system : known) {
        if (system.directory == path) {
            *result = {};
            result->f_bsize = static_cast<decltype(result->f_bsize)>(system.blockSize);
            result->f_blocks = system.blocks;
            result->f_bfree = system.freeBlocks;
            result->f_bavail = system.availableBlocks;
            events_.add("statfs", path, "ok");
            return 0;
        }
    }
    events_.add("statfs", path, "ENOENT");
    return -ENOENT;
}

std::string Kernel::mountTableText() const {
    if (const std::string* replaced = sysfs_.replacement("/etc/mtab")) {
        return *replaced;
    }
    std::string text = "ubi0:rootfs / ubifs rw,relatime 0 0\n"
                       "proc /proc proc rw,nosuid,nodev,noexec,relatime 0 0\n"
                       "sysfs /sys sysfs rw,nosuid,nodev,noexec,relatime 0 0\n"
                       "tmpfs /run tmpfs rw,nosuid,nodev,mode=755 0 0\n";
    for (const std::string& line : mountTable_) {
        text += line + "\n";
    }
    if (board_.card.mounted()) {
        text += "/dev/mmcblk0p1 /mnt/sd-card vfat rw,sync,relatime,fmask=0022,dmask=0022 0 0\n";
    }
    return text;
}

std::string Kernel::writeTools() const {
    std::string folder = root_ + "/bin";
    const std::string script = "#!/bin/sh\ncat <<'TABLE'\n" + mountTableText() + "TABLE\n";
    real::mkdir(folder.c_str(), 0755);
    const int file = real::open((folder + "/mount").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0755);
    if (file >= 0) {
        static_cast<void>(real::write(file, script.data(), script.size()) == 0);
        real::close(file);
    }
    return folder;
}

FILE* Kernel::openMountTable(const char* path) {
    const long fault = enter("setmntent", path);
    if (fault != 0 || !mountTableExists_ || sysfs_.taken(path)) {
        errno = fault != 0 ? static_cast<int>(-fault) : ENOENT;
        if (fault == 0) {
            events_.add("setmntent", path, "ENOENT");
        }
        return nullptr;
    }
    std::string text = mountTableText();
    FILE* table = fmemopen(nullptr, text.size() + 1, "w+");
    if (table != nullptr) {
        real::fwrite(text.data(), 1, text.size(), table);
        rewind(table);
        events_.add("setmntent", path, board_.card.mounted() ? "card listed" : "card not listed");
        tables_.insert(table);
    }
    return table;
}

void Kernel::closeMountTable(FILE* table) {
    if (tables_.erase(table) != 0) {
        enter("endmntent", "/etc/mtab");
    }
}

} // namespace sim
