#include "simulator/kernel/MountTable.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/libc/Real.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sstream>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>

namespace sim {
namespace {

/// True when the FAT driver knows every one of the options between the commas. What they are set to
/// is not looked at.
bool KnownOptions(const std::string& options) {
    using namespace std::string_view_literals;
    static constexpr std::array known{
        ""sv,         "uid"sv,    "gid"sv,       "umask"sv,     "dmask"sv,   "fmask"sv,
        "codepage"sv, "quiet"sv,  "iocharset"sv, "shortname"sv, "utf8"sv,    "flush"sv,
        "discard"sv,  "errors"sv, "check"sv,     "showexec"sv,  "usefree"sv, "tz"sv,
    };
    std::istringstream list(options);
    for (std::string option; std::getline(list, option, ',');) {
        if (std::ranges::count(known, option.substr(0, option.find('='))) == 0) {
            return false;
        }
    }
    return true;
}

std::string_view WithoutSlashes(std::string_view path) {
    return path.substr(0, path.find_last_not_of('/') + 1);
}

/// How the mount table shows the flags of a mount.
std::string AccessText(unsigned long flags) {
    using Flag = std::pair<unsigned long, const char*>;
    static constexpr std::array named{
        Flag{MS_SYNCHRONOUS, ",sync"},      Flag{MS_DIRSYNC, ",dirsync"},
        Flag{MS_NOSUID, ",nosuid"},         Flag{MS_NODEV, ",nodev"},
        Flag{MS_NOEXEC, ",noexec"},         Flag{MS_NOATIME, ",noatime"},
        Flag{MS_NODIRATIME, ",nodiratime"},
    };
    std::string text = (flags & MS_RDONLY) != 0 ? "ro" : "rw";
    for (const auto& [flag, name] : named) {
        text += (flags & flag) != 0 ? name : "";
    }
    return text + ((flags & (MS_NOATIME | MS_STRICTATIME)) == 0 ? ",relatime" : "");
}

/// The number that statfs tells of the kind of file system mounted at a directory.
long TypeOf(std::string_view directory) {
    using Kind = std::pair<std::string_view, long>;
    static constexpr std::array kinds{Kind{"/", 0x24051905}, Kind{"/proc", 0x9FA0},
                                      Kind{"/run", 0x01021994}, Kind{kSysfs, 0x62656572},
                                      Kind{kMountPoint, 0x4D44}};
    const auto* const kind = std::ranges::find(kinds, directory, &Kind::first);
    return kind != kinds.end() ? kind->second : 0;
}

/// The card's figures: its own size, or what its free space needs.
FileSystem CardSystem(const CardSlot& card) {
    constexpr std::int64_t block = 4096;
    constexpr std::uint64_t blocks = 1'940'480;
    const std::uint64_t free =
        card.freeBytes < 0 ? 1'709'272 : static_cast<std::uint64_t>(card.freeBytes / block);
    return {std::string(kMountPoint), block, std::max(blocks, free), free, free};
}

} // namespace

long MountTable::Mount(const MountRequest& request, long source, long target) {
    long error = calls_.Admit("mount", request.target);
    if (error != 0) {
        return error;
    }
    error = TryMount(request, source, target);
    const auto orEmpty = [](const char* text) { return std::string(text != nullptr ? text : ""); };
    calls_.events.Add("mount", request.target,
                      orEmpty(request.source) + " " + orEmpty(request.type) + " " +
                          std::to_string(request.flags) + " " + EventLog::Quoted(request.options) +
                          " " + Outcome(error));
    return error;
}

long MountTable::TryMount(const MountRequest& request, long source, long target) {
    CardSlot& card = calls_.board.card;
    if (target < 0) {
        return target;
    }
    if ((request.flags & MS_REMOUNT) != 0) {
        return Remount(request);
    }
    if ((request.flags & MS_BIND) != 0) {
        return Bind(request, source, target);
    }
    if (request.type == nullptr) {
        return -EINVAL;
    }
    if (std::string_view(request.type) != "vfat" || !card.vfatSupported) {
        return -ENODEV;
    }
    if (request.source == nullptr || *request.source == '\0') {
        return -EINVAL;
    }
    if (source < 0) {
        return source;
    }
    if (!S_ISBLK(static_cast<unsigned>(source))) {
        return -ENOTBLK;
    }
    if (request.source == kCardDevice) { // begins with a partition table, and no file system
        return card.mounted ? -EBUSY : -EINVAL;
    }
    if (!card.mounted && !KnownOptions(request.options)) {
        return -EINVAL;
    }
    if (!card.mounted && !S_ISDIR(static_cast<unsigned>(target))) {
        return -ENOTDIR;
    }
    const bool forReadingOnly = (request.flags & MS_RDONLY) != 0;
    const int error = card.Mount(forReadingOnly);
    if (error == 0) {
        ShowFlags(request.flags);
    }
    return -error;
}

void MountTable::ShowFlags(unsigned long flags) {
    access_ = AccessText(flags);
    calls_.board.card.synchronous = (flags & MS_SYNCHRONOUS) != 0;
}

long MountTable::Remount(const MountRequest& request) {
    if (WithoutSlashes(request.target) != kMountPoint) {
        return -EINVAL;
    }
    const int error = calls_.board.card.Remount((request.flags & MS_RDONLY) != 0);
    if (error == 0) {
        ShowFlags(request.flags);
    }
    return -error;
}

long MountTable::Bind(const MountRequest& request, long source, long target) const {
    if (request.source == nullptr || *request.source == '\0') {
        return -EINVAL;
    }
    if (source < 0) {
        return source;
    }
    if (S_ISDIR(static_cast<unsigned>(source)) != S_ISDIR(static_cast<unsigned>(target))) {
        return -ENOTDIR;
    }
    calls_.Unmodelled("mount of " + std::string(request.source) + " in a second place");
}

long MountTable::Unmount(const std::string& path, long target) {
    long error = calls_.Admit("umount", path);
    if (error == 0) {
        error = target < 0 ? target
                : WithoutSlashes(path) != kMountPoint
                    ? -EINVAL
                    : -calls_.board.card.Unmount(files_.CardFileOpen());
        calls_.events.Add("umount", path, Outcome(error));
    }
    return error;
}

long MountTable::FileSystemStatus(const std::string& path, long standing, struct statfs64* result) {
    if (const long error = calls_.Admit("statfs", path); error != 0) {
        return error;
    }
    if (calls_.board.card.Gone() && Within(path, kMountPoint) && standing >= 0) {
        calls_.events.Add("statfs", path, "EIO");
        return -EIO;
    }
    struct stat64 status {};
    if (!IsBoardPath(path) && real::stat(path.c_str(), &status) == 0) {
        standing = S_IFDIR; // of this machine, and on the board's root
    }
    std::vector<FileSystem> known = setup_.fileSystems;
    known.push_back({"/", 4096, 49'152, 20'480, 18'432});
    known.push_back({"/proc", 4096, 0, 0, 0});
    known.push_back({std::string(kSysfs), 4096, 0, 0, 0});
    known.push_back({"/run", 4096, 14'336, 14'300, 14'300});
    if (calls_.board.card.mounted) {
        known.push_back(CardSystem(calls_.board.card));
    }
    const FileSystem* closest = nullptr;
    for (const FileSystem& system : known) {
        const bool holds =
            system.directory == path ||
            (standing >= 0 && (system.directory == "/" || Within(path, system.directory)));
        if (holds && (closest == nullptr || system.directory.size() > closest->directory.size())) {
            closest = &system;
        }
    }
    const long error = closest != nullptr ? 0 : standing;
    calls_.events.Add("statfs", path, Outcome(error));
    if (closest != nullptr) {
        *result = {};
        result->f_type = static_cast<decltype(result->f_type)>(TypeOf(closest->directory));
        result->f_bsize = static_cast<decltype(result->f_bsize)>(closest->blockSize);
        result->f_blocks = closest->blocks;
        result->f_bfree = closest->freeBlocks;
        result->f_bavail = closest->availableBlocks;
    }
    return error;
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
        text += std::string(kCardPartition) + " " + std::string(kMountPoint) + " vfat " + access_ +
                ",fmask=0022,dmask=0022 0 0\n";
    }
    return text;
}

std::string MountTable::Information() const {
    std::istringstream lines(Text());
    std::string text;
    int number = 1;
    for (std::string device, directory, type, options, rest;
         lines >> device >> directory >> type >> options && std::getline(lines, rest); ++number) {
        const std::string id = std::to_string(number);
        text += id + (number == 1 ? " 0 0:" : " 1 0:") + id + " / " + directory + " " + options +
                " - " + type + " " + device + " " + options + "\n";
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
