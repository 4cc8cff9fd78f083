#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace sim {

/// Lines on their way to the event log's file. It may lie in memory that outlives the program, so
/// that the last lines before a crash can still be handed on.
struct EventBuffer {
    static constexpr std::size_t kSize = 1 << 16;

    std::atomic<std::uint64_t> offset{0}; ///< where in the file the text goes
    std::atomic<std::uint32_t> used{0};
    std::array<char, kSize> text{};
};

} // namespace sim
