#include "simulator/time/Futexes.h"

#include <algorithm>
#include <cerrno>

namespace sim {
namespace {

std::uint32_t ValueOf(const std::uint32_t* word) {
    return __atomic_load_n(word, __ATOMIC_SEQ_CST);
}

} // namespace

long Futexes::Wait(const std::uint32_t* word, std::uint32_t expected, std::uint32_t bits,
                   Nanoseconds deadline, std::string_view reason) {
    if (bits == 0) {
        return -EINVAL;
    }
    if (ValueOf(word) != expected) {
        return -EAGAIN;
    }
    Scheduler::Thread& self = *ThreadSelf();
    self.channels = bits;
    const bool woken = scheduler_.SleepUntil(self, deadline, reason, word);
    self.channels = kAnyBit;
    return woken ? 0 : -ETIMEDOUT;
}

long Futexes::Wake(const std::uint32_t* word, int most, std::uint32_t bits) {
    if (bits == 0) {
        return -EINVAL;
    }
    const auto count = static_cast<std::size_t>(std::max(most, 1));
    return static_cast<long>(scheduler_.WakeSome(word, count, bits));
}

long Futexes::Requeue(const std::uint32_t* word, int mostWoken, const std::uint32_t* other,
                      int mostMoved, std::optional<std::uint32_t> expected) {
    if (mostWoken < 0 || mostMoved < 0) {
        return -EINVAL;
    }
    if (expected && ValueOf(word) != *expected) {
        return -EAGAIN;
    }
    const std::size_t woken = scheduler_.WakeSome(word, static_cast<std::size_t>(mostWoken));
    const std::size_t moved = scheduler_.Move(word, static_cast<std::size_t>(mostMoved), other);
    return static_cast<long>(woken + moved);
}

} // namespace sim
