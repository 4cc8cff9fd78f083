#pragma once

#include <ctime>
#include <string>

namespace tavrelin {

/// The wall clock, broken down in local time by the zone of this moment: that of the environment's
/// TZ or, without it, of /etc/localtime. A TZ that changes, and a changed
/// /etc/localtime, show in the next answer; the C library reads a file that TZ names once.
std::tm LocalNow();

/// Date of the log's name and of its lines: 2026-03-07.
std::string DateText(const std::tm& local);
/// The same of today.
std::string DateText();

/// Now, as status lines and result records show it, with a full stop before the seconds:
/// 2026-03-07 09:05.02.
std::string TimestampText();

} // namespace tavrelin
