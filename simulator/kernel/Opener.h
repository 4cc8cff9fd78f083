#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/HostFolders.h"
#include "simulator/kernel/SpiFile.h"
#include "simulator/kernel/SysfsTree.h"

#include <memory>
#include <string>

namespace sim {

/// Opens what stands at a path of the board: an attribute, a device or a file of the card. Results
/// are 0 and the file, or a negated errno.
class Opener {
  public:
    Opener(Board& board, EventLog& events, const Calls& calls, const SysfsTree& tree,
           const HostFolders& folders)
        : board_(board), events_(events), calls_(calls), tree_(tree), folders_(folders) {}

    long Open(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);

  private:
    long Device(const std::string& path, std::unique_ptr<OpenFile>& file);
    long Attribute(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);
    long FileOfCard(const std::string& path, int flags, std::unique_ptr<OpenFile>& file);

    Board& board_;
    EventLog& events_;
    const Calls& calls_;
    const SysfsTree& tree_;
    const HostFolders& folders_;
    SpiSettings spi_;
};

} // namespace sim
