#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/FileTable.h"
#include "simulator/kernel/SysfsTree.h"

#include <cstdio>
#include <set>
#include <string>
#include <vector>

struct statfs64;

namespace sim {

/// What statfs tells of the file system mounted at a directory.
struct FileSystem {
    std::string directory;
    std::int64_t blockSize = 4096;
    std::uint64_t blocks = 0;
    std::uint64_t freeBlocks = 0;
    std::uint64_t availableBlocks = 0;
};

/// What is mounted beside the board's own file systems and the card.
struct MountSetup {
    bool tablePresent = true;            ///< "/etc/mtab" exists
    std::vector<std::string> lines;      ///< before the card's own
    std::vector<FileSystem> fileSystems; ///< as statfs knows them
};

/// What a program asks to be mounted; source and type may be null.
struct MountRequest {
    const char* source;
    std::string target;
    const char* type;
    unsigned long flags;
    std::string options;
};

/// What is mounted, and the table that tells it. Results are 0 or a negated errno, unless said
/// otherwise.
class MountTable {
  public:
    MountTable(MountSetup setup, Calls& calls, const SysfsTree& tree, const FileTable& files)
        : setup_(std::move(setup)), calls_(calls), tree_(tree), files_(files) {}

    /// source, target: what stands at these paths, as its type and permissions or a negated errno.
    long Mount(const MountRequest& request, long source, long target);
    long Unmount(const std::string& path, long target);
    /// What is known of the file system that a path lies on; standing: what stands there, as above.
    long FileSystemStatus(const std::string& path, long standing, struct statfs64* result);

    bool Present() const { return setup_.tablePresent; }
    /// A stream of the table's text; null with errno set when it fails.
    FILE* Open(const char* path);
    bool Owns(const FILE* table) const { return open_.contains(table); }
    /// To be called before such a stream is closed.
    void Close(FILE* table);
    std::size_t OpenCount() const { return open_.size(); }
    std::string Text() const;
    /// The same in the form of /proc/self/mountinfo.
    std::string Information() const;
    /// Makes a folder with a shell's `mount` that shows the table.
    void WriteTools(const std::string& folder) const;

  private:
    long Remount(const MountRequest& request);
    long Bind(const MountRequest& request, long source, long target) const;
    void ShowFlags(unsigned long flags);
    long TryMount(const MountRequest& request, long source, long target);

    MountSetup setup_;
    std::string access_ = "rw,sync,relatime"; ///< of the mounted card
    Calls& calls_;
    const SysfsTree& tree_;
    const FileTable& files_;
    std::set<const FILE*> open_;
};

} // namespace sim
