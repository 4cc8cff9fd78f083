// What the board answers to system calls on descriptors.

#include "simulator/interpose/SystemCall.h"
#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/uio.h>

namespace sim::answers {
namespace {

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

} // namespace

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

long DescriptorStatus(Trap& trap) {
    return trap.Board().DescriptorStatus(trap.Int(0), trap.As<struct stat64*>(1));
}

long DescriptorSpace(Trap& trap) {
    return trap.Board().FileSystemStatus(trap.Board().PathOf(trap.Int(0)).c_str(),
                                         trap.As<struct statfs64*>(1));
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

} // namespace sim::answers
