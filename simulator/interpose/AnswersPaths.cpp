// What the board answers to system calls on paths.

#include "simulator/interpose/SystemCall.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>

namespace sim::answers {
namespace {

long OpenPlace(Trap& trap, int flags, unsigned mode) {
    return trap.places[0].board ? trap.Board().Open(trap.Path(), flags, mode) : trap.Pass();
}

void Extend(const struct stat64& from, struct statx* result) {
    *result = {};
    result->stx_mask = STATX_BASIC_STATS;
    result->stx_blksize = static_cast<std::uint32_t>(from.st_blksize);
    result->stx_nlink = static_cast<std::uint32_t>(from.st_nlink);
    result->stx_uid = from.st_uid;
    result->stx_gid = from.st_gid;
    result->stx_mode = static_cast<std::uint16_t>(from.st_mode);
    result->stx_ino = from.st_ino;
    result->stx_size = static_cast<std::uint64_t>(from.st_size);
    result->stx_blocks = static_cast<std::uint64_t>(from.st_blocks);
    result->stx_mtime.tv_sec = from.st_mtim.tv_sec;
    result->stx_dev_major = major(from.st_dev);
    result->stx_dev_minor = minor(from.st_dev);
    result->stx_rdev_major = major(from.st_rdev);
    result->stx_rdev_minor = minor(from.st_rdev);
}

/// Of a path, or with an empty one of a descriptor.
long StatusOf(Trap& trap, int flags, struct stat64* result) {
    if (trap.places[0].path.empty()) {
        return (flags & AT_EMPTY_PATH) != 0 ? trap.Board().DescriptorStatus(trap.Folder(), result)
                                            : -ENOENT;
    }
    return trap.Board().paths.Status(trap.Path(), (flags & AT_SYMLINK_NOFOLLOW) == 0, result);
}

} // namespace

long Open(Trap& trap) {
    return OpenPlace(trap, trap.Int(1), trap.As<unsigned>(2));
}

long Create(Trap& trap) {
    return OpenPlace(trap, O_CREAT | O_WRONLY | O_TRUNC, trap.As<unsigned>(1));
}

long Status(Trap& trap) {
    return trap.Board().paths.Status(trap.Path(), true, trap.As<struct stat64*>(1));
}

long LinkStatus(Trap& trap) {
    return trap.Board().paths.Status(trap.Path(), false, trap.As<struct stat64*>(1));
}

long StatusAt(Trap& trap) {
    return StatusOf(trap, trap.Int(2), trap.As<struct stat64*>(1));
}

long ExtendedStatus(Trap& trap) {
    struct stat64 status {};
    const long error = StatusOf(trap, trap.Int(1), &status);
    if (error == 0) {
        Extend(status, trap.As<struct statx*>(3));
    }
    return error;
}

long Access(Trap& trap) {
    return trap.Board().paths.Access(trap.Path(), trap.Int(1));
}

long MakeDirectory(Trap& trap) {
    return trap.Board().paths.MakeDirectory(trap.Path(), trap.As<unsigned>(1));
}

long RemoveDirectory(Trap& trap) {
    return trap.Board().paths.RemoveDirectory(trap.Path());
}

long Unlink(Trap& trap) {
    return trap.Board().paths.Unlink(trap.Path());
}

long UnlinkAt(Trap& trap) {
    return (trap.Int(1) & AT_REMOVEDIR) != 0 ? RemoveDirectory(trap) : Unlink(trap);
}

long Rename(Trap& trap) {
    return trap.Board().paths.Rename(trap.Path(0), trap.Path(1));
}

long RenameWithFlags(Trap& trap) {
    return trap.arguments[4] == 0 ? Rename(trap) : -EINVAL;
}

long Truncate(Trap& trap) {
    return trap.Board().paths.Truncate(trap.Path(), trap.arguments[1]);
}

long ReadLink(Trap& trap) {
    return trap.Board().paths.ReadLink(trap.Path());
}

long Space(Trap& trap) {
    return trap.As<const char*>(0) == nullptr
               ? -EFAULT
               : trap.Board().FileSystemStatus(trap.Path(), trap.As<struct statfs64*>(1));
}

long Mount(Trap& trap) {
    const auto* options = trap.As<const char*>(4);
    return trap.Board().Mount({trap.As<const char*>(0), trap.Path(), trap.As<const char*>(2),
                               trap.As<unsigned long>(3), options != nullptr ? options : ""});
}

long Unmount(Trap& trap) {
    if (trap.Int(1) != 0) {
        trap.Refuse(" with flags");
    }
    return trap.Board().Unmount(trap.Path());
}

long ChangeFolder(Trap& trap) {
    const long mode = trap.places[0].board ? trap.Board().paths.Mode(trap.Path()) : 0;
    if (mode < 0) {
        return mode;
    }
    if (trap.places[0].board) {
        FolderOnBoard() = S_ISDIR(static_cast<unsigned>(mode)) ? trap.Path() : FolderOnBoard();
        return S_ISDIR(static_cast<unsigned>(mode)) ? 0 : -ENOTDIR;
    }
    const long error = trap.Pass();
    FolderOnBoard() = error == 0 ? "" : FolderOnBoard();
    return error;
}

long ChangeFolderTo(Trap& trap) {
    trap.places[0].board = !trap.onBoard.empty();
    trap.places[0].path = trap.onBoard;
    return ChangeFolder(trap);
}

long CurrentFolder(Trap& trap) {
    const std::string& folder = FolderOnBoard();
    if (folder.empty()) {
        return trap.Pass();
    }
    if (folder.size() >= trap.As<std::size_t>(1)) {
        return -ERANGE;
    }
    trap.As<char*>(0)[folder.copy(trap.As<char*>(0), folder.size())] = '\0';
    return static_cast<long>(folder.size()) + 1;
}

} // namespace sim::answers
