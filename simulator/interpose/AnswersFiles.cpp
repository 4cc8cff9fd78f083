// What the board answers to system calls on its files.

#include "simulator/interpose/SystemCall.h"
#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace sim::answers {
namespace {

long OpenPlace(Trap& trap, int flags, unsigned mode) {
    return trap.places[0].board ? trap.Board().Open(trap.Path(), flags, mode) : trap.Pass();
}

bool Owns(const Trap& trap, std::size_t argument = 0) {
    return trap.Board().Owns(trap.Int(argument));
}

/// True for a call that would stand still on a pipe, a socket or their like: its other end may be
/// another thread's, which stands still too.
bool WouldWait(const Trap& trap, short events) {
    struct stat64 status {};
    pollfd one{trap.Int(0), events, 0};
    return trap.simulation.scheduler.Alive() > 1 &&
           Trap::Pass(SYS_fstat, {trap.Int(0), reinterpret_cast<long>(&status)}) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) ||
            (status.st_mode & S_IFMT) == 0) &&
           Trap::Pass(SYS_poll, {reinterpret_cast<long>(&one), 1, 0}) == 0;
}

long PassUnlessItWaits(const Trap& trap, short events) {
    if (WouldWait(trap, events)) {
        trap.Refuse(", which waits for another thread by way of this machine");
    }
    return trap.Pass();
}

/// The board's answer to each piece of a reading or writing, one after the other.
template <typename Move>
long EachPiece(Trap& trap, Move move) {
    const auto* pieces = trap.As<const iovec*>(1);
    long moved = 0;
    for (long i = 0; i < trap.arguments[2]; ++i) {
        const long now = move(pieces[i].iov_base, pieces[i].iov_len);
        if (now < 0) {
            return moved > 0 ? moved : now;
        }
        moved += now;
        if (static_cast<std::size_t>(now) < pieces[i].iov_len) {
            break;
        }
    }
    return moved;
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

long Close(Trap& trap) {
    if (real::IsOwn(trap.Int(0))) {
        return -EBADF;
    }
    return Owns(trap) ? trap.Board().Close(trap.Int(0)) : trap.Pass();
}

long CloseRange(Trap& trap) {
    constexpr long most = 1024;
    trap.Board().OtherDescriptorsChange();
    for (long number = trap.arguments[0]; number <= std::min(trap.arguments[1], most); ++number) {
        const int descriptor = static_cast<int>(number);
        if (trap.Board().Owns(descriptor)) {
            trap.Board().Close(descriptor);
        } else if (!real::IsOwn(descriptor)) {
            Trap::Pass(SYS_close, {number});
        }
    }
    return 0;
}

long Duplicate(Trap& trap) {
    return trap.Board().Duplicate(trap.Int(0), 0);
}

long DuplicateTo(Trap& trap) {
    const int wanted = trap.Int(1);
    if (Owns(trap)) {
        return trap.Board().DuplicateTo(trap.Int(0), wanted);
    }
    if (real::IsOwn(trap.Int(0)) || real::IsOwn(wanted)) {
        return -EBADF;
    }
    if (trap.Board().Owns(wanted)) {
        trap.Board().Replaced(wanted);
    }
    return trap.Pass();
}

long Control(Trap& trap) {
    return trap.Board().DescriptorControl(trap.Int(0), trap.Int(1), trap.arguments[2]);
}

long Read(Trap& trap) {
    return Owns(trap) ? trap.Board().Read(trap.Int(0), trap.As<void*>(1), trap.As<std::size_t>(2))
                      : PassUnlessItWaits(trap, POLLIN);
}

long Write(Trap& trap) {
    return Owns(trap) ? trap.Board().Write(trap.Int(0), trap.As<void*>(1), trap.As<std::size_t>(2))
                      : PassUnlessItWaits(trap, POLLOUT);
}

long ReadPieces(Trap& trap) {
    return !Owns(trap) ? PassUnlessItWaits(trap, POLLIN)
                       : EachPiece(trap, [&](void* piece, std::size_t size) {
                             return trap.Board().Read(trap.Int(0), piece, size);
                         });
}

long WritePieces(Trap& trap) {
    if (!Owns(trap)) {
        return PassUnlessItWaits(trap, POLLOUT);
    }
    std::string whole; // one call, one store
    EachPiece(trap, [&](void* piece, std::size_t size) {
        whole.append(static_cast<const char*>(piece), size);
        return static_cast<long>(size);
    });
    return trap.Board().Write(trap.Int(0), whole.data(), whole.size());
}

long ReadAt(Trap& trap) {
    return trap.Board().ReadAt(trap.Int(0), trap.As<void*>(1), trap.As<std::size_t>(2),
                               trap.arguments[3]);
}
long WriteAt(Trap& trap) {
    return trap.Board().WriteAt(trap.Int(0), trap.As<void*>(1), trap.As<std::size_t>(2),
                                trap.arguments[3]);
}
long Seek(Trap& trap) {
    return trap.Board().Seek(trap.Int(0), trap.arguments[1], trap.Int(2));
}
long Ioctl(Trap& trap) {
    return trap.Board().Control(trap.Int(0), trap.As<unsigned long>(1), trap.As<void*>(2));
}
long Resize(Trap& trap) {
    return trap.Board().Resize(trap.Int(0), trap.arguments[1]);
}
long Synchronise(Trap& trap) {
    return trap.Board().Synchronise(trap.Int(0));
}
long Entries(Trap& trap) {
    return trap.Board().Entries(trap.Int(0), trap.As<void*>(1), trap.As<std::size_t>(2));
}

long Map(Trap& trap) {
    void* address = nullptr;
    const long error = trap.Board().Map(trap.Int(4), trap.As<std::size_t>(1), trap.Int(2),
                                        trap.Int(3), trap.arguments[5], &address);
    return error != 0 ? error : reinterpret_cast<long>(address);
}
long Unmap(Trap& trap) {
    Mappings& mappings = trap.Board().mappings;
    return mappings.Owns(trap.As<void*>(0)) ? mappings.Unmap(trap.As<void*>(0)) : trap.Pass();
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
long DescriptorStatus(Trap& trap) {
    return trap.Board().DescriptorStatus(trap.Int(0), trap.As<struct stat64*>(1));
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
long DescriptorSpace(Trap& trap) {
    return trap.Board().FileSystemStatus(trap.Board().PathOf(trap.Int(0)).c_str(),
                                         trap.As<struct statfs64*>(1));
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
    trap.places[0].board = Owns(trap);
    trap.places[0].path = Owns(trap) ? trap.Board().PathOf(trap.Int(0)) : "";
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
