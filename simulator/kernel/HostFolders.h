#pragma once

#include "simulator/board/CardSlot.h"

#include <string>
#include <string_view>

namespace sim {

/// Where on this machine the files lie that the board has on its card or below its mount point.
class HostFolders {
  public:
    /// Makes the folders below the run's root.
    HostFolders(const std::string& root, const CardSlot& card);

    /// Of the mounted card's files.
    std::string Card() const { return root_ + "/card"; }
    /// Of the files that lie below the mount point while no card is mounted.
    std::string MountPoint() const;
    /// Of the board's own shell tools.
    std::string Tools() const { return root_ + "/bin"; }
    /// Where a path at or below the mount point leads now.
    std::string Of(std::string_view path) const;

  private:
    std::string root_;
    const CardSlot& card_;
};

} // namespace sim
