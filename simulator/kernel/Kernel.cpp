#include "simulator/kernel/Kernel.h"

#include "simulator/kernel/CardFile.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace sim {
Kernel::Kernel(const KernelSetup& setup, const std::string& root, bool costs,
               const Machine& machine)
    : calls(setup.faults, costs, machine), tree(machine.board, setup.paths),
      mounts(setup.mounts, calls, tree, files_), mappings(calls),
      cache(root + "/card", machine.board), paths(root, calls, tree, mounts, cache), edges_(calls) {
}

long Kernel::Open(const char* path, int flags, unsigned mode) {
    if (const long error = calls.Admit("open", path); error != 0) {
        return error;
    }
    const int number = files_.Reserve();
    if (number < 0) {
        return number;
    }
    std::unique_ptr<OpenFile> file;
    long error = paths.Open(path, flags, file);
    if (auto* card = dynamic_cast<CardFile*>(file.get()); card != nullptr) {
        if (card->OnCard() && (flags & (O_CREAT | O_TRUNC)) != 0) {
            cache.BeforeChange();
        }
        error = card->OpenHost(flags, mode);
        calls.events.Add("open", path, Outcome(error));
    }
    if (error != 0) {
        files_.Free(number);
        return error;
    }
    files_.Put(number, std::move(file));
    return number;
}

long Kernel::Close(int descriptor) {
    const OpenFile* file = files_.Find(descriptor);
    const long error = calls.Admit("close", file->Path());
    if (file->OfCard() && error == 0) {
        calls.events.Add("close", file->Path(), "ok");
    }
    files_.Remove(descriptor);
    return error;
}

long Kernel::Duplicate(int descriptor, int least) {
    const int number = files_.Reserve(least);
    if (number >= 0) {
        files_.Put(number, files_.Share(descriptor));
    }
    return number;
}

long Kernel::DuplicateTo(int descriptor, int wanted) {
    if (descriptor == wanted) {
        return wanted;
    }
    const std::shared_ptr<OpenFile> file = files_.Share(descriptor);
    if (const int error = files_.ReserveAt(wanted); error != 0) {
        return error;
    }
    files_.Put(wanted, file);
    return wanted;
}

long Kernel::DescriptorControl(int descriptor, int command, long argument) {
    OpenFile* file = files_.Find(descriptor);
    switch (command) {
    case F_DUPFD:
    case F_DUPFD_CLOEXEC:
        return Duplicate(descriptor, static_cast<int>(argument));
    case F_GETFD:
    case F_SETFD:
        return SIM_REAL(fcntl64)(descriptor, command, argument) < 0 ? -errno : 0;
    case F_GETFL:
        return file->Flags() & ~(O_CREAT | O_EXCL | O_TRUNC | O_NOCTTY | O_CLOEXEC);
    case F_SETFL:
        file->OpenedWith((file->Flags() & O_ACCMODE) | static_cast<int>(argument));
        return 0;
    default:
        calls.Unmodelled("command " + std::to_string(command) + " of fcntl on " + file->Path());
    }
}

long Kernel::Read(int descriptor, void* buffer, std::size_t size) {
    OpenFile* file = files_.Find(descriptor);
    if (const long error = calls.Admit("read", file->Path()); error != 0) {
        return error;
    }
    if (!file->Readable()) {
        return -EBADF;
    }
    size = calls.Allowed(size);
    TextFile* level = file->AsText();
    if (level == nullptr || !level->Line()) {
        return file->Read(buffer, size);
    }
    calls.timeline.PollsLine(*level->Line());
    const long count = file->Read(buffer, size);
    if (level->ShownAnew()) {
        calls.timeline.LineRead(*level->Line(),
                                count > 0 && static_cast<const char*>(buffer)[0] == '1');
        level->SawEdges(calls.board.lines.At(*level->Line()).edges);
    }
    return count;
}

long Kernel::Write(int descriptor, const void* data, std::size_t size) {
    OpenFile* file = files_.Find(descriptor);
    if (const long error = calls.Admit("write", file->Path()); error != 0) {
        return error;
    }
    if (!file->Writable()) {
        return -EBADF;
    }
    calls.timeline.Busy();
    size = calls.Allowed(size);
    if (file->OfCard()) {
        calls.Spend("card write");
    }
    if (file->OnCard()) {
        cache.BeforeChange();
    }
    const long count = file->Write(data, size);
    if (file->OnCard() && file->Synchronous()) {
        cache.Save(static_cast<const CardFile*>(file)->HostPath());
    }
    edges_.LookAgain();
    return count;
}

long Kernel::Seek(int descriptor, std::int64_t offset, int whence) {
    OpenFile* file = files_.Find(descriptor);
    const long error = calls.Admit("lseek", file->Path());
    return error != 0 ? error : file->Seek(offset, whence);
}

template <typename Move>
long Kernel::AtOffset(int descriptor, std::int64_t offset, Move move) {
    OpenFile* file = files_.Find(descriptor);
    if (offset < 0) {
        return -EINVAL;
    }
    const long before = file->Seek(0, SEEK_CUR);
    if (before < 0) {
        return before;
    }
    file->Seek(offset, SEEK_SET);
    const long moved = move();
    file->Seek(before, SEEK_SET);
    return moved;
}

long Kernel::ReadAt(int descriptor, void* buffer, std::size_t size, std::int64_t offset) {
    return AtOffset(descriptor, offset, [&] { return Read(descriptor, buffer, size); });
}

long Kernel::WriteAt(int descriptor, const void* data, std::size_t size, std::int64_t offset) {
    return AtOffset(descriptor, offset, [&] { return Write(descriptor, data, size); });
}

long Kernel::Resize(int descriptor, std::int64_t length) {
    const OpenFile* file = files_.Find(descriptor);
    if (const long error = calls.Admit("ftruncate", file->Path()); error != 0) {
        return error;
    }
    if (length < 0 || !S_ISREG(file->Mode()) || !file->Writable()) {
        return -EINVAL;
    }
    if (file->HostDescriptor() < 0) {
        return 0; // an attribute keeps its size
    }
    if (file->OnCard() && !calls.board.card.Healthy()) {
        return paths.Truncate(file->Path().c_str(), length);
    }
    if (file->OnCard()) {
        cache.BeforeChange();
    }
    return SIM_REAL(ftruncate64)(file->HostDescriptor(), length) == 0 ? 0 : -errno;
}

long Kernel::Synchronise(int descriptor) {
    const OpenFile* file = files_.Find(descriptor);
    if (const long error = calls.Admit("fsync", file->Path()); error != 0) {
        return error;
    }
    const bool card = file->OnCard();
    if (!card && !S_ISREG(file->Mode())) {
        return -EINVAL;
    }
    if (card && !calls.board.card.Healthy()) {
        return -EIO;
    }
    if (card && S_ISREG(file->Mode())) {
        cache.Save(static_cast<const CardFile*>(file)->HostPath());
    }
    return 0;
}

long Kernel::Mount(const MountRequest& request) {
    const long error = mounts.Mount(request, paths.BoardMode(request.source),
                                    paths.BoardMode(request.target.c_str()));
    if (error == 0 && calls.board.card.Healthy()) {
        cache.SaveAll(); // of one that is mounted anew with other flags
    }
    return error;
}

long Kernel::Unmount(const std::string& target) {
    const bool healthy = calls.board.card.Healthy();
    const long error = mounts.Unmount(target, paths.Mode(target));
    if (error == 0) {
        healthy ? cache.SaveAll() : cache.Lose();
    }
    return error;
}

long Kernel::Control(int descriptor, unsigned long request, void* argument) {
    OpenFile* file = files_.Find(descriptor);
    if (const long error = calls.Admit("ioctl", file->Path()); error != 0) {
        return error;
    }
    calls.timeline.Busy();
    return file->Control(request, argument);
}

long Kernel::Poll(pollfd* descriptors, std::size_t count, int timeout) {
    if (count != 1) {
        calls.Unmodelled("poll of more than one file");
    }
    return edges_.Poll(descriptors[0], *files_.Find(descriptors[0].fd), timeout);
}

long Kernel::Entries(int descriptor, void* buffer, std::size_t size) {
    OpenFile* file = files_.Find(descriptor);
    if (const long error = calls.Admit("getdents", file->Path()); error != 0) {
        return error;
    }
    if (file->OnCard() && calls.board.card.Gone()) {
        return 0;
    }
    if (file->HostDescriptor() >= 0) {
        const long moved = syscall(SYS_getdents64, file->HostDescriptor(), buffer, size);
        return moved < 0 ? -errno : moved;
    }
    if (!S_ISDIR(file->Mode())) {
        return -ENOTDIR;
    }
    std::vector<std::string> names = tree.Names(file->Path());
    names.insert(names.begin(), {".", ".."});
    std::size_t moved = 0;
    long place = file->Seek(0, SEEK_CUR);
    for (; static_cast<std::size_t>(place) < names.size(); ++place) {
        const std::string& name = names[static_cast<std::size_t>(place)];
        constexpr std::size_t before = offsetof(dirent64, d_name);
        const std::size_t length = (before + name.size() + 1 + 7) / 8 * 8;
        if (moved + length > size) {
            break;
        }
        dirent64 entry{};
        entry.d_ino = static_cast<ino64_t>(place) + 1;
        entry.d_off = place + 1;
        entry.d_reclen = static_cast<unsigned short>(length);
        entry.d_type = DT_UNKNOWN;
        std::memcpy(entry.d_name, name.c_str(), name.size() + 1);
        std::memcpy(static_cast<char*>(buffer) + moved, &entry, length);
        moved += length;
    }
    if (moved == 0 && static_cast<std::size_t>(place) < names.size()) {
        return -EINVAL;
    }
    file->Seek(place, SEEK_SET);
    return static_cast<long>(moved);
}

} // namespace sim
