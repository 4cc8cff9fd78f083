#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace sim {

/// The latest of many things, from one writer to readers in other processes, which never hold it
/// up.
template <typename Item, std::size_t Size>
class LiveRing {
  public:
    void Put(const Item* items, std::size_t count) {
        std::uint64_t end = count_.load(std::memory_order_relaxed);
        for (std::size_t i = 0; i < count; ++i, ++end) {
            items_[end % Size] = items[i];
        }
        count_.store(end, std::memory_order_release);
    }
    /// Appends what came since `seen` things had come, but at most the latest `most` (half of the
    /// ring or less), and counts them as seen. A writer that is faster than the copy wins.
    template <typename Items>
    void TakeSince(std::uint64_t& seen, std::size_t most, Items& taken) const {
        const std::uint64_t end = count_.load(std::memory_order_acquire);
        for (seen = std::max(seen, end > most ? end - most : 0); seen < end; ++seen) {
            taken.push_back(items_[seen % Size]);
        }
    }

  private:
    std::atomic<std::uint64_t> count_{0};
    std::array<Item, Size> items_{};
};

/// A figure and when it was: a reading in counts, a result.
struct LiveFigure {
    double seconds = 0.0; ///< of board time
    double value = 0.0;
};

/// What launcher and program share while a run is served: the program's side looks at `news`
/// whenever board time passes, and never waits for the launcher.
struct LiveLink {
    /// What the launcher wants.
    static constexpr std::uint32_t kState = 1;   ///< a new state text
    static constexpr std::uint32_t kCommand = 2; ///< the command carried out

    enum class Stage : std::uint32_t { Free, Posted, Taken, Done, Refused };

    std::atomic<std::uint32_t> news{0};

    std::atomic<std::uint32_t> published{0}; ///< states so far, times two; odd while one is written
    std::array<char, 16384> state{};         ///< the members of a JSON object, without its braces

    LiveRing<LiveFigure, 4096> readings;
    LiveRing<LiveFigure, 512> results;
    LiveRing<char, 1 << 16> console;

    /// The launcher goes from Free to Posted and, once it was answered or not taken, back to Free.
    std::atomic<Stage> stage{Stage::Free};
    std::array<char, 4096> command{}; ///< a word, or a table of a scenario without its moment
    std::array<char, 1024> refusal{}; ///< when Refused: why, in one line
    std::atomic<std::int64_t> at{0};  ///< when Done: board time at which it takes effect
};

/// A table of a scenario with its moment, which is a whole microsecond.
inline std::string WithMoment(const std::string& table, std::int64_t nanoseconds) {
    const std::string fraction = std::to_string(1'000'000 + nanoseconds / 1'000 % 1'000'000);
    return table + "at = " + std::to_string(nanoseconds / 1'000'000'000) + "." +
           fraction.substr(1) + "\n";
}

} // namespace sim
