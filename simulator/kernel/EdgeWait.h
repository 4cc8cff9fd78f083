#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/TextFile.h"

#include <poll.h>

namespace sim {

/// Waiting for an edge on one line.
class EdgeWait {
  public:
    EdgeWait(Board& board, EventLog& events, Calls& calls, Timeline& timeline, Scheduler& scheduler)
        : board_(board), events_(events), calls_(calls), timeline_(timeline),
          scheduler_(scheduler) {}

    /// 1 when the line's value has an event, 0 after the time-out in ms, or a negated errno.
    long Poll(pollfd& waiting, const TextFile& value, int timeout);
    /// Has those who wait look again: a write may have moved a level.
    void LookAgain() { scheduler_.Wake(this); }

  private:
    long Wait(pollfd& waiting, const TextFile& value, int timeout);

    Board& board_;
    EventLog& events_;
    Calls& calls_;
    Timeline& timeline_;
    Scheduler& scheduler_;
};

} // namespace sim
