#pragma once

#include "simulator/board/Nanoseconds.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// A call of the C library that is made to fail.
struct Fault {
    std::string call; ///< "open", "write", "ioctl", "pthread_create", ...
    std::string path; ///< board path; one that ends in '*' matches all that begin so; empty: any
    std::uint64_t occurrence = 1;       ///< the how-manieth such call on such a path, from 1
    int error = 0;                      ///< errno of the failure; 0: the call is cut short instead
    std::optional<std::uint64_t> bytes; ///< a read or write moves only so many bytes
    bool forever = false;               ///< all later occurrences fail too
    Nanoseconds at = 0;                 ///< earlier calls do not count
    std::uint64_t met = 0;              ///< such calls so far
    std::uint64_t struck = 0;           ///< how many of them failed
};

/// Calls that are made to fail, each at the occurrence that was asked for.
class Faults {
  public:
    explicit Faults(std::vector<Fault> faults) : armed_(std::move(faults)) {}

    void Add(const Fault& fault) { armed_.push_back(fault); }
    void Clear() { armed_.clear(); }
    /// Counts one call, and gives the fault by which it fails; null when it does not fail.
    const Fault* Meet(std::string_view call, std::string_view path, Nanoseconds now);
    const std::vector<Fault>& Armed() const { return armed_; }

  private:
    std::vector<Fault> armed_;
};

} // namespace sim
