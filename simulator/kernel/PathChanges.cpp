#include "simulator/kernel/Paths.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/kernel/FatNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

// Changes of what stands at a path. Only the card's files have any; the attribute tree refuses
// them, and the devices' are not modelled.
namespace sim {

template <typename Change>
long Paths::ChangeCard(const char* call, const char* path, Change change) {
    const CardSlot& card = calls_.board.card;
    long error = 0;
    if (card.mounted && card.RefusesWriters()) {
        error = -EROFS;
    } else if (card.mounted && !card.Healthy()) {
        error = card.Gone() ? -ENOENT : -EIO;
    } else {
        cache_.BeforeChange();
        error = change(HostPath(path)) == 0 ? 0 : -errno;
    }
    calls_.events.Add(call, path, Outcome(error));
    return error;
}

long Paths::MakeDirectory(const char* path, unsigned mode) {
    long error = calls_.Admit("mkdir", path);
    if (error != 0) {
        return error;
    }
    CardSlot& card = calls_.board.card;
    const long there = Mode(path);
    if (there != -ENOENT) {
        error = there < 0 ? there : -EEXIST;
    } else if (!Within(path, kMountPoint)) {
        error = tree_.Find(path).parentExists ? -EPERM : -ENOENT;
    } else {
        error = CheckNew(path);
        error = error != 0 && card.mounted && !card.Healthy() ? -EIO : error;
        if (error == 0) {
            cache_.BeforeChange();
            error = real::mkdir(HostPath(path).c_str(), mode) == 0 ? 0 : -errno;
        }
    }
    if (error == 0 && path == kMountPoint) {
        card.mountPointExists = true;
    }
    char octal[8];
    std::snprintf(octal, sizeof octal, "%04o ", mode);
    calls_.events.Add("mkdir", path, octal + Outcome(error));
    return error;
}

long Paths::RemoveDirectory(const char* path) {
    if (const long error = calls_.Admit("rmdir", path); error != 0) {
        return error;
    }
    if (path == kMountPoint) {
        if (calls_.board.card.mounted) {
            return -EBUSY;
        }
        calls_.Unmodelled("rmdir of the mount point");
    }
    if (Within(path, kMountPoint)) {
        return ChangeCard("rmdir", path,
                          [](const std::string& host) { return SIM_REAL(rmdir)(host.c_str()); });
    }
    std::string_view name = path; // a slash at the end does not lead on from a link here
    name.remove_suffix(name.ends_with('/') ? 1 : 0);
    struct stat64 status {};
    const long error = Look(std::string(name), false, &status);
    return error != 0 ? error : S_ISDIR(status.st_mode) ? -EPERM : -ENOTDIR;
}

long Paths::Unlink(const char* path) {
    if (const long error = calls_.Admit("unlink", path); error != 0) {
        return error;
    }
    if (Within(path, kMountPoint)) {
        return ChangeCard("unlink", path,
                          [](const std::string& host) { return SIM_REAL(unlink)(host.c_str()); });
    }
    struct stat64 status {};
    if (const long error = Look(path, false, &status); error != 0) {
        return error;
    }
    if (!Within(path, kSysfs)) {
        calls_.Unmodelled(std::string("unlink of ") + path);
    }
    return S_ISDIR(status.st_mode) ? -EISDIR : -EPERM;
}

long Paths::Rename(const char* from, const char* to) {
    if (const long error = calls_.Admit("rename", from); error != 0) {
        return error;
    }
    const bool card = calls_.board.card.mounted;
    if ((from == kMountPoint || to == kMountPoint) && card) {
        return -EBUSY;
    }
    if (Within(from, kMountPoint) && Within(to, kMountPoint)) {
        return ChangeCard("rename", from, [&](const std::string& host) {
            if (card && !FatTakes(to) && Mode(from) >= 0) {
                errno = EINVAL;
                return -1;
            }
            return SIM_REAL(rename)(host.c_str(), HostPath(to).c_str());
        });
    }
    const auto crosses = [&](std::string_view top) { return Within(from, top) != Within(to, top); };
    if (crosses(kSysfs) || crosses(kDevices) || (card && crosses(kMountPoint))) {
        return -EXDEV;
    }
    if (!Within(from, kSysfs)) {
        calls_.Unmodelled(std::string("rename of ") + from + " to " + to);
    }
    const SysfsNode node = tree_.Find(from);
    return node.Error() != 0 ? -node.Error() : std::string_view(from) == to ? 0 : -EPERM;
}

long Paths::Truncate(const char* path, std::int64_t length) {
    if (const long error = calls_.Admit("truncate", path); error != 0) {
        return error;
    }
    if (length < 0) {
        return -EINVAL;
    }
    const long mode = Mode(path);
    if (mode < 0) {
        return mode;
    }
    if (!S_ISREG(static_cast<unsigned>(mode))) {
        return S_ISDIR(static_cast<unsigned>(mode)) ? -EISDIR : -EINVAL;
    }
    if (!Within(path, kMountPoint)) {
        return 0; // an attribute keeps its size
    }
    CardSlot& card = calls_.board.card;
    if (card.mounted && !card.Healthy()) { // in the kernel's memory alone
        card.CutFile(HostPath(path), length);
        return 0;
    }
    return ChangeCard("truncate", path, [&](const std::string& host) {
        return SIM_REAL(truncate64)(host.c_str(), length);
    });
}

long Paths::ReadLink(const char* path) {
    if (const long error = calls_.Admit("readlink", path); error != 0) {
        return error;
    }
    struct stat64 status {};
    const long error = Look(path, false, &status);
    if (error == 0 && (S_ISLNK(status.st_mode) || path == kMountTable)) {
        calls_.Unmodelled(std::string("readlink of ") + path);
    }
    return error != 0 ? error : -EINVAL;
}

} // namespace sim
