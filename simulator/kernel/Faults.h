#pragma once

#include "simulator/board/Nanoseconds.h"
#include "simulator/board/Noise.h"
#include "simulator/board/Occasion.h"

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
    Nanoseconds until = kNever;         ///< nor do those from here on
    std::uint64_t met = 0;              ///< such calls so far
    std::uint64_t struck = 0;           ///< how many of them failed
    double probability = 1.0;           ///< that one which is due does fail
    Occasion since{};                   ///< a step or measurement; earlier calls do not count
};

/// True for a path that a fault's path means.
bool MatchesPath(const std::string& pattern, std::string_view path);
/// "write of PATH", or the call alone.
std::string CallText(const std::string& call, const std::string& path);

/// Calls that are made to fail, each at the occurrence that was asked for.
class Faults {
  public:
    explicit Faults(std::vector<Fault> faults) : armed_(std::move(faults)) {}

    /// Which of those with a probability strike is drawn from this seed.
    void Draw(std::uint64_t seed) { noise_ = Noise(seed); }
    /// The fault counts calls from this moment on.
    void Begin(std::size_t fault, Nanoseconds now) { armed_.at(fault).at = now; }

    void Add(const Fault& fault) { armed_.push_back(fault); }
    void Clear() { armed_.clear(); }
    /// Counts one call, and gives the fault by which it fails; null when it does not fail.
    const Fault* Meet(std::string_view call, std::string_view path, Nanoseconds now);
    const std::vector<Fault>& Armed() const { return armed_; }
    /// Those that no call has met as they wanted it, in words; each ends in ", ".
    std::string Missing() const;
    /// A table of TOML for each: call, path, how many calls it met and struck.
    std::string Tables() const;

  private:
    bool Strikes(const Fault& fault);

    Noise noise_{1};
    std::vector<Fault> armed_;
};

} // namespace sim
