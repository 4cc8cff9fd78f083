#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/HostFolders.h"
#include "simulator/kernel/MountTable.h"
#include "simulator/kernel/OpenFile.h"
#include "simulator/kernel/SysfsTree.h"

#include <string>
#include <sys/stat.h>

namespace sim {

/// The calls that ask what stands at a path or behind a descriptor, and the one that makes a
/// directory. Results are 0 or a negated errno.
class PathCalls {
  public:
    PathCalls(Board& board, EventLog& events, Calls& calls, const SysfsTree& tree,
              const HostFolders& folders, const MountTable& table)
        : board_(board), events_(events), calls_(calls), tree_(tree), folders_(folders),
          table_(table) {}

    long Access(const char* path);
    long Status(const char* path, bool followLinks, struct stat64* result);
    long StatusOf(const OpenFile& file, struct stat64* result);
    long MakeDirectory(const char* path, unsigned mode);

  private:
    long StatusOutsideSysfs(const std::string& path, struct stat64* result) const;

    Board& board_;
    EventLog& events_;
    Calls& calls_;
    const SysfsTree& tree_;
    const HostFolders& folders_;
    const MountTable& table_;
};

} // namespace sim
