#pragma once

#include "simulator/run/RunOptions.h"

#include <cstdlib>
#include <ctime>
#include <string>

namespace tavrelin {

/// Local time is that of `zone` while this lives; "UTC" is what the tests' clock readings mean.
class TimeZone {
  public:
    explicit TimeZone(const char* zone = "UTC") { Set(zone); }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() { Set("UTC"); }

  private:
    static void Set(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
};

/// A board whose clock stands at this time (UTC, "2026-03-07 09:00:00") when it starts.
inline sim::RunOptions StartingAt(const std::string& time) {
    sim::RunOptions options;
    options.startTime = sim::WallClock::Parse(time).value();
    return options;
}

} // namespace tavrelin
