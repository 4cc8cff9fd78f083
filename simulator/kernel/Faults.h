#pragma once

#include "simulator/scenario/Scenario.h"

#include <optional>
#include <string_view>
#include <vector>

namespace sim {

/// Calls that are made to fail, each at the occurrence that was asked for.
class Faults {
  public:
    struct Hit {
        int error = 0;                      ///< errno, or 0 when the call is only cut short
        std::optional<std::uint64_t> bytes; ///< how much of a read or write goes through
    };

    explicit Faults(const std::vector<Fault>& faults);

    void Add(const Fault& fault) { armed_.push_back({fault, 0}); }
    void Clear() { armed_.clear(); }
    /// Counts one call, and tells how it fails if it is to fail.
    std::optional<Hit> Meet(std::string_view call, std::string_view path);

  private:
    struct Armed {
        Fault fault;
        std::uint64_t met = 0;
    };

    std::vector<Armed> armed_;
};

} // namespace sim
