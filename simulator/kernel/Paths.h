#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/CardCache.h"
#include "simulator/kernel/MountTable.h"
#include "simulator/kernel/SpiFile.h"
#include "simulator/kernel/SysfsTree.h"

#include <memory>
#include <string>
#include <sys/stat.h>

namespace sim {

/// What stands at the board's paths: attributes, devices, the mount table and the files of the
/// card, which lie in folders of this machine. Results are 0 or a negated errno.
class Paths {
  public:
    /// root: the run's folder on this machine, in which those of the card's files are made.
    Paths(const std::string& root, Calls& calls, const SysfsTree& tree, const MountTable& mounts,
          CardCache& cache);

    /// Opens what stands there for a call that was let in, but a file of the card only on the
    /// board.
    long Open(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long Access(const char* path, int wanted);
    long Status(const char* path, bool followLinks, struct stat64* result);
    long StatusOf(const OpenFile& file, struct stat64* result);
    /// Type and permissions of what stands at a path.
    long Mode(const std::string& path) const;
    /// True for a link of the attribute tree.
    bool IsLink(const std::string& path) const;
    /// As Mode, but nothing stands at a path that is not the board's.
    long BoardMode(const char* path) const;

    long MakeDirectory(const char* path, unsigned mode);
    long RemoveDirectory(const char* path);
    long Unlink(const char* path);
    long Rename(const char* from, const char* to);
    long Truncate(const char* path, std::int64_t length);
    /// Only refusals: where the board's links lead is not modelled.
    long ReadLink(const char* path);

    /// Where the mounted card's files lie, and those below the mount point while none is mounted.
    std::string CardFolder() const { return root_ + "/card"; }
    std::string MountPointFolder() const;
    /// Where the board's own shell tools go.
    std::string ToolFolder() const { return root_ + "/bin"; }

  private:
    long OpenDevice(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long OpenAttribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long OpenCardFile(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    std::string HostPath(const std::string& path) const;
    /// 0 or the negated errno of making something new below the mount point.
    long CheckNew(const std::string& path) const;
    /// What stands at a path, without telling it.
    long Look(const std::string& path, bool followLinks, struct stat64* result) const;
    long LookAtCard(const std::string& host, struct stat64* result) const;
    long LookAtDevice(const std::string& path, struct stat64* result) const;
    /// Changes names or sizes on the card, or below the mount point while none is mounted.
    template <typename Change>
    long ChangeCard(const char* call, const char* path, Change change);

    std::string root_;
    Calls& calls_;
    const SysfsTree& tree_;
    const MountTable& mounts_;
    CardCache& cache_;
    SpiSettings spi_;
};

} // namespace sim
