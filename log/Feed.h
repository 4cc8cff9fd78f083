#pragma once

#include "log/Entry.h"
#include "log/Zone.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace tavrelin::daylog {

/// Spells records as other programs take them, each with its newline.
class Feed {
  public:
    /// `zoned`: times in JSON carry the offset of the zone.
    explicit Feed(bool zoned) : zoned_(zoned) {}

    /// As `results --json` and `samples --json` have it.
    std::string Json(const Entry& record);
    /// InfluxDB's line protocol. The log's times are whole seconds: each further record of a kind
    /// in the same second is a nanosecond later, so that none takes the place of another. Empty for
    /// a record without a finite figure or of a time that the protocol has no number for.
    std::string Influx(const Entry& record);

  private:
    struct Last {
        std::int64_t utc = INT64_MIN;
        std::int64_t before = 0; ///< records of the same second
    };

    bool zoned_;
    ZonedClock clock_;
    std::array<Last, 2> last_; ///< by Entry::Kind
};

/// What a scrape of Prometheus shows.
struct Exposed {
    Figures figures;
    std::optional<std::int64_t> utc; ///< the latest result's time; nothing before the first
    std::uint64_t results = 0;
    std::uint64_t samples = 0;
    std::uint64_t broken = 0; ///< lines that are torn or unknown
};

/// The text exposition format.
std::string Exposition(const Exposed& exposed);

} // namespace tavrelin::daylog
