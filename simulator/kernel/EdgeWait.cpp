#include "simulator/kernel/EdgeWait.h"

namespace sim {

long EdgeWait::Poll(pollfd& waiting, OpenFile& file, int timeout) {
    if (const long error = calls_.Admit("poll", file.Path()); error != 0) {
        return error;
    }
    if (calls_.Cut()) {
        waiting.revents = POLLERR;
        return 1;
    }
    const long ready = Wait(waiting, file, timeout);
    calls_.events.Add("poll", file.Path(),
                      "for " + std::to_string(timeout) +
                          " ms: " + (ready > 0 ? "edge" : "time-out"));
    return ready;
}

bool EdgeWait::HasNews(const TextFile& attribute) const {
    return attribute.Gone() || !attribute.EverShown() ||
           (attribute.Line() &&
            attribute.SeenEdges() != calls_.board.lines.At(*attribute.Line()).edges);
}

long EdgeWait::Wait(pollfd& waiting, OpenFile& file, int timeout) {
    constexpr int always = POLLIN | POLLOUT | POLLRDNORM | POLLWRNORM;
    const TextFile* attribute = file.AsText();
    const Nanoseconds deadline =
        timeout < 0 ? kNever : calls_.timeline.Now() + Milliseconds(timeout);
    const std::string reason = attribute != nullptr && attribute->Line()
                                   ? "an edge on line " + Lines::Name(*attribute->Line())
                                   : "news of " + file.Path();
    for (;;) {
        const bool news = attribute != nullptr && HasNews(*attribute);
        const int ready = news ? always | POLLPRI | POLLERR : always;
        waiting.revents = static_cast<short>(ready & (waiting.events | POLLERR));
        if (waiting.revents != 0 || calls_.timeline.Now() >= deadline) {
            return waiting.revents != 0 ? 1 : 0;
        }
        calls_.timeline.Busy();
        calls_.timeline.SleepUntilNews(deadline, reason, this);
    }
}

} // namespace sim
