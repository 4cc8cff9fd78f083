#pragma once

#include "simulator/board/Nanoseconds.h"

#include <optional>
#include <string>
#include <string_view>

namespace sim {

/// The board's real-time clock: runs with board time and can be set while it runs.
class WallClock {
  public:
    /// Saturday 2026-03-07 09:00:00 UTC.
    static constexpr std::int64_t kDefaultStart = 1'772'874'000;

    /// start: seconds since 1970 at the start of the run.
    explicit WallClock(std::int64_t start = kDefaultStart) : start_(Seconds(start)) {}

    Nanoseconds At(Nanoseconds now) const { return start_ + now; }
    void Jump(std::int64_t bySeconds) { start_ += Seconds(bySeconds); }

    /// Seconds since 1970 of "YYYY-MM-DD hh:mm:ss", taken as UTC; nothing for any other text.
    static std::optional<std::int64_t> Parse(std::string_view text);
    /// The same text of so many seconds; whatever the C library's own times can hold.
    static std::string Text(std::int64_t seconds);

  private:
    Nanoseconds start_;
};

} // namespace sim
