#pragma once

#include "simulator/board/Board.h"
#include "simulator/kernel/CardFile.h"
#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/Faults.h"
#include "simulator/kernel/FileTable.h"
#include "simulator/kernel/SpiFile.h"
#include "simulator/kernel/SysfsTree.h"
#include "simulator/run/RunOptions.h"
#include "simulator/time/Timeline.h"

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>

struct pollfd;
struct statfs64;

namespace sim {

class TextFile;

/// The board's kernel: every call of the C library on a board path or descriptor, with the kernel's
/// results and side effects. Results are 0 or more, or a negated errno, unless said otherwise.
class Kernel {
  public:
    Kernel(const RunOptions& options, Board& board, EventLog& events, Faults& faults,
           Timeline& timeline, Scheduler& scheduler);

    /// Called for a call on a board path or descriptor that is not modelled. Must not return.
    std::function<void(const std::string&)> unmodelled;

    /// True for a path that belongs to the board.
    static bool Owns(std::string_view path);
    bool Owns(int descriptor) const { return files_.Find(descriptor) != nullptr; }
    std::string PathOf(int descriptor) const { return files_.Find(descriptor)->Path(); }
    bool OwnsMapping(const void* address) const { return mappings_.contains(address); }

    long Open(const char* path, int flags, unsigned mode);
    /// Opens a stream; null with errno set when it fails.
    FILE* OpenStream(const char* path, const char* mode);
    long Close(int descriptor);
    /// To be called before a stream is closed; true when it is a board file.
    long CloseStream(FILE* stream);
    long Read(int descriptor, void* buffer, std::size_t size);
    long Write(int descriptor, const void* data, std::size_t size);
    long Seek(int descriptor, std::int64_t offset, int whence);
    long Control(int descriptor, unsigned long request, void* argument);
    /// Waits for an edge on one line: the number of descriptors with an event, 0 after the time-out
    /// in ms.
    long Poll(pollfd* descriptors, std::size_t count, int timeout);
    long DescriptorStatus(int descriptor, struct stat64* result);

    /// shared: stores reach the device, else they stay in the program's own copy.
    long Map(int descriptor, std::size_t length, bool shared, std::int64_t offset, void** address);
    long Unmap(void* address);

    long Access(const char* path, int wanted);
    long Status(const char* path, bool followLinks, struct stat64* result);
    long MakeDirectory(const char* path, unsigned mode);
    long Mount(const char* source, const char* target, const char* type, unsigned long flags,
               const void* data);
    long Unmount(const char* target);
    /// What is known of the file system mounted at a directory; ENOENT for a directory without one.
    long FileSystemStatus(const char* path, struct statfs64* result);
    FILE* OpenMountTable(const char* path);
    /// Puts the board's own shell tools into a folder of the run, and gives its path.
    std::string WriteTools() const;
    bool OwnsMountTable(const FILE* table) const { return tables_.contains(table); }
    void CloseMountTable(FILE* table);
    std::string MountTableText() const;

    /// Counts a call, lets it cost what it costs and tells how it is made to fail: 0 or a negated
    /// errno.
    long Enter(std::string_view call, std::string_view path);

    SysfsTree& Sysfs() { return sysfs_; }
    const std::map<std::string, std::uint64_t, std::less<>>& CallCounts() const { return counts_; }
    /// Descriptors, mappings and mount tables that the program holds.
    std::size_t Held() const { return files_.Size() + mappings_.size() + tables_.size(); }
    /// Where the mounted card's files lie on this machine.
    std::string CardFolder() const { return root_ + "/card"; }
    std::string MountPointFolder() const { return root_ + "/rootfs/mnt/sd-card"; }

  private:
    long OpenPath(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long OpenDevice(const std::string& path, std::unique_ptr<OpenFile>& file);
    long OpenAttribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long OpenCardFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    std::string HostPath(std::string_view path) const;
    long HostStatus(const std::string& path, struct stat64* result) const;
    long WaitForEdge(pollfd& waiting, const TextFile& value, int timeout);
    long CutShort(std::size_t& size);
    bool CardFilesOpen() const;

    struct Mapping {
        std::size_t length = 0;
        bool shared = false;
    };

    std::string root_;
    bool boardPresent_;
    bool mountTableExists_;
    std::vector<std::string> mountTable_;
    std::vector<FileSystem> fileSystems_;
    bool costs_;
    Board& board_;
    EventLog& events_;
    Faults& faults_;
    Timeline& timeline_;
    Scheduler& scheduler_;
    SysfsTree sysfs_;
    SpiSettings spi_;
    FileTable files_;
    std::map<const void*, Mapping> mappings_;
    std::set<const FILE*> tables_;
    std::map<std::string, std::uint64_t, std::less<>> counts_;
    std::optional<std::uint64_t> cut_; ///< bytes that the read or write under way may move
};

} // namespace sim
