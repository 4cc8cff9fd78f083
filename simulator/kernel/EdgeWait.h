#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/TextFile.h"

#include <poll.h>

namespace sim {

/// Waiting for news of one file: of a line's level, an edge; of another attribute, that it was
/// never read or is gone; of any other file, none.
class EdgeWait {
  public:
    explicit EdgeWait(Calls& calls) : calls_(calls) {}

    /// 1 when the file has an event, 0 after the time-out in ms, or a negated errno.
    long Poll(pollfd& waiting, OpenFile& file, int timeout);
    /// Has those who wait look again: a write may have moved a level.
    void LookAgain() { calls_.scheduler.Wake(this); }

  private:
    long Wait(pollfd& waiting, OpenFile& file, int timeout);
    bool HasNews(const TextFile& attribute) const;

    Calls& calls_;
};

} // namespace sim
