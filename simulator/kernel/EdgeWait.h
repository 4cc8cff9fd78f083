#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/TextFile.h"

#include <poll.h>

namespace sim {

/// Waiting for an edge on one line.
class EdgeWait {
  public:
    explicit EdgeWait(Calls& calls) : calls_(calls) {}

    /// 1 when the line's value has an event, 0 after the time-out in ms, or a negated errno.
    long Poll(pollfd& waiting, const TextFile& value, int timeout);
    /// Has those who wait look again: a write may have moved a level.
    void LookAgain() { calls_.scheduler.Wake(this); }

  private:
    long Wait(pollfd& waiting, const TextFile& value, int timeout);

    Calls& calls_;
};

} // namespace sim
