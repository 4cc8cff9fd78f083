#pragma once

#include "log/CivilTime.h"

#include <cstdint>
#include <string>

namespace tavrelin::daylog {

/// Makes `name` ("Europe/Berlin") the zone of all local times of this process; false when the
/// machine does not know it.
bool SetZone(const std::string& name);

/// A moment: seconds since 1970 in UTC, and how far local time was ahead of it, in seconds.
struct Moment {
    std::int64_t utc = 0;
    std::int64_t offset = 0;
    bool doubled = false; ///< its local time comes twice that day
};

/// 2026-10-25T02:30:00+01:00
std::string IsoText(const Moment& moment);

/// Tells the moments of local times that come in order: of an hour that comes twice it takes the
/// first until time goes back by more than a minute.
class ZonedClock {
  public:
    Moment At(CivilSeconds local);

  private:
    void LookAround(CivilSeconds day);

    CivilSeconds day_ = -1;
    std::int64_t before_ = 0; ///< offset a day before day_
    std::int64_t after_ = 0;  ///< and a day after it
    bool again_ = false;      ///< the doubled hour of this day has come for the second time
    std::int64_t last_ = INT64_MIN;
};

} // namespace tavrelin::daylog
