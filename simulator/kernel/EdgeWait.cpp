#include "simulator/kernel/EdgeWait.h"

#include <algorithm>

namespace sim {

long EdgeWait::Poll(pollfd& waiting, const TextFile& value, int timeout) {
    if (const long error = calls_.Admit("poll", value.Path()); error != 0) {
        return error;
    }
    if (calls_.Cut()) {
        waiting.revents = POLLERR;
        return 1;
    }
    const long ready = Wait(waiting, value, timeout);
    calls_.events.Add("poll", value.Path(),
                      "for " + std::to_string(timeout) +
                          " ms: " + (ready > 0 ? "edge" : "time-out"));
    return ready;
}

long EdgeWait::Wait(pollfd& waiting, const TextFile& value, int timeout) {
    constexpr int always = POLLIN | POLLOUT | POLLRDNORM | POLLWRNORM;
    const unsigned line = *value.Line();
    const Nanoseconds deadline =
        timeout < 0 ? kNever : calls_.timeline.Now() + Milliseconds(timeout);
    for (;;) {
        const bool fired = value.Gone() || value.SeenEdges() != calls_.board.lines.At(line).edges;
        const int ready = fired ? always | POLLPRI | POLLERR : always;
        waiting.revents = static_cast<short>(ready & (waiting.events | POLLERR));
        if (waiting.revents != 0 || calls_.timeline.Now() >= deadline) {
            return waiting.revents != 0 ? 1 : 0;
        }
        calls_.timeline.SleepUntil(std::min(deadline, calls_.board.NextEvent()),
                                   "an edge on line " + Lines::Name(line), this);
    }
}

} // namespace sim
