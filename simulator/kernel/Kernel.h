#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/CardCache.h"
#include "simulator/kernel/EdgeWait.h"
#include "simulator/kernel/FileTable.h"
#include "simulator/kernel/Mappings.h"
#include "simulator/kernel/MountTable.h"
#include "simulator/kernel/Paths.h"
#include "simulator/kernel/SysfsTree.h"

#include <string>
#include <string_view>

namespace sim {

/// What sets the kernel of one run apart from that of another.
struct KernelSetup {
    PathChanges paths;
    MountSetup mounts;
    std::vector<Fault> faults;
};

/// The board's kernel: every call of the C library on a board path or descriptor, with the kernel's
/// results and side effects. Its parts answer what needs no descriptor, it answers the rest itself.
/// Results are 0 or more, or a negated errno, unless said otherwise.
class Kernel {
  public:
    /// root: the run's folder on this machine. costs: calls take board time.
    Kernel(const KernelSetup& setup, const std::string& root, bool costs, const Machine& machine);

    /// True for a descriptor that belongs to the board; the calls below take no other.
    bool Owns(int descriptor) const { return files_.Find(descriptor) != nullptr; }
    std::string PathOf(int descriptor) const { return files_.Find(descriptor)->Path(); }

    long Open(const char* path, int flags, unsigned mode);
    long Close(int descriptor);
    /// A second number, the lowest free one from some number on or a certain one, for what a
    /// descriptor stands for.
    long Duplicate(int descriptor, int least);
    long DuplicateTo(int descriptor, int wanted);
    /// What fcntl does with a descriptor.
    long DescriptorControl(int descriptor, int command, long argument);
    /// As many of a directory's entries as there is room for, as getdents64 gives them: how many
    /// bytes they take.
    long Entries(int descriptor, void* buffer, std::size_t size);
    /// The program's other descriptors are about to change.
    void OtherDescriptorsChange() { files_.GiveBack(); }
    /// The program puts another file at a number.
    void Replaced(int descriptor) {
        files_.Remove(descriptor);
        files_.GiveBack();
    }
    long Read(int descriptor, void* buffer, std::size_t size);
    long Write(int descriptor, const void* data, std::size_t size);
    long Seek(int descriptor, std::int64_t offset, int whence);
    /// The same at an offset, which the descriptor's own place does not follow.
    long ReadAt(int descriptor, void* buffer, std::size_t size, std::int64_t offset);
    long WriteAt(int descriptor, const void* data, std::size_t size, std::int64_t offset);
    long Resize(int descriptor, std::int64_t length);
    /// What was written to a file is on the card when this returns.
    long Synchronise(int descriptor);
    long Control(int descriptor, unsigned long request, void* argument);
    /// Waits for news of one descriptor: the number of those with an event, 0 after the time-out in
    /// ms.
    long Poll(pollfd* descriptors, std::size_t count, int timeout);
    long Mount(const MountRequest& request);
    long Unmount(const std::string& target);
    long FileSystemStatus(const char* path, struct statfs64* result) {
        return mounts.FileSystemStatus(path, paths.BoardMode(path), result);
    }
    long DescriptorStatus(int descriptor, struct stat64* result) {
        return paths.StatusOf(*files_.Find(descriptor), result);
    }
    /// As Mappings::Map, of a descriptor.
    long Map(int descriptor, std::size_t length, int protection, int flags, std::int64_t offset,
             void** address) {
        return mappings.Map(*files_.Find(descriptor), length, protection, flags, offset, address);
    }

    /// Descriptors, mappings and mount tables that the program holds.
    std::size_t Held() const { return files_.Size() + mappings.Count() + mounts.OpenCount(); }

    Calls calls;
    SysfsTree tree;
    MountTable mounts;
    Mappings mappings;
    CardCache cache;
    Paths paths;

  private:
    template <typename Move>
    long AtOffset(int descriptor, std::int64_t offset, Move move);

    FileTable files_;
    EdgeWait edges_;
};

} // namespace sim
