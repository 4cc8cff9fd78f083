#include "simulator/kernel/Kernel.h"

#include "simulator/kernel/CardFile.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sim {
namespace {

int FlagsOf(std::string_view mode) {
    const bool both = mode.find('+') != std::string_view::npos;
    if (mode.empty() || mode[0] == 'r') {
        return both ? O_RDWR : O_RDONLY;
    }
    const int access = both ? O_RDWR : O_WRONLY;
    return access | O_CREAT | (mode[0] == 'a' ? O_APPEND : O_TRUNC);
}

} // namespace

Kernel::Kernel(const KernelSetup& setup, const std::string& root, bool costs,
               const Machine& machine)
    : calls(setup.faults, costs, machine), tree(machine.board, setup.paths),
      mounts(setup.mounts, calls, tree, files_), mappings(calls), paths(root, calls, tree, mounts),
      edges_(calls) {}

long Kernel::Open(const char* path, int flags, unsigned mode) {
    std::unique_ptr<OpenFile> file;
    long error = calls.Admit("open", path);
    if (error == 0) {
        error = paths.Open(path, flags, file);
    }
    if (auto* card = dynamic_cast<CardFile*>(file.get()); card != nullptr) {
        error = card->OpenHost(flags, mode);
        calls.events.Add("open", path, Outcome(error));
    }
    return error != 0 ? error : files_.Add(std::move(file));
}

FILE* Kernel::OpenStream(const char* path, const char* mode) {
    std::unique_ptr<OpenFile> file;
    long error = calls.Admit("open", path);
    if (error == 0) {
        error = paths.Open(path, FlagsOf(mode), file);
    }
    if (error != 0) {
        errno = static_cast<int>(-error);
        return nullptr;
    }
    auto* card = dynamic_cast<CardFile*>(file.get());
    FILE* stream = real::fopen(card != nullptr ? card->HostPath().c_str() : "/dev/null", mode);
    if (card != nullptr) {
        calls.events.Add("open", path, stream == nullptr ? ErrnoName(errno) : "ok");
    }
    if (stream != nullptr) {
        if (card != nullptr) {
            card->BorrowHost(fileno(stream));
        }
        files_.AddAt(fileno(stream), std::move(file));
    }
    return stream;
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

long Kernel::CloseStream(FILE* stream) {
    const int descriptor = fileno(stream);
    return Owns(descriptor) ? Close(descriptor) : 0;
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
    const long count = file->Write(data, size);
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
    return SIM_REAL(ftruncate64)(file->HostDescriptor(), length) == 0 ? 0 : -errno;
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

} // namespace sim
