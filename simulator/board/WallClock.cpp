#include "simulator/board/WallClock.h"

#include <chrono>
#include <cstdio>
#include <string>

namespace sim {

std::optional<std::int64_t> WallClock::parse(std::string_view text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int end = 0;
    const std::string copy(text);
    const int fields = std::sscanf(copy.c_str(), "%4d-%2u-%2u %2d:%2d:%2d%n", &year, &month, &day,
                                   &hour, &minute, &second, &end);
    const auto date = std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day};
    if (fields != 6 || copy.size() != 19 || end != 19 || !date.ok() || hour < 0 || hour > 23 ||
        minute < 0 || minute > 59 || second < 0 || second > 59 || year < 1970) {
        return std::nullopt;
    }
    const auto days = std::chrono::sys_days{date}.time_since_epoch().count();
    return static_cast<std::int64_t>(days) * 86'400 + std::int64_t{hour} * 3'600 +
           std::int64_t{minute} * 60 + second;
}

} // namespace sim
