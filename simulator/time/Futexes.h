#pragma once

#include "simulator/time/Scheduler.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace sim {

/// The kernel's futexes in board time: words of the program's memory that threads wait on, woken in
/// order of arrival. Counts and negated errnos are the kernel's; all calls are the running
/// thread's.
class Futexes {
  public:
    static constexpr std::uint32_t kAnyBit = ~0U;

    explicit Futexes(Scheduler& scheduler) : scheduler_(scheduler) {}

    /// Waits while the word holds the expected value: 0 when woken with one of the bits, -EAGAIN
    /// when it holds another, -ETIMEDOUT at the deadline, -EINVAL without a bit. The reason names
    /// the wait in a deadlock.
    long Wait(const std::uint32_t* word, std::uint32_t expected, std::uint32_t bits,
              Nanoseconds deadline, std::string_view reason);
    /// Wakes so many who wait with one of the bits, at least one as the kernel does; how many.
    long Wake(const std::uint32_t* word, int most, std::uint32_t bits = kAnyBit);
    /// Wakes so many and has so many others wait for the other word; how many of both. -EAGAIN
    /// when the word does not hold the expected value, if there is one; -EINVAL below zero.
    long Requeue(const std::uint32_t* word, int mostWoken, const std::uint32_t* other,
                 int mostMoved, std::optional<std::uint32_t> expected = std::nullopt);

  private:
    Scheduler& scheduler_;
};

} // namespace sim
