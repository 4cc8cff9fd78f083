#include "log/CivilTime.h"

#include "base/NumberText.h"

#include <charconv>
#include <chrono>

namespace tavrelin::daylog {

namespace {

using Days = std::chrono::sys_days;

/// Takes a number of exactly `digits` digits from the begin of a text; -1 when there is none.
int TakeNumber(std::string_view& text, std::size_t digits) {
    int number = -1;
    if (text.size() < digits || text.find_first_not_of("0123456789") < digits) {
        return -1;
    }
    std::from_chars(text.data(), text.data() + digits, number);
    text.remove_prefix(digits);
    return number;
}

/// The same of two digits after a separator.
int TakeAfter(std::string_view& text, std::string_view separators) {
    if (text.empty() || separators.find(text.front()) == std::string_view::npos) {
        return -1;
    }
    text.remove_prefix(1);
    return TakeNumber(text, 2);
}

} // namespace

std::optional<CivilSeconds> DayBegin(int year, int month, int day) {
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) {
        return std::nullopt;
    }
    return Days(date).time_since_epoch().count() * kSecondsPerDay;
}

CivilSeconds DayOf(CivilSeconds time) {
    const CivilSeconds within = time % kSecondsPerDay;
    return time - within - (within < 0 ? kSecondsPerDay : 0);
}

std::string IsoDate(CivilSeconds time) {
    const Days day{std::chrono::days(DayOf(time) / kSecondsPerDay)};
    const std::chrono::year_month_day date(day);
    return ZeroPaddedText(static_cast<int>(date.year()), 4) + "-" +
           ZeroPaddedText(static_cast<int>(static_cast<unsigned>(date.month())), 2) + "-" +
           ZeroPaddedText(static_cast<int>(static_cast<unsigned>(date.day())), 2);
}

std::string IsoText(CivilSeconds time) {
    const auto second = static_cast<int>(time - DayOf(time));
    return IsoDate(time) + "T" + ZeroPaddedText(second / 3600, 2) + ":" +
           ZeroPaddedText(second / 60 % 60, 2) + ":" + ZeroPaddedText(second % 60, 2);
}

std::optional<CivilSeconds> ParseIsoTime(std::string_view text) {
    const int year = TakeNumber(text, 4);
    const int month = TakeAfter(text, "-");
    const int day = TakeAfter(text, "-");
    const auto date = year < 0 || month < 0 || day < 0 ? std::nullopt : DayBegin(year, month, day);
    if (!date || text.empty()) {
        return date;
    }
    const int hour = TakeAfter(text, "T ");
    const int minute = TakeAfter(text, ":");
    const int second = text.empty() ? 0 : TakeAfter(text, ":");
    if (!text.empty() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 ||
        second > 59) {
        return std::nullopt;
    }
    return *date + CivilSeconds{hour} * 3600 + CivilSeconds{minute} * 60 + second;
}

} // namespace tavrelin::daylog
