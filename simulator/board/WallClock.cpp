#include "simulator/board/WallClock.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <string_view>

namespace sim {
namespace {

constexpr std::string_view kForm = "0000-00-00 00:00:00"; // 0 stands for any digit

bool HasForm(std::string_view text) {
    if (text.size() != kForm.size()) {
        return false;
    }
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] == '0' ? !digit : text[i] != kForm[i]) {
            return false;
        }
    }
    return true;
}

int NumberAt(std::string_view text, std::size_t begin, std::size_t length) {
    int number = 0;
    std::from_chars(text.data() + begin, text.data() + begin + length, number);
    return number;
}

} // namespace

std::optional<std::int64_t> WallClock::Parse(std::string_view text) {
    if (!HasForm(text)) {
        return std::nullopt;
    }
    const auto date = std::chrono::year{NumberAt(text, 0, 4)} /
                      std::chrono::month{static_cast<unsigned>(NumberAt(text, 5, 2))} /
                      std::chrono::day{static_cast<unsigned>(NumberAt(text, 8, 2))};
    const std::int64_t hour = NumberAt(text, 11, 2);
    const std::int64_t minute = NumberAt(text, 14, 2);
    const std::int64_t second = NumberAt(text, 17, 2);
    if (!date.ok() || date.year() < std::chrono::year{1970} || hour > 23 || minute > 59 ||
        second > 59) {
        return std::nullopt;
    }
    const std::int64_t days = std::chrono::sys_days{date}.time_since_epoch().count();
    return days * 86'400 + hour * 3'600 + minute * 60 + second;
}

std::string WallClock::Text(std::int64_t seconds) {
    const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const auto second = static_cast<int>((moment - day).count());
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  second / 3600, second / 60 % 60, second % 60);
    return text;
}

} // namespace sim
