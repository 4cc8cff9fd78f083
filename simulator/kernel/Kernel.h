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
    static bool owns(std::string_view path);
    bool owns(int descriptor) const { return files_.find(descriptor) != nullptr; }
    std::string pathOf(int descriptor) const { return files_.find(descriptor)->path(); }
    bool ownsMapping(const void* address) const { return mappings_.contains(address); }

    long open(const char* path, int flags, unsigned mode);
    /// Opens a stream; null with errno set when it fails.
    FILE* openStream(const char* path, const char* mode);
    long close(int descriptor);
    /// To be called before a stream is closed; true when it is a board file.
    long closeStream(FILE* stream);
    long read(int descriptor, void* buffer, std::size_t size);
    long write(int descriptor, const void* data, std::size_t size);
    long seek(int descriptor, std::int64_t offset, int whence);
    long control(int descriptor, unsigned long request, void* argument);
    /// Waits for an edge on one line: the number of descriptors with an event, 0 after the time-out
    /// in ms.
    long poll(pollfd* descriptors, std::size_t count, int timeout);
    long descriptorStatus(int descriptor, struct stat64* result);

    /// shared: stores reach the device, else they stay in the program's own copy.
    long map(int descriptor, std::size_t length, bool shared, std::int64_t offset, void** address);
    long unmap(void* address);

    long access(const char* path, int wanted);
    long status(const char* path, bool followLinks, struct stat64* result);
    long makeDirectory(const char* path, unsigned mode);
    long mount(const char* source, const char* target, const char* type, unsigned long flags,
               const void* data);
    long unmount(const char* target);
    /// What is known of the file system mounted at a directory; ENOENT for a directory without one.
    long fileSystemStatus(const char* path, struct statfs64* result);
    FILE* openMountTable(const char* path);
    /// Puts the board's own shell tools into a folder of the run, and gives its path.
    std::string writeTools() const;
    bool ownsMountTable(const FILE* table) const { return tables_.contains(table); }
    void closeMountTable(FILE* table);
    std::string mountTableText() const;

    /// Counts a call, lets it cost what it costs and tells how it is made to fail: 0 or a negated
    /// errno.
    long enter(std::string_view call, std::string_view path);

    SysfsTree& sysfs() { return sysfs_; }
    const std::map<std::string, std::uint64_t, std::less<>>& callCounts() const { return counts_; }
    /// Descriptors, mappings and mount tables that the program holds.
    std::size_t held() const { return files_.size() + mappings_.size() + tables_.size(); }
    /// Where the mounted card's files lie on this machine.
    std::string cardFolder() const { return root_ + "/card"; }
    std::string mountPointFolder() const { return root_ + "/rootfs/mnt/sd-card"; }

  private:
    long openFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long openDevice(const std::string& path, std::unique_ptr<OpenFile>& file);
    long openAttribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long openCardFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    std::string hostPath(std::string_view path) const;
    long hostStatus(const std::string& path, struct stat64* result) const;
    long waitForEdge(pollfd& waiting, const TextFile& value, int timeout);
    long cutShort(std::size_t& size);
    bool cardFilesOpen() const;

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
