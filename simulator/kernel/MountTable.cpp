#include "simulator/kernel/MountTable.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/statfs.h>

namespace sim {

long MountTable::Mount(const char* source, const char* target, const char* type,
                       unsigned long flags, const void* data) {
    long error = calls_.Admit("mount", target);
    if (error != 0) {
        return error;
    }
    error = -calls_.board.card.Mount(source, target, type);
    calls_.events.Add("mount", target,
                      std::string(source) + " " + type + " " + std::to_string(flags) + " " +
                          EventLog::Quoted(data != nullptr ? static_cast<const char*>(data) : "") +
                          " " + Outcome(error));
    return error;
}

long MountTable::Unmount(const char* target) {
    long error = calls_.Admit("umount", target);
    if (error == 0) {
        error = -calls_.board.card.Unmount(target, files_.CardFileOpen());
        calls_.events.Add("umount", target, Outcome(error));
    }
    return error;
}

long MountTable::FileSystemStatus(const char* path, struct statfs64* result) {
    if (const long error = calls_.Admit("statfs", path); error != 0) {
        return error;
    }
    std::vector<FileSystem> known = setup_.fileSystems;
    known.push_back({"/", 4096, 49'152, 20'480, 18'432});
    known.push_back({"/proc", 4096, 0, 0, 0});
    known.push_back({std::string(kSysfs), 4096, 0, 0, 0});
    known.push_back({"/run", 4096, 14'336, 14'300, 14'300});
    if (calls_.board.card.mounted) {
        known.push_back({std::string(kMountPoint), 4096, 1'940'480, 1'709'272, 1'709'272});
    }
    for (const FileSystem& system : known) {
        if (system.directory == path) {
            *result = {};
            result->f_bsize = static_cast<decltype(result->f_bsize)>(system.blockSize);
            result->f_blocks = system.blocks;
            result->f_bfree = system.freeBlocks;
            result->f_bavail = system.availableBlocks;
            calls_.events.Add("statfs", path, "ok");
            return 0;
        }
    }
    calls_.events.Add("statfs", path, "ENOENT");
    return -ENOENT;
}

std::string MountTable::Text() const {
    if (const std::string* replaced = tree_.Replacement(std::string(kMountTable))) {
        return *replaced;
    }
    std::string text = "ubi0:rootfs / ubifs rw,relatime 0 0\n"
                       "proc /proc proc rw,nosuid,nodev,noexec,relatime 0 0\n"
                       "sysfs /sys sysfs rw,nosuid,nodev,noexec,relatime 0 0\n"
                       "tmpfs /run tmpfs rw,nosuid,nodev,mode=755 0 0\n";
    for (const std::string& line : setup_.lines) {
        text += line + "\n";
    }
    if (calls_.board.card.mounted) {
        text += std::string(kCardPartition) + " " + std::string(kMountPoint) +
                " vfat rw,sync,relatime,fmask=0022,dmask=0022 0 0\n";
    }
    return text;
}

void MountTable::WriteTools(const std::string& folder) const {
    const std::string script = "#!/bin/sh\ncat <<'TABLE'\n" + Text() + "TABLE\n";
    real::mkdir(folder.c_str(), 0755);
    const int file = real::open((folder + "/mount").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0755);
    if (file >= 0) {
        static_cast<void>(real::write(file, script.data(), script.size()) == 0);
        real::close(file);
    }
}

FILE* MountTable::Open(const char* path) {
    const long fault = calls_.Admit("setmntent", path);
    if (fault != 0 || !setup_.tablePresent || tree_.TakenAway(path)) {
        errno = fault != 0 ? static_cast<int>(-fault) : ENOENT;
        if (fault == 0) {
            calls_.events.Add("setmntent", path, "ENOENT");
        }
        return nullptr;
    }
    std::string text = Text();
    FILE* table = fmemopen(nullptr, text.size() + 1, "w+");
    if (table != nullptr) {
        real::fwrite(text.data(), 1, text.size(), table);
        rewind(table);
        calls_.events.Add("setmntent", path,
                          calls_.board.card.mounted ? "card listed" : "card not listed");
        open_.insert(table);
    }
    return table;
}

void MountTable::Close(FILE* table) {
    if (open_.erase(table) != 0) {
        calls_.Admit("endmntent", kMountTable);
    }
}

} // namespace sim
