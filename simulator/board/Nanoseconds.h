#pragma once

#include <cstdint>
#include <limits>

namespace sim {

/// Board time and spans of it, in nanoseconds since the start of the run.
using Nanoseconds = std::int64_t;

/// Later than everything: no such moment is known.
inline constexpr Nanoseconds kNever = std::numeric_limits<Nanoseconds>::max();

constexpr Nanoseconds Microseconds(std::int64_t count) {
    return count * 1'000;
}
constexpr Nanoseconds Milliseconds(std::int64_t count) {
    return count * 1'000'000;
}
constexpr Nanoseconds Seconds(std::int64_t count) {
    return count * 1'000'000'000;
}

} // namespace sim
