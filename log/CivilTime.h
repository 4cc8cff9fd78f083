#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavrelin::daylog {

/// A date and time of day as the log shows it, in seconds since 1970-01-01 00:00:00 of the same
/// calendar; knows no zone.
using CivilSeconds = std::int64_t;

inline constexpr CivilSeconds kSecondsPerDay = 86'400;

/// The begin of a day; nothing for a date that the calendar does not have.
std::optional<CivilSeconds> DayBegin(int year, int month, int day);
/// The begin of the day that a time lies in.
CivilSeconds DayOf(CivilSeconds time);

/// 2026-03-07T09:00:17
std::string IsoText(CivilSeconds time);
/// 2026-03-07
std::string IsoDate(CivilSeconds time);
/// Of "2026-03-07", "2026-03-07T09:00" or "2026-03-07 09:00:17"; nothing for any other text.
std::optional<CivilSeconds> ParseIsoTime(std::string_view text);

} // namespace tavrelin::daylog
