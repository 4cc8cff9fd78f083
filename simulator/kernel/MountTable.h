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

/// What is mounted, and the table that tells it. Results are 0 or a negated errno, unless said
/// otherwise.
class MountTable {
  public:
    MountTable(MountSetup setup, Calls& calls, const SysfsTree& tree, const FileTable& files)
        : setup_(std::move(setup)), calls_(calls), tree_(tree), files_(files) {}

    long Mount(const char* source, const char* target, const char* type, unsigned long flags,
               const void* data);
    long Unmount(const char* target);
    /// What is known of the file system mounted at a directory; ENOENT for a directory without one.
    long FileSystemStatus(const char* path, struct statfs64* result);

    bool Present() const { return setup_.tablePresent; }
    /// A stream of the table's text; null with errno set when it fails.
    FILE* Open(const char* path);
    bool Owns(const FILE* table) const { return open_.contains(table); }
    /// To be called before such a stream is closed.
    void Close(FILE* table);
    std::size_t OpenCount() const { return open_.size(); }
    std::string Text() const;
    /// Makes a folder with a shell's `mount` that shows the table.
    void WriteTools(const std::string& folder) const;

  private:
    MountSetup setup_;
    Calls& calls_;
    const SysfsTree& tree_;
    const FileTable& files_;
    std::set<const FILE*> open_;
};

} // namespace sim
