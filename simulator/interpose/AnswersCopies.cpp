// What the board answers to programs that copy and list files, besides reading and writing them.

#include "simulator/board/BoardPaths.h"
#include "simulator/interpose/SystemCall.h"

#include <algorithm>
#include <cerrno>
#include <sys/syscall.h>
#include <vector>

namespace sim::answers {
namespace {

/// One piece from a file to another, either of them the board's or this machine's; from its place,
/// or from an offset, which goes on.
long Copy(const Trap& trap, int from, int to, std::size_t most, long* offset = nullptr) {
    std::vector<char> piece(std::min<std::size_t>(most, 1U << 16U));
    const auto data = reinterpret_cast<long>(piece.data());
    Kernel& board = trap.Board();
    const auto size = static_cast<long>(piece.size());
    long moved = !board.Owns(from) ? Trap::Pass(offset != nullptr ? SYS_pread64 : SYS_read,
                                                {from, data, size, offset != nullptr ? *offset : 0})
                 : offset != nullptr ? board.ReadAt(from, piece.data(), piece.size(), *offset)
                                     : board.Read(from, piece.data(), piece.size());
    if (moved > 0) {
        moved = board.Owns(to) ? board.Write(to, piece.data(), static_cast<std::size_t>(moved))
                               : Trap::Pass(SYS_write, {to, data, moved});
    }
    if (moved > 0 && offset != nullptr) {
        *offset += moved;
    }
    return moved;
}

bool OnCard(const Trap& trap, int descriptor) {
    return trap.Board().Owns(descriptor) && Within(trap.Board().PathOf(descriptor), kMountPoint);
}

} // namespace

long CopyRange(Trap& trap) {
    if (!OnCard(trap, trap.Int(0)) || !OnCard(trap, trap.Int(2))) {
        return -EXDEV; // no copying from one file system to another
    }
    if (trap.arguments[1] != 0 || trap.arguments[3] != 0) {
        trap.Refuse(" from or to an offset");
    }
    return Copy(trap, trap.Int(0), trap.Int(2), trap.As<std::size_t>(4));
}

long SendFile(Trap& trap) {
    if (trap.simulation.scheduler.Alive() > 1) {
        trap.Refuse(" of a program with threads");
    }
    return Copy(trap, trap.Int(1), trap.Int(0), trap.As<std::size_t>(3), trap.As<long*>(2));
}

long Advise(Trap& trap) {
    constexpr int mostAdvice = 5; // POSIX_FADV_NOREUSE
    return trap.Int(3) < 0 || trap.Int(3) > mostAdvice ? -EINVAL : 0;
}

long Label(Trap& trap) {
    const long mode = trap.Board().paths.Mode(trap.Path());
    const std::string_view name(trap.As<const char*>(1));
    const bool known = Within(trap.Path(), kSysfs) && !name.starts_with("system.");
    return mode < 0 ? mode : known ? -ENODATA : -EOPNOTSUPP;
}

long SetTimes(Trap& trap) {
    const bool descriptors = trap.arguments[1] == 0 && trap.Board().Owns(trap.Folder());
    if (descriptors || trap.places[0].board) {
        trap.Refuse(descriptors ? " of " + trap.Board().PathOf(trap.Folder()) : "");
    }
    return trap.Pass();
}

} // namespace sim::answers
